// Freeing a whole subtree: while a TPoolFreeBatch is alive on a thread, the
// blocks it frees into one chunk are counted here and reach the chunk's live
// count in one atomic step when the next block lies in another chunk or the
// outermost batch ends. A tree's blocks mostly lie chunk by chunk in the
// order they were made, so freeing a parsed tree costs one atomic operation
// per chunk instead of one per block. Delaying the decrement only keeps a
// chunk a little longer: it is still released exactly when its last block
// is freed, and frees on other threads or outside a batch are not affected.
#pragma once

namespace ht::detail {

void PoolFreeBatchBegin() noexcept;
void PoolFreeBatchEnd() noexcept;

class TPoolFreeBatch {
public:
  TPoolFreeBatch() noexcept { PoolFreeBatchBegin(); }
  ~TPoolFreeBatch() { PoolFreeBatchEnd(); }
  TPoolFreeBatch(const TPoolFreeBatch&) = delete;
  TPoolFreeBatch& operator=(const TPoolFreeBatch&) = delete;
};

} // namespace ht::detail
