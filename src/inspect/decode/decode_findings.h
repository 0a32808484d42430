#ifndef FILTER_INSPECT_SRC_DECODE_DECODE_FINDINGS_H_
#define FILTER_INSPECT_SRC_DECODE_DECODE_FINDINGS_H_

// Findings about bytes, and the positions of these bytes in the message.

#include <filter_inspect/filter_decode.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace FiltersInspect {

// The bytes in hexadecimal digits for a finding; a long text ends in "...".
std::string shownBytes(std::string_view bytes);

// A part of the message: all of it, or a field inside of another part.
struct MessagePart {
  static constexpr std::size_t kAlone = static_cast<std::size_t>(-1);

  const MessagePart* outer = nullptr;
  std::string_view field = {};
  std::size_t index = kAlone;  // among the elements of the field
  ByteRange bytes = {};
  std::size_t head = 0;  // the number of bytes of the tag and the length

  std::string path() const;
  // The bytes of a message without its tag and length.
  std::string_view content(std::string_view all) const {
    return all.substr(bytes.offset + head, bytes.length - head);
  }
};

// Collects findings up to a limit. The caller adds details to a finding that is kept.
class DecodeFindings {
 public:
  explicit DecodeFindings(const DecodeLimits& limits)
      : report_(limits.max_findings), least_(limits.least) {}

  // Returns null if the caller does not want findings of this severity, or if the limit is reached.
  // In the second case the finding is only counted.
  Finding* add(Code code, const MessagePart& part, const char* message = "");
  // Adds the findings of another report at the end.
  void append(DecodeFindings&& others) { report_.append(others.take()); }
  bool empty() const { return report_.empty(); }
  Report take() { return report_.take(); }

  // The group and the entry that the next findings are about.
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
