#ifndef FILTER_COMMON_TESTS_INSPECT_FRAME_CHECKS_H_
#define FILTER_COMMON_TESTS_INSPECT_FRAME_CHECKS_H_

// Checks what must be true for every frame, even a broken one. The tests and the fuzzing harness
// share this code.

#include <filter_inspect/filter_traffic.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace frames {

using namespace FiltersInspect;

using Words = std::set<std::string>;

inline Words wordsOf(const std::string& text) {
  std::istringstream in(text);
  Words words;
  for (std::string word; in >> word;) words.insert(word);
  return words;
}

struct Told {
  Words words;
  FrameFault fault = FrameFault::kNone;
};

// Copies the captured bytes, so that a sanitizer reports each read beyond their end.
inline Told told(const std::string& frame, std::size_t captured, std::size_t length, Link link) {
  const std::vector<char> bytes(frame.begin(),
                                frame.begin() + static_cast<std::ptrdiff_t>(captured));
  Told it;
  it.words = wordsOf(packetOf(bytes.data(), captured, length, link, &it.fault).toText());
  return it;
}

// If more bytes of a frame are captured, the fields that were known before must not change. A frame
// that was captured whole must not be called cut. Returns the fault as text, or an empty text.
inline std::string faultOfPrefixes(const std::string& frame, std::size_t length, Link link) {
  Words before;
  Told now;
  for (std::size_t captured = 0; captured <= std::min(frame.size(), length); ++captured) {
    now = told(frame, captured, length, link);
    if (!std::includes(now.words.begin(), now.words.end(), before.begin(), before.end())) {
      return "byte " + std::to_string(captured) + " changes what was told before it";
    }
    before = now.words;
  }
  const bool isWhole = frame.size() >= length;
  if (isWhole && now.fault == FrameFault::kCut) return "a whole frame is cut";
  // If the frame has no fault, the packet must have both ports, or say that they are absent.
  const auto isPort = [](const std::string& word) { return word.find("_l4_port=") != word.npos; };
  const auto ports = std::count_if(before.begin(), before.end(), isPort);
  if (now.fault == FrameFault::kNone && ports != 2) return "ports are not told for no reason";
  return {};
}

}  // namespace frames

#endif  // FILTER_COMMON_TESTS_INSPECT_FRAME_CHECKS_H_
