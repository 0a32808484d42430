#ifndef FILTER_COMMON_TESTS_MEMORY_CONTROL_H_
#define FILTER_COMMON_TESTS_MEMORY_CONTROL_H_

// The memory of a program and of the libraries it loads, counted and refused on demand: this header
// replaces operator new and delete. Include it in one source of a program. Not for threads.

#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace memory {

inline long live = 0;         // allocations not yet freed
inline std::size_t held = 0;  // their bytes, as the C library rounds them
inline std::size_t peak = 0;  // the most bytes since the last restartPeak()

inline void restartPeak() { peak = held; }

// While an object lives, memory is refused after `allowed` allocations: once, or from then on.
class Refusal {
 public:
  Refusal(long allowed, bool fromThenOn) {
    left_ = allowed;
    again_ = fromThenOn;
    refused_ = 0;
  }
  ~Refusal() { left_ = -1; }
  Refusal(const Refusal&) = delete;
  Refusal& operator=(const Refusal&) = delete;

  // Ends it early; how often memory was refused.
  static long end() {
    left_ = -1;
    return refused_;
  }

  // Frees what was allocated last before the first refusal, for a caller who knows that nobody else
  // does.
  static void freeLast() { operator delete(last_); }

  static void allocated(void* block) {
    if (left_ >= 0 && refused_ == 0) last_ = block;
  }
  static bool refuses() {
    if (left_ < 0) return false;
    if (left_ > 0) {
      --left_;
      return false;
    }
    if (!again_) left_ = -1;
    ++refused_;
    return true;
  }
 private:
  inline static long left_ = -1;
  inline static bool again_ = false;
  inline static long refused_ = 0;
  inline static void* last_ = nullptr;
};

}  // namespace memory

// Inlined, free() would meet g++'s warning that it does not belong to new.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* block = memory::Refusal::refuses() ? nullptr : std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  memory::Refusal::allocated(block);
  ++memory::live;
  memory::held += malloc_usable_size(block);
  memory::peak = std::max(memory::peak, memory::held);
  return block;
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
