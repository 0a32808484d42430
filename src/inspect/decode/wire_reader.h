#ifndef FILTER_INSPECT_SRC_DECODE_WIRE_READER_H_
#define FILTER_INSPECT_SRC_DECODE_WIRE_READER_H_

// Where the fields of messages stand in their bytes, which the message runtime does not tell. What
// they mean is for the runtime to say; this only goes the same way.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace FiltersInspect {

// How the value of a field is written: the low three bits of its tag.
enum WireType : std::uint32_t {
  kVarint = 0,
  kFixed64 = 1,
  kLength = 2,  // a length, and as many bytes
  kGroupStart = 3,
  kGroupEnd = 4,
  kFixed32 = 5
};

struct WireField {
  std::uint32_t number = 0;  // 0 as long as no tag could be read
  std::uint32_t wire_type = 0;
  std::size_t begin = 0;  // of the tag
  std::size_t value = 0;  // behind the tag, and behind the length
  std::size_t end = 0;
  std::uint64_t varint = 0;  // the value of a kVarint
  bool plain = false;        // nothing of it could be written in fewer bytes
};

// The fields of one message, one after the other, without a look into them.
class WireReader {
 public:
  // The runtime follows messages and groups within each other only so deep.
  static constexpr int kDepth = 100;

  // Of bytes[begin, end). `depth` is how many levels may follow. Releases of the runtime differ in
  // how long they let tags and lengths be, and in what they make of a message that overruns the one
  // around it: `lenient` says that this runtime read the bytes to their end.
  WireReader(std::string_view bytes, std::size_t begin, std::size_t end, int depth, bool lenient)
      : bytes_(bytes), position_(begin), end_(end), depth_(depth), lenient_(lenient) {}

  // The next field; false at the end, and where nothing more can be read. A field that overruns its
  // message ends with it and is the last one.
  bool next(WireField* field);

  bool broken() const { return broken_; }
  // Behind the last field, or at the field that could not be read.
  std::size_t position() const { return position_; }

  // A number of up to ten bytes.
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

#endif  // FILTER_INSPECT_SRC_DECODE_WIRE_READER_H_
