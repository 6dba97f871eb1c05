// htcore query [--paths] FILE SELECTOR (options go anywhere)
//
// Runs a selector query over an HTML document and prints the matching
// elements in document order, each once, as compact HTML or as their paths.
// No match is exit status 1, as for grep.
#include "commands.h"
#include "htcore/style/css_cascade.h"
#include "htcore/style/jquery.h"

#include <exception>
#include <string>
#include <vector>

namespace htcore_cli {

int CmdQuery(int argc, char** argv) {
  bool paths = false;
  std::vector<const char*> args;
  for (int i = 0; i < argc; ++i) {
    std::string opt = argv[i];
    if (opt == "--paths")
      paths = true;
    else if (opt.size() > 2 && opt[0] == '-' && opt[1] == '-')
      return FailUsage("query", "unknown option '" + opt + "'");
    else
      args.push_back(argv[i]);
  }
  if (args.size() != 2)
    return FailUsage("query");
  const char* file = args[0];
  ht::TJQueryProcessor query(ht::hstring::FromUtf8(args[1]));
  if (!query.Section)
    return Fail(std::string("not a selector: '") + args[1] + "'");
  std::string bytes;
  if (!ReadInput(file, bytes))
    return 1;
  try {
    ht::TCSSElement doc;
    doc.ParseBytes(bytes.data(), bytes.size());
    ht::SetStructuralPseudoClasses(&doc);
    ht::IHtNodeList found = ht::THtNodeList::CreateRef();
    query.Run(&doc, *found, false);
    if (found->GetCount() == 0)
      return 1;
    for (ht::THtNode* n : *found)
      Emit(UnixLines(paths ? n->Path().toUtf8() : static_cast<ht::THtmlNode*>(n)->GetOuterHTML().toUtf8()) +
           "\n");
    return 0;
  } catch (const std::exception& e) {
    return Fail(std::string(file) + ": " + e.what());
  }
}

} // namespace htcore_cli
