#include "htcore/foundation/files.h"

#include "htcore/foundation/codepage.h"
#include "htcore/foundation/exception.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ht {

namespace {

[[noreturn]] void FileError(const char* what, const std::string& name, int error) {
  throw EFOpenError(std::string(what) + " file \"" + name + "\". " + std::strerror(error));
}

class TFileHandle {
public:
  explicit TFileHandle(int fd) : fd_(fd) {}
  ~TFileHandle() {
    if (fd_ >= 0)
      ::close(fd_);
  }
  TFileHandle(const TFileHandle&) = delete;
  TFileHandle& operator=(const TFileHandle&) = delete;
  int get() const { return fd_; }

private:
  int fd_;
};

std::string ReadAll(const hstring& FileName) {
  std::string name = FileName.toUtf8();
  TFileHandle f(::open(name.c_str(), O_RDONLY | O_CLOEXEC));
  if (f.get() < 0)
    FileError("Cannot open", name, errno);
  struct stat st {};
  if (::fstat(f.get(), &st) == 0 && S_ISDIR(st.st_mode))
    FileError("Cannot open", name, EISDIR);
  std::string data;
  if (S_ISREG(st.st_mode) && st.st_size > 0)
    data.reserve(static_cast<size_t>(st.st_size));
  char buf[65536];
  for (;;) {
    ssize_t n = ::read(f.get(), buf, sizeof buf);
    if (n < 0) {
      if (errno == EINTR)
        continue;
      throw EStreamError(std::string_view("Stream read error"));
    }
    if (n == 0)
      break;
    data.append(buf, static_cast<size_t>(n));
  }
  return data;
}

void WriteAll(const hstring& FileName, const void* head, size_t head_len, const void* body, size_t body_len) {
  std::string name = FileName.toUtf8();
  TFileHandle f(::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  if (f.get() < 0)
    FileError("Cannot create", name, errno);
  for (auto [p, n] : {std::pair{static_cast<const char*>(head), head_len},
                      std::pair{static_cast<const char*>(body), body_len}}) {
    while (n > 0) {
      ssize_t w = ::write(f.get(), p, n);
      if (w < 0) {
        if (errno == EINTR)
          continue;
        throw EStreamError(std::string_view("Stream write error"));
      }
      p += w;
      n -= static_cast<size_t>(w);
    }
  }
}

hstring Utf16(const char* p, size_t bytes) {
  hstring s;
  size_t n = bytes / 2;
  if (n)
    std::memcpy(s.SetLength(n), p, n * 2);
  return s;
}

} // namespace

hstring FileToStr(const hstring& FileName) {
  std::string data = ReadAll(FileName);
  const auto* b = reinterpret_cast<const uint8_t*>(data.data());
  size_t n = data.size();
  if (n >= 2) {
    if ((b[0] == 0xFF && b[1] == 0xFE) || (b[0] == 0xFE && b[1] == 0xFF))
      return Utf16(data.data() + 2, n - 2); // machine order: FE FF is not swapped
    if (b[1] == 0)
      return Utf16(data.data(), n);
    if (b[0] == 0xEF && b[1] == 0xBB)
      return n > 3 ? Utf8ToHString(std::string_view(data).substr(3)) : hstring();
  }
  return HtCodePageToUnicode(data.data(), n, CP_ACP);
}

RawByteString FileToStrA(const hstring& FileName) { return FileToStrR(FileName); }

RawByteString FileToStrR(const hstring& FileName) {
  std::string data = ReadAll(FileName);
  return RawByteString(data.data(), data.size());
}

void StrtoFile(std::u16string_view s, const hstring& FileName) {
  static const uint8_t kMark[2] = {0xFF, 0xFE};
  WriteAll(FileName, kMark, 2, s.data(), s.size() * sizeof(char16_t));
}

void StrtoFileA(std::string_view s, const hstring& FileName) { StrtoFileR(s, FileName); }

void StrtoFileR(std::string_view s, const hstring& FileName) {
  WriteAll(FileName, nullptr, 0, s.data(), s.size());
}

} // namespace ht
