#include "decode_findings.h"

#include "report/hex.h"

namespace FiltersInspect {

std::string shownBytes(std::string_view bytes) {
  constexpr std::size_t kShownBytes = 256;
  std::string hex;
  appendHex(bytes.substr(0, kShownBytes), &hex);
  return bytes.size() > kShownBytes ? hex + "..." : hex;
}

std::string MessagePart::path() const {
  std::string path = outer == nullptr ? "" : outer->path();
  if (field.empty()) return path;
  if (!path.empty()) path += '.';
  path += field;
  return index == kAlone ? path : path + '[' + std::to_string(index) + ']';
}

Finding* DecodeFindings::add(Code code, const MessagePart& part, const char* message) {
  if (severityOf(code) < least_) return nullptr;
  Finding* finding = report_.add(code);
  if (finding == nullptr) return nullptr;
  finding->subject = subject;
  finding->group = group;
  finding->entry = entry;
  finding->offender = offender;
  finding->path = part.path();
  finding->bytes = part.bytes;
  finding->message = message;
  return finding;
}

}  // namespace FiltersInspect
