// Small POSIX helpers shared by the file streams.
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/foundation/stream.h"

#include <string>
#include <string_view>

namespace ht::detail {

// The system's text for an errno value ("No such file or directory").
std::string SysErrorText(int error);

// "<message> <system text>" as the message of an exception.
hstring WithSysError(std::string_view message, int error);

// The position a seek lands on; raises EStreamError before the start.
int64_t SeekTarget(int64_t position, int64_t size, int64_t offset, TSeekOrigin origin);

} // namespace ht::detail
