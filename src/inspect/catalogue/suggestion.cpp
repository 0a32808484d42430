#include <algorithm>
#include <array>
#include <cstddef>

#include <filter_inspect/filter_names.h>

#include "in_quotes.h"

namespace FiltersInspect {
namespace {

constexpr std::size_t kLongestName = 40;
constexpr std::size_t kTwoLines = 160;

char inLowerCase(char c) { return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// The distance of two words: the number of letters that must be added, removed, changed, or
// exchanged with the next letter.
std::size_t distance(std::string_view a, std::string_view b) {
  std::array<std::array<std::size_t, kLongestName + 1>, 3> rows = {};
  for (std::size_t j = 0; j <= b.size(); ++j) rows[0][j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    auto& row = rows[i % 3];
    const auto &last = rows[(i + 2) % 3], &before = rows[(i + 1) % 3];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const char x = inLowerCase(a[i - 1]), y = inLowerCase(b[j - 1]);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (x == y ? 0 : 1)});
      const bool areExchanged =
          i > 1 && j > 1 && x == inLowerCase(b[j - 2]) && inLowerCase(a[i - 2]) == y;
      if (areExchanged) row[j] = std::min(row[j], before[j - 2] + 1);
    }
  }
  return rows[a.size() % 3][b.size()];
}

bool beginAlike(std::string_view a, std::string_view b) {
  return !a.empty() && !b.empty() && inLowerCase(a[0]) == inLowerCase(b[0]);
}

// The nearest of the names; empty if none is near. If two names are equally near, the name that
// begins like the word is taken: "tll" is "ttl" rather than "all".
std::string_view nearest(std::string_view word, const std::vector<std::string_view>& names) {
  std::string_view best;
  std::size_t least = kLongestName;
  for (const std::string_view name : names) {
    const std::size_t most = name.size() / 3;
    if (name.size() > kLongestName || word.size() > name.size() + most ||
        name.size() > word.size() + most) {
      continue;
    }
    const std::size_t its = distance(word, name);
    const bool isBetter =
        its < least || (its == least && beginAlike(word, name) && !beginAlike(word, best));
    if (its > most || !isBetter) continue;
    best = name;
    least = its;
  }
  return best;
}

std::string listOf(const std::vector<std::string_view>& names) {
  std::string list;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i != 0) list += i + 1 == names.size() ? " or " : ", ";
    list += names[i];
  }
  return list;
}

}  // namespace

std::string suggestion(std::string_view word, const std::vector<std::string_view>& names,
                       std::string_view command) {
  const std::string_view near = nearest(word, names);
  if (!near.empty()) return "; did you mean " + std::string(near) + '?';
  const std::string all = listOf(names);
  if (!all.empty() && all.size() <= kTwoLines) return "; it can be " + all;
  std::vector<std::string_view> longer;
  for (const std::string_view name : names) {
    if (word.size() > 2 && name.find(word) != name.npos) longer.push_back(name);
  }
  const std::string some = listOf(longer);
  if (!some.empty() && some.size() <= kTwoLines) return "; did you mean " + some + '?';
  return command.empty() ? std::string() : "; " + std::string(command) + " lists them";
}

std::string inQuotes(std::string_view word) {
  constexpr std::size_t kMostLetters = 60;
  std::string text(word.substr(0, kMostLetters));
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < ' ') c = '?';
  }
  return '\'' + text + (word.size() > kMostLetters ? "...'" : "'");
}

}  // namespace FiltersInspect
