#ifndef FILTER_INSPECT_SRC_DECODE_MESSAGE_CHECK_H_
#define FILTER_INSPECT_SRC_DECODE_MESSAGE_CHECK_H_

// What is lost of one message: what its bytes alone show, and what comparing it with what the
// library makes of it shows. Neither knows a class or a field: descriptors and the library do.

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

// A message beside its bytes.
class MessageCheck {
 public:
  using Descriptor = google::protobuf::Descriptor;
  using Field = google::protobuf::FieldDescriptor;
  // Is told of each message within, and its number among those of its field; says whether the walk
  // goes on.
  using Visit = std::function<bool(const Field& field, const MessagePart& part)>;
  // Has the library read one message and write another.
  using Echo =
      std::function<void(const google::protobuf::Message& in, google::protobuf::Message* out)>;

  explicit MessageCheck(const Descriptor* descriptor);

  // Goes through the bytes and notes what they show by themselves. False when they end there.
  bool walk(std::string_view bytes, const MessagePart& part, int depth, bool lenient,
            DecodeFindings* findings, const Visit& visit = nullptr);

  // Notes where what came differs from what is kept of it, after the walk over it. `echo` shows
  // what is kept of one element of a repeated number; without it only numbers that stand alone are
  // compared.
  void compare(const google::protobuf::Message& in, const google::protobuf::Message& out,
               const MessagePart& part, DecodeFindings* findings, const Echo& echo = nullptr);

  // Says that the caller has a value for the field, which is then not called missing.
  void assume(int fieldNumber);

  // Whether the bytes ended in the message before their time: what they end in has said half of
  // itself, and what may have followed is not called missing.
  bool isBroken() const { return broken_; }

  // Whether the walk met the field, and where its last occurrence stands.
  bool hasCome(int fieldNumber) const;
  MessagePart partOf(int fieldNumber, const MessagePart& outer) const;
 private:
  struct Occurrences {
    std::size_t count = 0;
    bool assumed = false;
    ByteRange last;
    std::vector<ByteRange> elements;  // of repeated numbers
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
  std::vector<Occurrences> fields_;
  bool broken_ = false;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_DECODE_MESSAGE_CHECK_H_
