#ifndef FILTER_INSPECT_SRC_DECODE_WIRE_SCANNER_H_
#define FILTER_INSPECT_SRC_DECODE_WIRE_SCANNER_H_

// Finds the positions of fields in the bytes of messages. The message runtime does not report these
// positions. The scanner must read the bytes in the same way as the runtime.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace FiltersInspect {

// The encoding of a field's value: the low three bits of its tag.
enum WireType : std::uint32_t {
  kVarint = 0,
  kFixed64 = 1,
  kLength = 2,  // a length, and as many bytes
  kGroupStart = 3,
  kGroupEnd = 4,
  kFixed32 = 5
};

struct WireField {
  std::uint32_t number = 0;  // 0 until a tag has been read
  std::uint32_t wire_type = 0;
  std::size_t begin = 0;  // where the tag begins
  std::size_t value = 0;  // where the value begins, after tag and length
  std::size_t end = 0;
  std::uint64_t varint = 0;  // the value of a kVarint
  bool plain = false;        // true if no number in it could be written in fewer bytes
};

// Reads the fields of one message, one after the other. Does not look inside a field.
class WireScanner {
 public:
  // The runtime follows nested messages and groups down to this depth.
  static constexpr int kDepth = 100;

  // Reads bytes[begin, end). `depth` is the number of further levels that are allowed. Releases of
  // the runtime accept tags and lengths of different sizes, and differ in how they read a message
  // that is longer than the message around it. `lenient` is true if this runtime has read the bytes
  // to their end.
  WireScanner(std::string_view bytes, std::size_t begin, std::size_t end, int depth, bool lenient)
      : bytes_(bytes), position_(begin), end_(end), depth_(depth), lenient_(lenient) {}

  // Reads the next field. Returns false at the end, or if no more can be read. A field that is
  // longer than the rest of the message is cut off, and is the last field.
  bool next(WireField* field);

  bool broken() const { return broken_; }
  // The position after the last field, or the position of the field that cannot be read.
  std::size_t position() const { return position_; }

  // Reads a number of up to ten bytes.
  bool readVarint(std::uint64_t* value, bool* plain);
 private:
  bool readTag(WireField* field);
  bool readLength(std::size_t* length, bool* plain);
  bool readValue(WireField* field);
  bool skip(std::size_t count);
  bool skipGroup(std::uint32_t number);

  std::string_view bytes_;
  std::size_t position_, end_;
  int depth_;
  bool lenient_;
  bool broken_ = false;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_DECODE_WIRE_SCANNER_H_
