// What a group makes of a message; and the bytes of entries and of groups, which behave alike.

#include <filter_common/filter_groups.h>

#include <filter_common/filter_serialized.h>
#include <gmock/gmock.h>

#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "entry_samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;

// --- Messages ------------------------------------------------------------------------------------

FiltersEntryPB* addEntry(FiltersGroupPB* message, unsigned id, unsigned priority = 0) {
  message->add_entries_()->set_id_(id);
  message->mutable_entries_()->rbegin()->set_priority_(priority);
  return &*message->mutable_entries_()->rbegin();
}

FiltersGroup fromMessage(const FiltersGroupPB& message) {
  FiltersGroup group(9);
  group.convertFromFiltersGroupPB(&message);
  return group;
}

TEST(GroupMessage, LosesTheUpperBitsOfIdAndPriority) {
  FiltersGroupPB message;
  message.set_id_(65537);
  message.set_priority_(0xfffe0005);
  EXPECT_EQ(fromMessage(message).getId(), 1);
  EXPECT_EQ(fromMessage(message).getPriority(), 5);
}

// Deliberate: no check of the pair, nor of its values.
TEST(GroupMessage, BringsAnyStageAndType) {
  for (const auto& [stage, type] : {std::pair(1, 1), {3, 11}, {4, 12}, {-1, -2147483647 - 1}}) {
    const FiltersGroup group = groupOf(stage, type);
    EXPECT_EQ(group.getStage(), stage);
    EXPECT_EQ(group.getType(), type);
    EXPECT_TRUE(FiltersGroup(bytesOf(group)) == group);
  }
}

TEST(GroupMessage, LosesEntriesThatTheGroupRefuses) {
  FiltersGroupPB message;
  message.set_stage_(3);
  message.set_type_(5);
  addEntry(&message, 1);
  addEntry(&message, 2)->add_matches_()->set_type_(30);
  addEntry(&message, 3)->add_actions_()->set_type_(16);
  addEntry(&message, 4)->set_policer_(policerAt(policer::Stage::Ingress).Serialize());
  addEntry(&message, 5)->set_policer_(policerAt(policer::Stage::Egress).Serialize());
  addEntry(&message, 1, 9)->add_actions_()->set_type_(16);  // the former of its id stays
  EXPECT_EQ(prioritiesOf(fromMessage(message)), (Priorities{{1, 0}, {5, 0}}));
  message.set_type_(12);
  EXPECT_EQ(prioritiesOf(fromMessage(message)), Priorities());
}

TEST(GroupMessage, KeepsTheLastOfRepeatedIds) {
  FiltersGroupPB message;
  addEntry(&message, 7, 1)->set_policer_parent_("");
  addEntry(&message, 6, 2);
  addEntry(&message, 7, 3);
  const FiltersGroup group = fromMessage(message);
  EXPECT_EQ(prioritiesOf(group), (Priorities{{6, 2}, {7, 3}}));
  EXPECT_EQ(group.getEntriesRef().at(7).getPolicerParent(), nullptr);
}

TEST(GroupMessage, AddsToAGroupThatHoldsEntries) {
  FiltersGroup group = groupOf(0, 1);
  // Under id 7, and no longer admitted afterwards.
  EXPECT_EQ(group.insertEntry(entryOf({30})), FILTERS_OK);
  FiltersGroupPB message;
  message.set_id_(2);
  message.set_stage_(3);
  addEntry(&message, 8, 1);
  group.convertFromFiltersGroupPB(&message);
  EXPECT_EQ(prioritiesOf(group), (Priorities{{7, 0}, {8, 1}}));
  EXPECT_EQ(group.getId(), 2);
  EXPECT_EQ(group.getType(), FILTERS_GROUP_TYPE_NONE);
}

// --- Bytes, of entries and of groups -------------------------------------------------------------

// Objects of id 7 that hold, between them, every match they can; the second, an MPLS action too.
template <class T>
std::vector<T> fullObjects();
template <>
std::vector<FiltersEntry> fullObjects() {
  return {entryOf({14, 15, 34}), fullEntry(), FiltersEntry(7)};
}
template <>
std::vector<FiltersGroup> fullObjects() {
  std::vector<FiltersGroup> groups;
  for (const auto& [type, codes] : FiltersGroup::TypeDescription_) {
    FiltersGroup group(7);
    group.setPriority(65535);
    EXPECT_EQ(group.setType(type), FILTERS_OK);
    EXPECT_EQ(group.insertEntry(FiltersEntry(4294967295)), FILTERS_OK);
    EXPECT_EQ(group.insertEntry(entryOf({codes.begin(), codes.end()}, {0, 3, 5, 18})), FILTERS_OK);
    groups.push_back(group);
  }
  groups.push_back(FiltersGroup(7));
  return groups;
}

class OwnBuffer : public FiltersSerialized {
 public:
  OwnBuffer(const std::string& bytes, std::size_t size) : size_(size) {
    if (!bytes.empty()) copyData(bytes);
  }
  std::size_t size() const override { return size_; }
  void setData(const std::string& bytes) override { set = bytes; }
  std::string set;
 private:
  std::size_t size_;
};

template <class T>
class Bytes : public testing::Test {};
using EntryAndGroup = testing::Types<FiltersEntry, FiltersGroup>;
TYPED_TEST_SUITE(Bytes, EntryAndGroup);

TYPED_TEST(Bytes, MakeAnEqualObject) {
  for (const TypeParam& object : fullObjects<TypeParam>()) {
    const std::string bytes = bytesOf(object);
    EXPECT_TRUE(TypeParam(bytes) == object);
    FiltersSerialized buffer;
    object.serialize(&buffer);
    EXPECT_EQ(std::string(buffer.data(), buffer.size()), bytes + '\0');
    EXPECT_TRUE(TypeParam(buffer) == object);
  }
}

TYPED_TEST(Bytes, ThatCannotBeReadGiveWhatIsThereAndSayNothing) {
  const std::string priority("\x10\x2a", 2);
  TypeParam expected(0);
  expected.setPriority(42);
  testing::internal::CaptureStderr();
  for (const std::string rest : {"", "\xff\xff\xff", "\x02", "\x7a\x05"}) {
    EXPECT_TRUE(TypeParam(priority + rest) == expected) << toHex(rest);
    FiltersSerialized buffer(priority + rest);
    EXPECT_TRUE(TypeParam(buffer) == expected) << toHex(rest);
  }
  FiltersSerialized unfilled;
  EXPECT_TRUE(TypeParam(unfilled) == TypeParam(0));
  EXPECT_TRUE(TypeParam(std::string()) == TypeParam(0));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TYPED_TEST(Bytes, GoThroughABuffersOwnFunctions) {
  const TypeParam object = fullObjects<TypeParam>().at(1);
  OwnBuffer buffer(bytesOf(object), 2);
  EXPECT_EQ(TypeParam(buffer).getId(), 7);
  EXPECT_EQ(TypeParam(buffer).getPriority(), 0);
  object.serialize(&buffer);
  EXPECT_EQ(buffer.set, bytesOf(object));
}

TYPED_TEST(Bytes, ThrowWhenABufferHasASizeAndNoData) {
  OwnBuffer buffer("", 1);
  EXPECT_THAT([&] { TypeParam object(buffer); }, testing::ThrowsMessage<std::logic_error>(
                                                     "basic_string::_M_construct null not valid"));
}

// --- Bytes of a group, read entry by entry or as a whole -----------------------------------------

// What the parser of the whole message makes of the bytes.
std::string readWhole(const std::string& bytes) {
  FiltersGroupPB message;
  message.ParsePartialFromString(bytes);
  FiltersGroupPB head(message);
  head.clear_entries_();
  FiltersGroup group(0);
  group.convertFromFiltersGroupPB(&head);
  for (const FiltersEntryPB& entryMessage : message.entries_()) {
    FiltersEntry entry;
    entry.convertFromFiltersEntryPB(&entryMessage);
    static_cast<void>(group.insertEntry(entry));
  }
  return bytesOf(group);
}

template <class Read>
std::string outcome(Read read) {
  try {
    return read();
  } catch (const std::invalid_argument& refusal) {
    return refusal.what();
  }
}

// The bytes with one to four of: a byte changed, a stretch cut out, a stretch repeated elsewhere.
std::string damaged(std::string bytes, std::mt19937* random) {
  const auto below = [&](std::size_t limit) { return (*random)() % (limit + 1); };
  for (std::size_t n = 1 + below(3); n > 0; --n) {
    const std::size_t at = below(bytes.size()), length = below(20);
    switch (below(3)) {
      case 0:
        bytes.erase(at, length);
        break;
      case 1:
        bytes.insert(below(bytes.size()), bytes.substr(at, length));
        break;
      default:
        if (at < bytes.size()) bytes[at] = static_cast<char>(bytes[at] ^ 1 << below(7));
    }
  }
  return bytes;
}

TEST(GroupBytes, ReadEntryByEntryMeanWhatTheWholeMessageMeans) {
  FiltersGroup group = groupOf(2, 3);
  for (unsigned id : {1u, 2u, 300u}) {
    FiltersEntry entry = entryOf({0, 1, 2, 9, 26}, {0, 5, 11}, policer::Stage::Ingress);
    entry.setId(id);
    ASSERT_EQ(group.insertEntry(entry), FILTERS_OK);
  }
  std::mt19937 random(20240229);
  for (const std::string& bytes : {bytesOf(group), bytesOf(fullObjects<FiltersGroup>().at(1))}) {
    for (int i = 0; i < 2000; ++i) {
      const std::string input = damaged(bytes, &random);
      ASSERT_EQ(outcome([&] { return bytesOf(FiltersGroup(input)); }),
                outcome([&] { return readWhole(input); }))
          << toHex(input);
    }
  }
}

// What looks like the shape that serialize() writes, and is not quite.
TEST(GroupBytes, OfAlmostTheUsualShapeMeanWhatTheWholeMessageMeans) {
  const std::string entry = fromHex("2a020801");
  const std::string next = fromHex("2a020863");
  for (const char* odd : {"2a8280808080000807",
                          "2a82808080808080808000",
                          "2a82808080100807",
                          "2affffffff070807",
                          "2a82000807",
                          "aa00",
                          "aa",
                          "8000",
                          "8080808010",
                          "00",
                          "0c",
                          "2a0308070c",
                          "2a03080700",
                          "2a0408072a09",
                          "2a7f0807",
                          "18",
                          "1802",
                          "080a",
                          "3007",
                          "320161"}) {
    for (const std::string& head : {std::string(), fromHex("08071005180220011802")}) {
      for (const std::string& input :
           {head + fromHex(odd) + entry, head + entry + fromHex(odd) + next,
            head + entry + fromHex(odd)}) {
        EXPECT_EQ(bytesOf(FiltersGroup(input)), readWhole(input)) << toHex(input);
      }
    }
  }
}

// One rule with many values says nothing about the others: no room is taken for them as if it did.
TEST(GroupBytes, OfOneLargeRuleAndManySmallOnesTakeNoMoreRoomThanTwice) {
  FiltersGroup group = groupOf(0, 1);
  std::set<unsigned short> all;
  for (unsigned short id = 0; id < 65535; ++id) all.insert(all.end(), id);
  FiltersEntry large(0);
  ASSERT_EQ(large.setMatch(MatchExternalVlanId(all)), FILTERS_OK);
  ASSERT_EQ(group.insertEntry(large), FILTERS_OK);
  for (unsigned id = 1; id < 1000; ++id) ASSERT_EQ(group.insertEntry(FiltersEntry(id)), FILTERS_OK);
  std::string bytes;
  group.serialize(&bytes);
  EXPECT_LT(bytes.capacity(), 2 * bytes.size() + 1000 * 1024);
  EXPECT_TRUE(FiltersGroup(bytes) == group);
}

// A message is at most 2 GiB; a size that only looks smaller when cut to 32 bits reads nothing.
TYPED_TEST(Bytes, AreNotReadBeyondTheLimitOfAMessage) {
  if (sizeof(std::size_t) == 4) GTEST_SKIP() << "no such size";
  const std::string bytes = bytesOf(fullObjects<TypeParam>().at(1));
  OwnBuffer buffer(bytes, static_cast<std::size_t>((std::uint64_t{1} << 32) + bytes.size()));
  EXPECT_TRUE(TypeParam(buffer) == TypeParam(0));
}

}  // namespace
