#include <filter_common/filter_counter.h>

#include <filter_common/filter_counter.pb.h>
#include <gtest/gtest.h>

#include <string>

#include "samples.h"

namespace {

using namespace catalogue;

TEST(Counter, IsItsIdAndItsTypeAndChecksNeither) {
  const Counter counter(65535, counter_type_t(-2));
  EXPECT_EQ(counter.GetId(), 65535);
  EXPECT_EQ(counter.GetType(), -2);
  EXPECT_EQ(Counter(), Counter(0, FILTERS_COUNTER_TYPE_INVALID));
  EXPECT_NE(counter, Counter(65534, counter_type_t(-2)));
  EXPECT_NE(counter, Counter(65535, counter_type_t(2)));
  EXPECT_FALSE(counter != Counter(counter));
}

// Only the low 16 bits of a message's id count; both fields are signed there.
TEST(Counter, WritesItsFieldsAndReadsTheLowBitsOfTheId) {
  const auto expectRead = [](const std::string& in, const Counter& counter, const char* out) {
    CounterPB message;
    ASSERT_TRUE(message.ParseFromString(fromHex(in)));
    EXPECT_EQ(Counter(message), counter);
    counter.Serialize(&message);
    EXPECT_EQ(toHex(message.SerializePartialAsString()), out);
  };
  expectRead("08818004 1009", {1, counter_type_t(9)}, "08011009");
  expectRead("08ffffffffffffffffff01 10ffffffffffffffffff01", {65535, counter_type_t(-1)},
             "08ffff0310ffffffffffffffffff01");
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
