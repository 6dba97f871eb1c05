#include "htcore/foundation/exception.h"

namespace ht {

Exception::Exception(hstring message) : FMessage(std::move(message)), FUtf8(FMessage.toUtf8()) {}

Exception::Exception(std::string_view utf8_message)
    : FMessage(Utf8ToHString(utf8_message)), FUtf8(utf8_message) {}

} // namespace ht
