#ifndef FILTER_COMMON_SRC_WIRE_BYTES_H_
#define FILTER_COMMON_SRC_WIRE_BYTES_H_

// Writes and reads the bytes of messages without message objects. The encoding is that of protocol
// buffers: a field is a tag and a value; a tag is the field's number and its wire type in the low
// three bits. Numbers and tags are varints: each byte has seven bits, the lowest bits come first,
// and the high bit is set in every byte except the last. A text or a message is written as its size
// and then its bytes.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

namespace FiltersCommon {

// The bytes of a tag as one number. The low byte is the first byte of the tag. If the tag has a
// second byte, that is the next byte of the number. No field of the schemas needs more.
using WireTag = unsigned;
constexpr WireTag wireTag(unsigned number, unsigned wireType) {
  const unsigned tag = number << 3 | wireType;
  return tag < 0x80 ? tag : (tag & 0x7f) | 0x80 | tag >> 7 << 8;
}

// A field. The wire type in a tag is 0 for a number, and 2 for bytes or a message.
template <unsigned number>
struct WireField {
  static_assert(number < 1 << 11, "the tag has more than two bytes");
  static constexpr WireTag kNumber = wireTag(number, 0);
  static constexpr WireTag kBytes = wireTag(number, 2);
};

// Writes fields into a buffer of its own. Small content stays in the object, which is on the stack.
class WireWriter {
 public:
  WireWriter() = default;
  WireWriter(const WireWriter&) = delete;
  WireWriter& operator=(const WireWriter&) = delete;

  const char* data() const { return reinterpret_cast<const char*>(begin_); }
  std::size_t size() const { return static_cast<std::size_t>(at_ - begin_); }
  void clear() { at_ = begin_; }

  template <unsigned n>
  void number(WireField<n>, std::uint64_t value) {
    makeRoom(kMaxTag + kMaxVarint);
    putTag(WireField<n>::kNumber);
    putVarint(value);
  }
  // A negative number is written as 64 bits.
  template <unsigned n>
  void signedNumber(WireField<n> field, std::int32_t value) {
    number(field, static_cast<std::uint64_t>(std::int64_t{value}));
  }
  template <unsigned n>
  void bytes(WireField<n>, const void* data, std::size_t size) {
    putBytes(WireField<n>::kBytes, data, size);
  }
  template <unsigned n>
  void clear(WireField<n>) {}  // nothing is there yet
  template <unsigned n, class Values, class ToWire>
  void appendNumbers(WireField<n> field, const Values& values, ToWire toWire) {
    for (const auto& value : values) number(field, toWire(value));
  }
  // Writes a message for each element; `write(element, writer)` writes its content.
  template <unsigned n, class Elements, class Write>
  void appendMessages(WireField<n> field, const Elements& elements, Write write) {
    for (const auto& element : elements) message(field, [&] { write(element, this); });
  }
  // Writes a message; `write()` writes its content.
  template <unsigned n, class Write>
  void message(WireField<n>, Write write) {
    makeRoom(kMaxTag + 1);
    putTag(WireField<n>::kBytes);
    ++at_;  // nearly all messages have fewer than 128 bytes, and their length takes one byte
    const std::size_t start = size();
    write();
    const std::size_t length = size() - start;
    if (length >= 0x80) return putLongLength(start, length);
    begin_[start - 1] = static_cast<std::uint8_t>(length);
  }
 private:
  static constexpr std::size_t kMaxTag = 2;
  static constexpr std::size_t kMaxVarint = 10;

  void makeRoom(std::size_t count) {
    if (static_cast<std::size_t>(end_ - at_) < count) grow(count);
  }
  void grow(std::size_t count);

  void putBytes(WireTag tag, const void* data, std::size_t size);
  void putLongLength(std::size_t start, std::size_t length);
  void putTag(WireTag tag) {
    *at_++ = static_cast<std::uint8_t>(tag);
    if (tag > 0xff) *at_++ = static_cast<std::uint8_t>(tag >> 8);
  }
  void putVarint(std::uint64_t value) {
    if (value >= 0x80) return putLongVarint(value);
    *at_++ = static_cast<std::uint8_t>(value);
  }
  void putLongVarint(std::uint64_t value);

  std::uint8_t block_[1024];
  std::unique_ptr<std::uint8_t[]> larger_;
  std::uint8_t* begin_ = block_;
  std::uint8_t* at_ = block_;
  std::uint8_t* end_ = block_ + sizeof block_;
};

// Reads bytes of the form that WireWriter writes: known fields in ascending order of their numbers,
// and every varint in its shortest form of at most 32 bits. An absent number is 0, and absent bytes
// are empty. Bytes of any other form make the reader fail. The caller then passes them to the
// parser of the message runtime. For example, a reader that is asked for the fields 1 and 2 fails
// if field 2 comes first, if field 1 comes twice, and if there is a field 3.
class WireReader {
 public:
  WireReader(const void* bytes, std::size_t size)
      : at_(static_cast<const std::uint8_t*>(bytes)), end_(at_ + size) {}

  const char* data() const { return reinterpret_cast<const char*>(at_); }
  std::size_t size() const { return static_cast<std::size_t>(end_ - at_); }

  // True if all bytes were read and had the expected form.
  bool finished() const { return at_ == end_ && !failed_; }
  // Like finished(), but a zero byte, such as the last byte of a buffer, also ends the bytes.
  bool finishedOrZero() const { return !failed_ && (at_ == end_ || *at_ == 0); }
  void fail() {
    failed_ = true;
    at_ = end_;
  }
  // The caller refuses a value. This reader then fails, and the bytes are parsed as a message.
  // MessageReader throws in this case.
  void refuse(const char*) { fail(); }

  template <unsigned n>
  bool hasNumber(WireField<n>) const {
    return isNext<WireField<n>::kNumber>();
  }
  template <unsigned n>
  std::uint32_t number(WireField<n> field) {
    return hasNumber(field) ? (skipTag<WireField<n>::kNumber>(), takeVarint()) : 0;
  }
  template <unsigned n>
  bool hasBytes(WireField<n>) const {
    return isNext<WireField<n>::kBytes>();
  }
  template <unsigned n>
  WireReader bytes(WireField<n> field) {
    if (!hasBytes(field)) return WireReader(at_, 0);
    skipTag<WireField<n>::kBytes>();
    return takeSized();
  }

  // The elements of a repeated field, for a range-for loop that reads each element once. All
  // elements are found at once, so that size() is known and the next field can be read.
  template <unsigned n, class Element>
  class Repeated;
  template <unsigned n>
  auto numbers(WireField<n>) {
    return Repeated<n, std::uint32_t>(this);
  }
  template <unsigned n>
  auto messages(WireField<n>) {
    return Repeated<n, WireReader>(this);
  }
 private:
  template <WireTag tag>
  bool isNext() const {
    if constexpr (tag > 0xff) {
      return size() > 1 && at_[0] == (tag & 0xff) && at_[1] == tag >> 8;
    } else {
      return at_ != end_ && *at_ == tag;
    }
  }
  template <WireTag tag>
  void skipTag() {
    at_ += tag > 0xff ? 2 : 1;
  }
  std::uint32_t takeVarint() { return at_ != end_ && *at_ < 0x80 ? *at_++ : takeLongVarint(); }
  std::uint32_t takeLongVarint();
  void skipVarint() {
    at_ = at_ != end_ && *at_ < 0x80 ? at_ + 1 : skipLongVarint(at_, end_);
    if (at_ == nullptr) fail();
  }
  // Reads a number that skipVarint() would skip.
  std::uint32_t takeKnownVarint() {
    std::uint32_t value = *at_ & 0x7fu;
    for (int shift = 7; *at_++ >= 0x80; shift += 7) value |= (*at_ & 0x7fu) << shift;
    return value;
  }
  // The end of the number, or null if it has another form.
  static const std::uint8_t* skipLongVarint(const std::uint8_t* at, const std::uint8_t* end);
  WireReader takeSized() {
    const std::size_t count = takeVarint();
    if (count > size()) return fail(), *this;
    at_ += count;
    return WireReader(at_ - count, count);
  }

  const std::uint8_t* at_;
  const std::uint8_t* end_;
  bool failed_ = false;
};

template <unsigned n, class Element>
class WireReader::Repeated {
 public:
  class Iterator {
   public:
    Iterator(const WireReader& in, std::size_t left) : in_(in), left_(left) {}
    Element operator*() { return take(&in_); }  // and goes on
    Iterator& operator++() { return --left_, *this; }
    bool operator!=(const Iterator& other) const { return left_ != other.left_; }
   private:
    WireReader in_;
    std::size_t left_;
  };

  explicit Repeated(WireReader* in) : first_(*in) {
    for (; in->isNext<kTag>(); ++size_) {
      in->skipTag<kTag>();
      kOfNumbers ? in->skipVarint() : static_cast<void>(in->takeSized());
      if (in->failed_) break;  // this element is not read
    }
  }
  std::size_t size() const { return size_; }
  Iterator begin() const { return {first_, size_}; }
  Iterator end() const { return {first_, 0}; }
 private:
  static constexpr bool kOfNumbers = std::is_same_v<Element, std::uint32_t>;
  static constexpr WireTag kTag = kOfNumbers ? WireField<n>::kNumber : WireField<n>::kBytes;

  static Element take(WireReader* in) {
    in->skipTag<kTag>();
    if constexpr (kOfNumbers) {
      return in->takeKnownVarint();
    } else {
      return in->takeSized();
    }
  }

  WireReader first_;
  std::size_t size_ = 0;
};

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_WIRE_BYTES_H_
