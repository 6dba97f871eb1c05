#include "commands.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace htcore_cli {

const std::vector<Command>& Commands() {
  static const std::vector<Command> list = {
      {"version", "version", "print the library version", CmdVersion,
       "Prints the version of the library the tool is built with (also: htcore --version).\n"
       "\n"
       "example:\n"
       "  htcore version\n"},
      {"render", "render TEMPLATE DATA|- [--json-mode] [--var name=value]...",
       "render a {{ }} template over XML or JSON data (by extension; stdin is sniffed)", CmdRender,
       "Renders TEMPLATE over the data tree of DATA and prints the result. DATA is JSON when\n"
       "its name ends in .json (standard input: when it starts with { or [), XML otherwise.\n"
       "Includes resolve beside the template and may not leave its directory.\n"
       "\n"
       "options:\n"
       "  --json-mode         values are written as JSON strings\n"
       "  --var name=value    a variable the data does not hold (repeatable)\n"
       "\n"
       "example:\n"
       "  htcore render catalogue.tpl.html catalogue.xml --var title=Spring\n"},
      {"tokens", "tokens FILE|-", "HTML item stream (tags, text, blocks), one a line", CmdTokens,
       "Prints the items the HTML reader delivers, one a line: tags with their attributes,\n"
       "texts, scripts, styles, comments and directives, with line breaks shown as \\n.\n"
       "\n"
       "example:\n"
       "  htcore tokens page.html\n"},
      {"html", "html text|format|compact FILE|-", "HTML as plain text, indented or compact HTML (UTF-8)",
       CmdHtml,
       "Reads HTML in any encoding (a byte-order mark, a meta charset or the bytes decide) and\n"
       "prints the body's text, the repaired tree as indented HTML, or as compact HTML.\n"
       "\n"
       "example:\n"
       "  htcore html text page.html\n"},
      {"xml text", "xml text [--max-item MIB] FILE|-", "the text of an XML document of any size (UTF-8)",
       CmdXmlText,
       "Streams the text of an XML document through the SAX reader, in memory bounded by\n"
       "the longest text or tag, not by the document. Without a byte-order mark or an\n"
       "encoding declaration the input is UTF-8; UTF-16 of either byte order is read by its\n"
       "mark (or by a first '<' of two bytes). Error positions count bytes of the input as\n"
       "UTF-8.\n"
       "\n"
       "options:\n"
       "  --max-item MIB   the longest text or tag, in MiB (default 64); a longer one is an\n"
       "                   error, never a piece of it\n"
       "\n"
       "example:\n"
       "  htcore xml text big.xml\n"},
      {"xml", "xml format|tojson FILE|-", "XML as indented XML or as JSON (UTF-8)", CmdXml,
       "Reads strict XML (a byte-order mark, the declaration or the bytes decide the\n"
       "encoding; UTF-16 in either byte order) and prints it as indented XML or as JSON.\n"
       "Text or elements around the root element are an error (the tree holds one root);\n"
       "comments and the document type are not kept.\n"
       "\n"
       "The JSON form is lossy by design: an element becomes an object of its attributes\n"
       "and child elements, its text is left out (also in mixed content), repeated child\n"
       "names give repeated keys, every value is a string, and LF and CR in values are\n"
       "written as \\r and \\n.\n"
       "\n"
       "example:\n"
       "  htcore xml tojson settings.xml\n"},
      {"json", "json toxml FILE|-", "JSON as indented XML (UTF-8)", CmdJson,
       "Reads JSON (UTF-8, or UTF-16 by its byte-order mark) and prints it as indented XML:\n"
       "scalars become attributes, objects and arrays child elements, array items <value>\n"
       "elements.\n"
       "\n"
       "example:\n"
       "  htcore json toxml settings.json\n"},
      {"xpath", "xpath [--xml] [--value] FILE PATH",
       "matches of PATH as markup, or the first one's value (.xml/.svg/.rss: XML)", CmdXPath,
       "Runs the path query PATH over an HTML document (XML for .xml, .svg, .rss, .atom,\n"
       ".xsl, .xslt or with --xml) and prints each matching node once, in document order,\n"
       "as compact markup, one a line. A malformed path is an error; no match is exit\n"
       "status 1 with nothing printed, as for grep.\n"
       "\n"
       "options:\n"
       "  --xml      read FILE as XML whatever its name\n"
       "  --value    print the value of the first match (an attribute's value, an\n"
       "             element's text)\n"
       "\n"
       "example:\n"
       "  htcore xpath page.html '//a/@href' --value\n"},
      {"css", "css format|minify|dark|selectors FILE|-",
       "a style sheet written back, minified, in dark colours, or its selectors with weight and bucket",
       CmdCss,
       "Parses a style sheet (UTF-8; FILE '-' reads standard input) and writes it back.\n"
       "CSS never fails to parse: what is not understood is dropped.\n"
       "\n"
       "modes:\n"
       "  format     parse the sheet and write it back, one declaration a line\n"
       "  minify     merge equal sides into shorthands and write the sheet compactly\n"
       "  dark       move every colour to a dark theme and write the sheet\n"
       "  selectors  each selector with its weight, map group and the bucket it is filed in\n"
       "\n"
       "example:\n"
       "  htcore css selectors bootstrap.css\n"},
      {"query", "query [--paths] FILE SELECTOR",
       "elements of an HTML document that match a CSS selector group, as HTML or paths", CmdQuery,
       "Reads an HTML document (any encoding, as 'html' does) and prints the elements that\n"
       "match SELECTOR, a CSS selector group such as 'div.note > p, #main a[href]', each once,\n"
       "in document order, as compact HTML, one a line. The document node itself is never a\n"
       "match. Pseudo-classes of the tree (:first-child, :nth-child(2), :empty ...) work;\n"
       "states (:hover, :focus) and pseudo-elements (::before) match nothing. No match is\n"
       "exit status 1 with nothing printed, as for grep; text that gives no selector is an\n"
       "error.\n"
       "\n"
       "options:\n"
       "  --paths    print each element's path (/html/body/div/p) instead of its HTML\n"
       "\n"
       "example:\n"
       "  htcore query page.html 'ul.menu > li:first-child a'\n"},
      {"style", "style FILE|- [--css FILE]... [--width N] [--props a,b,...] [--at MS [--then CSS]]",
       "computed style of every element of an HTML document, one JSON object a line", CmdStyle,
       "Styles an HTML document as a host would: the default sheet, the quirks sheet when\n"
       "the document has no standards doctype, its <style> elements and the <link> sheets\n"
       "found on disk beside it (with their @import), the --css sheets, then each\n"
       "element's style attribute and presentational attributes. Prints one JSON object per\n"
       "element, in document order:\n"
       "\n"
       "  {\"path\":\"/html/body/p\",\"tag\":\"p\",\"n\":0,\"display\":\"block\",...}\n"
       "\n"
       "path is the tags from the root down; n counts the elements of that tag before this\n"
       "one (from 0). Then one key per property, in the order asked. Values are CSS text as\n"
       "a browser's computed style writes them: colours rgb(R, G, B) or rgba(R, G, B, A)\n"
       "(no background: rgba(0, 0, 0, 0)); lengths in px with at most two decimals;\n"
       "line-height always px (normal: 1.2 times the font size); a border width is 0px\n"
       "when its style is none; percentages of the container, calc() of one and auto stay\n"
       "as declared (50%, auto), since they wait for layout; keywords as CSS keywords\n"
       "(inline-block; the engine's own xcenter for align=center); font-weight a number;\n"
       "font-family the first family without quotes. A property the engine does not\n"
       "answer is null.\n"
       "\n"
       "options:\n"
       "  --css FILE     a further sheet (UTF-8), after the document's; repeatable\n"
       "  --width N      the viewport width in px for media queries and vw (default 1024;\n"
       "                 the height is 768)\n"
       "  --props LIST   the properties, comma-separated; side-* stands for the four sides\n"
       "                 (margin-*, border-*-width). Default: display, position, float,\n"
       "                 color, background-color, font-family, font-size, font-weight,\n"
       "                 line-height, margin-*, padding-*, border-*-width, width, height,\n"
       "                 text-align\n"
       "  --at MS        the values MS milliseconds after load: the key-frame animations\n"
       "                 (animation: name duration [timing] [count|infinite] [delay]) run\n"
       "                 from load on a clock of the tool's, ticking every 16 ms, and a\n"
       "                 frame's lengths, numbers and colours move from the key frame before;\n"
       "                 an animation that has ended shows the declared values again. 0 is\n"
       "                 the document as loaded, before the first tick\n"
       "  --then CSS     with --at: a sheet added right after load, as a script would; the\n"
       "                 properties it changes that a transition covers move from the old\n"
       "                 value to the new one, and --at tells how far they are\n"
       "\n"
       "example:\n"
       "  htcore style page.html --width 480 --props display,color,margin-*\n"
       "  htcore style page.html --at 250 --then 'p { opacity: 0 }' --props opacity\n"},
      {"path", "path normalize|bounds|flatten [--tolerance T] DATA|-",
       "SVG path data made absolute, its bounds, or flattened to lines", CmdPath,
       "Reads SVG path data (DATA '-' reads standard input) and writes it back with absolute\n"
       "coordinates only (M, L, C, Q, A, z), its bounds as left top right bottom (control\n"
       "points included), or flattened to moves, lines and closes. Stray characters are\n"
       "skipped and malformed numbers read as 0; a letter that is no path command is an error.\n"
       "\n"
       "modes:\n"
       "  normalize  the path data again, absolute coordinates only\n"
       "  bounds     left top right bottom\n"
       "  flatten    moves, lines and closes\n"
       "\n"
       "options:\n"
       "  --tolerance T  resolution of flatten (default 1): larger values give more segments;\n"
       "                 a cubic takes 3 to 10 lines, an arc steps at most 10 degrees\n"
       "\n"
       "example:\n"
       "  htcore path flatten --tolerance 2 'M0 0 C 10 20 30 20 40 0'\n"},
      {"svg", "svg demo OUT_DIR [--only NAME]...", "the drawing suite as SVG documents, one per page",
       CmdSvg,
       "Draws the suite of example scenes (shapes, dashes, paths, gradients, clips,\n"
       "transforms, text, images, widgets, links, pages) through the SVG canvas and writes\n"
       "one document per scene page into OUT_DIR (made when missing), NAME.svg or\n"
       "NAME-1.svg, NAME-2.svg... for a scene of several pages, and an index.html that shows\n"
       "them all. The documents are UTF-8 and carry their text classes in a style element.\n"
       "\n"
       "options:\n"
       "  --only NAME   write this scene only (repeatable); names are the file stems\n"
       "\n"
       "example:\n"
       "  htcore svg demo /tmp/svg-demo && xdg-open /tmp/svg-demo/index.html\n"},
      {"render-svg", "render-svg FILE.html OUT.svg [--width N] [--css FILE]...",
       "an HTML page laid out by the example host loop and painted as one SVG document", CmdRenderSvg,
       "Styles an HTML page as 'style' does (default sheet, <style> and local <link>\n"
       "sheets, --css sheets, inline style), lays it out with the example host loop of\n"
       "examples/render_svg and paints it through the SVG canvas into OUT.svg, one page as\n"
       "tall as the content. The loop stacks block boxes (margins, borders, paddings,\n"
       "widths), breaks text into lines at the break flags of its runs (white-space,\n"
       "text-align), sets tables as rows of equal cells, draws list markers, and shows\n"
       "images as framed boxes. It is no layout engine: floats, positioning, inline-block\n"
       "and flex are laid out as plain blocks or inline text. Text is measured with a fixed\n"
       "table of sans-serif advance widths, so a viewer's font may run a little longer or\n"
       "shorter. The document is checked to parse as XML before OUT.svg is replaced.\n"
       "\n"
       "options:\n"
       "  --width N     the page width in px (default 800), also the viewport of media queries\n"
       "  --css FILE    a further sheet (UTF-8), after the document's; repeatable\n"
       "\n"
       "example:\n"
       "  htcore render-svg page.html page.svg --width 600 && rsvg-convert page.svg > page.png\n"},
  };
  return list;
}

int FailUsage(std::string_view name, const std::string& reason) {
  std::string line = reason.empty() ? "usage: " : reason + "; usage: ";
  std::string_view group = name.substr(0, name.find(' '));
  bool first = true;
  for (const Command& c : Commands()) {
    std::string_view n = c.name;
    if (n == name || n.substr(0, n.find(' ')) == group) {
      line.append(first ? "htcore " : " or htcore ").append(c.usage);
      first = false;
    }
  }
  return Fail(line);
}

bool IsHelpOption(const char* arg) { return !std::strcmp(arg, "--help") || !std::strcmp(arg, "-h"); }

bool ReadInput(const char* name, std::string& bytes) {
  bool is_stdin = std::strcmp(name, "-") == 0;
  FILE* f = is_stdin ? stdin : std::fopen(name, "rb");
  if (!f) {
    Fail(std::string("cannot open '") + name + "': " + std::strerror(errno));
    return false;
  }
  bytes.clear();
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0)
    bytes.append(buf, n);
  // A directory opens fine and fails on the first read.
  bool failed = std::ferror(f) != 0;
  int err = errno;
  if (!is_stdin)
    std::fclose(f);
  if (failed) {
    Fail(std::string("cannot read '") + (is_stdin ? "standard input" : name) + "': " + std::strerror(err));
    return false;
  }
  return true;
}

TOutputError::TOutputError(int err)
    : FMessage(std::string("cannot write the output: ") + std::strerror(err)) {}

void Emit(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
    throw TOutputError(errno);
}

int WriteOut(std::string text) {
  if (text.empty() || text.back() != '\n')
    text += '\n';
  Emit(text);
  return 0;
}

std::string UnixLines(std::string text) {
  std::string::size_type w = 0;
  for (std::string::size_type r = 0; r < text.size(); ++r)
    if (!(text[r] == '\r' && r + 1 < text.size() && text[r + 1] == '\n'))
      text[w++] = text[r];
  text.resize(w);
  return text;
}

int Fail(const std::string& message) {
  std::fprintf(stderr, "htcore: %s\n", message.c_str());
  return 1;
}

int CmdVersion(int argc, char**) {
  if (argc != 0)
    return FailUsage("version");
  Emit("htcore " HTCORE_VERSION "\n");
  return 0;
}

} // namespace htcore_cli
