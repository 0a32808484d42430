#include <filter_common/filter_counter.h>

#include <filter_common/filter_counter.pb.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;

CounterPB messageOf(const std::string& hex) {
  CounterPB message;
  EXPECT_TRUE(message.ParseFromString(fromHex(hex)));
  return message;
}

TEST(Counter, HoldsWhatItIsGivenAndChecksNothing) {
  EXPECT_EQ(Counter().GetId(), 0);
  EXPECT_EQ(Counter().GetType(), FILTERS_COUNTER_TYPE_INVALID);
  const Counter counter(65535, counter_type_t(-2));
  EXPECT_EQ(counter.GetId(), 65535);
  EXPECT_EQ(counter.GetType(), -2);
}

TEST(Counter, IsEqualWhenIdAndTypeAre) {
  const Counter counter(7, FILTERS_COUNTER_TYPE_OCTETS);
  const std::pair<Counter, bool> others[] = {{Counter(7, FILTERS_COUNTER_TYPE_OCTETS), true},
                                             {Counter(8, FILTERS_COUNTER_TYPE_OCTETS), false},
                                             {Counter(7, FILTERS_COUNTER_TYPE_PACKETS), false}};
  for (const auto& [other, equal] : others) {
    EXPECT_EQ(counter == other, equal);
    EXPECT_EQ(counter != other, !equal);
  }
}

TEST(Counter, WritesItsFields) {
  const std::pair<Counter, std::string> rows[] = {
      {Counter(), "08001000"},
      {Counter(300, FILTERS_COUNTER_TYPE_NOT_GREEN_OCTETS), "08ac021008"},
      {Counter(65535, counter_type_t(-1)),
       "08ffff03"
       "10ffffffffffffffffff01"}};
  for (const auto& [counter, hex] : rows) {
    CounterPB message;
    counter.Serialize(&message);
    EXPECT_EQ(toHex(message.SerializePartialAsString()), hex);
    EXPECT_EQ(Counter(message), counter);
  }
}

TEST(Counter, ReadsTheLowSixteenBitsOfTheIdAndAnyType) {
  EXPECT_EQ(Counter(messageOf("08808004 1009")), Counter(0, counter_type_t(9)));
  EXPECT_EQ(Counter(messageOf("08818004 1000")), Counter(1, FILTERS_COUNTER_TYPE_INVALID));
  EXPECT_EQ(Counter(messageOf("08ffffffffffffffffff01 1002")),
            Counter(65535, FILTERS_COUNTER_TYPE_OCTETS));
}

TEST(Counter, PrintsItsTypeByName) {
  const std::pair<int, std::string> rows[] = {
      {0, "Invalid"},           {1, "Packets"},        {2, "Octets"},
      {3, "Red Octets"},        {4, "Not Red Octets"}, {5, "Yellow Octets"},
      {6, "Not Yellow Octets"}, {7, "Green Octets"},   {8, "Not Green Octets"},
      {9, "Unknown"},           {-1, "Unknown"}};
  for (const auto& [type, name] : rows) {
    EXPECT_EQ(printed(Counter(40000, counter_type_t(type))), "ID: 40000\nType: " + name + "\n");
  }
}

}  // namespace
