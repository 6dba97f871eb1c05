// Exceptions of the document readers.
//
// EHtParserError carries the errors of the small grammars and of the strict
// XML mode of the HTML reader ("Incorrect number", "Invalid tag name ...").
// EHtmlParserException is raised by tree construction. Both are ht::Exception,
// so hosts usually catch that:
//
//   try { doc.Parse(xml); } catch (const ht::EHtParserError& e) { log(e.what()); }
#pragma once

#include "htcore/foundation/exception.h"

namespace ht {

class EHtParserError : public Exception {
public:
  using Exception::Exception;
};

class EHtmlParserException : public EHtParserError {
public:
  using EHtParserError::EHtParserError;
};

} // namespace ht
