#ifndef FILTER_COMMON_TESTS_MEMORY_CONTROL_H_
#define FILTER_COMMON_TESTS_MEMORY_CONTROL_H_

// Counts the memory of a program and of the libraries that it loads. Can also refuse memory. The
// header replaces operator new and delete. Include it in one source of a program without threads.

#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace memory {

inline long live = 0;         // allocations not yet freed
inline std::size_t held = 0;  // the bytes of these allocations, as the C library rounds them up
inline std::size_t peak = 0;  // the most bytes since the last restartPeak()

inline void restartPeak() { peak = held; }

inline bool refusing = false;
inline bool refusingOnce = false;
inline long allowed = 0;      // allocations before the first refusal; below 0 after it
inline void* last = nullptr;  // the last allocation before that refusal

// Lets the given number of allocations succeed. Then refuses one allocation, or all allocations
// until endRefusal(). endRefusal() returns whether memory was refused.
inline void refuseAfter(long allocations, bool once) {
  allowed = allocations;
  refusingOnce = once;
  refusing = true;
}
inline bool endRefusal() {
  refusing = false;
  return allowed < 0;
}

}  // namespace memory

// Not inlined, because otherwise g++ would warn that the free() below does not match new.
[[gnu::noinline]] void* operator new(std::size_t size) {
  using namespace memory;
  const bool refused = refusing && --allowed < 0 && (allowed == -1 || !refusingOnce);
  void* block = refused ? nullptr : std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  if (refusing && allowed >= 0) last = block;
  ++live;
  held += malloc_usable_size(block);
  peak = std::max(peak, held);
  return block;
}
// This operator does the same as the one of the C++ library, which sanitizers replace.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
  if (block == nullptr) return;
  --memory::live;
  memory::held -= malloc_usable_size(block);
  std::free(block);
}
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }

#endif  // FILTER_COMMON_TESTS_MEMORY_CONTROL_H_
