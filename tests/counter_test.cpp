#include <filter_common/filter_counter.h>

#include <filter_common/filter_counter.pb.h>
#include <gtest/gtest.h>

#include <string>

#include "samples.h"

namespace {

using namespace FiltersCommon;
using catalogue::fromHex;
using catalogue::printed;
using catalogue::toHex;

TEST(Counter, HoldsWhatItIsGivenAndChecksNothing) {
  const Counter counter(65535, counter_type_t(-2));
  EXPECT_EQ(counter.GetId(), 65535);
  EXPECT_EQ(counter.GetType(), -2);
  EXPECT_EQ(Counter(), Counter(0, FILTERS_COUNTER_TYPE_INVALID));
}

TEST(Counter, IsEqualWhenIdAndTypeAre) {
  const Counter counter(7, FILTERS_COUNTER_TYPE_OCTETS);
  EXPECT_TRUE(counter == Counter(counter));
  EXPECT_FALSE(counter != Counter(counter));
  for (const Counter& other :
       {Counter(8, FILTERS_COUNTER_TYPE_OCTETS), Counter(7, FILTERS_COUNTER_TYPE_PACKETS)}) {
    EXPECT_FALSE(counter == other);
    EXPECT_TRUE(counter != other);
  }
}

// Only the low 16 bits of a message's id count; both fields are signed there.
TEST(Counter, WritesItsFieldsAndReadsTheLowBitsOfTheId) {
  const struct {
    const char* read;
    Counter counter;
    const char* written;
  } rows[] = {{"0800 1000", Counter(), "08001000"},
              {"08ac02 1008", {300, FILTERS_COUNTER_TYPE_NOT_GREEN_OCTETS}, "08ac021008"},
              {"08818004 1009", {1, counter_type_t(9)}, "08011009"},
              {"08ffffffffffffffffff01 10ffffffffffffffffff01",
               {65535, counter_type_t(-1)},
               "08ffff0310ffffffffffffffffff01"}};
  for (const auto& row : rows) {
    CounterPB message;
    ASSERT_TRUE(message.ParseFromString(fromHex(row.read)));
    EXPECT_EQ(Counter(message), row.counter);
    row.counter.Serialize(&message);
    EXPECT_EQ(toHex(message.SerializePartialAsString()), row.written);
  }
}

TEST(Counter, PrintsItsTypeByName) {
  int type = -1;
  for (const std::string name :
       {"Unknown", "Invalid", "Packets", "Octets", "Red Octets", "Not Red Octets", "Yellow Octets",
        "Not Yellow Octets", "Green Octets", "Not Green Octets", "Unknown"}) {
    EXPECT_EQ(printed(Counter(40000, counter_type_t(type++))), "ID: 40000\nType: " + name + "\n");
  }
}

}  // namespace
