#ifndef FILTER_INSPECT_SRC_DECODE_MESSAGE_CHECK_H_
#define FILTER_INSPECT_SRC_DECODE_MESSAGE_CHECK_H_

// Reports what one message loses, in two steps. The first step looks only at the bytes. The second
// compares the message with what the library makes of it. The code here knows no class and no
// field, because it asks descriptors and the library.

#include <google/protobuf/message.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "decode_findings.h"
#include "wire_reader.h"

namespace FiltersInspect {

// Checks a message and its bytes.
class MessageCheck {
 public:
  using Descriptor = google::protobuf::Descriptor;
  using Field = google::protobuf::FieldDescriptor;
  // Called for each message inside this one. The part's `index` is the position among the messages
  // of the same field. Returns whether the walk goes on.
  using Visit = std::function<bool(const Field& field, const MessagePart& part)>;
  // Lets the library read the first message and write the second one.
  using Echo =
      std::function<void(const google::protobuf::Message& in, google::protobuf::Message* out)>;

  explicit MessageCheck(const Descriptor* descriptor);

  // Goes through the bytes and reports what can be seen from them alone. Returns false if the bytes
  // break off.
  bool walk(std::string_view bytes, const MessagePart& part, int depth, bool lenient,
            DecodeFindings* findings, const Visit& visit = nullptr);

  // Reports differences between what was received and what is kept. Call walk() before this
  // function. `echo` says what is kept of one element of a repeated number. Without `echo`,
  // repeated numbers are not compared.
  void compare(const google::protobuf::Message& in, const google::protobuf::Message& out,
               const MessagePart& part, DecodeFindings* findings, const Echo& echo = nullptr);

  // Says that the caller has a value for this field, so that the field is not reported as missing.
  void assume(int fieldNumber);

  // True if the bytes broke off inside the message. Then nothing is reported about the message's
  // last part, and nothing is called missing.
  bool isBroken() const { return broken_; }

  // Whether the walk found the field, and the place of its last occurrence.
  bool hasCome(int fieldNumber) const;
  MessagePart partOf(int fieldNumber, const MessagePart& outer) const;
 private:
  struct Occurrences {
    std::size_t count = 0;
    bool assumed = false;
    ByteRange last;
    std::vector<ByteRange> elements;  // for repeated numbers
    ByteRange hull() const;
  };

  void note(const WireField& wire, const Field& field, const MessagePart& part,
            DecodeFindings* findings);
  void noteNumber(const Field& field, std::uint64_t varint, bool plain, const MessagePart& part,
                  DecodeFindings* findings);
  bool notePacked(const WireField& wire, const Field& field, std::string_view bytes,
                  const MessagePart& part, DecodeFindings* findings);
  void noteEnd(std::size_t at, std::string_view bytes, const MessagePart& part,
               DecodeFindings* findings);
  void noteDropped(const WireField& wire, bool isKnown, const MessagePart& part,
                   DecodeFindings* findings);
  void noteMissing(const MessagePart& part, DecodeFindings* findings);
  void compareBytes(const Field& field, const google::protobuf::Message& in,
                    const google::protobuf::Message& out, const MessagePart& part,
                    DecodeFindings* findings);
  void compareOne(const Field& field, const google::protobuf::Message& in,
                  const google::protobuf::Message& out, const MessagePart& part,
                  DecodeFindings* findings);
  void compareAll(const Field& field, const google::protobuf::Message& in,
                  const google::protobuf::Message& out, const MessagePart& part,
                  DecodeFindings* findings, const Echo& echo);
  std::vector<std::uint32_t> compareElements(const Field& field,
                                             const google::protobuf::Message& in,
                                             const std::vector<std::uint32_t>& came,
                                             const MessagePart& all, DecodeFindings* findings,
                                             const Echo& echo);

  const Descriptor* descriptor_;
  std::vector<const Field*> by_number_;  // null for a number that no field has
  std::vector<Occurrences> fields_;
  bool broken_ = false;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_DECODE_MESSAGE_CHECK_H_
