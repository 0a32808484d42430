#include "changed_line.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace FilterInspectTool {
namespace {

// A word with the blanks in front of it. Its key ends in '='. If the word has no '=', the whole
// word is its key.
struct Word {
  std::string_view blanks, key, value;
};

std::vector<Word> wordsOf(std::string_view line) {
  std::vector<Word> words;
  while (!line.empty()) {
    const std::string_view blanks =
        line.substr(0, std::min(line.find_first_not_of(' '), line.size()));
    line.remove_prefix(blanks.size());
    std::string_view word = line.substr(0, line.find(' '));
    // The brace that ends a policer is a word of its own. Otherwise it would be compared as part of
    // the last value.
    if (word.size() > 1 && word.back() == '}' && word.find('{') == word.npos) {
      word.remove_suffix(1);
    }
    line.remove_prefix(word.size());
    const std::size_t equals = word.find('=');
    const std::string_view key = word.substr(0, equals == word.npos ? equals : equals + 1);
    words.push_back({blanks, key, word.substr(key.size())});
  }
  return words;
}

constexpr std::uint32_t kEqual = 3, kSameKey = 2;

std::uint32_t likeness(const Word& a, const Word& b) {
  if (a.key != b.key) return 0;
  return a.value == b.value ? kEqual : kSameKey;
}

// Finds the words that two lists have in common, and the words that only one list has.
class Comparison {
 public:
  std::vector<LinePart> run(std::vector<Word> a, std::vector<Word> b) {
    std::size_t same = 0;
    while (same < std::min(a.size(), b.size()) && likeness(a[same], b[same]) == kEqual) ++same;
    std::size_t end = 0;  // the number of equal words at the end
    while (same + end < std::min(a.size(), b.size()) &&
           likeness(a[a.size() - 1 - end], b[b.size() - 1 - end]) == kEqual) {
      ++end;
    }
    for (std::size_t i = 0; i < same; ++i) addPair(a[i], b[i]);
    const auto first = static_cast<std::ptrdiff_t>(same), behind = static_cast<std::ptrdiff_t>(end);
    addMiddle({a.begin() + first, a.end() - behind}, {b.begin() + first, b.end() - behind});
    for (std::size_t i = end; i > 0; --i) addPair(a[a.size() - i], b[b.size() - i]);
    flush();
    return std::move(parts_);
  }
 private:
  // Finds for as many words as possible of one list an equal word, or one with the same key, in the
  // other list. An equal word counts more.
  void addMiddle(const std::vector<Word>& a, const std::vector<Word>& b) {
    constexpr std::size_t kMostPairs = 1 << 20;  // more are not compared
    const std::size_t width = b.size() + 1;
    std::vector<std::uint32_t> best;  // [i * width + j]: of words from a[i] and b[j] onwards
    if (a.size() < kMostPairs / width) best.resize((a.size() + 1) * width);
    const auto with = [&](std::size_t i, std::size_t j) {
      const std::uint32_t its = likeness(a[i], b[j]);
      return its == 0 ? 0 : its + best[(i + 1) * width + j + 1];
    };
    for (std::size_t i = best.empty() ? 0 : a.size(); i-- > 0;) {
      for (std::size_t j = b.size(); j-- > 0;) {
        best[i * width + j] =
            std::max({with(i, j), best[(i + 1) * width + j], best[i * width + j + 1]});
      }
    }
    std::size_t i = 0, j = 0;
    while (!best.empty() && i < a.size() && j < b.size()) {
      const std::uint32_t most = best[i * width + j];
      if (most != 0 && most == with(i, j)) {
        addPair(a[i++], b[j++]);
      } else if (most == best[(i + 1) * width + j]) {
        addAlone(LinePart::kBefore, a[i++]);
      } else {
        addAlone(LinePart::kAfter, b[j++]);
      }
    }
    for (; i < a.size(); ++i) addAlone(LinePart::kBefore, a[i]);
    for (; j < b.size(); ++j) addAlone(LinePart::kAfter, b[j]);
  }

  void addPair(const Word& a, const Word& b) {
    flush();
    add(LinePart::kBoth, std::string(b.blanks).append(b.key));
    if (a.value == b.value) return add(LinePart::kBoth, std::string(b.value));
    add(LinePart::kBefore, std::string(a.value));
    add(LinePart::kAfter, std::string(b.value));
  }

  // Joins neighbouring words that only one list has into one LinePart.
  void addAlone(LinePart::In in, const Word& word) {
    std::string& text = in == LinePart::kBefore ? before_ : after_;
    if (before_.empty() && after_.empty()) blanks_ = word.blanks;
    if (!text.empty()) text += word.blanks;
    text.append(word.key).append(word.value);
  }
  void flush() {
    if (before_.empty() && after_.empty()) return;
    add(LinePart::kBoth, std::string(blanks_));
    add(LinePart::kBefore, std::move(before_));
    add(LinePart::kAfter, std::move(after_));
    before_.clear();
    after_.clear();
  }

  void add(LinePart::In in, std::string text) {
    if (text.empty()) return;
    if (in == LinePart::kBoth && !parts_.empty() && parts_.back().in == in) {
      parts_.back().text += text;
    } else {
      parts_.push_back({in, std::move(text)});
    }
  }

  std::vector<LinePart> parts_;
  std::string_view blanks_;  // in front of the words below
  std::string before_, after_;
};

}  // namespace

std::vector<LinePart> compareLines(std::string_view before, std::string_view after) {
  return Comparison().run(wordsOf(before), wordsOf(after));
}

}  // namespace FilterInspectTool
