// Start and stop code of the library's units, run by startup.cpp in order.
// A unit that has nothing to do yet has no entry point; startup.cpp lists its
// name so the order stays visible in one place.
#pragma once

namespace ht::detail {

// htutils: processor features, UTF-8 and CRC tables, URL escapes, code pages.
void StartHtUtils();
void StopHtUtils();

// htdictionary
void StartHtDictionary();
void StopHtDictionary();

// htmlpars: entity, colour and character class tables of the document model.
void StartHtmlPars();
void StopHtmlPars();

// htmlcss: the CSS property table.
void StartHtmlCss();
void StopHtmlCss();

// htmlani: the animation thread, stopped here and started on first use.
void StartHtmlAni();
void StopHtmlAni();

// httemplates: the built-in template functions.
void StartHtTemplates();
void StopHtTemplates();

} // namespace ht::detail
