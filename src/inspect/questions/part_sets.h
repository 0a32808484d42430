#ifndef FILTER_INSPECT_SRC_QUESTIONS_PART_SETS_H_
#define FILTER_INSPECT_SRC_QUESTIONS_PART_SETS_H_

// Writes parts of a space as the words of packet sets.

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "analysis/cut.h"
#include "analysis/packet_words.h"

namespace FiltersInspect {

// Collects the parts that a cut leaves, unless they make too many sets for people to read.
class PartSets : public Cut::Watcher {
 public:
  explicit PartSets(const Space& space) : space_(space) {}
  bool left(const Cut& cut) override;
  bool tooMany() const { return too_many_; }
  const std::vector<std::vector<FieldSet>>& sets() const { return sets_; }
 private:
  static constexpr std::size_t kMostSets = 16;
  static constexpr std::size_t kMostPieces = 256;  // pieces of one field

  // One dimension, and the values that a part has in it.
  struct Dimension {
    std::uint32_t number;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> values;
  };
  bool divide(const std::vector<Dimension>& dimensions, std::vector<ValuePair>* pieces) const;
  bool addField(const Cut& cut, std::uint32_t begin, std::uint32_t end);

  const Space& space_;
  std::vector<std::vector<FieldSet>> sets_;
  std::vector<std::vector<FieldSet>> part_;  // the sets of one part, as far as they are known
  bool too_many_ = false;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_QUESTIONS_PART_SETS_H_
