#ifndef FILTER_INSPECT_TOOLS_CHANGED_LINE_H_
#define FILTER_INSPECT_TOOLS_CHANGED_LINE_H_

// One line for two versions of a line, with the words in which they differ.

#include <string>
#include <string_view>
#include <vector>

namespace FilterInspectTool {

// A part of the line that both versions have, or that only one of them has.
struct LinePart {
  enum In { kBoth, kBefore, kAfter } in;
  std::string text;
};

// Compares words, and the values of words with the same key: "ttl=255" and "ttl=254" have the key
// in common.
std::vector<LinePart> compareLines(std::string_view before, std::string_view after);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_CHANGED_LINE_H_
