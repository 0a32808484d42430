// Tests packet sets and actions as text.

#include <filter_inspect/filter_questions.h>
#include <filter_inspect/filter_text.h>
#include <gtest/gtest.h>

#include "../sentences.h"

using namespace FiltersInspect;

namespace {

std::string written(const std::string& text) {
  Report report;
  const auto set = PacketSet::parse(text, &report);
  EXPECT_TRUE(set) << text << '\n' << report;
  return set ? set->toText() : "";
}

TEST(PacketSetTest, HasOneTextForEachSet) {
  const std::pair<const char*, const char*> rows[] = {
      {"", ""},
      {" ttl=0x40\t src_ipv4=10.0.0.1\n", "src_ipv4=10.0.0.1 ttl=64"},
      // Addresses.
      {"src_ipv4=10.1.2.3/8", "src_ipv4=10.0.0.0/8"},
      {"src_ipv4=10.0.0.0/255.0.0.0", "src_ipv4=10.0.0.0/8"},
      {"src_ipv4=10.0.0.0-10.255.255.255", "src_ipv4=10.0.0.0/8"},
      {"src_ipv4=10.0.0.0-10.255.255.254", "src_ipv4=10.0.0.0-10.255.255.254"},
      {"src_ipv4=1.2.3.4/0", "src_ipv4=0.0.0.0/0"},
      {"src_ipv4={10.0.0.0/9,10.128.0.0/9}", "src_ipv4=10.0.0.0/8"},
      {"src_ipv4={192.168.0.0/16,10.0.0.0/8}", "src_ipv4={10.0.0.0/8,192.168.0.0/16}"},
      {"src_ipv4=10.0.0.1/255.0.0.255", "src_ipv4=10.0.0.1/255.0.0.255"},
      {"src_ipv4=10.0.0.0/255.255.254.255", "src_ipv4={10.0.0.0,10.0.1.0}"},
      {"dst_mac=01:80:c2:00:00:07/ff:ff:ff:ff:ff:f0", "dst_mac=01:80:c2:00:00:00/44"},
      {"dst_mac=00:1b:21:00:00:00/24", "dst_mac=00:1b:21:00:00:00/24"},
      {"dst_mac=01:00:00:00:00:00/01:00:00:00:00:00",
       "dst_mac=01:00:00:00:00:00/01:00:00:00:00:00"},
      {"src_ipv6=2001:db8::/32", "src_ipv6=2001:db8::/32"},
      {"src_ipv6=::5-::1:0:0:0:3", "src_ipv6=::5-::1:0:0:0:3"},
      {"src_ipv6=::/0", "src_ipv6=::/0"},
      {"src_ipv6={::ffff:ffff:ffff:ffff,0:0:0:1::}", "src_ipv6=::ffff:ffff:ffff:ffff-0:0:0:1::"},
      {"src_ipv6={ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff,::}",
       "src_ipv6={::,ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff}"},
      {"src_ipv6=::7/::ffff", "src_ipv6=::7/::ffff"},
      // Numbers.
      {"dst_l4_port=1024-65535", "dst_l4_port=1024-65535"},
      {"dst_l4_port=0x1f00/0xff00", "dst_l4_port=7936-8191"},
      {"dst_l4_port=0x1f0f/0xff00", "dst_l4_port=7936-8191"},
      {"dst_l4_port=179/0xffff", "dst_l4_port=179"},
      {"dst_l4_port=1/0x1", "dst_l4_port=1/0x1"},
      {"dst_l4_port=80/0xfffd", "dst_l4_port={80,82}"},
      {"external_vlan_id={10,20-29}", "external_vlan_id={10,20-29}"},
      {"external_vlan_id={29,10,20-25,25-28,11}", "external_vlan_id={10-11,20-29}"},
      {"external_vlan_id={7}", "external_vlan_id=7"},
      {"external_vlan_id=0-65535", "external_vlan_id=0-65535"},
      {"ttl={1/0xf1,255,254}", "ttl={1,3,5,7,9,11,13,15,254-255}"},
      // 17 or more ranges are written as one value under a mask, if such a value stands for exactly
      // these ranges.
      {"ttl={0,8,16,24,32,40,48,56,64,72,80,88,96,104,112,120}",
       "ttl={0,8,16,24,32,40,48,56,64,72,80,88,96,104,112,120}"},
      {"ttl={0,8,16,24,32,40,48,56,64,72,80,88,96,104,112,120,128,136,144,152,160,168,176,184,"
       "192,200,208,216,224,232,240,248}",
       "ttl=0/0x7"},
      {"ttl={0,8,16,24,32,40,48,56,64,72,80,88,96,104,112,120,129}",
       "ttl={0,8,16,24,32,40,48,56,64,72,80,88,96,104,112,120,129}"},
      {"ingress_port=0x01000003-0x01000005", "ingress_port=0x01000003-0x01000005"},
      {"ingress_port=3/0x3", "ingress_port=0x00000003/0x3"},
      {"tpid={0x8100,0x88a8}", "tpid={0x8100,0x88a8}"},
      // Names.
      {"ip_protocol={udp,tcp,ipv6-frag}", "ip_protocol={6,17,44}"},
      {"ip_protocol=tcp-ipv6-frag", "ip_protocol=6-44"},
      {"ip_protocol=ipv6-route-ipv6-frag", "ip_protocol=43-44"},
      {"ip_protocol=ipv6-frag", "ip_protocol=44"},
      {"dst_l4_port={ssh,telnet-smtp,https}", "dst_l4_port={22-25,443}"},
      {"src_l4_port=http/0xfff0", "src_l4_port=80-95"},
      {"vlan_tagging=none", "vlan_tagging=none"},
      {"vlan_tagging=tagged", "vlan_tagging=tagged"},
      {"drop={true,false}", "drop=false-true"},
      // Each DSCP is read as the ToS byte whose two low bits are 0.
      {"dscp=ef", "tos=184"},
      {"dscp=46-47", "tos={184,188}"},
      {"dscp={cs1,af11/0x3f}", "tos={32,40}"},
      {"dscp=0-63", "tos=0/0x3"},
      {"dscp=0x20/0x20", "tos=128/0x83"},
      {"dscp=1/0x1", "tos=4/0x7"},
      {"dscp=none", "tos=none"},
      {"tos=184-187", "tos=184-187"},
  };
  for (const auto& [text, wanted] : rows) {
    EXPECT_EQ(written(text), wanted) << text;
    EXPECT_EQ(written(wanted), wanted) << text;
  }
  EXPECT_EQ(PacketSet().toText(), "");
}

// A packet is a set whose fields all have one value.
TEST(PacketSetTest, ReadsEveryPacket) {
  for (std::string_view name : packetFieldNames()) {
    for (const char* value : {"=none", "=1", "=true", "=::1", "=10.0.0.1", "=00:00:00:00:00:01"}) {
      const std::string text = std::string(name) + value;
      const auto packet = Packet::parse(text, nullptr);
      const auto set = PacketSet::parse(text, nullptr);
      ASSERT_EQ(packet.has_value(), set.has_value()) << text;
      if (packet) {
        EXPECT_EQ(packet->toText(), set->toText());
      }
    }
  }
  for (const char* room : {"ttl=1-2", "ttl={1}", "src_ipv4=10.0.0.0/8", "tos=1/0xff"}) {
    Report report;
    EXPECT_FALSE(Packet::parse(room, &report));
    ASSERT_EQ(report.findings.size(), 1U);
    EXPECT_NE(report.findings[0].message.find("; a packet has one value, and search takes sets"),
              std::string::npos);
    EXPECT_EQ(report.findings[0].path, "1:1");
  }
}

TEST(PacketSetTest, SaysWhatItCannotRead) {
  // The column of the fault, and the wrong word.
  const struct {
    const char* text;
    Code code;
    const char *path, *word;
  } rows[] = {
      {"ttl", Code::kTextSyntax, "1:1", "ttl"},
      {"ttl=1 vlan={1,2}", Code::kTextValue, "1:7", "vlan"},
      {"ttl=256", Code::kTextValue, "1:1", "ttl=256"},
      {"ttl=-1", Code::kTextValue, "1:1", "ttl=-1"},
      {"ttl=1-", Code::kTextValue, "1:1", "ttl=1-"},
      {"ttl=1-256", Code::kTextValue, "1:7", "256"},
      {"ttl=1-2-3", Code::kTextValue, "1:7", "2-3"},
      {"ttl=20-10", Code::kTextValue, "1:1", "ttl=20-10"},
      {"ttl={1,20-10}", Code::kTextValue, "1:8", "20-10"},
      {"ttl={}", Code::kTextValue, "1:1", "ttl={}"},
      {"ttl={1,,2}", Code::kTextValue, "1:1", "ttl={1,,2}"},
      {"ttl={1,}", Code::kTextValue, "1:1", "ttl={1,}"},
      {"ttl={1,300,2}", Code::kTextValue, "1:8", "300"},
      {"pcp={1,none}", Code::kTextValue, "1:8", "none"},
      {"ttl={1, 2}", Code::kTextValue, "1:1", "ttl={1,"},
      {"ttl={", Code::kTextValue, "1:1", "ttl={"},
      {"external_vlan_id=100/12", Code::kTextValue, "1:22", "12"},
      {"drop=true/1", Code::kTextValue, "1:11", "1"},
      {"src_ipv4=10.0.0.0/33", Code::kTextValue, "1:19", "33"},
      {"src_ipv4=10.0.0/8", Code::kTextValue, "1:10", "10.0.0"},
      {"src_ipv4=10.0.0.9-10.0.0.1", Code::kTextValue, "1:1", "src_ipv4=10.0.0.9-10.0.0.1"},
      {"src_ipv6=::/129", Code::kTextValue, "1:13", "129"},
      {"dst_mac={00:00:00:00:00:01,01:00:00:00:00:00/01:00:00:00:00:00}", Code::kTextValue, "1:28",
       "01:00:00:00:00:00/01:00:00:00:00:00"},
      {"dst_l4_port=shh", Code::kTextValue, "1:1", "dst_l4_port=shh"},
      {"ip_protocol=tcp-upd", Code::kTextValue, "1:17", "upd"},
      {"dscp=46-64", Code::kTextValue, "1:9", "64"},
      {"ttl=1 ttl=2-3", Code::kTextRepeated, "1:7", "ttl=2-3"},
      {"tos=1-3 dscp=ef", Code::kTextRepeated, "1:9", "dscp=ef"},
  };
  catalogue::Sentences sentences;
  for (const auto& row : rows) {
    Report report;
    EXPECT_FALSE(PacketSet::parse(row.text, &report)) << row.text;
    ASSERT_GE(report.findings.size(), 1U) << row.text;
    EXPECT_EQ(report.findings[0].code, row.code) << report;
    EXPECT_EQ(report.findings[0].path, row.path) << report;
    EXPECT_EQ(report.findings[0].word, row.word) << report;
    EXPECT_FALSE(PacketSet::parse(row.text, nullptr));
    sentences.add(report);
  }
  sentences.expectGolden("sentences_packet_set.txt");
  Report report;
  EXPECT_FALSE(PacketSet::parse("a b c", &report, 1));
  EXPECT_EQ(report.findings.size(), 1U);
  EXPECT_EQ(report.left_out, 2U);
}

TEST(ActionTestTest, ComparesByName) {
  const ParsedGroups parsed = groupsFromText(
      "filter-groups 1\ngroup 1 priority=1 stage=ingress type=3\n"
      "entry 10 priority=1 if ttl=1 then permit map_to_cpu_cos_queue=6 set_dscp=46\n"
      "entry 20 priority=1 if ttl=1\n");
  ASSERT_EQ(parsed.groups.size(), 1U) << parsed.report;
  const FiltersCommon::FiltersEntry &entry = parsed.groups[0].getEntriesRef().at(10),
                                    &bare = parsed.groups[0].getEntriesRef().at(20);
  const struct {
    const char* text;
    bool all, any;
  } rows[] = {
      {"permit", true, true},
      {"deny", false, false},
      {"permit deny", false, true},
      {"map_to_cpu_cos_queue", true, true},
      {"map_to_cpu_cos_queue=6 permit", true, true},
      {"map_to_cpu_cos_queue=0x6", true, true},
      {"map_to_cpu_cos_queue=7", false, false},
      {"set_dscp=ef", true, true},
      {"set_pcp", false, false},
  };
  for (const auto& row : rows) {
    Report report;
    const auto test = ActionTest::parse(row.text, &report);
    ASSERT_TRUE(test) << report;
    EXPECT_EQ(test->hasAll(entry), row.all) << row.text;
    EXPECT_EQ(test->hasAny(entry), row.any) << row.text;
    EXPECT_FALSE(test->hasAny(bare)) << row.text;
  }
  EXPECT_EQ(ActionTest::parse(" set_dscp=ef  permit redirect", nullptr)->toText(),
            "set_dscp=46 permit redirect");
}

TEST(ActionTestTest, SaysWhatItCannotRead) {
  const struct {
    const char *text, *said;
  } rows[] = {
      {"", "1:1 an action is missing, as in `permit`"},
      {"premit", "1:1 there is no action 'premit'; did you mean permit?"},
      {"permit deny=1", "1:12 deny takes no value"},
      {"set_pcp=x", "1:9 'x' is no number from 0 to 255"},
      {"permit set_pcp=", "1:16 a number from 0 to 255 is missing"},
  };
  for (const auto& row : rows) {
    Report report;
    EXPECT_FALSE(ActionTest::parse(row.text, &report)) << row.text;
    ASSERT_EQ(report.findings.size(), 1U) << row.text;
    EXPECT_EQ(report.findings[0].path + ' ' + report.findings[0].message, row.said);
    EXPECT_FALSE(ActionTest::parse(row.text, nullptr)) << row.text;
  }
}

}  // namespace
