#ifndef FILTER_INSPECT_SRC_DECODE_DECODE_FINDINGS_H_
#define FILTER_INSPECT_SRC_DECODE_DECODE_FINDINGS_H_

// What is found in bytes while they are read, and where.

#include <filter_inspect/filter_decode.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace FiltersInspect {

// The bytes in hexadecimal digits for a finding: the first ones and "..." if there are many.
std::string shownBytes(std::string_view bytes);

// A part of the message that is read, which stands in another one unless it is all of it.
struct MessagePart {
  static constexpr std::size_t kAlone = static_cast<std::size_t>(-1);

  const MessagePart* outer = nullptr;
  std::string_view field = {};
  std::size_t index = kAlone;  // among the field's elements
  ByteRange bytes = {};
  std::size_t head = 0;  // how many of the bytes, tag and length, stand in front of a message's own

  std::string path() const;
  // A message's own bytes, of all.
  std::string_view content(std::string_view all) const {
    return all.substr(bytes.offset + head, bytes.length - head);
  }
};

// Takes findings, up to a limit. What a finding says beside its code is told by the caller, when
// there is a place for it.
class DecodeFindings {
 public:
  explicit DecodeFindings(const DecodeLimits& limits)
      : report_(limits.max_findings), least_(limits.least) {}

  // Null for what nobody asks for, and beyond the limit, where the finding is counted alone.
  Finding* add(Code code, const MessagePart& part, const char* message = "");
  // Puts others behind those added.
  void append(DecodeFindings&& others) { report_.append(others.take()); }
  bool empty() const { return report_.empty(); }
  Report take() { return report_.take(); }

  // What the findings are about, until it changes.
  std::optional<FiltersCommon::filtersGroupId_t> group;
  std::optional<FiltersCommon::filtersEntryId_t> entry;
  Subject subject = Subject::kGroup;
  std::uint32_t offender = 0;
 private:
  LimitedReport report_;
  Severity least_;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_DECODE_DECODE_FINDINGS_H_
