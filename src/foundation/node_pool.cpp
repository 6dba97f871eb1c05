// The node pool.
//
// Why this design. A parsed element used to cost 4-6 heap blocks (node, child
// list and its array, attribute set and its array, text), and about half of
// an XML or JSON parse went to malloc and free, with the trees' blocks
// scattered over the heap. The candidates measured:
//   - a faster general allocator behind the classes (mimalloc's explicit API):
//     Debian's library exports malloc itself, so linking it would replace the
//     host's allocator; and it still pays one allocation per block;
//   - a per-document arena freed with its root: fast, but a node moved into
//     another tree or freed alone would dangle, which the tree's ownership
//     rules forbid;
//   - what is here: bump allocation from 64 KiB chunks while a parser runs,
//     each chunk counting its live blocks and going back when the count
//     reaches zero. A block is freed on its own from any thread, and a node
//     that leaves its document keeps only its own chunk alive.
// The chunks lie in one reserved address range, so telling a pooled block
// from an operator new one is a range check: no header, no flag in the
// objects, and blocks made outside a parse need no pool at all. Freed space
// is not reused until its whole chunk is free; parsers make trees whose
// blocks die together, which is the case this serves.
//
// Short texts of a tree (names, values, contents up to kPoolMaxBlock bytes)
// lie in the chunks too when the reader makes them with hstring::ForTree:
// a text cost a malloc and a free, more than its node. They stay counted
// strings: a copy shares the block, so a text copied out of a document keeps
// its chunk mapped until the copy goes, at worst 64 KiB for a short text.
// Texts made any other way (temporaries, edits) still come from malloc, so
// they do not pin chunks.
//
// Under AddressSanitizer free blocks and unused chunk space are poisoned, so
// a use after free of a pooled node is reported as for a heap block, and each
// chunk is a root region for the leak checker, which sees the strings that
// pooled nodes hold.
#include "htcore/foundation/node_pool.h"
#include "foundation/node_pool_batch.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <sys/mman.h>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define HT_POOL_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HT_POOL_ASAN 1
#endif
#endif

#ifdef HT_POOL_ASAN
#include <sanitizer/asan_interface.h>
#include <sanitizer/lsan_interface.h>
#define HT_POISON(p, n) ASAN_POISON_MEMORY_REGION(p, n)
#define HT_UNPOISON(p, n) ASAN_UNPOISON_MEMORY_REGION(p, n)
#else
#define HT_POISON(p, n) ((void)(p), (void)(n))
#define HT_UNPOISON(p, n) ((void)(p), (void)(n))
#endif

namespace ht {

namespace {

constexpr size_t kChunk = detail::kPoolChunk;
constexpr size_t kHead = 64; // the live count, alone on its cache line
#ifdef HT_POOL_ASAN
constexpr size_t kReserve = size_t(4) << 30;
#else
constexpr size_t kReserve = size_t(32) << 30;
#endif
// Freed chunks kept mapped for the next parse (64 MiB); the rest go back to
// the system. Giving one back costs a madvise call of about 0.35 ms on this
// kind of machine, and parsing again faults its pages in anew: with 16 MiB, a
// 20 MB JSON tree spent twice its parse time in the kernel on each round.
constexpr size_t kKeepFree = 1024;
// Chunks beyond those go back to the system in batches: the call costs about
// the same for one chunk as for a run of neighbours, and a freed tree's chunks
// mostly are neighbours.
constexpr size_t kGiveBatch = 64;
// A chunk's count starts here and drops by one per freed block; the thread
// that fills it subtracts the rest (bias minus blocks made) when it moves on,
// so the count reaches zero exactly when the last block is freed.
constexpr int64_t kBias = int64_t(1) << 40;

struct TChunkHead {
  std::atomic<int64_t> Live;
};

struct TRange {
  uintptr_t Base = 0;
  std::mutex Lock;
  size_t Used = 0;         // chunks ever handed out
  std::vector<char*> Free;    // handed back, pages resident (at most kKeepFree)
  std::vector<char*> Pending; // handed back beyond those, pages still resident
  std::vector<char*> Given;   // handed back, pages returned to the system
  std::atomic<size_t> Held{0};
  bool Failed = false;
};

// Read without the lock by PoolFree: set once before the first chunk exists.
std::atomic<uintptr_t> g_base{0};
std::atomic<size_t> g_size{0};

TRange& range() {
  static TRange* r = new TRange; // never freed: blocks may be freed during exit
  return *r;
}

char* acquire_chunk() {
  TRange& r = range();
  char* c = nullptr;
  {
    std::lock_guard<std::mutex> lock(r.Lock);
    if (!r.Base && !r.Failed) {
      void* m = mmap(nullptr, kReserve + kChunk, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
      if (m == MAP_FAILED) {
        r.Failed = true;
      } else {
        r.Base = (reinterpret_cast<uintptr_t>(m) + kChunk - 1) & ~(kChunk - 1);
        g_size.store(kReserve, std::memory_order_relaxed);
        g_base.store(r.Base, std::memory_order_release);
      }
    }
    if (r.Failed)
      return nullptr;
    // Resident chunks first: a given-back one faults its pages in again.
    std::vector<char*>* from = !r.Free.empty() ? &r.Free : !r.Pending.empty() ? &r.Pending : &r.Given;
    if (!from->empty()) {
      c = from->back();
      from->pop_back();
    } else if (r.Used < kReserve / kChunk) {
      c = reinterpret_cast<char*>(r.Base + r.Used * kChunk);
      ++r.Used;
    } else {
      return nullptr;
    }
  }
  r.Held.fetch_add(1, std::memory_order_relaxed);
#ifdef HT_POOL_ASAN
  __lsan_register_root_region(c, kChunk);
  HT_POISON(c + kHead, kChunk - kHead);
#endif
  new (c) TChunkHead{kBias};
  return c;
}

void release_chunk(char* c) {
  TRange& r = range();
#ifdef HT_POOL_ASAN
  __lsan_unregister_root_region(c, kChunk);
#endif
  r.Held.fetch_sub(1, std::memory_order_relaxed);
  std::lock_guard<std::mutex> lock(r.Lock);
  // Only what lies beyond the resident reserve goes back, so that a run of
  // small documents after a large one reuses resident chunks instead of
  // giving back and faulting in one chunk per document.
  if (r.Free.size() < kKeepFree) {
    r.Free.push_back(c);
    return;
  }
  r.Pending.push_back(c);
  if (r.Pending.size() < kGiveBatch)
    return;
  std::sort(r.Pending.begin(), r.Pending.end());
  for (size_t i = 0; i < r.Pending.size();) {
    size_t j = i + 1;
    while (j < r.Pending.size() && r.Pending[j] == r.Pending[j - 1] + kChunk)
      ++j;
    madvise(r.Pending[i], (j - i) * kChunk, MADV_DONTNEED);
    i = j;
  }
  r.Given.insert(r.Given.end(), r.Pending.begin(), r.Pending.end());
  r.Pending.clear();
}

struct TThreadPool {
  char* Next = nullptr;
  char* End = nullptr;
  char* Chunk = nullptr;
  int64_t Made = 0;
  int Depth = 0;

  ~TThreadPool() { Retire(); }

  void Retire() {
    if (!Chunk)
      return;
    auto* h = reinterpret_cast<TChunkHead*>(Chunk);
    int64_t rest = kBias - Made;
    if (h->Live.fetch_sub(rest, std::memory_order_acq_rel) == rest)
      release_chunk(Chunk);
    Chunk = Next = End = nullptr;
    Made = 0;
  }

  bool Refill() {
    Retire();
    Chunk = acquire_chunk();
    if (!Chunk)
      return false;
    Next = Chunk + kHead;
    End = Chunk + kChunk;
    return true;
  }
};

thread_local TThreadPool t_pool;

// The frees of a batch that wait for their chunk (see node_pool_batch.h).
// Trivially destructible, so reaching it costs no guard.
struct TFreeBatch {
  char* Chunk;
  int64_t Count;
  int Depth;
};
constinit thread_local TFreeBatch t_batch{nullptr, 0, 0};

void drop_blocks(char* c, int64_t n) noexcept {
  if (reinterpret_cast<TChunkHead*>(c)->Live.fetch_sub(n, std::memory_order_acq_rel) == n)
    release_chunk(c);
}

} // namespace

namespace detail {

void* PoolAlloc(std::size_t Size) {
  TThreadPool& t = t_pool;
  if (t.Depth > 0 && Size <= kPoolMaxBlock) {
    size_t n = Size ? (Size + 7) & ~size_t(7) : 8;
    if (static_cast<size_t>(t.End - t.Next) >= n || t.Refill()) {
      char* p = t.Next;
      t.Next += n;
      ++t.Made;
      HT_UNPOISON(p, n);
      return p;
    }
  }
  return ::operator new(Size);
}

void* PoolAllocOrNull(std::size_t Size) noexcept {
  TThreadPool& t = t_pool;
  if (t.Depth == 0 || Size > kPoolMaxBlock)
    return nullptr;
  size_t n = (Size + 7) & ~size_t(7);
  if (static_cast<size_t>(t.End - t.Next) < n && !t.Refill())
    return nullptr;
  char* p = t.Next;
  t.Next += n;
  ++t.Made;
  HT_UNPOISON(p, n);
  return p;
}

bool PoolFreeIfPooled(void* P, std::size_t Size) noexcept {
  uintptr_t off = reinterpret_cast<uintptr_t>(P) - g_base.load(std::memory_order_acquire);
  if (off >= g_size.load(std::memory_order_relaxed))
    return false;
  HT_POISON(P, Size ? (Size + 7) & ~size_t(7) : 8);
  (void)Size;
  char* c = reinterpret_cast<char*>(P) - (off & (kChunk - 1));
  TFreeBatch& b = t_batch;
  if (b.Depth == 0) {
    drop_blocks(c, 1);
  } else if (c == b.Chunk) {
    ++b.Count;
  } else {
    if (b.Chunk)
      drop_blocks(b.Chunk, b.Count);
    b.Chunk = c;
    b.Count = 1;
  }
  return true;
}

void PoolFreeBatchBegin() noexcept { ++t_batch.Depth; }

void PoolFreeBatchEnd() noexcept {
  TFreeBatch& b = t_batch;
  if (--b.Depth == 0 && b.Chunk) {
    char* c = b.Chunk;
    int64_t n = b.Count;
    b.Chunk = nullptr;
    b.Count = 0;
    drop_blocks(c, n);
  }
}

void PoolFree(void* P, std::size_t Size) noexcept {
  if (!PoolFreeIfPooled(P, Size))
    ::operator delete(P);
}

TNodePoolStats NodePoolStats() noexcept {
  TRange& r = range();
  return {r.Held.load(std::memory_order_relaxed), g_size.load(std::memory_order_relaxed) != 0};
}

} // namespace detail

TNodePoolScope::TNodePoolScope() noexcept { ++t_pool.Depth; }
TNodePoolScope::~TNodePoolScope() { --t_pool.Depth; }

} // namespace ht
