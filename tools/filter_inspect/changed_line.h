#ifndef FILTER_INSPECT_TOOLS_CHANGED_LINE_H_
#define FILTER_INSPECT_TOOLS_CHANGED_LINE_H_

// Joins two versions of a line into one line, with marks around the words in which they differ.

#include <string>
#include <string_view>
#include <vector>

namespace FilterInspectTool {

// Neighbouring words that both versions of the line have, or that only one version has.
struct LinePart {
  enum In { kBoth, kBefore, kAfter } in;
  std::string text;
};

// Compares words. If two words have the same key, compares only their values. For example,
// "ttl=255" and "ttl=254" have the key "ttl=".
std::vector<LinePart> compareLines(std::string_view before, std::string_view after);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_CHANGED_LINE_H_
