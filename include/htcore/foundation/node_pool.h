// The node pool: where parsers put the small blocks of the trees they build.
//
// While a TNodePoolScope is alive on a thread, node-tree objects (nodes,
// child lists, attribute sets and their arrays, and the short texts made
// with hstring::ForTree) come from 64 KiB chunks by
// bumping a pointer, so a parsed element costs no malloc and sits next to
// its neighbours in memory. Outside a scope they come from operator new.
// Either way each block is freed on its own, from any thread, and a block
// may outlive the document it was made for:
//
//   {
//     ht::TNodePoolScope pool;            // the readers open one themselves
//     auto* n = new ht::THtXMLNode();     // from the pool
//     delete n;                           // back to its chunk
//   }
//
// TPoolAllocator<T> puts the arrays of a std::vector in the pool the same way.
#pragma once

#include <cstddef>
#include <new>

namespace ht {

namespace detail {
// A block of Size bytes: from the pool inside a scope (Size up to
// kPoolMaxBlock), else from operator new.
void* PoolAlloc(std::size_t Size);
// Frees a block of either origin; Size is the size it was made with.
void PoolFree(void* P, std::size_t Size) noexcept;
// For the texts of a tree (hstring::ForTree): a block from the pool inside a
// scope, else null, and the caller takes malloc.
void* PoolAllocOrNull(std::size_t Size) noexcept;
// Frees P and answers true when it is a pool block; false leaves it alone.
bool PoolFreeIfPooled(void* P, std::size_t Size) noexcept;
inline constexpr std::size_t kPoolMaxBlock = 1024;
inline constexpr std::size_t kPoolChunk = std::size_t(64) << 10;

// What the pool holds, for tests and the memory benchmarks.
struct TNodePoolStats {
  std::size_t ChunksHeld; // chunks not yet given back
  bool Enabled;           // false where the address range could not be reserved
};
TNodePoolStats NodePoolStats() noexcept;
} // namespace detail

// Puts the node-tree allocations of this thread in the pool while alive.
// Scopes nest.
class TNodePoolScope {
public:
  TNodePoolScope() noexcept;
  ~TNodePoolScope();
  TNodePoolScope(const TNodePoolScope&) = delete;
  TNodePoolScope& operator=(const TNodePoolScope&) = delete;
};

template <class T> struct TPoolAllocator {
  using value_type = T;
  TPoolAllocator() noexcept = default;
  template <class U> TPoolAllocator(const TPoolAllocator<U>&) noexcept {}
  T* allocate(std::size_t n) { return static_cast<T*>(detail::PoolAlloc(n * sizeof(T))); }
  void deallocate(T* p, std::size_t n) noexcept { detail::PoolFree(p, n * sizeof(T)); }
  template <class U> bool operator==(const TPoolAllocator<U>&) const noexcept { return true; }
};

// Class-level operators for the pooled classes; over-aligned subclasses
// bypass the pool.
#define HT_POOLED_CLASS                                                                                      \
  static void* operator new(std::size_t n) { return ::ht::detail::PoolAlloc(n); }                            \
  static void operator delete(void* p, std::size_t n) noexcept { ::ht::detail::PoolFree(p, n); }             \
  static void* operator new(std::size_t n, std::align_val_t a) { return ::operator new(n, a); }              \
  /* the sized aligned global form needs -fsized-deallocation on some compilers */                          \
  static void operator delete(void* p, std::size_t, std::align_val_t a) noexcept { ::operator delete(p, a); }

} // namespace ht
