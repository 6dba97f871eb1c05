// JSON bytes into a THtXMLNode tree without a UTF-16 copy of the text.
//
// CreatefromJSON takes UTF-16 text; these take the UTF-8 bytes of a file or
// a network reply as they are and build the same tree (objects and arrays as
// nodes, an object's scalars as its attributes), decoding only the strings
// the tree keeps. Invalid UTF-8 reads as Utf8ToHString decodes it, and errors
// are those of CreatefromJSON.
//
//   std::string bytes = ReadWholeFile("codes.json");
//   auto doc = ht::JSONUtf8toXMLNode(bytes);          // std::unique_ptr<THtXMLNode>
//   doc->FindNode(u"3166-2"_hs);
#pragma once

#include "htcore/document/xml_node.h"

#include <memory>
#include <string_view>

namespace ht {

// A new node built from UTF-8 JSON: CreatefromJSON(Utf8ToHString(Utf8)).
std::unique_ptr<THtXMLNode> JSONUtf8toXMLNode(std::string_view Utf8);
// Fills Node, a new node, from UTF-8 JSON: Node.SetJSON(Utf8ToHString(Utf8)).
void SetJSONUtf8(THtXMLNode& Node, std::string_view Utf8);

} // namespace ht
