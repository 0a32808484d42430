// Tests reading the bytes of entries and groups, also bytes that were cut off or changed. For any
// bytes, the object can be read, printed, compared and written without a crash, a leak or a long
// wait. It is equal to the object that is converted from the parsed message.

#include "memory_control.h"

#include <gmock/gmock.h>

#include <ctime>

#include "cases.h"
#include "golden.h"
#include "meaning.h"

namespace {

using namespace catalogue;
using namespace std::string_literals;

class OwnBuffer : public FiltersSerialized {
 public:
  OwnBuffer(const std::string& bytes, std::size_t size) : size_(size) {
    if (!bytes.empty()) copyData(bytes);
  }
  std::size_t size() const override { return size_; }
  void setData(const std::string& bytes) override { set = bytes; }
  std::string set;
  std::size_t size_;
};

template <class T>
class Bytes : public testing::Test {
 public:
  const std::string bytes_ = golden(std::is_same_v<T, FiltersEntry> ? "entry.hex" : "group.hex");
};
using EntryAndGroup = testing::Types<FiltersEntry, FiltersGroup>;
TYPED_TEST_SUITE(Bytes, EntryAndGroup);

TYPED_TEST(Bytes, ThatCannotBeReadGiveWhatIsThereAndSayNothing) {
  TypeParam expected(0);
  expected.setPriority(42);
  testing::internal::CaptureStderr();
  // Runtimes before 3.21 store a number even if its bytes are cut off.
  const std::string cut = GOOGLE_PROTOBUF_VERSION < 3021000 ? "" : "18";
  for (const std::string& rest : {""s, "ffffff"s, "02"s, "7a05"s, cut, std::string(3000, '0')}) {
    const std::string bytes = fromHex("102a") + fromHex(rest);
    FiltersSerialized buffer(bytes);
    EXPECT_TRUE(TypeParam(bytes) == expected && TypeParam(buffer) == expected) << rest;
  }
  FiltersSerialized unfilled;
  EXPECT_TRUE(TypeParam(unfilled) == TypeParam(0));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TYPED_TEST(Bytes, GoThroughABuffersOwnFunctions) {
  const TypeParam object(this->bytes_);
  OwnBuffer buffer(this->bytes_, 0);
  EXPECT_TRUE(TypeParam(buffer) == TypeParam(std::string()));
  object.serialize(&buffer);
  EXPECT_EQ(buffer.set, this->bytes_);
}

TYPED_TEST(Bytes, ThrowWhenABufferHasASizeAndNoData) {
  OwnBuffer buffer("", 1);
  EXPECT_THAT([&] { TypeParam object(buffer); }, testing::ThrowsMessage<std::logic_error>(
                                                     "basic_string::_M_construct null not valid"));
}

// A message has at most 2 GiB. If a larger size is given, nothing is read, even if the low 32 bits
// of the size are small.
TYPED_TEST(Bytes, AreNotReadBeyondTheLimitOfAMessage) {
  if (sizeof(std::size_t) == 4) GTEST_SKIP() << "no such size";
  const std::uint64_t size = (std::uint64_t{1} << 32) + this->bytes_.size();
  OwnBuffer buffer(this->bytes_, static_cast<std::size_t>(size));
  EXPECT_TRUE(TypeParam(buffer) == TypeParam(0));
}

// These bytes are read entry by entry or as a whole message, with the same result.
TEST(GroupBytes, OfAlmostTheUsualShapeMeanWhatTheWholeMessageMeans) {
  for (const std::string& bytes : oddGroups()) {
    EXPECT_EQ(faultIn<FiltersGroup>(bytes), "") << toHex(bytes);
  }
}

// After a rule with many values, the library must not reserve as much memory for each of the other
// rules.
TEST(GroupBytes, OfOneLargeRuleAndManySmallOnesTakeNoMoreRoomThanTwice) {
  FiltersGroup group = groupOf(kNoStage, 1);
  FiltersEntry large(0);
  ASSERT_EQ(large.setMatch(MatchIngressPorts(Ports(100000))), FILTERS_OK);
  ASSERT_EQ(group.insertEntry(large), FILTERS_OK);
  for (unsigned id = 1; id < 1000; ++id) ASSERT_EQ(group.insertEntry(FiltersEntry(id)), FILTERS_OK);
  const std::string bytes = bytesOf(group);
  EXPECT_LT(bytes.capacity(), 2 * bytes.size() + 1000 * 1024);
}

// --- Damage --------------------------------------------------------------------------------------

void examine(const std::string& bytes) {
  const long live = memory::live;
  const std::clock_t start = std::clock();
  ASSERT_EQ(faultIn<FiltersGroup>(bytes), "");
  ASSERT_LT(std::clock() - start, CLOCKS_PER_SEC) << "a group of " << bytes.size() << " bytes";
  ASSERT_EQ(memory::live, live) << "leaked";
}

TEST(Damage, OfAnyEndCutOffOrAnySingleBitIsSurvived) {
  for (const char* name :
       {"group.hex", "group_ports.hex", "group_ipv4.hex", "group_ipv6.hex", "group_mpls.hex"}) {
    const std::string bytes = golden(name);
    for (std::size_t bit = 0; bit < 8 * bytes.size(); bit += caseStep()) {
      SCOPED_TRACE(testing::Message() << name << " bit " << bit);
      std::string damaged = bytes;
      damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ 1 << bit % 8);
      ASSERT_NO_FATAL_FAILURE(examine(damaged));
      if (bit % 8 != 0) continue;
      ASSERT_NO_FATAL_FAILURE(examine(bytes.substr(0, bit / 8)));
    }
  }
}

// The length of the entry is less than its fields need, so the entry ends within a field. The bytes
// of the group end there too, or more bytes follow. If a rule was cut right behind the tag of a
// match, it must not be read as a whole rule without this match.
TEST(Damage, OfAnEntryThatIsShorterThanItsFieldsIsSurvived) {
  for (const char* name : {"group_ports.hex", "group_ipv4.hex", "group_ipv6.hex", "group.hex"}) {
    FiltersGroupPB message;
    ASSERT_TRUE(message.ParseFromString(golden(name)));
    const std::string entry = message.entries_(0).SerializeAsString();
    message.clear_entries_();
    const std::string head = message.SerializeAsString();
    for (std::size_t size = 0; size < entry.size(); size += caseStep()) {
      SCOPED_TRACE(testing::Message() << name << " cut at " << size);
      const std::string cut = head + bytesField(0x2a, entry.substr(0, size));
      for (const std::string& end : {std::string(), entry.substr(size), bytesField(0x2a, entry)}) {
        ASSERT_NO_FATAL_FAILURE(examine(cut + end));
      }
    }
  }
}

// --- Golden bytes: what other releases and processes send and expect -----------------------------

using Stage = policer::Stage;

template <class T>
void expectGolden(const std::string& name, const T& object) {
  EXPECT_EQ(toHex(bytesOf(object)), toHex(golden(name)));
  EXPECT_TRUE(T(golden(name)) == object);
}

TEST(WireGolden, HoldsEntriesOfEveryField) {
  expectGolden("entry.hex", fullEntry(upTo(kLastGoldenMatch, kMatchCodes),
                                      upTo(kLastGoldenAction, kActionCodes)));
  FiltersEntry entry =
      entryOf({FILTERS_MATCH_SRC_IPV6, FILTERS_MATCH_DST_IPV6, FILTERS_MATCH_DST_L4_PORT_RANGE}, {},
              Stage::Ingress);
  entry.setId(4294967295);
  EXPECT_EQ(entry.setMatch(MatchIngressPorts(PortTypes{port_type_t(0), port_type_t(7)})),
            FILTERS_OK);
  EXPECT_EQ(entry.setMatch(MatchDSCP(46)), FILTERS_OK);
  EXPECT_EQ(entry.setAction(redirectTo({kEth3, kLag1})), FILTERS_OK);
  expectGolden("entry_ipv6.hex", entry);
}

void expectGoldenGroup(const std::string& name, FiltersGroup group, const FiltersEntry& entry) {
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  EXPECT_EQ(group.convertToFiltersGroupPB().SerializeAsString(), golden(name));
  expectGolden(name, group);
}

TEST(WireGolden, HoldsGroupsOfSeveralTypes) {
  expectGoldenGroup("group_ports.hex", groupOf(kIngress, 1),
                    entryOf({FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_EXTERNAL_VLAN_ID,
                             FILTERS_MATCH_TPID, FILTERS_MATCH_DST_MAC, FILTERS_MATCH_SRC_MAC,
                             FILTERS_MATCH_INGRESS_STP_STATE, FILTERS_MATCH_DROP},
                            {FILTERS_ACTION_BLOCK_EGRESS_PORTS, FILTERS_ACTION_MAP_TO_CPU_COS_QUEUE,
                             FILTERS_ACTION_REDIRECT, FILTERS_ACTION_REPLACE_DST_MAC},
                            Stage::Ingress));
  expectGoldenGroup(
      "group_ipv4.hex", groupOf(kNoStage, 3),
      entryOf({FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_SRC_L4_PORT, FILTERS_MATCH_SRC_IPV4,
               FILTERS_MATCH_DST_IPV4, FILTERS_MATCH_IP_PROTOCOL, FILTERS_MATCH_TTL},
              {FILTERS_ACTION_DENY, FILTERS_ACTION_COPY_TO_CPU_CANCEL, FILTERS_ACTION_SET_DSCP,
               FILTERS_ACTION_L3_SWITCH}));
  expectGoldenGroup("group_ipv6.hex", groupOf(kIngress, 8),
                    entryOf({FILTERS_MATCH_DST_IPV6, FILTERS_MATCH_VRF_ID}, {FILTERS_ACTION_PERMIT},
                            Stage::Ingress));
  expectGoldenGroup("group_mpls.hex", groupOf(kLookup, 4),
                    entryOf({FILTERS_MATCH_INTERNAL_VLAN_ID, FILTERS_MATCH_PCP,
                             FILTERS_MATCH_INTERNAL_PCP, FILTERS_MATCH_TOS},
                            {FILTERS_ACTION_SET_PCP_AND_QUEUE, FILTERS_ACTION_SET_INNER_PCP,
                             FILTERS_ACTION_COPY_INNER_PCP, FILTERS_ACTION_MPLS_PORT_SET}));
}

TEST(WireGolden, HoldsAGroupOfTwoEntries) {
  FiltersGroup group(65535);
  group.setPriority(300);
  EXPECT_EQ(group.setStage(FILTERS_GROUP_STAGE_INGRESS), FILTERS_OK);
  EXPECT_EQ(group.setType(FILTERS_GROUP_TYPE_11), FILTERS_OK);
  FiltersEntry entry = entryOf({FILTERS_MATCH_ALL}, {}, Stage::Ingress);
  entry.setId(128);
  entry.setPriority(1);
  entry.setPolicerParent(policerAt(Stage::Egress, 301));
  EXPECT_EQ(entry.setCounter({1, FILTERS_COUNTER_TYPE_OCTETS}), FILTERS_OK);
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  expectGoldenGroup(
      "group.hex", group,
      entryOf({FILTERS_MATCH_DST_L4_PORT_RANGE}, {FILTERS_ACTION_DENY}, Stage::Ingress));
}

// --- The buffer ----------------------------------------------------------------------------------

std::string contentOf(const FiltersSerialized& buffer) { return {buffer.data(), buffer.size()}; }

TEST(Serialized, CountsOneZeroBehindTheBytes) {
  for (const std::string& bytes : {""s, "ab"s, "a\0\0b"s, std::string(100000, '\xff')}) {
    FiltersSerialized buffer;
    EXPECT_TRUE(buffer.size() == 0 && buffer.data() == nullptr);
    buffer.setData(bytes);
    EXPECT_EQ(contentOf(buffer), bytes + '\0');
    EXPECT_EQ(contentOf(FiltersSerialized(bytes)), bytes + '\0');
  }
}

// Deliberate: copyData() does not free the old array.
TEST(Serialized, CopyDataLeavesTheOldArrayToWhoKeptIt) {
  FiltersSerialized buffer("old"s);
  const std::unique_ptr<const char[]> old(buffer.data());
  buffer.copyData("new one");
  EXPECT_EQ(contentOf(buffer), "new one\0"s);
  EXPECT_STREQ(old.get(), "old");
}

}  // namespace
