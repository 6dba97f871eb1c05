// The SAX reader: buffer handling and the markup scanner.
//
// Every token is read from FBufStart and committed only when it is complete.
// A scan that runs into the buffer end answers stMore; the caller refills
// (moving the unread tail to the front) and the token is read again from its
// start. Only when no more bytes can come does a token stop at the buffer end.
#include "htcore/document/sax_parser.h"

#include "document/sax_internal.h"
#include "htcore/document/parse_errors.h"
#include "htcore/foundation/startup.h"
#include "htcore/foundation/stream_types.h"

#include <algorithm>
#include <string>

namespace ht {

using namespace detail;

namespace {

constexpr int kPad = 16; // zeroed bytes behind the data, so a stray peek reads 0
// The buffer is indexed by int; a larger MaxItemSize counts as this.
constexpr int kMaxGrownSize = 1 << 30;
// A grown buffer holds this much beyond MaxItemSize, so that the bytes that
// end the longest allowed item (a '<', a "<![CDATA[" to look at) fit too.
constexpr int kLookahead = 16;

} // namespace

THtSAXXMLParser::THtSAXXMLParser(TStream& ASourceStream, THtmlEncoding AEncoding) {
  FStream = &ASourceStream;
  FEncoding = AEncoding;
  Init();
}

THtSAXXMLParser::THtSAXXMLParser(const hstring& AFileName, THtmlEncoding AEncoding) {
  FOwnStream = std::make_unique<TFileStream>(AFileName, fmOpenRead | fmShareDenyWrite);
  FStream = FOwnStream.get();
  FEncoding = AEncoding;
  Init();
}

THtSAXXMLParser::THtSAXXMLParser(std::string_view utf8_file_name, THtmlEncoding AEncoding) {
  FOwnStream = std::make_unique<TFileStream>(utf8_file_name, fmOpenRead | fmShareDenyWrite);
  FStream = FOwnStream.get();
  FEncoding = AEncoding;
  Init();
}

THtSAXXMLParser::~THtSAXXMLParser() = default;

void THtSAXXMLParser::Init() {
  EnsureStarted();                             // the entity table
  FBuf.reset(new uint8_t[kBufferSize + kPad]); // ReadBuf zeroes the pad behind the data
  FNames.reset(new TNameSlot[kSaxNameSlots]);
  const uint8_t* b = FBuf.get();
  // FF FE is not looked at: such input needs heUTF16 from the caller.
  if (ReadBuf() > 5) {
    if (b[0] == 0xEF && b[1] == 0xBB && b[2] == 0xBF) {
      FEncoding = heUTF8;
      FBufStart = 3;
    } else if (b[0] == 0xFE && b[1] == 0xFF) {
      FEncoding = heUTF16;
      FBufStart = 2;
    }
  }
}

int THtSAXXMLParser::GrowthCap() const noexcept {
  return MaxItemSize > kBufferSize
             ? static_cast<int>(std::min<int64_t>(MaxItemSize + kLookahead, kMaxGrownSize))
             : kBufferSize;
}

bool THtSAXXMLParser::AtLimit() const noexcept {
  return FEof || (FBufStart == 0 && FBufEnd == FBufSize && FBufSize >= GrowthCap());
}

void THtSAXXMLParser::Reserve(int ASize) {
  std::unique_ptr<uint8_t[]> grown(new uint8_t[static_cast<size_t>(ASize) + kPad]);
  std::memcpy(grown.get(), FBuf.get() + FBufStart, static_cast<size_t>(FBufEnd - FBufStart));
  FBuf = std::move(grown);
  FBufSize = ASize;
  FBufPosition += FBufStart;
  FBufEnd -= FBufStart;
  FBufStart = 0;
}

int THtSAXXMLParser::ReadBuf() {
  int cap = GrowthCap();
  if (FBufStart == 0 && FBufEnd == FBufSize && FBufSize < cap) {
    // The item at the front fills the buffer: whole-item mode makes room.
    Reserve(static_cast<int>(std::min<int64_t>(2 * static_cast<int64_t>(FBufSize), cap)));
  } else if (FBufSize > kBufferSize && FBufEnd - FBufStart < kBufferSize) {
    Reserve(kBufferSize); // the long item is behind us
  }
  uint8_t* b = FBuf.get();
  if (FBufStart > 0) {
    std::memmove(b, b + FBufStart, static_cast<size_t>(FBufEnd - FBufStart));
    FBufPosition += FBufStart;
    FBufEnd -= FBufStart;
    FBufStart = 0;
  }
  int total = 0;
  // A pipe may deliver less than asked: read on until full or the end.
  while (FBufEnd < FBufSize && !FEof) {
    int64_t n = FStream->Read(b + FBufEnd, FBufSize - FBufEnd);
    if (n <= 0) {
      FEof = true;
      break;
    }
    FBufEnd += static_cast<int>(n);
    total += static_cast<int>(n);
  }
  std::memset(b + FBufEnd, 0, kPad);
  return total;
}

bool THtSAXXMLParser::Next() {
  for (;;) {
    if (FBufStart >= FBufEnd && ReadBuf() == 0)
      return false;
    TStep r = Step(true);
    if (r == stEvent)
      return true;
    if (r == stMore)
      ReadBuf();
  }
}

void THtSAXXMLParser::SkipLevel() {
  int level = Level;
  while (Level >= level && Next()) {
  }
}

void THtSAXXMLParser::ItemCut(TCut AKind) {
  if (FEof)
    return;
  if (MaxItemSize > kBufferSize)
    RefuseItem();
  FCut = AKind;
}

void THtSAXXMLParser::CheckLength(const uint8_t* stop) {
  if (FBufSize > MaxItemSize && MaxItemSize > kBufferSize && stop - (FBuf.get() + FBufStart) > MaxItemSize)
    RefuseItem();
}

void THtSAXXMLParser::RefuseItem() {
  FItemTooLong = true;
  RaiseError("Incorrect XML", Position());
}

THtSAXXMLParser::TStep THtSAXXMLParser::AfterCut() {
  // The rest of a cut tag may only close it, and the rest of a cut section
  // nothing: read as items of their own they would pass for text or markup.
  const uint8_t* base = FBuf.get();
  const uint8_t* end = base + FBufEnd;
  const uint8_t* p = FCut == ctTag ? SaxSkipBlanks(base + FBufStart, end) : base + FBufStart;
  FBufStart = static_cast<int>(p - base);
  if (end - p < 2 && !FEof)
    return p == end ? stSkipped : stMore;
  TCut cut = FCut;
  FCut = ctNone;
  if (p == end)
    return stSkipped;
  if (cut == ctTag && *p == '>') {
    ++FBufStart;
    return stSkipped;
  }
  if (cut == ctTag && (*p == '/' || *p == '?') && p[1] == '>' && FLastEvent == seTagStart)
    return Step(false) == stEvent ? stEvent : stSkipped;
  RaiseError("Incorrect XML", Position());
}

THtSAXXMLParser::TStep THtSAXXMLParser::Step(bool AStore) {
  const uint8_t* p = FBuf.get() + FBufStart;
  const uint8_t* end = FBuf.get() + FBufEnd;
  if (FCut != ctNone)
    return AfterCut();
  uint8_t c = *p;
  if (c == '<') {
    if (end - p < 2)
      return AtLimit() ? ReadStartTag(AStore) : stMore;
    if (p[1] == '/')
      return ReadEndTag(AStore);
    if (p[1] == '!') {
      if (end - p < 9 && !AtLimit())
        return stMore;
      if (SaxStarts(p, end, "<!--", 4))
        return SkipComment();
      if (SaxStarts(p, end, "<![CDATA[", 9))
        return ReadText();
      // Texts on both sides of a declaration are two texts, not an error.
      if (FLastEvent == seText)
        FLastEvent = seTagEnd;
      return SkipDeclaration();
    }
    return ReadStartTag(AStore);
  }
  if ((c == '/' || c == '?') && FLastEvent == seTagStart) {
    if (end - p < 2 && !AtLimit())
      return stMore;
    // The end of an empty element, and of <?xml ... ?>.
    if (end - p >= 2 && p[1] == '>') {
      FBufStart += 2;
      FNameLen = 0;
      FLastEvent = seTagEnd;
      --Level;
      return stEvent;
    }
  }
  return ReadText();
}

THtSAXXMLParser::TStep THtSAXXMLParser::ReadStartTag(bool AStore) {
  const uint8_t* base = FBuf.get();
  const uint8_t* end = base + FBufEnd;
  const uint8_t* name = base + FBufStart + 1;
  const uint8_t* p = SaxScan(name, end, kSaxTagStop);
  if (p == end && !AtLimit())
    return stMore;
  size_t name_len = static_cast<size_t>(p - name);
  bool header = FFirstTag && name_len == 4 && std::memcmp(name, "?xml", 4) == 0;
  bool keep = AStore || header;
  if (keep) {
    FAttributes.Clear();
    FAttrsUnsorted = false;
  }
  for (;;) {
    p = SaxSkipBlanks(p, end);
    if (p == end) {
      if (!AtLimit())
        return stMore;
      break;
    }
    if (*p == '/' || *p == '>' || *p == '?')
      break;
    const uint8_t* an = p;
    p = SaxScan(p, end, kSaxAttrStop);
    const uint8_t* an_end = p;
    p = SaxSkipBlanks(p, end);
    if (p == end) {
      if (!AtLimit())
        return stMore;
      break;
    }
    if (*p != '=') {
      // A name without '=' is dropped; a stray quote is stepped over.
      if (an == an_end)
        ++p;
      continue;
    }
    p = SaxSkipBlanks(p + 1, end);
    const uint8_t* value;
    const uint8_t* value_end;
    // Only '"' quotes: <a b='1'> has the value '1' with its apostrophes.
    if (p < end && *p == '"') {
      value = p + 1;
      value_end = SaxFind(value, end, '"');
      if (!value_end) {
        if (!AtLimit())
          return stMore;
        value_end = end;
        p = end;
      } else {
        p = value_end + 1;
      }
    } else {
      value = p;
      p = value_end = SaxScan(p, end, kSaxValueStop);
      if (p == end && !AtLimit())
        return stMore;
    }
    if (keep && an != an_end)
      AddAttribute(an, static_cast<size_t>(an_end - an), value, value_end);
  }
  if (p == end)
    ItemCut(ctTag);
  else if (*p == '>')
    ++p;
  CheckLength(p);
  FBufStart = static_cast<int>(p - base);
  FNameStart = static_cast<int>(name - base);
  FNameLen = static_cast<int>(name_len);
  FLastEvent = seTagStart;
  ++Level;
  if (keep) {
    SortAttributes();
    SetName(name, name_len, FTag, &FTagNS);
  }
  if (FFirstTag) {
    FFirstTag = false;
    if (header)
      ProcessEncoding();
  }
  return stEvent;
}

THtSAXXMLParser::TStep THtSAXXMLParser::ReadEndTag(bool AStore) {
  const uint8_t* base = FBuf.get();
  const uint8_t* end = base + FBufEnd;
  const uint8_t* name = base + FBufStart + 2;
  const uint8_t* p = SaxScan(name, end, kSaxTagStop);
  size_t name_len = static_cast<size_t>(p - name);
  // Blanks before the '>' are allowed; then one byte, normally the '>', goes.
  p = SaxSkipBlanks(p, end);
  if (p == end && !AtLimit())
    return stMore;
  if (p == end)
    ItemCut(ctTag);
  else
    ++p;
  CheckLength(p);
  FBufStart = static_cast<int>(p - base);
  FNameStart = static_cast<int>(name - base);
  FNameLen = static_cast<int>(name_len);
  FLastEvent = seTagEnd;
  --Level;
  if (AStore)
    SetName(name, name_len, FTag, &FTagNS);
  return stEvent;
}

THtSAXXMLParser::TStep THtSAXXMLParser::ReadText() {
  // A text always runs to the next tag, so a second text in a row means the
  // first one did not fit in the buffer.
  if (FLastEvent == seText)
    RaiseError("Incorrect XML", Position());
  const uint8_t* base = FBuf.get();
  const uint8_t* end = base + FBufEnd;
  const uint8_t* p = base + FBufStart;
  const uint8_t* s = p;
  const uint8_t* stop;
  bool mixed = false; // holds comments or CDATA sections
  for (;;) {
    const uint8_t* lt = SaxFind(s, end, '<');
    if (!lt) {
      if (!AtLimit())
        return stMore;
      ItemCut(ctNone); // the rest comes as a second text, which raises
      stop = end;
      break;
    }
    if (end - lt < 9 && !AtLimit())
      return stMore;
    if (end - lt < 9)
      ItemCut(ctNone); // may be a section going on
    const uint8_t* close;
    if (SaxStarts(lt, end, "<!--", 4))
      close = SaxFindClose(lt + 4, end, '-');
    else if (SaxStarts(lt, end, "<![CDATA[", 9))
      close = SaxFindClose(lt + 9, end, ']');
    else {
      stop = lt;
      break;
    }
    mixed = true;
    if (!close) {
      if (!AtLimit())
        return stMore;
      ItemCut(ctSection);
      stop = end; // an unterminated section takes the rest
      break;
    }
    s = close;
  }
  CheckLength(stop);
  if (!mixed) {
    GetEscaped(FText, p, stop);
  } else {
    FWork.clear();
    s = p;
    while (s < stop) {
      const uint8_t* lt = SaxFind(s, stop, '<');
      if (!lt) {
        AppendEscaped(s, stop);
        break;
      }
      AppendEscaped(s, lt);
      if (SaxStarts(lt, stop, "<!--", 4)) {
        const uint8_t* close = SaxFindClose(lt + 4, stop, '-');
        s = close ? close : stop;
      } else {
        const uint8_t* body = lt + 9;
        const uint8_t* close = SaxFindClose(body, stop, ']');
        AppendBytes(body, static_cast<size_t>((close ? close - 3 : stop) - body));
        s = close ? close : stop;
      }
    }
    FlushWork(FText);
  }
  FBufStart = static_cast<int>(stop - base);
  FLastEvent = seText;
  return stEvent;
}

THtSAXXMLParser::TStep THtSAXXMLParser::SkipComment() {
  // Nothing of a comment is kept, so it may be longer than the buffer.
  uint8_t* base = FBuf.get();
  const uint8_t* from = base + FBufStart + 4;
  for (;;) {
    const uint8_t* close = SaxFindClose(from, base + FBufEnd, '-');
    if (close) {
      FBufStart = static_cast<int>(close - base);
      return stSkipped;
    }
    if (FEof) {
      FBufStart = FBufEnd;
      return stSkipped;
    }
    // The last two bytes stay: "-->" may straddle the refill.
    FBufStart = std::max(static_cast<int>(from - base), FBufEnd - 2);
    ReadBuf();
    base = FBuf.get(); // a grown buffer shrinks back on a refill
    from = base;
  }
}

THtSAXXMLParser::TStep THtSAXXMLParser::SkipDeclaration() {
  // <!DOCTYPE ...> with its internal subset in brackets; the declarations in
  // it are not acted upon.
  uint8_t* base = FBuf.get();
  const uint8_t* q = base + FBufStart + 2;
  int depth = 0;
  for (;;) {
    const uint8_t* end = base + FBufEnd;
    for (; q < end; ++q) {
      if (*q == '[') {
        ++depth;
      } else if (*q == ']') {
        if (depth > 0)
          --depth;
      } else if (*q == '>' && depth == 0) {
        FBufStart = static_cast<int>(q + 1 - base);
        return stSkipped;
      }
    }
    FBufStart = FBufEnd;
    if (FEof)
      return stSkipped;
    ReadBuf();
    base = FBuf.get();
    q = base;
  }
}

void THtSAXXMLParser::ProcessEncoding() {
  if (FHeader)
    return;
  FHeader = true;
  int cp = THtmlParser::CharsettoCodepage(FAttributes.GetAttribute(u"encoding"_hs));
  if (cp == 65001) {
    FEncoding = heUTF8;
  } else if (cp != 0) {
    FEncoding = heANSI;
    FCodePage = cp;
  }
  ClearNames();
}

void THtSAXXMLParser::RaiseError(std::string_view Message, int64_t Offset) {
  throw EHtParserError(std::string(Message) + " at position " + std::to_string(Offset));
}

} // namespace ht
