// The SAX reader's text extraction: the event loop without names or
// attributes, tag names compared on the raw bytes.
#include "document/sax_internal.h"

namespace ht {

namespace {

bool name_is(const uint8_t* p, int n, std::string_view lower) {
  if (static_cast<size_t>(n) != lower.size())
    return false;
  for (int i = 0; i < n; ++i)
    if ((p[i] | 0x20) != static_cast<uint8_t>(lower[static_cast<size_t>(i)]))
      return false;
  return true;
}

bool breaks_line(const uint8_t* p, int n) {
  return name_is(p, n, "p") || name_is(p, n, "td") || name_is(p, n, "div") || name_is(p, n, "li");
}

// Beyond this many units the text goes to the callback even inside a block,
// so that a document without block tags is still read in constant memory.
constexpr int kFlushUnits = 32768;

} // namespace

void THtSAXXMLParser::ExtractText(TFastString& FS, const THtTextCallback& AOnText) {
  // The last unit appended, kept here because the callback may clear FS.
  // An empty builder counts as ending in a blank: no break or blank leads.
  char16_t last = FS.IsEmpty() ? u' ' : FS.LastChar();
  bool pending = false;
  int head_level = -1; // inside head while Level stays at or above this
  auto deliver = [&] {
    if (AOnText && pending) {
      pending = false;
      AOnText(*this, FS);
    }
  };
  for (;;) {
    if (FBufStart >= FBufEnd && ReadBuf() == 0)
      break;
    TStep r = Step(false);
    if (r == stMore) {
      ReadBuf();
      continue;
    }
    if (r == stSkipped)
      continue;
    const uint8_t* name = FBuf.get() + FNameStart;
    if (head_level >= 0) {
      if (Level < head_level)
        head_level = -1;
      continue;
    }
    if (FLastEvent == seTagStart && name_is(name, FNameLen, "head")) {
      head_level = Level;
    } else if (FLastEvent != seText) {
      if (!breaks_line(name, FNameLen))
        continue;
      if (last >= 33) {
        FS.AddChar(u'\r');
        last = u'\r';
        pending = true;
      }
      deliver();
    } else {
      const char16_t* t = FText.c_str();
      size_t n = FText.size();
      size_t i = 0;
      while (i < n) {
        if (t[i] < 33) {
          while (i < n && t[i] < 33)
            ++i;
          if (last >= 33) {
            FS.AddChar(u' ');
            last = u' ';
            pending = true;
          }
          continue;
        }
        size_t b = i;
        while (i < n && t[i] >= 33)
          ++i;
        FS.Add(t + b, static_cast<ptrdiff_t>(i - b));
        last = t[i - 1];
        pending = true;
      }
      if (FS.GetTotalLen() >= kFlushUnits)
        deliver();
    }
  }
  deliver();
}

} // namespace ht
