// Parses a template and renders it over a small fixed data tree, through both
// Render and ThreadSafeRender. The first byte picks the modes.
//
// ThreadSafeRender sees the template's variables, those that OnUpdateSection
// set during an earlier Render included, so the two are compared after a
// first Render has left its variables behind.
//
// A template may legitimately multiply its output (sections over "//*" nested
// in each other), so a budget of lookups bounds every run: once it is spent,
// every name answers "false", which renders each section at most once.
#include "htcore/document/xml_node.h"
#include "htcore/templates/template.h"
#include "htcore/templates/template_functions.h"

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

ht::THtXMLNode& Data() {
  static ht::THtXMLNode d(
      u"<shop name=\"A &amp; B\" open=\"true\"><title>T &lt;1&gt;</title>"
      u"<rows><row id=\"1\" price=\"12.5\">a<when>2024-02-29</when></row><row id=\"2\">b</row><row/></rows>"
      u"<flag>false</flag><ok>true</ok><empty/><ref>title</ref>"
      u"<DATAPACKET><ROWDATA><ROW a=\"1\"/><ROW a=\"2\"/></ROWDATA></DATAPACKET></shop>");
  return d;
}

ht::THtXMLNode& Extra() {
  static ht::THtXMLNode d(u"<extra x=\"1\"><v>2</v><v>3</v></extra>");
  return d;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // "include" may only look into an empty directory, so no run reads files.
  std::filesystem::path dir = std::filesystem::temp_directory_path() / "htcore_template_fuzz_empty";
  std::filesystem::create_directories(dir);
  ht::SetHtTemplateIncludeBase(ht::hstring::FromUtf8(dir.string()));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1 || size > 8192)
    return 0;
  // Each "charstorects" multiplies its text by 29; nesting a few is a
  // legitimate way to ask for gigabytes.
  std::string raw(reinterpret_cast<const char*>(data), size);
  for (char& c : raw)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  int boxes = 0;
  for (size_t at = 0; (at = raw.find("rects", at)) != std::string::npos; ++at)
    ++boxes;
  if (boxes > 2)
    return 0;
  uint8_t flags = data[0];
  ht::hstring text = ht::Utf8ToHString(std::string_view(reinterpret_cast<const char*>(data + 1), size - 1));

  int budget = 4000;
  auto on_get_var = [&budget](ht::THtTemplateContext&, const ht::hstring&, ht::hstring& Value) {
    if (--budget > 0)
      return false;
    Value = ht::hstring(u"false");
    return true;
  };
  auto on_update = [](const ht::THtTemplate&, ht::THtTemplateContext& C, const ht::hstring&) {
    C.SetVariable(ht::hstring(u"q"), &Extra());
  };

  ht::THtTemplate t;
  t.ProcessScript = flags & 1;
  t.SetJSONMode(flags & 2);
  // Without the "false" answers nothing bounds the rows, so only tiny texts.
  t.IgnoreLogicalSections = (flags & 4) && size < 64;
  t.Parse(text);
  if (t.NoTemplate && t.Render(&Data()).Pointer() != text.Pointer())
    std::abort();

  ht::hstring a = t.ThreadSafeRender(&Data(), nullptr, on_get_var, on_update);
  budget = 4000;
  t.SetVariable(ht::hstring(u"extra"), &Extra());
  t.SetOnGetVar(on_get_var);
  t.OnUpdateSection = on_update;
  ht::hstring b = t.Render(flags & 8 ? &Data() : nullptr);
  // Render keeps what OnUpdateSection set during the render ("q" here) in the
  // template's context, where later renders of both kinds see it: compare
  // from that state on, not from the fresh one of the first render.
  budget = 4000;
  b = t.Render(flags & 8 ? &Data() : nullptr);
  // The two ways agree when neither ran out of lookups and both had the data.
  if ((flags & 8) && budget > 0) {
    budget = 4000;
    ht::hstring c = t.ThreadSafeRender(&Data(), nullptr, on_get_var, on_update);
    if (budget > 0 && c != b)
      std::abort();
  }
  return 0;
}
