#ifndef FILTER_INSPECT_SRC_DECODE_MESSAGE_CHECK_H_
#define FILTER_INSPECT_SRC_DECODE_MESSAGE_CHECK_H_

// Reports what one message loses when the library reads it. The first step examines only the bytes.
// The second step compares the message with the message that the library writes back. The code here
// has no list of classes and fields; it uses descriptors and calls the library.

#include <google/protobuf/message.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "decode_findings.h"
#include "wire_scanner.h"

namespace FiltersInspect {

// Checks a message and its bytes.
class MessageCheck {
 public:
  using Descriptor = google::protobuf::Descriptor;
  using Field = google::protobuf::FieldDescriptor;
  // Called for each message inside this one. The part's `index` is the position among the messages
  // of the same field. Returns true to continue the walk.
  using Visit = std::function<bool(const Field& field, const MessagePart& part)>;
  // Lets the library read the first message and write the second one.
  using Echo =
      std::function<void(const google::protobuf::Message& in, google::protobuf::Message* out)>;

  explicit MessageCheck(const Descriptor* descriptor);

  // Goes through the bytes and reports the losses that the bytes alone show. Returns false if the
  // bytes break off.
  bool walk(std::string_view bytes, const MessagePart& part, int depth, bool lenient,
            DecodeFindings* findings, const Visit& visit = nullptr);

  // Reports differences between the received message and the kept one. Call walk() before this
  // function. `echo` returns what is kept of one element of a repeated number. Without `echo`,
  // repeated numbers are not compared.
  void compare(const google::protobuf::Message& in, const google::protobuf::Message& out,
               const MessagePart& part, DecodeFindings* findings, const Echo& echo = nullptr);

  // Call this if the caller has a value for the field. A missing field is then not reported.
  void assume(int fieldNumber);

  // True if the bytes broke off inside the message. Then nothing is reported about the last part of
  // the message, and no field is reported as missing.
  bool isBroken() const { return broken_; }

  // Whether the walk found the field, and the position of its last occurrence.
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
