// THtSAXXMLParser: a pull reader for XML of any size in constant memory.
//
// The reader keeps one buffer of 256 KiB over a stream, finds markup on the
// raw bytes and decodes only the names, values and texts it hands out, by the
// encoding in force (a byte-order mark or the encoding of <?xml ...?> switch
// it). Each Next reports one event; its data is in FTag, FTagNS, FAttributes
// (start tags) and FText (texts):
//
//   ht::THtSAXXMLParser sax(u"big.xml"_hs, ht::heUTF8);
//   while (sax.Next())
//     if (sax.FLastEvent == ht::seTagStart && sax.FTag == u"item") {
//       use(sax.GetAttr(u"id"_hs));
//       sax.SkipLevel();                    // behind </item>
//     }
//
// ExtractText collects only the text, faster:
//   ht::TFastString fs;
//   sax.ExtractText(fs, [](ht::THtSAXXMLParser&, ht::TFastString& s) { emit(s); s.Clear(); });
//
// The reader is forgiving about most things but raises EHtParserError
// "Incorrect XML at position N" for two texts in a row, which happens when a
// single text does not fit in the buffer. Comments and <!DOCTYPE ...> are
// skipped; CDATA sections are part of the text around them, undecoded.
//
// Items longer than the buffer. By default the buffer stays at 256 KiB: a
// text or a tag that does not fit is cut at the buffer end and delivered as
// far as it goes, and the reader raises "Incorrect XML at position N" (N:
// where the cut fell) when it meets the rest, so no cut item goes unnoticed
// beyond the one event. A host that needs whole items sets MaxItemSize: the
// buffer then grows for one item up to that many bytes and shrinks back
// after it, and an item longer than that raises the error at its start
// instead of being delivered; ItemTooLong() tells that case apart:
//   sax.MaxItemSize = 64 << 20;   // texts and tags up to 64 MiB come whole
#pragma once

#include "htcore/document/attributes.h"
#include "htcore/document/html_parser.h"
#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/stream.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

namespace ht {

HT_ENUM(THtSAXEventType, seTagStart, seTagEnd, seText);

class THtSAXXMLParser;

// Called by ExtractText when a block of text is complete; the host usually
// takes the text and clears the builder.
using THtTextCallback = std::function<void(THtSAXXMLParser& Sender, TFastString& FS)>;

class THtSAXXMLParser {
public:
  static constexpr int kBufferSize = 0x40000;

  // Reads from the stream's current position; the stream must outlive the parser.
  THtSAXXMLParser(TStream& ASourceStream, THtmlEncoding AEncoding);
  // Opens the file and owns its stream (EFOpenError when it cannot).
  THtSAXXMLParser(const hstring& AFileName, THtmlEncoding AEncoding);
  THtSAXXMLParser(std::string_view utf8_file_name, THtmlEncoding AEncoding);
  static std::unique_ptr<THtSAXXMLParser> CreateFromFile(const hstring& AFileName, THtmlEncoding AEncoding) {
    return std::make_unique<THtSAXXMLParser>(AFileName, AEncoding);
  }
  ~THtSAXXMLParser();
  THtSAXXMLParser(const THtSAXXMLParser&) = delete;
  THtSAXXMLParser& operator=(const THtSAXXMLParser&) = delete;

  // The next event; false at the end of the stream.
  bool Next();
  // Reads on until Level falls below its present value, or to the end.
  void SkipLevel();
  // Appends the text of the rest of the document to FS: runs of white space
  // fold to one blank, p, td, div and li tags break lines (CR), head is left
  // out. AOnText (optional) gets FS at each block end and at the end.
  void ExtractText(TFastString& FS, const THtTextCallback& AOnText = nullptr);

  // Whole-item mode when above kBufferSize: the largest text or tag, in bytes,
  // the buffer may grow to hold. Set it before the first Next.
  int64_t MaxItemSize = 0;
  // The last "Incorrect XML" came from an item longer than MaxItemSize.
  bool ItemTooLong() const noexcept { return FItemTooLong; }

  // Stream offset of the next unread byte, counted from where reading began.
  int64_t Position() const noexcept { return FBufPosition + FBufStart; }
  hstring GetAttr(const hstring& AttrName) const { return FAttributes.GetAttribute(AttrName); }

  // The event and its data; read them, do not write.
  THtSAXEventType FLastEvent = seTagEnd;
  hstring FTag;                    // name of the current start or end tag
  hstring FTagNS;                  // FTag without the prefix up to and including the first ':'
  THtAttributes FAttributes{true}; // of the current start tag
  hstring FText;                   // of the last seText
  THtmlEncoding FEncoding;
  int FCodePage = 0; // for heANSI
  int Level = 0;     // element depth: +1 at each start tag, -1 at each end

private:
  enum TStep { stEvent, stSkipped, stMore };
  // What the full buffer cut last: a tag, or a text inside a comment or CDATA
  // section. A plain text needs no mark: its rest is a second text in a row.
  enum TCut { ctNone, ctTag, ctSection };
  struct TNameSlot;

  void Init();
  int ReadBuf();
  // A scan that meets the buffer end may stop there only when no more bytes
  // can come: at the end of the stream, or with the whole buffer taken and
  // no room left to grow it.
  bool AtLimit() const noexcept;
  int GrowthCap() const noexcept;
  // The item at FBufStart stops at the buffer end without the end of the
  // stream: raised in whole-item mode, remembered otherwise.
  void ItemCut(TCut AKind);
  // Refuses an item longer than MaxItemSize that ends at stop.
  void CheckLength(const uint8_t* stop);
  [[noreturn]] void RefuseItem();
  TStep AfterCut();
  void Reserve(int ASize);
  TStep Step(bool AStore);
  TStep ReadStartTag(bool AStore);
  TStep ReadEndTag(bool AStore);
  TStep ReadText();
  TStep SkipComment();
  TStep SkipDeclaration();
  void ProcessEncoding();
  [[noreturn]] void RaiseError(std::string_view Message, int64_t Offset);

  // Decoding (sax_decode.cpp).
  void SetName(const uint8_t* p, size_t n, hstring& Name, hstring* NameNS);
  void AddAttribute(const uint8_t* name, size_t name_len, const uint8_t* value, const uint8_t* value_end);
  hstring DecodeNew(const uint8_t* p, size_t n);
  void SortAttributes();
  void GetString(hstring& s, const uint8_t* p, size_t n);
  void AppendBytes(const uint8_t* p, size_t n);
  void AppendEscaped(const uint8_t* p, const uint8_t* end);
  void GetEscaped(hstring& s, const uint8_t* p, const uint8_t* end);
  void FlushWork(hstring& s);
  void ClearNames();

  TStream* FStream = nullptr;
  std::unique_ptr<TStream> FOwnStream;
  std::unique_ptr<uint8_t[]> FBuf;
  int FBufStart = 0;
  int FBufEnd = 0;
  int64_t FBufPosition = 0;
  int FBufSize = kBufferSize; // grows above kBufferSize only for one long item
  bool FEof = false;
  TCut FCut = ctNone;
  bool FItemTooLong = false;
  bool FHeader = false; // ProcessEncoding has run
  bool FFirstTag = true;
  bool FAttrsUnsorted = false;
  int FNameStart = 0; // raw name of the last tag, valid until the next refill
  int FNameLen = 0;
  std::u16string FWork; // texts with entities or CDATA are put together here
  std::unique_ptr<TNameSlot[]> FNames;
};

} // namespace ht
