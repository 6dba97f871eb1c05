// The user-agent sheet and the quirks sheet. Rules that look odd are meant:
// "_body" matches nothing, so that a body has no margin; "apadding-bottom" is
// no property and stays inert; "contenteditable" is a property of this
// library; "xcenter" centres a header cell without passing into nested tables.
#include "style/default_sheets.h"

namespace ht::detail {

const std::u16string_view kHTML4StyleSheetText = uR"css(
html, body, address, article, aside, blockquote, center, datapacket, dd, details, dir, div, dl, dt,
fieldset, figcaption, figure, footer, form, frameset, frame, header, hgroup, main, menu, nav, ol, p, pre,
section, summary, ul, xbody, listing, plaintext, xmp, search, optgroup, option { display: block }
head, script, style, title, meta, link, base, basefont, bgsound, noscript, noframes, template, datalist,
param, area, colgroup, col, dialog, [hidden], input[type=hidden] { display: none }
li { display: list-item; min-height: 1em }
body {line-height: normal; contenteditable: true}
_body { margin: 8px }
p, dl, multicol { margin-top: 1em; margin-bottom: 1em }
h1, h2, h3, h4, h5, h6 { display: block; font-weight: bold }
h1 { font-size: 2em; margin-top: .67em; margin-bottom: .67em }
h2 { font-size: 1.5em; margin-top: .83em; margin-bottom: .83em }
h3 { font-size: 1.17em; margin-top: 1em; margin-bottom: 1em }
h4 { margin-top: 1.33em; margin-bottom: 1.33em }
h5 { font-size: .83em; margin-top: 1.67em; margin-bottom: 1.67em }
h6 { font-size: .67em; margin-top: 2.33em; margin-bottom: 2.33em }
blockquote { margin-top: 1em; margin-bottom: 1em; margin-left: 40px; margin-right: 40px }
blockquote[type=cite] { padding-left: 16px; padding-right: 16px; border-left: solid blue thin; margin-left: 0; margin-right: 0; }
figure { margin-top: 1em; margin-bottom: 1em; margin-left: 40px; margin-right: 40px }
address, cite, dfn, em, i, var { font-style: italic }
b, strong { font-weight: bold }
pre, tt, code, kbd, samp, listing, xmp, plaintext { font-family: monospace }
pre, listing, xmp, plaintext { white-space: pre; margin-top: 1em; margin-bottom: 1em }
nobr { white-space: nowrap }
big { font-size: larger }
small { font-size: smaller }
sub { vertical-align: sub; font-size: smaller }
sup { vertical-align: super; font-size: smaller }
s, strike, del { text-decoration: line-through }
u, ins { text-decoration: underline }
abbr[title], acronym[title] { text-decoration: underline dotted }
mark { background-color: yellow; color: black }
center { text-align: center }
:link { color: blue; text-decoration: underline; cursor: pointer }
ul, menu, dir, ol { margin-top: 1em; margin-bottom: 1em; padding-left: 40px }
ul ul, ul ol, ol ul, ol ol, ul menu, menu ul { margin-top: 0; margin-bottom: 0 }
ul {list-style-type: disc }
ul ul {list-style-type: circle }
ul ul ul {list-style-type: square }
ol {list-style-type: decimal }
ol[type=a] {list-style-type: lower-alpha}
ol[type=A] {list-style-type: upper-alpha}
ol[type=i] {list-style-type: lower-roman}
ol[type=I] {list-style-type: upper-roman}
ol[type="1"] {list-style-type: decimal}
ul[type=disc] {list-style-type: disc}
ul[type=circle] {list-style-type: circle}
ul[type=square] {list-style-type: square}
dd { margin-left: 40px }
table { display: table; border-collapse: separate; border-spacing: 2px; box-sizing: border-box; text-indent: 0 }
table[border] {border-color: #808080;}
table[border] td, table[border] th { border-width: 1px; border-style: inset; border-color: #c0c0c0 }
table[align=center] { margin-left: auto; margin-right: auto }
table[align=left] { float: left }
table[align=right] { float: right }
img[align=left] { float: left }
img[align=right] { float: right }
td[nowrap], th[nowrap] { white-space: nowrap }
caption { display: block; text-align: center }
thead, tbody, tfoot { display: table-row-group; vertical-align: middle }
tr { display: table-row; padding: 0px!important }
td, th { display: table-cell; background-color: inherit }
td, th { padding: 1px; vertical-align: middle }
th { font-weight: bold; text-align: xcenter }
hr { display: block; }
hr { border-top: 1px solid gray; border-bottom: 0.5px solid silver; apadding-bottom: -1px; margin-top: 8px; margin-bottom: 8px; }
img, canvas, video, audio, iframe, embed, object, meter, progress, marquee { display: inline-block }
iframe { border: 2px inset #c0c0c0 }
br, wbr, span, font, a, q, label, map, ruby { display: inline }
q:before, q:after { content: '"' }
rt { font-size: 50% }
fieldset { position: relative; margin-left: 2px; margin-right: 2px; padding: 10px 12px 10px 12px; border: 2px groove #c0c0c0 }
legend {display: inline-block; position: absolute; left: 20px; top: 0px; transform: translate(0, -60%)}
legend { padding-left: 2px; padding-right: 2px; background-color: inherit }
textarea, input, select { display: inline; margin: 0 2 0 2; box-sizing: border-box }
textarea, input, select { border: 1px solid #a0a0a0; padding: 1px 2px 1px 2px; background-color: window; color: windowtext }
textarea { white-space: pre-wrap; font-family: monospace }
pre[wrap] { white-space: pre-wrap }
hr[noshade] { border-style: solid; border-color: gray; background-color: gray }
dialog[open] { display: block; position: absolute; left: 0; right: 0; margin: auto; border: solid; padding: 1em; background-color: white; color: black }
summary { cursor: default }
label { cursor: default }
input[type=checkbox] { appearance: checkbox }
input[type=radio] { appearance: radio }
input[type=button], input[type=submit], input[type=reset] { appearance: button }
button {display: inline-block; background: linear-gradient(to bottom, btnhighlight, btnface); color: btntext; border-radius: 2px; padding: 3px 6px 3px 6px; margin: 0px 5px; border: solid btnshadow 1px; }
button:hover { background: linear-gradient(to bottom, #ffffff, btnhighlight) }
button:active { background: linear-gradient(to bottom, btnshadow, btnface) }
button:disabled { color: graytext; border-color: graytext }
option { padding-left: 2px; padding-right: 2px }
optgroup { font-weight: bold }
[dir=rtl] { direction: rtl }
[dir=ltr] { direction: ltr }
bdo[dir] { unicode-bidi: bidi-override }
svg {fill-opacity: 1; stroke-opacity: 1; fill: black}
svg, foreignobject { display: inline-block }
.footnote:before {counter-increment: footnote; content: counters(footnote, ' '); display: none}
summary:before {content:\25B8;} details:checked summary:before {content: \25BE;}
)css";

const std::u16string_view kHTML4QuirkStyleSheetText =
    u"td > p:first-child, th > p:first-child {margin-top: 0px} td > p:last-child, th > p:last-child  "
    u"{margin-bottom: 0px} table {padding:0 !important; text-align: start; line-height: normal; font-size: "
    u"16px; font-weight: normal;} body > p:first-child {margin-top: 0px} ";

} // namespace ht::detail
