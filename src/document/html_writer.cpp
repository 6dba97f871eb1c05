// Placeholder serialisers: the HTML writer replaces this file.
#include "htcore/document/html_node.h"

namespace ht {

hstring THtmlNode::GetInnerHTML() { return hstring(); }

hstring THtmlNode::GetOuterHTML() { return hstring(); }

hstring THtmlNode::GetInnerText() { return TextContent(); }

hstring THtmlNode::GetRawInnerText() { return hstring(); }

void THtmlNode::FastInnerHTML(TFastString&) {}

void THtmlNode::FastInnerText(TFastString&) {}

void THtmlNode::FastFormattedHTML(TFastString&, int, int, bool&) {}

} // namespace ht
