// What a group makes of a message; and the bytes of entries and of groups, which behave alike.

#include <filter_common/filter_groups.h>

#include <filter_common/filter_serialized.h>
#include <gmock/gmock.h>

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
  group.insertEntry(entryOf({30}));  // under id 7, and no longer admitted afterwards
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
    group.setType(type);
    group.insertEntry(FiltersEntry(4294967295));
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

// A message is at most 2 GiB; a size that only looks smaller when cut to 32 bits reads nothing.
TYPED_TEST(Bytes, AreNotReadBeyondTheLimitOfAMessage) {
  if (sizeof(std::size_t) == 4) GTEST_SKIP() << "no such size";
  const std::string bytes = bytesOf(fullObjects<TypeParam>().at(1));
  OwnBuffer buffer(bytes, static_cast<std::size_t>((std::uint64_t{1} << 32) + bytes.size()));
  EXPECT_TRUE(TypeParam(buffer) == TypeParam(0));
}

}  // namespace
