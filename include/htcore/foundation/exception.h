// Exceptions of the library.
//
// Every error the library raises derives from ht::Exception, which keeps its
// message as hstring and answers what() in UTF-8:
//
//   try { ... } catch (const ht::Exception& e) { std::cerr << e.what(); }
//
// Programmer errors use HT_ASSERT, which throws EAssertionFailed with the
// message "Assertion failure".
#pragma once

#include "htcore/foundation/hstring.h"

#include <exception>
#include <string>

namespace ht {

class Exception : public std::exception {
public:
  explicit Exception(hstring message);
  explicit Exception(std::string_view utf8_message);
  const char* what() const noexcept override { return FUtf8.c_str(); }
  const hstring& Message() const noexcept { return FMessage; }

private:
  hstring FMessage;
  std::string FUtf8;
};

// Run-time out of memory, e.g. a dictionary asked for more than 0x40000000 slots.
class EOutOfMemory : public Exception {
public:
  EOutOfMemory() : Exception(std::string_view("Out of memory")) {}
};

class EAssertionFailed : public Exception {
public:
  EAssertionFailed() : Exception(std::string_view("Assertion failure")) {}
};

// Raised by list classes with their bare message words ("SListIndexError", ...).
class EListError : public Exception {
public:
  using Exception::Exception;
};

// Bad text given to a strict converter.
class EConvertError : public Exception {
public:
  using Exception::Exception;
};

// File and stream failures.
class EStreamError : public Exception {
public:
  using Exception::Exception;
};

class EFOpenError : public EStreamError {
public:
  using EStreamError::EStreamError;
};

#define HT_ASSERT(cond)                                                                                      \
  do {                                                                                                       \
    if (!(cond))                                                                                             \
      throw ::ht::EAssertionFailed();                                                                        \
  } while (0)

} // namespace ht
