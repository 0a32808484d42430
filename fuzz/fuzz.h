#ifndef FILTER_COMMON_FUZZ_FUZZ_H_
#define FILTER_COMMON_FUZZ_FUZZ_H_

// What the harnesses share. Each defines LLVMFuzzerTestOneInput(): libFuzzer calls it with inputs
// that it makes up, replay.cpp with files. A broken promise stops the process.

#include <filter_common/filter_serialized.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#define FUZZ_CHECK(condition) ((condition) ? void() : fuzz::fail(__FILE__, __LINE__, #condition))

namespace fuzz {

[[noreturn]] inline void fail(const char* file, int line, const char* condition) {
  std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
  std::abort();
}

// Takes an input apart; behind its end everything reads as zero.
class ByteReader {
 public:
  ByteReader(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

  bool empty() const { return left_ == 0; }
  std::uint8_t u8() { return empty() ? std::uint8_t{0} : (--left_, *data_++); }
  std::uint16_t u16() {
    const int high = u8();
    return static_cast<std::uint16_t>(high << 8 | u8());
  }
  std::uint32_t u32() {
    const std::uint32_t high = u16();
    return high << 16 | u16();
  }
  bool flag() { return (u8() & 1) != 0; }
  unsigned below(unsigned limit) { return u8() % limit; }
  // A small number most of the time, any number now and then: codes, stages, ids.
  std::uint32_t mostlyBelow(unsigned limit) {
    const unsigned value = u8();
    return value == 255 ? u32() : value % limit;
  }

  template <class Address>
  Address address() {
    std::uint8_t bytes[sizeof(Address)];
    for (std::uint8_t& byte : bytes) byte = u8();
    Address address;
    std::memcpy(&address, bytes, sizeof address);
    return address;
  }
 private:
  const std::uint8_t* data_;
  std::size_t left_;
};

template <class T>
std::string bytesOf(const T& object) {
  std::string bytes = "to be replaced";
  object.serialize(&bytes);
  return bytes;
}

template <class T>
std::string textOf(const T& object) {
  std::ostringstream os;
  os << object;
  return os.str();
}

// An entry or a group built from outside, or null and the text of the one exception permitted.
template <class T>
struct Built {
  std::unique_ptr<T> object;
  std::string refusal;
};

template <class T, class Make>
Built<T> build(Make make) {
  try {
    return {make(), ""};
  } catch (const std::invalid_argument& refusal) {
    FUZZ_CHECK(std::strncmp(refusal.what(), "ActionMplsPortSet: ", 19) == 0);
    return {nullptr, refusal.what()};
  }
}

template <class T>
bool operator==(const Built<T>& a, const Built<T>& b) {
  if (a.object == nullptr || b.object == nullptr) {
    return a.object == b.object && a.refusal == b.refusal;
  }
  return *a.object == *b.object && bytesOf(*a.object) == bytesOf(*b.object);
}

// What holds for every entry and group, wherever it comes from: it equals its copy and what is
// rebuilt from its bytes, and those print and serialize as it does.
template <class T>
void checkObject(const T& object) {
  const std::string bytes = bytesOf(object);
  const std::string text = textOf(object);
  const auto checkTwin = [&](const T& twin) {
    FUZZ_CHECK(object == twin && twin == object);
    FUZZ_CHECK(bytesOf(twin) == bytes);
    FUZZ_CHECK(textOf(twin) == text);
  };
  checkTwin(object);
  checkTwin(T(object));
  checkTwin(T(bytes));

  FiltersCommon::FiltersSerialized buffer;
  object.serialize(&buffer);
  FUZZ_CHECK(std::string(buffer.data(), buffer.size()) == bytes + '\0');
  checkTwin(T(buffer));
}

// Bytes of another process, which need not be those of an entry or a group at all. However the
// library goes about reading them, what comes out is what the protocol-buffer runtime makes of them
// as one message, and `convert` of that: from a string as from a buffer, whole or cut short.
template <class T, class Message, class Convert>
void checkBytes(const std::string& bytes, Convert convert) {
  const auto byMessage = [&convert](const std::string& content, bool* whole) {
    return build<T>([&] {
      Message message;
      *whole = message.ParsePartialFromString(content);
      return convert(message);
    });
  };
  const auto byString = [](const std::string& content) {
    return build<T>([&] { return std::make_unique<T>(content); });
  };
  bool whole = false;
  const Built<T> built = byString(bytes);
  FUZZ_CHECK(built == byMessage(bytes, &whole));

  // A buffer holds one zero byte more. It ends what is whole; in what is cut short it may pass for
  // the byte that lacks.
  const Built<T> byBuffer = build<T>([&] {
    FiltersCommon::FiltersSerialized buffer(bytes);
    return std::make_unique<T>(buffer);
  });
  if (whole) FUZZ_CHECK(byBuffer == built);
  FUZZ_CHECK(byBuffer == byString(bytes + '\0'));
  FUZZ_CHECK(byBuffer == byMessage(bytes + '\0', &whole));

  if (built.object != nullptr) checkObject(*built.object);
}

}  // namespace fuzz

#endif  // FILTER_COMMON_FUZZ_FUZZ_H_
