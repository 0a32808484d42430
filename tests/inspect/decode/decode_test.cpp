// Tests strict decoding. Decoding must report planted losses, and must keep its promises for any
// bytes.

#include "../../cases.h"
#include "../../golden.h"
#include "../../replaced.h"
#include "../sentences.h"
#include "decoding.h"

#include <random>

namespace {

using namespace catalogue;

struct Planted {
  const char* name;
  const char* bytes;
  const char* findings;
};
void PrintTo(const Planted& planted, std::ostream* os) { *os << planted.name; }

std::string bytesOf(const char* text) {
  std::istringstream in(text);
  return assemble(in);
}

// The findings, one on each line, such as "value-cut 18+4 matches_[0].vlan_id_[1] 65636>100". Bytes
// are counted from `start`.
std::string textOf(const Report& report, std::size_t start) {
  std::ostringstream text;
  for (const Finding& finding : report.findings) {
    text << nameOf(finding.code) << ' '
         << static_cast<std::ptrdiff_t>(finding.bytes->offset - start) << '+'
         << finding.bytes->length << ' ' << finding.path;
    if (!finding.before.empty() || !finding.after.empty()) {
      text << ' ' << finding.before << '>' << finding.after;
    }
    text << '\n';
  }
  return text.str();
}

// --- Planted losses in an entry, behind its id, priority and policer -----------------------------

const char* const kEntryStart = "0807 1000 1a @policer-none";

const Planted kInEntries[] = {
    {"Nothing", "", ""},
    {"MatchWithoutType", "22 00", "required-missing 0+2 matches_[0].type_\n"},
    {"ActionWithoutType", "2a 00", "required-missing 0+2 actions_[0].type_\n"},
    {"AddressWithoutMask", "22 ( 0809 4204c0000201 )",
     "field-defaulted 0+10 matches_[0].ipv4_mask_ >00000000\n"},
    {"ShortMask", "22 ( 0809 4204c0000201 5202ffff )",
     "bytes-short 10+4 matches_[0].ipv4_mask_ ffff>ffff0000\n"},
    {"LongAddress", "22 ( 0804 2a07001b210aff4201 3a06ffffffffffff )",
     "bytes-long 4+9 matches_[0].mac_ 001b210aff4201>001b210aff42\n"},
    {"CutNumber", "22 ( 081a b001c002 )", "value-cut 4+4 matches_[0].ttl_ 320>64\n"},
    {"CutElement", "22 ( 0802 180a 18e48004 )",
     "value-cut 6+4 matches_[0].vlan_id_[1] 65636>100\n"},
    {"CutPackedElement", "22 ( 0802 1a040ae48004 )",
     "encoding-differs 4+6 matches_[0].vlan_id_\n"
     "value-cut 7+3 matches_[0].vlan_id_[1] 65636>100\n"},
    {"CollapsedElement", "22 ( 0802 1864 18e48004 )",
     "value-cut 6+4 matches_[0].vlan_id_[1] 65636>100\n"
     "value-collapsed 6+4 matches_[0].vlan_id_[1] 65636>100\n"},
    {"SetInOtherOrder", "22 ( 080c 4807 4803 )", "order-differs 4+4 matches_[0].pcp_\n"},
    {"UnusedField", "22 ( 081a b00140 b80101 )", "field-unused 7+3 matches_[0].vrf_id_ 1>\n"},
    {"UnusedList", "22 ( 081a 180a 180b b00140 )", "field-unused 4+4 matches_[0].vlan_id_\n"},
    {"UnknownField", "22 ( 081a b00140 a20602abcd )", "field-unknown 7+5 matches_[0]\n"},
    {"UnknownGroup", "22 ( 081a b00140 a306 0801 a406 )", "field-unknown 7+6 matches_[0]\n"},
    {"OtherEndOfAGroup", "22 ( 081a b00140 a306 0801 9c06 )", "bytes-broken 7+6 matches_[0]\n"},
    {"OtherWireType", "22 ( 081a b2010101 )",
     "field-wire-type 4+4 matches_[0]\n"
     "field-defaulted 0+8 matches_[0].ttl_ >0\n"},
    {"RepeatedField", "22 ( 081a b00140 b00141 )", "field-repeated 4+3 matches_[0].ttl_\n"},
    {"WideVarint", "22 ( 0808 688280808010 )", "value-cut 4+6 matches_[0].l2_src_ 4294967298>2\n"},
    {"LongVarint", "22 ( 081a b001c000 )", "encoding-differs 4+4 matches_[0].ttl_\n"},
    {"LongTag", "22 ( 081a b0810040 )", "encoding-differs 4+4 matches_[0].ttl_\n"},
    {"WideTag", "22 ( 081a b08180801040 )", "encoding-differs 4+6 matches_[0].ttl_\n"},
    // Runtimes from 3.21.0 refuse a tag of more than five bytes; 3.6.0 reads it.
    {"TagOfSixBytes", "22 ( 081a b0818080800040 )",
     GOOGLE_PROTOBUF_VERSION < 3021000 ? "encoding-differs 4+7 matches_[0].ttl_\n"
                                       : "bytes-broken 4+7 matches_[0]\n"},
    {"BitsBeyondAVarint", "32 ( 0801 10ffffffffffffffffff7f )",
     "encoding-differs 4+11 counters_[0].type\n"
     "counter-unusual 0+15 counters_[0]\n"},
    {"OddFlag", "22 ( 081c c00102 )", "encoding-differs 4+3 matches_[0].drop_flag_\n"},
    {"FieldsInOtherOrder", "22 ( b00140 081a )", "order-differs 5+2 matches_[0]\n"},
    {"UnknownMatch", "22 ( 0863 1801 )", "match-unknown 0+6 matches_[0]\n"},
    {"UnknownAction", "2a ( 0863 )", "action-unknown 0+4 actions_[0]\n"},
    {"RefusedMatch", "22 ( 0809 420401020304 520401020304 ) 22 ( 080f )",
     "match-refused 16+4 matches_[1]\n"},
    {"ReplacedMatch", "22 ( 081a b00140 ) 22 ( 081a b00141 )", "match-replaced 0+7 matches_[0]\n"},
    {"ReplacedAction", "2a ( 0805 1801 ) 2a ( 0805 1802 )", "action-replaced 0+6 actions_[0]\n"},
    {"ReplacedCounter", "32 ( 0801 1001 ) 32 ( 08818004 1002 )",
     "value-cut 8+4 counters_[1].id 65537>1\n"
     "counter-replaced 0+6 counters_[0]\n"},
    {"PartsInOtherOrder", "22 ( 081b b80101 ) 22 ( 081a b00140 ) 22 ( 0800 )",
     "order-differs 7+7 matches_[1]\n"},
    {"CounterOfNoType", "32 ( 0801 1000 )", "counter-unusual 0+6 counters_[0]\n"},
    {"CounterOfUnnamedType", "32 ( 0801 1063 )", "counter-unusual 0+6 counters_[0]\n"},
    {"CountersOfOneType", "32 ( 0801 1001 ) 32 ( 0802 1001 )",
     "counter-unusual 6+6 counters_[1]\n"},
    {"NegativeCounter", "32 ( 08ffffffffffffffffff01 1001 )",
     "value-cut 2+11 counters_[0].id -1>65535\n"},
    {"DamagedParent", "3a 02 08 01",
     "policer-rewritten 0+4 policer_parent_ "
     "0801>120e0804100018002000280030003800180278ffffffff0f\n"},
    {"RewrittenParent", "3a ( 120e0804100018002000280030003800 1802 7805 7805 )",
     "policer-rewritten 0+24 policer_parent_ "
     "120e0804100018002000280030003800180278057805>120e080410001800200028003000380018027805\n"},
    {"ThrowingAction", "2a ( 0812 5001 )", "rebuild-throws 0+6 actions_[0]\n"},
    {"TrailingZero", "00", "trailing-zero 0+1 \n"},
    {"TrailingZeroAndCounter", "32 ( 0801 1000 ) 00",
     "trailing-zero 6+1 \n"
     "counter-unusual 0+6 counters_[0]\n"},
    // The field in which the bytes end has no finding, and neither have the missing fields after
    // it.
    {"CutOff", "22 04 081a b0", "bytes-broken 4+1 matches_[0]\n"},
    {"CutOffInAMatchType", "22 02 08a3", "bytes-broken 2+2 matches_[0]\n"},
    {"CutOffInAnActionType", "2a 02 08ff", "bytes-broken 2+2 actions_[0]\n"},
    {"CutOffInARepeatedAction", "2a ( 0805 1801 ) 2a 04 0805 1881",
     "bytes-broken 10+2 actions_[1]\n"},
    {"CutOffInASecondMatch", "22 ( 0809 420401020304 520401020304 ) 22 04 080f 1881",
     "bytes-broken 20+2 matches_[1]\n"},
    {"CutOffInACounter", "32 ( 0801 1001 ) 32 03 0801 10", "bytes-broken 10+1 counters_[1]\n"},
    {"CutOffInAPolicer", "3a 02 08", "bytes-broken 0+3 \n"},
    {"LossBeforeTheCut", "22 0a 081a b00140 b00141 b0",
     "field-repeated 4+3 matches_[0].ttl_\n"
     "bytes-broken 10+1 matches_[0]\n"},
    {"Nonsense", "22 ( 081a b00140 07 )", "bytes-broken 7+1 matches_[0]\n"},
};

class InEntry : public testing::TestWithParam<Planted> {};
TEST_P(InEntry, IsFound) {
  const std::string start = bytesOf(kEntryStart);
  const auto report = decodeEntry(start + bytesOf(GetParam().bytes)).report;
  EXPECT_EQ(textOf(report, start.size()), GetParam().findings);
}
INSTANTIATE_TEST_SUITE_P(Planted, InEntry, testing::ValuesIn(kInEntries),
                         [](const auto& planted) { return planted.param.name; });

// --- Planted losses in a group -------------------------------------------------------------------

const Planted kInGroups[] = {
    {"Nothing", "0807 1000 1800 2000", ""},
    {"NoBytes", "",
     "required-missing 0+0 id_\n"
     "required-missing 0+0 priority_\n"
     "required-missing 0+0 stage_\n"
     "required-missing 0+0 type_\n"},
    {"CutHead", "08878004 1000 1800 2000", "value-cut 0+4 id_ 65543>7\n"},
    {"RepeatedHead", "0807 0808 1000 1800 2000", "field-repeated 0+2 id_\n"},
    {"HeadBehindEntries", "2a ( 0801 1000 1a @policer-none ) 0807 1000 1800 2000",
     "order-differs 39+2 \n"},
    {"PairThatSettersRefuse", "0807 1000 1801 2001", "stage-type-pair 6+2 type_\n"},
    {"RefusedEntry", "0807 1000 1800 2003 2a ( 0801 1000 1a @policer-none 22 ( 081b b80101 ) )",
     "entry-refused 8+46 entries_[0]\n"
     "match-not-admitted 47+7 entries_[0].matches_[0]\n"},
    {"RefusedPolicer", "0807 1000 1800 2003 2a ( 0801 1000 1a @policer )",
     "entry-refused 8+39 entries_[0]\n"
     "policer-stage 14+33 entries_[0].policer_\n"},
    {"UnknownStage", "0807 1000 1863 2003 2a ( 0801 1000 1a @policer-none )",
     "stage-type-pair 6+2 type_\n"
     "entry-refused 8+39 entries_[0]\n"
     "stage-unknown 8+39 entries_[0]\n"},
    {"DamagedPolicer", "0807 1000 1800 2003 2a ( 0801 1000 1a 02 0801 )",
     "policer-rewritten 14+4 entries_[0].policer_ "
     "0801>120e0804100018002000280030003800180278ffffffff0f\n"},
    {"ReplacedEntry",
     "0807 1000 1800 2003 2a ( 0801 1000 1a @policer-none ) 2a ( 0801 1001 1a @policer-none )",
     "entry-replaced 8+39 entries_[0]\n"},
    {"RefusedEntryReplacesNothing",
     "0807 1000 1800 2003 2a ( 0801 1000 1a @policer-none ) 2a ( 0801 1001 1a @policer )",
     "entry-refused 47+39 entries_[1]\n"
     "policer-stage 53+33 entries_[1].policer_\n"},
    {"EntriesInOtherOrder",
     "0807 1000 1800 2003 2a ( 0803 1000 1a @policer-none ) 2a ( 0802 1001 1a @policer-none ) "
     "2a ( 0801 1001 1a @policer-none )",
     "order-differs 47+39 entries_[1]\n"},
    {"LongLength", "0807 1000 1800 2003 2a 8400 0801 1000",
     "encoding-differs 8+7 entries_[0]\n"
     "required-missing 8+7 entries_[0].policer_\n"},
    {"ZeroBeforeTheEnd", "0807 1000 1800 2003 00 08", "bytes-broken 8+2 \n"},
    {"CutOffInAMatch", "0807 1000 1800 2003 2a 0c 0801 1000 22 08 0809 42",
     "bytes-broken 18+1 entries_[0].matches_[0]\n"},
    {"CutOffInARefusedMatch", "0807 1000 1800 2003 2a 0a 0801 1000 22 06 081b b801",
     "bytes-broken 18+2 entries_[0].matches_[0]\n"
     "entry-refused 8+12 entries_[0]\n"},
    {"CutOffInTheHead", "08878004 10", "bytes-broken 4+1 \nvalue-cut 0+4 id_ 65543>7\n"},
    {"ZeroAlone", "00",
     "trailing-zero 0+1 \n"
     "required-missing 0+1 id_\n"
     "required-missing 0+1 priority_\n"
     "required-missing 0+1 stage_\n"
     "required-missing 0+1 type_\n"},
};

class InGroup : public testing::TestWithParam<Planted> {};
TEST_P(InGroup, IsFound) {
  EXPECT_EQ(textOf(decodeGroup(bytesOf(GetParam().bytes)).report, 0), GetParam().findings);
}
INSTANTIATE_TEST_SUITE_P(Planted, InGroup, testing::ValuesIn(kInGroups),
                         [](const auto& planted) { return planted.param.name; });

// --- Examples of the documents -------------------------------------------------------------------

// A line of the report without the position in the bytes, because the bytes of policers differ from
// platform to platform.
std::string withoutBytes(const std::string& line) {
  return replaced(line, "byte [0-9]+ \\+ [0-9]+", "bytes");
}

TEST(Findings, AreWrittenAsTheirDocumentShows) {
  std::set<std::string> lines;
  Sentences said;
  const auto add = [&](const Report& report) {
    said.add(report);
    for (const Finding& finding : report.findings) {
      std::ostringstream line;
      line << "    " << finding;
      lines.insert(withoutBytes(line.str()));
    }
  };
  const std::string start = bytesOf(kEntryStart);
  for (const Planted& planted : kInEntries) add(decodeEntry(start + bytesOf(planted.bytes)).report);
  for (const Planted& planted : kInGroups) add(decodeGroup(bytesOf(planted.bytes)).report);
  said.expectGolden("sentences_decode.txt");
  std::ifstream document(FILTERS_GOLDEN_DIR "/../../docs/findings.md");
  std::set<std::string> shown;
  bool inBytes = false;
  for (std::string line; std::getline(document, line);) {
    if (line.compare(0, 3, "## ") == 0) inBytes = line == "## Bytes";
    if (!inBytes || line.compare(0, 4, "    ") != 0) continue;
    EXPECT_EQ(lines.count(withoutBytes(line) + '\n'), 1u) << line;
    const std::size_t code = line.rfind('[') + 1;
    shown.insert(line.substr(code, line.size() - 1 - code));
  }
#define FINDING(code, name, severity)                                               \
  EXPECT_TRUE(Code::code<Code::kBytesBroken || Code::code> Code::kCounterUnusual || \
              shown.count(name) != 0)                                               \
      << name;
#include <filter_inspect/findings.def>
}

TEST(Decode, TellsWhatItsFindingsAreAbout) {
  const std::string bytes = bytesOf(
      "0807 1000 1800 2003 2a ( 0809 1000 1a @policer-none 22 ( 081b b80101 ) 22 ( 0809 ) "
      "22 ( 080a ) 22 ( 080f ) )");
  const std::vector<Finding> findings = decodeGroup(bytes).report.findings;
  ASSERT_EQ(findings.size(), 8u);
  for (const Finding& finding : findings) {
    EXPECT_EQ(finding.group, 7);
    EXPECT_EQ(finding.entry, 9u);
  }
  const auto find = [&](Code code) {
    return *std::find_if(findings.begin(), findings.end(),
                         [&](auto& it) { return it.code == code; });
  };
  EXPECT_EQ(find(Code::kMatchRefused).subject, Subject::kMatch);
  EXPECT_EQ(find(Code::kMatchRefused).offender, FILTERS_MATCH_DST_IPV6);
  EXPECT_EQ(find(Code::kMatchRefused).others,
            (std::vector<std::uint32_t>{FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_DST_IPV4}));
  for (const Code code : {Code::kEntryRefused, Code::kMatchNotAdmitted}) {
    const Finding finding = find(code);
    EXPECT_EQ(finding.result, FILTERS_ERR_MATCH_NOT_ALLOWED);
    EXPECT_EQ(finding.offender, FILTERS_MATCH_VRF_ID);
    const auto& admitted = FiltersGroup::TypeDescription_.at(FILTERS_GROUP_TYPE_3);
    EXPECT_EQ(finding.admitted, std::vector<std::uint32_t>(admitted.begin(), admitted.end()));
  }
  const auto only = [](const std::string& rest) {
    const Report report = decodeEntry(bytesOf(kEntryStart) + rest).report;
    EXPECT_EQ(report.findings.size(), 1u) << report;
    return report.findings.at(0);
  };
  EXPECT_EQ(only(bytesOf("32 ( 0801 1001 ) 32 ( 0802 1001 )")).others, std::vector{1u});
  // A finding about many bytes shows only the first 256.
  for (const std::size_t size : {256u, 257u}) {
    const std::string mac =
        bytesOf("0804 2a") + withLength(std::string(size, 1)) + bytesOf("3a06ffffffffffff");
    const std::string shown = toHex(std::string(256, 1)) + (size == 256 ? "" : "...");
    EXPECT_EQ(only('\x22' + withLength(mac)).before, shown);
  }
}

// --- Promises ------------------------------------------------------------------------------------

const char* const kGroups[] = {"group.hex", "group_ports.hex", "group_ipv4.hex", "group_ipv6.hex",
                               "group_mpls.hex"};

void examine(const std::string& bytes) {
  ASSERT_EQ(faultInDecoding<FiltersGroup>(bytes), "") << toHex(bytes);
  ASSERT_EQ(faultInDecoding<FiltersEntry>(bytes), "") << toHex(bytes);
}

TEST(Decode, IsSilentAboutWhatTheLibraryWrites) {
  for (const char* name : kGroups) {
    const auto [group, report] = decodeGroup(golden(name));
    EXPECT_TRUE(group && report.empty()) << name << report;
    for (const auto& [id, entry] : group->getEntriesRef()) {
      const auto decoded = decodeEntry(catalogue::bytesOf(entry));
      EXPECT_TRUE(decoded.entry && decoded.report.empty()) << name << decoded.report;
    }
  }
}

TEST(Decode, KeepsItsPromisesWhateverIsDamaged) {
  std::mt19937 random(1);
  for (const char* name : kGroups) {
    const std::string bytes = golden(name);
    for (std::size_t at = 0; at < bytes.size(); at += caseStep()) {
      examine(bytes.substr(0, at));
      for (int bit = 0; bit < 8; ++bit) {
        std::string damaged = bytes;
        damaged[at] = static_cast<char>(damaged[at] ^ 1 << bit);
        examine(damaged);
      }
      std::string damaged = bytes;
      for (int i = 0; i < 3; ++i) damaged[random() % bytes.size()] = static_cast<char>(random());
      const std::size_t from = random() % bytes.size();
      examine(damaged.insert(at, bytes, from, random() % 40));
    }
  }
}

TEST(Decode, KeepsItsPromisesForOddGroups) {
  for (const std::string& bytes : oddGroups()) examine(bytes);
}

// Tests nested unknown groups in a group, in an entry and in a match.
TEST(Decode, FollowsTheRuntimeAsDeepAsItGoes) {
  for (std::size_t depth = 96; depth < 104; ++depth) {
    std::string bytes = std::string(depth, '\x7b') + std::string(depth, '\x7c');
    std::size_t start = 0;
    for (const char* tag : {"2a", "22", "0a"}) {
      examine(bytes);
      for (const Finding& finding : decodeGroup(bytes).report.findings) {
        if (finding.code != Code::kBytesBroken) continue;
        EXPECT_EQ(finding.bytes->offset, start) << depth;
      }
      const std::string outer = fromHex(tag) + withLength(bytes);
      start += outer.size() - bytes.size();
      bytes = outer;
    }
  }
}

// If the bytes have the id, priority, stage or type of the group twice, the second value counts.
TEST(Decode, AsAnotherStageOrType) {
  const std::string bytes = golden("group.hex");
  for (const auto& [stage, types] : FiltersGroup::StageTypesDescription_) {
    for (const filtersGroupType_t type : types) {
      FiltersGroupPB head;
      head.set_stage_(static_cast<std::uint32_t>(stage));
      const FiltersGroup staged(bytes + head.SerializePartialAsString());
      EXPECT_EQ(*decodeGroupAs(bytes, {stage, {}}).group, staged);
      head.set_type_(static_cast<std::uint32_t>(type));
      const FiltersGroup expected(bytes + head.SerializePartialAsString());
      const auto [group, report] = decodeGroupAs(bytes, {stage, type});
      EXPECT_EQ(*group, expected);
      std::size_t refused = 0;
      for (const Finding& finding : report.findings) {
        EXPECT_NE(finding.code, Code::kFieldRepeated);
        EXPECT_LE(finding.bytes->offset + finding.bytes->length, bytes.size());
        refused += finding.code == Code::kEntryRefused ? 1 : 0;
      }
      EXPECT_EQ(group->getEntriesRef().size() + refused,
                FiltersGroup(bytes).getEntriesRef().size());
    }
  }
  const auto cut =
      decodeGroupAs(bytes.substr(0, bytes.size() - 1), {filtersGroupStage_t(kUnknown), {}});
  EXPECT_EQ(cut.group->getStage(), filtersGroupStage_t(kUnknown));
  EXPECT_TRUE(decodeGroupAs("", {filtersGroupStage_t(kIngress), filtersGroupType_t(3)})
                  .report.findings.size() == 2);  // id and priority are missing
}

// The list of received entries also has the entries that were refused or replaced.
TEST(Decode, KeepsTheEntriesThatCame) {
  const std::string bytes = golden("group.hex");
  FiltersGroupPB message;
  ASSERT_TRUE(message.ParseFromString(bytes));
  std::vector<FiltersEntry> whole, all;
  decodeGroupAndEntries(bytes, &whole);
  EXPECT_EQ(whole.size(), std::size_t(message.entries__size()));
  message.set_type_(FILTERS_GROUP_TYPE_NONE);  // refuses every match
  *message.add_entries_() = message.entries_(0);
  const auto [group, report] = decodeGroupAndEntries(message.SerializeAsString(), &all);
  whole.push_back(whole[0]);
  EXPECT_EQ(all, whole);
  EXPECT_LT(group->getEntriesRef().size(), whole.size() - 1);
}

TEST(Decode, ReadsNothingBeyondItsLimit) {
  const std::string bytes = golden("group.hex");
  DecodeLimits limits;
  limits.max_bytes = bytes.size();
  EXPECT_TRUE(decodeGroup(bytes, limits).report.empty());
  --limits.max_bytes;
  const auto [group, report] = decodeGroup(bytes, limits);
  EXPECT_FALSE(group);
  EXPECT_EQ(textOf(report, 0), "bytes-broken 0+" + std::to_string(bytes.size()) + " \n");
  EXPECT_EQ(report.findings[0].message, "there are more bytes than the limit, and none is read");
  EXPECT_FALSE(decodeEntry(bytes, limits).entry);
}

}  // namespace
