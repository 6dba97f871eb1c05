// The element sets of the HTML tree builder, looked up by tag hash.
#pragma once

#include "htcore/document/node.h"

#include <cstdint>
#include <string_view>

namespace ht::detail {

// Tags that the repair rules name one by one.
enum THtmlTagId : uint8_t {
  tiOther,
  tiTable,
  tiTr,
  tiTd,
  tiTh,
  tiTbody,
  tiThead,
  tiTfoot,
  tiP,
  tiLi,
  tiUl,
  tiOl,
  tiDl,
  tiDt,
  tiDd,
  tiBody,
  tiHead,
  tiHtml,
  tiA,
  tiDiv,
  tiSpan,
};

constexpr uint32_t Bit(THtmlTagId id) { return 1u << id; }

// Set membership flags.
enum : uint16_t {
  tsVoid = 1,
  tsBlock = 2,
  tsHead = 4,
  tsFormatting = 8,
  tsTableBarrier = 16,
  tsRowContent = 32,
  tsTableParts = 64,
};

struct THtmlTagInfo {
  THtmlTagId Id = tiOther;
  uint16_t Sets = 0;
};

// Name as stored (compared ignoring ASCII case) and RSHash of its lower-case form.
THtmlTagInfo HtmlTagInfo(std::u16string_view name, uint32_t hash) noexcept;
THtmlTagInfo HtmlTagInfo(std::u16string_view name) noexcept;

inline THtmlTagInfo HtmlTagInfo(const THtNode* n) noexcept {
  return HtmlTagInfo(n->FTag.view(), static_cast<uint32_t>(n->FTagHash));
}

} // namespace ht::detail
