// htcore render: a template over XML or JSON data, written as UTF-8.
#include "commands.h"
#include "htcore/document/xml_node.h"
#include "htcore/foundation/exception.h"
#include "htcore/templates/template.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace htcore_cli {

namespace {

bool EndsWith(const std::string& s, const char* tail) {
  size_t n = std::strlen(tail);
  if (s.size() < n)
    return false;
  for (size_t i = 0; i < n; ++i)
    if (std::tolower(static_cast<unsigned char>(s[s.size() - n + i])) != tail[i])
      return false;
  return true;
}

// JSON by the file's extension; standard input by its first visible character.
bool LooksLikeJson(const std::string& name, const ht::hstring& text) {
  if (name != "-")
    return EndsWith(name, ".json");
  for (char16_t c : text)
    if (c > u' ' && c != 0xFEFF)
      return c == u'{' || c == u'[';
  return false;
}

} // namespace

int CmdRender(int argc, char** argv) {
  std::vector<std::string> files;
  std::vector<std::pair<ht::hstring, ht::hstring>> vars;
  bool json_mode = false;
  for (int i = 0; i < argc; ++i) {
    std::string a = argv[i];
    if (a == "--json-mode") {
      json_mode = true;
    } else if (a == "--var") {
      if (i + 1 >= argc)
        return Fail("--var needs name=value");
      std::string nv = argv[++i];
      size_t eq = nv.find('=');
      if (eq == std::string::npos || eq == 0)
        return Fail("--var needs name=value, got '" + nv + "'");
      vars.emplace_back(ht::Utf8ToHString(nv.substr(0, eq)), ht::Utf8ToHString(nv.substr(eq + 1)));
    } else if (a.size() > 1 && a[0] == '-' && a != "-") {
      return FailUsage("render", "unknown option '" + a + "'");
    } else {
      files.push_back(a);
    }
  }
  if (files.size() != 2)
    return FailUsage("render");
  if (files[0] == "-")
    return Fail("the template must be a file (DATA may be '-')");

  std::string tpl_bytes, data_bytes;
  if (!ReadInput(files[0].c_str(), tpl_bytes) || !ReadInput(files[1].c_str(), data_bytes))
    return 1;
  ht::hstring data_text = TextOfBytes(data_bytes);
  std::unique_ptr<ht::THtXMLNode> data;
  try {
    if (LooksLikeJson(files[1], data_text))
      data = ht::THtXMLNode::CreatefromJSON(data_text);
    else
      data = std::make_unique<ht::THtXMLNode>(data_text);
  } catch (const ht::Exception& e) {
    return Fail((files[1] == "-" ? std::string("stdin") : files[1]) + ": " + e.what());
  }

  ht::THtTemplate t;
  t.SetJSONMode(json_mode);
  // Includes resolve beside the template and may not leave its directory.
  std::error_code ec;
  std::filesystem::path dir = std::filesystem::absolute(files[0], ec).parent_path();
  t.IncludeBase = ht::Utf8ToHString(dir.string());
  t.Parse(TextOfBytes(tpl_bytes));
  if (!vars.empty())
    t.SetOnGetVar([&vars](ht::THtTemplateContext&, const ht::hstring& Name, ht::hstring& Value) {
      for (const auto& [name, value] : vars)
        if (name == Name) {
          Value = value;
          return true;
        }
      return false;
    });
  Emit(t.Render(data.get()).toUtf8());
  return 0;
}

} // namespace htcore_cli
