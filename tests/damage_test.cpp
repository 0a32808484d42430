// Bytes that a fault has cut off or changed on their way: whatever arrives is read, printed,
// compared and written without a crash, a leak or a long wait.

#include "memory_control.h"

#include <filter_common/filter_serialized.h>

#include <ctime>
#include <set>
#include <stdexcept>

#include "golden.h"

namespace {

using namespace catalogue;

// What became of the damaged copies of one golden group.
struct Outcome {
  int read = 0;
  int refused = 0;  // by the exception of an MPLS action
  int widened = 0;  // the first entry has fewer matches, and every action
};

void use(const FiltersGroup& group, const FiltersGroup& intact, Outcome* outcome) {
  ++outcome->read;
  const std::string bytes = bytesOf(group);
  FiltersSerialized buffer;
  group.serialize(&buffer);
  ASSERT_TRUE(FiltersGroup(bytes) == group && FiltersGroup(buffer) == group);
  ASSERT_EQ(bytesOf(FiltersGroup(bytes)), bytes);
  ASSERT_NE(printed(group), "");
  ASSERT_EQ(group == intact, bytes == bytesOf(intact));
  const auto found = group.getEntriesRef().find(intact.getEntriesRef().begin()->first);
  if (found == group.getEntriesRef().end()) return;
  const FiltersEntry& entry = found->second;
  const FiltersEntry& whole = intact.getEntriesRef().begin()->second;
  outcome->widened += heldMatches(entry).size() < heldMatches(whole).size() &&
                      heldActions(entry) == heldActions(whole);
}

// The bytes may say anything; only an MPLS action has the right to object.
void examine(const std::string& bytes, const FiltersGroup& intact, Outcome* outcome) {
  const long live = memory::live;
  const std::clock_t start = std::clock();
  for (const bool fromBuffer : {false, true}) {
    try {
      FiltersSerialized buffer(bytes);
      use(fromBuffer ? FiltersGroup(buffer) : FiltersGroup(bytes), intact, outcome);
    } catch (const std::invalid_argument&) {
      ++outcome->refused;
    }
  }
  ASSERT_LT(std::clock() - start, CLOCKS_PER_SEC) << "a group of " << bytes.size() << " bytes";
  ASSERT_EQ(memory::live, live) << "leaked";
}

class Damage : public testing::TestWithParam<const char*> {
 public:
  const std::string bytes_ = golden(GetParam());
  const FiltersGroup intact_{bytes_};
  Outcome outcome_;
  bool holdsMpls() const { return std::string(GetParam()) == "group_mpls.hex"; }
};

TEST_P(Damage, OfAnEndCutOffIsSurvived) {
  for (std::size_t size = 0; size < bytes_.size(); ++size) {
    SCOPED_TRACE(size);
    ASSERT_NO_FATAL_FAILURE(examine(bytes_.substr(0, size), intact_, &outcome_));
  }
  EXPECT_EQ(outcome_.refused != 0, holdsMpls());
}

TEST_P(Damage, OfASingleBitIsSurvived) {
  for (std::size_t bit = 0; bit < 8 * bytes_.size(); ++bit) {
    SCOPED_TRACE(bit);
    std::string damaged = bytes_;
    damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ 1 << bit % 8);
    ASSERT_NO_FATAL_FAILURE(examine(damaged, intact_, &outcome_));
  }
  EXPECT_GT(outcome_.read, outcome_.refused);
  EXPECT_GT(outcome_.widened, 0);  // as the headers warn
}

INSTANTIATE_TEST_SUITE_P(Groups, Damage,
                         testing::Values("group.hex", "group_ports.hex", "group_ipv4.hex",
                                         "group_ipv6.hex", "group_mpls.hex"));

}  // namespace
