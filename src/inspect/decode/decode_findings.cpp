#include "decode_findings.h"

namespace FiltersInspect {

std::string hexOf(std::string_view bytes) {
  constexpr std::size_t kShownBytes = 256;
  std::string hex;
  for (const char c : bytes.substr(0, kShownBytes)) {
    for (const int digit : {c >> 4 & 15, c & 15}) hex += "0123456789abcdef"[digit];
  }
  return bytes.size() > kShownBytes ? hex + "..." : hex;
}

std::string Place::path() const {
  std::string path = outer == nullptr ? "" : outer->path();
  if (field.empty()) return path;
  if (!path.empty()) path += '.';
  path += field;
  return index == kAlone ? path : path + '[' + std::to_string(index) + ']';
}

Finding* Findings::add(Code code, const Place& place, const char* message) {
  if (severityOf(code) < least_) return nullptr;
  if (!report_.takes(severityOf(code))) return nullptr;
  Finding& finding = report_.add(code);
  finding.subject = subject;
  finding.group = group;
  finding.entry = entry;
  finding.offender = offender;
  finding.path = place.path();
  finding.bytes = place.bytes;
  finding.message = message;
  return &finding;
}

}  // namespace FiltersInspect
