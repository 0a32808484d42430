// Tests traces of one packet through rules, and packets as text.

#include <filter_inspect/filter_text.h>
#include <gtest/gtest.h>

#include <fstream>

#include "../../cases.h"
#include "../sentences.h"
#include "tiny_checks.h"

using namespace tiny;

namespace {

struct Random {
  unsigned below(std::size_t limit) { return static_cast<unsigned>(engine() % limit); }
  std::mt19937 engine{1};
};

TEST(TraceTest, IsTheSameForAllThatAPacketCanBe) {
  Random random;
  for (RandomCases i(600); i.more(); ++i) {
    const Case c = Maker<Random>(random).make(1 + random.below(5));
    const auto packets = c.everyPacket();
    for (int k = 0; k < 4; ++k) {
      const auto& packet = packets[random.below(packets.size())];
      std::vector<bool> told(packet.size());
      for (std::size_t f = 0; f < told.size(); ++f) told[f] = random.below(3) != 0;
      for (Order order : kAllOrders) {
        ASSERT_EQ(faultOfTrace(c, packet, told, order), "") << i.done();
      }
    }
  }
}

std::string traced(const FiltersGroup& group, const char* packet, Order order) {
  const auto parsed = Packet::parse(packet, nullptr);
  std::ostringstream os;
  if (parsed) os << trace(group, *parsed, order);
  return os.str();
}

TEST(TraceTest, SaysWhatItLacksAndWhatIsOpen) {
  FiltersGroup group(1);
  ASSERT_EQ(group.setType(FILTERS_GROUP_TYPE_3), FILTERS_OK);
  FiltersEntry bgp(10), ttl(50), rest(1000);
  bgp.setPriority(100);
  ttl.setPriority(50);
  set(&bgp, MatchSrcIPv4(addressOf<in_addr>(7)));
  set(&bgp, MatchDstL4Port(179));
  set(&ttl, MatchTTL(1));
  for (const FiltersEntry* entry : {&bgp, &ttl, &rest}) {
    ASSERT_EQ(group.insertEntry(*entry), FILTERS_OK);
  }
  const Order order = Order::kHighestPriority;
  EXPECT_EQ(traced(group, "src_ipv4=0.0.0.7 ttl=64", order),
            "undecided: 1000 takes it, unless 10 does (both: no action)\n"
            "  10 undecided: dst_l4_port is not told\n"
            "  50 miss: ttl\n"
            "  1000 hit\n");
  EXPECT_EQ(traced(group, "src_ipv4=0.0.0.7 dst_l4_port=80", order),
            "undecided: 1000 takes it, unless 10 or 50 does (all: no action)\n"
            "  10 undecided: dst_l4_port: its mask of 0 may mean that value alone\n"
            "  50 undecided: ttl is not told\n"
            "  1000 hit\n");
  EXPECT_EQ(traced(group, "dst_l4_port=80", order),
            "undecided: 1000 takes it, unless 10 or 50 does (all: no action)\n"
            "  10 undecided: dst_l4_port: its mask of 0 may mean that value alone; src_ipv4 is not "
            "told\n"
            "  50 undecided: ttl is not told\n"
            "  1000 hit\n");
  EXPECT_EQ(traced(group, "ttl=64", order),
            "undecided: 1000 takes it, unless 10 does (both: no action)\n"
            "  10 undecided: dst_l4_port, src_ipv4 are not told\n"
            "  50 miss: ttl\n"
            "  1000 hit\n");
  EXPECT_EQ(traced(group, "src_ipv4=0.0.0.7 dst_l4_port=179", order).substr(0, 27),
            "hit: entry 10 (no action)\n ");
  EXPECT_EQ(traced(group, "src_ipv4=none ttl=none", order).substr(0, 16), "hit: entry 1000 ");
  EXPECT_EQ(traced(group, "src_ipv4=none ttl=none", Order::kUnspecified).substr(0, 16),
            "hit: entry 1000 ");
  EXPECT_EQ(traced(group, "src_ipv4=none ttl=1", Order::kUnspecified).substr(0, 72),
            "undecided: 50 or 1000 takes it; nothing says which of 50 or 1000 comes f");
  // A trace does not name an entry whose packets are all surely taken by earlier entries. Here this
  // holds in every reading of tos=8, because the device reads equal matches in the same way.
  const ParsedGroups halves = groupsFromText(
      "filter-groups 1\ngroup 1 priority=1 stage=ingress type=4\n"
      "entry 10 priority=30 if src_ipv4=10.0.0.0/9 tos=8 then permit\n"
      "entry 20 priority=20 if src_ipv4=10.128.0.0/9 tos=8 then permit\n"
      "entry 30 priority=10 if src_ipv4=10.0.0.0/8 tos=8 then deny\n"
      "entry 40 priority=5 then permit\n");
  ASSERT_EQ(halves.groups.size(), 1U) << halves.report;
  const std::string undecided = traced(halves.groups[0], "tos=9", order);
  EXPECT_EQ(undecided.substr(0, undecided.find('\n')),
            "undecided: 40 takes it, unless 10 or 20 does (all: permit)");
  EXPECT_EQ(traced(FiltersGroup(1), "", order), "miss\n");
  ASSERT_EQ(group.removeEntry(1000), FILTERS_OK);
  EXPECT_EQ(traced(group, "src_ipv4=0.0.0.1", order).substr(0, 45),
            "undecided: no entry takes it, unless 50 does\n");
}

// If excluding entries takes too many steps, the trace names all entries that may take the packet.
TEST(TraceTest, NamesAtMostThoseThatMayBe) {
  std::string text = "filter-groups 1\ngroup 1 priority=1 stage=ingress type=3\n";
  for (unsigned i = 0; i < 3000; ++i) {
    text += "entry " + std::to_string(i) + " priority=" + std::to_string(3000 - i) +
            " if src_ipv4=10.0." + std::to_string(i / 256) + '.' + std::to_string(i % 256) +
            " then permit\n";
  }
  const ParsedGroups parsed = groupsFromText(text);
  ASSERT_EQ(parsed.groups.size(), 1U) << parsed.report;
  const std::string said = traced(parsed.groups[0], "", Order::kHighestPriority);
  const std::string line = said.substr(0, said.find('\n'));
  EXPECT_EQ(line.substr(0, 45), "undecided: no entry takes it, unless 0, 1, 2,");
  EXPECT_EQ(line.substr(line.size() - 49), "2998 or 2999 does; some of them may be impossible");
}

// A packet that was read from a text writes the same text.
TEST(PacketTest, ReadsBackWhatItWrites) {
  const char* const packets[] = {
      "",
      "ingress_port=0x01000003 ingress_port_type=cpu external_vlan_id=5 tpid=0x88a8 "
      "dst_mac=00:1b:21:0a:ff:42",
      "l2_src_entry_type=0 src_ipv4=192.0.2.1 dst_ipv6=2001:db8::ffff:1",
      "l2_src_entry_type=none src_ipv4=none src_ipv6=::1",
      "vlan_tagging=tagged mpls_term=true egress_ports=0xffffffff svc_vlan_type=4294967295 "
      "drop=false cpu_port=true",
      "l2_src_entry_type=static vlan_tagging=7",
  };
  for (const char* text : packets) {
    Report report;
    const auto packet = Packet::parse(text, &report);
    ASSERT_TRUE(packet) << report;
    EXPECT_EQ(packet->toText(), text);
    EXPECT_TRUE(report.empty());
  }
  EXPECT_EQ(Packet::parse(" ttl=0x40\t src_ipv4=10.0.0.1\n", nullptr)->toText(),
            "src_ipv4=10.0.0.1 ttl=64");
  EXPECT_EQ(Packet::parse("dscp=ef ip_protocol=icmpv6", nullptr)->toText(),
            "ip_protocol=58 tos=184");
  EXPECT_EQ(Packet::parse("dscp=none", nullptr)->toText(), "tos=none");
  for (std::string_view name : packetFieldNames()) {
    EXPECT_TRUE(Packet::parse(std::string(name) + "=none", nullptr)) << name;
  }
}

TEST(PacketTest, SaysWhatItCannotRead) {
  const std::pair<const char*, Code> faults[] = {
      {"ttl", Code::kTextSyntax},
      {"=1", Code::kTextValue},
      {"vlan=1", Code::kTextValue},
      {"ttl=256", Code::kTextValue},
      {"ttl=", Code::kTextValue},
      {"ttl=-1", Code::kTextValue},
      {"src_ipv4=10.0.0.0/8", Code::kTextValue},
      {"src_ipv4=7", Code::kTextValue},
      {"cpu_port=2", Code::kTextValue},
      {"vlan_tagging=None", Code::kTextValue},
      {"srcipv4=1.2.3.4", Code::kTextValue},
      {"ip_protocol=TCP", Code::kTextValue},
      {"dscp=64", Code::kTextValue},
      {"dst_l4_port=179/0xffff", Code::kTextValue},
      {"ttl=1 ttl=1", Code::kTextRepeated},
      {"tos=1 dscp=1", Code::kTextRepeated},
      {"ttl=none ttl=1", Code::kTextRepeated},
  };
  catalogue::Sentences sentences;
  for (const auto& [text, code] : faults) {
    Report report;
    EXPECT_FALSE(Packet::parse(text, &report)) << text;
    ASSERT_EQ(report.findings.size(), 1U) << text;
    EXPECT_EQ(report.findings[0].code, code) << report;
    EXPECT_FALSE(Packet::parse(text, nullptr));
    sentences.add(report);
  }
  sentences.expectGolden("sentences_packet.txt");
  Report report;
  EXPECT_FALSE(Packet::parse("ttl=1 a=1 b", &report));
  ASSERT_EQ(report.findings.size(), 2U);
  EXPECT_EQ(report.findings[0].path, "1:7");
  EXPECT_EQ(report.findings[0].word, "a");
  EXPECT_EQ(report.findings[1].path, "1:11");
  report = {};
  EXPECT_FALSE(Packet::parse("a b c", &report, 1));
  EXPECT_EQ(report.findings.size(), 1U);
  EXPECT_EQ(report.left_out, 2U);
  EXPECT_EQ(report.worst(), Severity::kError);
}

// The examples in docs/analysis.md must be the real output.
TEST(AnalysisDocumentTest, ShowsWhatIsSaid) {
  std::ifstream in(FILTERS_GOLDEN_DIR "/../../docs/analysis.md");
  std::vector<std::string> blocks;
  bool inside = false;
  for (std::string line; std::getline(in, line);) {
    const bool indented = line.rfind("    ", 0) == 0;
    if (indented && !inside) blocks.emplace_back();
    if (indented) blocks.back() += line.substr(4) + '\n';
    inside = indented;
  }
  ASSERT_EQ(blocks.size(), 5U);
  const ParsedGroups parsed = groupsFromText(blocks[0]);
  ASSERT_EQ(parsed.groups.size(), 1U) << parsed.report;
  const FiltersGroup& group = parsed.groups[0];
  AnalysisOptions options;
  options.order = Order::kHighestPriority;
  std::ostringstream ordered, unordered;
  ordered << analyse(group, options);
  unordered << analyse(group);
  EXPECT_EQ(ordered.str(), blocks[1]);
  EXPECT_EQ(unordered.str(), blocks[2]);
  EXPECT_EQ(traced(group, blocks[3].c_str(), options.order), blocks[4]);
}

}  // namespace
