// TStream: the seekable byte stream that every reader and writer goes through.
//
//   ht::TMemoryStream m;                 // concrete streams: stream_types.h
//   m.WriteBuffer("abc", 3);
//   m.SetPosition(0);
//   char buf[3];
//   m.ReadBuffer(buf, 3);
//
// Read and Write move as many bytes as they can and return that count;
// ReadBuffer and WriteBuffer raise EReadError / EWriteError when a count falls short.
#pragma once

#include "htcore/foundation/exception.h"

#include <cstdint>

namespace ht {

enum TSeekOrigin { soBeginning, soCurrent, soEnd };

class EReadError : public EStreamError {
public:
  EReadError() : EStreamError(std::string_view("Stream read error")) {}
};

class EWriteError : public EStreamError {
public:
  EWriteError() : EStreamError(std::string_view("Stream write error")) {}
};

class TStream {
public:
  virtual ~TStream() = default;

  virtual int64_t Read(void* buffer, int64_t count) = 0;
  virtual int64_t Write(const void* buffer, int64_t count) = 0;
  // Returns the new position.
  virtual int64_t Seek(int64_t offset, TSeekOrigin origin) = 0;

  virtual int64_t GetSize() {
    int64_t pos = Seek(0, soCurrent);
    int64_t size = Seek(0, soEnd);
    Seek(pos, soBeginning);
    return size;
  }
  // Streams that cannot change size raise EStreamError.
  virtual void SetSize(int64_t) { throw EStreamError(std::string_view("Stream size cannot be changed")); }

  int64_t GetPosition() { return Seek(0, soCurrent); }
  void SetPosition(int64_t pos) { Seek(pos, soBeginning); }

  void ReadBuffer(void* buffer, int64_t count) {
    if (count > 0 && Read(buffer, count) != count)
      throw EReadError();
  }
  void WriteBuffer(const void* buffer, int64_t count) {
    if (count > 0 && Write(buffer, count) != count)
      throw EWriteError();
  }
  // Copies count bytes from source's position (count 0: all from its start).
  int64_t CopyFrom(TStream& source, int64_t count) {
    if (count == 0) {
      source.SetPosition(0);
      count = source.GetSize();
    }
    char buf[65536];
    int64_t done = 0;
    while (done < count) {
      int64_t n = count - done < static_cast<int64_t>(sizeof buf) ? count - done : sizeof buf;
      source.ReadBuffer(buf, n);
      WriteBuffer(buf, n);
      done += n;
    }
    return done;
  }
};

} // namespace ht
