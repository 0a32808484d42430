#ifndef FILTER_COMMON_FUZZ_FUZZ_H_
#define FILTER_COMMON_FUZZ_FUZZ_H_

// Helpers of all harnesses. Each harness defines LLVMFuzzerTestOneInput(). libFuzzer calls it with
// inputs that it makes up, and replay.cpp calls it with files. A broken promise stops the process.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#define FUZZ_CHECK(condition) \
  ((condition) ? void() : fuzz::fail(__FILE__, __LINE__, "does not hold: " #condition))
// `fault` is a text that says what is wrong, or is empty.
#define FUZZ_NO_FAULT(fault) \
  if (const std::string text = (fault); !text.empty()) fuzz::fail(__FILE__, __LINE__, text)

namespace fuzz {

[[noreturn]] inline void fail(const char* file, int line, const std::string& what) {
  std::fprintf(stderr, "%s:%d: %s\n", file, line, what.c_str());
  std::abort();
}

// Reads numbers from an input. After the end of the input every number is zero.
class ByteReader {
 public:
  ByteReader(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

  bool empty() const { return left_ == 0; }
  std::uint8_t u8() { return empty() ? std::uint8_t{0} : (--left_, *data_++); }
  std::uint32_t u32() {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | u8();
    return value;
  }
  bool flag() { return (u8() & 1) != 0; }
  unsigned below(std::size_t limit) { return static_cast<unsigned>(u8() % limit); }
  // Mostly returns a number below the limit, but sometimes any number. For codes, stages and ids.
  std::uint32_t mostlyBelow(std::size_t limit) {
    const unsigned value = u8();
    return value == 255 ? u32() : static_cast<std::uint32_t>(value % limit);
  }
 private:
  const std::uint8_t* data_;
  std::size_t left_;
};

}  // namespace fuzz

#endif  // FILTER_COMMON_FUZZ_FUZZ_H_
