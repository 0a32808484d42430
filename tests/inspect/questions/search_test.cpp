// Tests searches for the packets of a set. For tiny groups it tries every packet of the set.

#include <filter_inspect/filter_text.h>
#include <gtest/gtest.h>

#include "../random_cases.h"
#include "tiny_sets.h"

using namespace tiny;

namespace {

struct Random {
  unsigned below(std::size_t limit) { return static_cast<unsigned>(engine() % limit); }
  std::mt19937 engine{1};
};

TEST(SearchTest, SaysWhatEveryPacketOfTinyGroupsSays) {
  Random random;
  for (RandomCases i(10000); i.more(); ++i) {
    Case c = Maker<Random>(random).make(random.below(6));
    std::vector<Field> fields = c.fields;
    if (random.below(3) == 0) fields.push_back({"ttl", {}});  // no rule asks for it
    const PlainSet set = SetMaker<Random>(random, fields).make();
    for (int k = 0; k < 2; ++k) {
      ASSERT_EQ(faultOfSearch(c, set, kAllOrders[random.below(kAllOrders.size())]), "") << i.done();
    }
  }
}

}  // namespace
