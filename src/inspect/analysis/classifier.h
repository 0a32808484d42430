#ifndef FILTER_INSPECT_SRC_ANALYSIS_CLASSIFIER_H_
#define FILTER_INSPECT_SRC_ANALYSIS_CLASSIFIER_H_

// Finds the few entries of a group that may take a packet, without examining the other entries.
//
// Each entry has a bit. In each dimension of the space (see space.h), values of equal rank share a
// row: the bits of the entries that allow these values. The entries that do not constrain the
// dimension have a separate row, which all values share. An entry may take a packet only if its bit
// is set in every dimension whose value is known for the packet. So the answer is an intersection
// of rows (Lakshman and Stiliadis, "High-speed policy-based packet forwarding using efficient
// multi-dimensional range matching", 1998).
//
// Most words of a row are 0. A row keeps only the words that are not 0, and a summary with a bit
// for each kept word. The summaries show which words need to be read (Baboescu and Varghese,
// "Scalable packet classification", 2001). For 10,000 entries a summary has three words. Nearly
// every entry constrains an address or another field of many values, and the rows of such a
// dimension are short. Some of these dimensions are the leading ones. A word is read in two cases:
// it is in the row of a leading dimension, or one of its entries constrains no leading dimension
// whose value is known.
//
// If the rows of a dimension would take too much memory, neighbouring ranks share a row. The answer
// may then have entries that do not take the packet. This does no harm: the caller compares each
// entry with the packet anyway, to find the readings under which the entry takes it.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "packet_fields.h"
#include "space.h"
#include "takers.h"

namespace FiltersInspect {

class Classifier {
 public:
  // Entries are numbered from 0 in the order of `entries`.
  explicit Classifier(const std::vector<PreparedEntry>& entries);

  // Calls `visit` with the number of each entry that may take the packet, in ascending order, until
  // it returns false. Unknown fields exclude no entry.
  template <class Visit>
  void forEach(const Packet& packet, Visit visit) const {
    Looked looked[kMostDimensions];
    const std::size_t count = rowsFor(packet, looked);
    for (std::size_t s = 0; s < summary_; ++s) {
      Word words = wordsToRead(looked, count, s);
      for (; words != 0; words &= words - 1) {
        const unsigned at = lowestBitOf(words);
        const std::size_t w = s * kBits + at;
        Word bits = w + 1 == words_ ? last_ : ~Word{0};
        for (std::size_t i = 0; bits != 0 && i < count; ++i) {
          bits &= looked[i].dimension->word(looked[i].row[s], w, at);
        }
        for (; bits != 0; bits &= bits - 1) {
          if (!visit(w * kBits + lowestBitOf(bits))) return;
        }
      }
    }
  }

  // True if no ranks share a row and every dimension is examined. Then forEach() visits exactly the
  // entries that may take the packet.
  bool isExact() const { return exact_; }
 private:
  using Word = std::uint64_t;
  static constexpr std::size_t kBits = 64;
  static constexpr std::size_t kMostDimensions = 128;  // further ones exclude no entry

  static unsigned lowestBitOf(Word word) { return static_cast<unsigned>(__builtin_ctzll(word)); }
  static unsigned countOnes(Word word) { return static_cast<unsigned>(__builtin_popcountll(word)); }

  // One word of a row's summary. Its bits show which of 64 words of the row are kept, and `begin`
  // is the position of the first kept word.
  struct Row {
    Word words;
    std::uint32_t begin;  // in `kept`
  };
  struct Dimension {
    std::uint64_t bits;                 // the bits of a value that count
    unsigned shift;                     // the position of the lowest of these bits
    unsigned jump_shift;                // values that agree above this share an element of `jumps`
    unsigned rank_shift;                // ranks that agree above this share a row
    std::vector<std::uint64_t> starts;  // the lowest value of each rank
    std::vector<std::uint32_t> jumps;   // where to search in `starts`
    std::vector<Row> rows;              // a summary for each row; the last row is empty
    std::vector<Word> kept;
    std::vector<Word> common, common_words;  // the entries not constraining it; a summary
    std::vector<Word> asking_words;          // the summary of the entries that constrain it
    bool leads;

    std::size_t rowOf(std::uint64_t value) const;
    // The word `w` of a row; `at` is this word's bit in the summary.
    Word word(const Row& row, std::size_t w, unsigned at) const {
      if ((row.words >> at & 1) == 0) return common[w];
      return common[w] | kept[row.begin + countOnes(row.words & ((Word{1} << at) - 1))];
    }
  };
  // The row of a packet's value in one dimension.
  struct Looked {
    const Dimension* dimension;
    const Row* row;
  };
  struct Use {
    std::uint32_t first, last, entry;  // an entry allows these ranks
  };
  std::size_t rowsFor(const Packet& packet, Looked* looked) const;
  Word wordsToRead(const Looked* looked, std::size_t count, std::size_t s) const;
  Dimension dimensionOf(const Space::Scale& scale, std::vector<Use>* uses) const;
  bool fillRows(const std::vector<Use>& uses, Dimension* dimension) const;
  void chooseLeaders();
  std::vector<Word> summaryOf(const std::vector<Word>& row) const;

  std::size_t words_, summary_;  // the lengths of a row and of its summary, in words
  Word last_;                    // the bits of the last word that stand for an entry
  bool exact_ = true;
  std::vector<Dimension> dimensions_;  // in the order of their fields
  std::vector<std::uint32_t>
      first_of_;                        // the first dimension of each half of a field, and one more
  std::vector<std::uint32_t> leaders_;  // the leading dimensions
  std::vector<Word> others_;            // the summary of the entries that constrain no leader
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_CLASSIFIER_H_
