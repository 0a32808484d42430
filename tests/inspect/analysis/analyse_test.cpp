// Tests the analysis of rules. For tiny groups it checks the findings by trying every packet.

#include <filter_inspect/filter_text.h>
#include <gtest/gtest.h>

#include <sstream>

#include "../../cases.h"
#include "../../replaced.h"
#include "../sentences.h"
#include "tiny_checks.h"

using namespace tiny;

namespace {

struct Random {
  unsigned below(std::size_t limit) { return static_cast<unsigned>(engine() % limit); }
  std::mt19937 engine{1};
};

AnalysisOptions by(Order order, bool overlaps = false) {
  AnalysisOptions options;
  options.order = order;
  options.overlaps = overlaps;
  return options;
}

TEST(AnalyseTest, SaysWhatEveryPacketOfTinyGroupsSays) {
  Random random;
  for (RandomCases i(3000); i.more(); ++i) {
    const Case c = Maker<Random>(random).make(3 + random.below(4));
    const auto rows = c.everyRow();
    for (Order order : kAllOrders) {
      ASSERT_EQ(faultOfAnalysis(c, rows, by(order, random.below(2) == 0)), "") << i.done();
    }
  }
}

TEST(AnalyseTest, WithoutAnOrderClaimsWhatHoldsInEach) {
  Random random;
  for (RandomCases i(500); i.more(); ++i) {
    const Case c = Maker<Random>(random).make(4);
    ASSERT_EQ(faultOfAnyOrder(c), "") << i.done();
  }
}

TEST(AnalyseTest, CountsWhatItLeavesOut) {
  Random random;
  for (int i = 0; i < 100; ++i) {
    const Case c = Maker<Random>(random).make(6);
    AnalysisOptions options = by(Order::kLowestPriority, true);
    const Report all = analyse(c.group, options);
    options.max_findings = random.below(all.findings.size() + 1);
    const Report some = analyse(c.group, options);
    ASSERT_EQ(some.findings.size(), options.max_findings);
    ASSERT_EQ(some.findings.size() + some.left_out, all.findings.size());
    ASSERT_EQ(some.worst(), all.worst());
    // A limited report keeps the most severe findings, in their order.
    const auto warnings = [](const Report& report) {
      return std::count_if(report.findings.begin(), report.findings.end(),
                           [](const Finding& one) { return one.severity == Severity::kWarning; });
    };
    ASSERT_EQ(warnings(some), std::min(warnings(all), std::ptrdiff_t(options.max_findings)));
    ASSERT_EQ(some.left_out_by_severity[1], std::size_t(warnings(all) - warnings(some)));
  }
}

// Each row has a group and its findings: the code, the entry, the other entries, and some words of
// the sentence.
TEST(AnalyseTest, SaysOfGroupsWhatPeopleAsk) {
  const Order first = Order::kHighestPriority, none = Order::kUnspecified;
  const struct {
    Order order;
    const char *head, *entries, *said;
  } rows[] = {
      // Equal matches take the same packets, whichever reading the device uses.
      {first, "ingress type=9",
       "entry 10 priority=100 if external_vlan_id={100} tos=184 then set_pcp=5\n"
       "entry 20 priority=90 if external_vlan_id={100} tos=184 then set_pcp=1\n"
       "entry 30 priority=80 if external_vlan_id={100} pcp={3} dscp=46 then deny\n",
       "entry-unreachable 20: 10 set_pcp=1/set_pcp=5\n"
       "entry-unreachable 30: 10 deny/set_pcp=5\n"},
      {none, "lookup type=6",
       "entry 10 priority=1 if external_vlan_id={1} vlan_tagging=tagged then permit\n"
       "entry 20 priority=1 if external_vlan_id={1} vlan_tagging=tagged then deny\n",
       "entries-tie 10: 20 permit/deny\n"},
      // Every packet has this field, so two entries that test for its two values take all packets
      // together.
      {first, "egress type=3",
       "entry 10 priority=3 if my_station_hit=true then permit\n"
       "entry 20 priority=2 if my_station_hit=false then permit\n"
       "entry 30 priority=1 then deny\n",
       "entry-unreachable 30: 10 20 deny/permit\n"},
      // The blocker takes all packets of the entry, but a third entry takes some of these packets
      // before the blocker.
      {first, "ingress type=3",
       "entry 10 priority=100 if src_ipv4=10.1.0.0/17 then permit\n"
       "entry 20 priority=90 if src_ipv4=10.0.0.0/8 then deny\n"
       "entry 30 priority=80 if src_ipv4=10.1.0.0/16 ip_protocol=6 then deny\n",
       "entry-unreachable 30: 20 deny/permit; part of its packets are treated otherwise by entry "
       "10\n"},
      // An earlier entry takes every packet that both of the tied entries would take.
      {first, "ingress type=3",
       "entry 10 priority=100 if src_ipv4=10.1.1.1 dst_ipv4=10.2.2.2 then permit\n"
       "entry 20 priority=90 if src_ipv4=10.1.1.1 ip_protocol=6 then permit\n"
       "entry 30 priority=90 if dst_ipv4=10.2.2.2 ip_protocol=6 then deny\n",
       ""},
      // If two priorities are equal, the id decides.
      {Order::kHighestPriorityDescendingId, "ingress type=3",
       "entry 10 priority=5 if ttl=1 then permit\nentry 20 priority=5 if ttl=1 then deny\n",
       "entry-unreachable 10: 20 permit/deny\n"},
      // The order is unknown, and two entries take the same packets and treat them alike.
      {none, "ingress type=3",
       "entry 10 priority=5 if ttl=1 then deny\nentry 20 priority=5 if ttl=1 then deny\n"
       "entry 30 priority=5 if ip_protocol=6 then permit\n",
       "entry-redundant 20: 10 deny/deny\n"},
  };
  for (const auto& row : rows) {
    const ParsedGroups parsed = groupsFromText(
        std::string("filter-groups 1\ngroup 1 priority=1 stage=") + row.head + '\n' + row.entries);
    ASSERT_EQ(parsed.groups.size(), 1U) << row.entries << parsed.report;
    std::string said;
    for (const Finding& finding : analyse(parsed.groups[0], by(row.order)).findings) {
      if (finding.code == Code::kValueUnusual) continue;
      std::string line = lineOf(finding.code, *finding.entry, finding.others);
      line.back() = ' ';
      said += line + finding.before + '/' + finding.after;
      const std::size_t part = finding.message.find("; part");
      said += (part == std::string::npos ? "" : finding.message.substr(part)) + '\n';
    }
    EXPECT_EQ(said, row.said) << row.entries;
  }
}

// Tests every sentence about entries and about two groups. A sentence varies with the treatment of
// packets and with the number of entries that it names.
TEST(AnalyseTest, SaysEachSentence) {
  const auto entry = [](unsigned id, unsigned priority, const std::string& rest) {
    return "entry " + std::to_string(id) + " priority=" + std::to_string(priority) + " if " + rest +
           '\n';
  };
  std::string hosts, networks;
  for (unsigned i = 1; i <= 6; ++i) {
    hosts += entry(i, 9, "src_ipv4=10.0.0." + std::to_string(i) + " then permit");
  }
  for (unsigned i = 8; i <= 24; ++i) {
    networks += entry(i, 9, "src_ipv4=10.0.0.0/" + std::to_string(i) + " then permit");
  }
  const std::string wide = entry(90, 1, "src_ipv4=10.0.0.0/8 then deny");
  const std::string narrow = entry(91, 0, "src_ipv4=10.0.0.0/24 then deny");
  const std::string other = entry(92, 0, "src_ipv4=10.0.0.0/24 then permit");
  const std::string halves = entry(70, 3, "src_ipv4=10.0.0.0/9 then deny") +
                             entry(80, 2, "src_ipv4=10.128.0.0/9 then deny");
  const std::string twins = entry(50, 7, "ttl=1 then deny") + entry(51, 7, "ttl=1 then deny") +
                            entry(60, 7, "ttl=2 then deny") + entry(61, 7, "ttl=2 then permit");
  const std::string policed =
      entry(52, 7, "ttl=3 police 120f080110d00f180020002800300038001800780a") +
      entry(53, 7, "ttl=3 parent 120e0804100018002000280030003800180278ffffffff0f") +
      entry(54, 7, "src_ipv4=10.0.0.0/8 then permit") +
      entry(55, 7, "src_ipv4=10.0.0.0/9 then set_pcp=1");
  const std::string open = entry(63, 7, "dst_l4_port=179/0x0 then deny");
  const Order none = Order::kUnspecified, first = Order::kHighestPriority;
  const struct {
    Order order;
    std::string a, b;
  } rows[] = {
      {first, wide + narrow + other, ""},
      {first, halves + wide + other, ""},
      {first, hosts + wide + narrow, ""},
      {first, hosts + halves + wide, ""},
      {first, entry(65, 4, "src_ipv4=10.0.0.0/8 then deny") + halves, ""},
      {first, twins, ""},
      {none, twins, ""},
      {none, policed + narrow, ""},
      {none, networks + narrow, ""},
      {none, narrow + networks.substr(0, networks.find('\n') + 1), ""},
      {first, wide, twins},
      {first, wide, hosts + wide},
      {first, open + wide, twins + open},
      {first, wide, open + wide},
  };
  catalogue::Sentences sentences;
  for (const auto& [order, a, b] : rows) {
    for (const std::uint64_t steps : {0U, 1U, 2U, 1000U}) {
      AnalysisOptions options = by(order);
      options.max_steps = steps;
      const auto group = [](const std::string& entries) {
        return groupsFromText("filter-groups 1\ngroup 1 priority=1 stage=ingress type=3\n" +
                              entries)
            .groups.at(0);
      };
      const Report report =
          b.empty() ? analyse(group(a), options) : compareTreatment(group(a), group(b), options);
      for (const Finding& finding : report.findings) {
        if (finding.code == Code::kValueUnusual) continue;
        sentences.add(std::string(nameOf(finding.code)) + ": " + finding.message + " (" +
                      finding.before + '/' + finding.after + ", " +
                      std::to_string(finding.others.size()) + ')');
      }
    }
  }
  sentences.expectGolden("sentences_analysis.txt");
}

// Tests groups in which other entries take all packets of many entries. The report has one line for
// all of these entries. The report has no such line if the only other entry is a last entry that
// takes all packets.
TEST(AnalyseTest, TellsOfManyExceptionsInOneLine) {
  for (const unsigned count : {8U, 20U}) {
    std::string text = "filter-groups 1\ngroup 1 priority=1 stage=ingress type=3\n";
    for (unsigned i = 1; i <= count; ++i) {
      text += "entry " + std::to_string(i) + " priority=9 if ip_protocol=" + std::to_string(i % 2) +
              " ttl=" + std::to_string(i) + " destination_cpu then permit\n";
    }
    text +=
        "entry 90 priority=8 if ip_protocol=0 destination_cpu then deny\n"
        "entry 91 priority=8 if ip_protocol=1 destination_cpu then deny\n"
        "entry 99 priority=7 if destination_cpu then deny\n";
    const ParsedGroups parsed = groupsFromText(text);
    ASSERT_EQ(parsed.groups.size(), 1U) << parsed.report;
    const Report report = analyse(parsed.groups[0]);
    ASSERT_EQ(report.findings.size(), count == 8 ? 8U : 1U) << report;
    const Finding& finding = report.findings[0];
    EXPECT_EQ(finding.entry.has_value(), count == 8);
    EXPECT_EQ(finding.message,
              count == 8 ? "entry 91 takes all its packets too, and treats them differently"
                         : "20 entries take only packets that another entry takes too and treats "
                           "differently: an order tells which of them never take effect");
    EXPECT_EQ(finding.others.size(), count == 8 ? 1U : 16U);
  }
}

TEST(AnalyseTest, ComparesTheTreatmentOfEveryPacket) {
  Random random;
  for (RandomCases i(2000); i.more(); ++i) {
    Maker<Random> maker(random);
    const Case a = maker.make(1 + random.below(4));
    // The second group gets new rules, or the rules of the first group. Sometimes it gets one more
    // rule.
    Case b = random.below(3) == 0 ? maker.make(1 + random.below(4)) : a;
    if (random.below(2) == 0) maker.add(&b, static_cast<filtersEntryId_t>(b.rules.size()));
    for (Order order : kAllOrders) ASSERT_EQ(faultOfComparison(a, b, order), "") << i.done();
  }
}

// --- Unusual values ------------------------------------------------------------------------------

// The findings about an entry in a group with this stage and type, one on each line.
std::string odditiesOf(const std::string& head, const std::string& entry) {
  const auto parsed = groupsFromText("filter-groups 1\ngroup 1 priority=0 stage=" + head +
                                     "\nentry 1 priority=0 " + entry);
  if (parsed.groups.size() != 1) return (std::ostringstream() << parsed.report).str();
  std::ostringstream report;
  report << unusualValues(parsed.groups[0]);
  return catalogue::replaced(report.str(), "warning: entry 1: | \\[value-unusual\\]", "");
}

struct Odd {
  const char* head;
  const char* entry;
  const char* said;
};
const Odd kOdd[] = {
    {"ingress type=3", "if src_ipv4=198.51.100.64/24 then permit",
     "match src_ipv4: '198.51.100.64/24': the bits outside of the mask do not count, and it takes "
     "198.51.100.0/24; write that, or a longer mask, as in 198.51.100.64/26, if that was meant\n"},
    {"ingress type=3", "if src_ipv4=192.0.2.1/24 then permit",
     "match src_ipv4: '192.0.2.1/24': the bits outside of the mask do not count, and it takes "
     "192.0.2.0/24; write that, or 192.0.2.1 if that alone was meant\n"},
    {"ingress type=3", "if src_ipv4=192.0.2.0/0 then permit",
     "match src_ipv4: '192.0.2.0/0': the bits outside of the mask do not count, and it takes "
     "0.0.0.0/0; write that, or a longer mask, as in 192.0.2.0/24, if that was meant\n"},
    {"ingress type=3", "if src_ipv4=192.0.2.16/255.255.255.24 then permit",
     "match src_ipv4: '192.0.2.16/255.255.255.24': its mask has a hole, a 0 in front of a 1; write "
     "the mask 255.255.255.240 or 255.255.255.248 if that was meant\n"},
    {"ingress type=3", "if src_ipv4=10.0.0.1/255.0.0.255 then permit",
     "match src_ipv4: '10.0.0.1/255.0.0.255': its mask has a hole, a 0 in front of a 1; write the "
     "mask 255.255.255.255 if that was meant\n"},
    {"ingress type=3", "if src_ipv4=10.0.0.0/0.0.0.255 then permit",
     "match src_ipv4: '10.0.0.0/0.0.0.255': the bits outside of the mask do not count, and it "
     "takes 0.0.0.0/0.0.0.255; write that if the mask is right\n"
     "match src_ipv4: '10.0.0.0/0.0.0.255': its mask has a hole, a 0 in front of a 1; write the "
     "mask 255.255.255.0 if that was meant\n"},
    {"ingress type=3", "if dst_l4_port=6000/0x3f00 ip_protocol=17 then permit",
     "match dst_l4_port: '6000/0x3f00': the bits outside of the mask do not count, and it takes "
     "5888/0x3f00; write that if the mask is right\n"
     "match dst_l4_port: '6000/0x3f00': its mask has a hole, a 0 in front of a 1; write the mask "
     "0xff00 if that was meant\n"},
    {"ingress type=3", "if dst_l4_port=6000/0xff00 ip_protocol=17 then permit",
     "match dst_l4_port: '6000/0xff00': the bits outside of the mask do not count, and it takes "
     "5888/0xff00; write that, or a longer mask, as in 6000/0xfff0, if that was meant\n"},
    {"ingress type=3", "if src_l4_port=179/0x0010 ip_protocol=6 then permit",
     "match src_l4_port: '179/0x10': the bits outside of the mask do not count, and it takes "
     "16/0x10; write that if the mask is right\n"
     "match src_l4_port: '179/0x10': its mask has a hole, a 0 in front of a 1; write the mask "
     "0xfff0 if that was meant\n"},
    {"ingress type=3", "if dst_l4_port=179/0x0 then permit",
     "match dst_l4_port: '179/0x0': its mask of 0 may mean that value alone; write 179/0xffff for "
     "that port, or leave the match out for every port\n"},
    {"ingress type=8", "if dst_ipv6=2001:db8:0:4::/48 then permit",
     "match dst_ipv6: '2001:db8:0:4::/48': the bits outside of the mask do not count, and it takes "
     "2001:db8::/48; write that, or a longer mask, as in 2001:db8:0:4::/64, if that was meant\n"},
    {"ingress type=8", "if dst_ipv6=2001:db8::/ffff:ff0f:: then permit",
     "match dst_ipv6: '2001:db8::/ffff:ff0f::': the bits outside of the mask do not count, and it "
     "takes 2001:d08::/ffff:ff0f::; write that if the mask is right\n"
     "match dst_ipv6: '2001:db8::/ffff:ff0f::': its mask has a hole, a 0 in front of a 1; write "
     "the mask ffff:fff8:: or ffff:ffff:: if that was meant\n"},
    {"lookup type=6", "if dst_mac=01:80:c2:00:00:0e/ff:ff:ff:ff:ff:f0 then permit",
     "match dst_mac: '01:80:c2:00:00:0e/ff:ff:ff:ff:ff:f0': the bits outside of the mask do not "
     "count, and it takes 01:80:c2:00:00:00/ff:ff:ff:ff:ff:f0; write that, or 01:80:c2:00:00:0e if "
     "that alone was meant\n"},
    {"lookup type=6", "if src_mac=00:1b:01:00:00:00/ff:ff:0f:00:00:00 then permit",
     "match src_mac: '00:1b:01:00:00:00/ff:ff:0f:00:00:00': its mask has a hole, a 0 in front of a "
     "1; write the mask ff:ff:ff:00:00:00 if that was meant\n"},
    {"ingress type=3", "if src_ipv4=10.0.0.0 then deny",
     "match src_ipv4: '10.0.0.0': it is one address; write a mask, as in 10.0.0.0/8, if a network "
     "was meant\n"},
    {"ingress type=8", "if dst_ipv6=2001:db8:: then deny",
     "match dst_ipv6: '2001:db8::': it is one address; write a mask, as in 2001:db8::/32, if a "
     "network was meant\n"},
    {"ingress type=3", "if dst_ipv4=0.0.0.0 then deny",
     "match dst_ipv4: '0.0.0.0': it is no destination (RFC 1122); write 0.0.0.0/0 if every address "
     "was meant\n"},
    {"ingress type=8", "if dst_ipv6=:: then deny",
     "match dst_ipv6: '::': it is no destination (RFC 4291); write ::/0 if every address was "
     "meant\n"},
    {"ingress type=3", "if src_ipv4=224.0.0.5 ip_protocol=89 then permit",
     "match src_ipv4: '224.0.0.5': a multicast address is no source (RFC 1112); write it as "
     "dst_ipv4, or deny it\n"},
    {"ingress type=3", "if src_ipv4=255.255.255.255 then permit",
     "match src_ipv4: '255.255.255.255': it is reserved or for broadcasts, and no source (RFC "
     "1112); write another, or deny it\n"},
    {"ingress type=3", "if src_ipv4=127.0.0.0/8 then permit",
     "match src_ipv4: '127.0.0.0/8': a loopback address is no source on a wire (RFC 1122); write "
     "another, or deny it\n"},
    {"lookup type=6", "if src_mac=ff:ff:ff:ff:ff:ff then permit",
     "match src_mac: 'ff:ff:ff:ff:ff:ff': a group address is no source (IEEE 802.3); write it as "
     "dst_mac, or deny it\n"},
    {"lookup type=6", "if src_mac=00:00:00:00:00:00 then permit",
     "match src_mac: '00:00:00:00:00:00': it is no source; leave the match out if every address "
     "was meant, or deny it\n"},
    {"lookup type=6", "if dst_mac=00:00:00:00:00:00 then permit",
     "match dst_mac: '00:00:00:00:00:00': it is no destination; leave the match out if every "
     "address was meant, or deny it\n"},
    {"ingress type=3", "if src_l4_port=0/0xffff dst_l4_port=0/0xffff then permit",
     "match dst_l4_port: '0/0xffff': port 0 is reserved (IANA); leave the match out if every port "
     "was meant, or deny it\n"
     "match src_l4_port: '0/0xffff': port 0 is reserved (IANA); leave the match out if every port "
     "was meant, or deny it\n"},
    {"ingress type=3", "if ttl=0 then permit",
     "match ttl: '0': no such packet is passed on (RFC 1812); write 1 for packets that end here, "
     "or deny it\n"},
    {"ingress type=3", "if ip_protocol=255 then permit",
     "match ip_protocol: '255': it is reserved (IANA); leave the match out if every protocol was "
     "meant, or deny it\n"},
    {"ingress type=3", "if ip_protocol=179 then permit",
     "match ip_protocol: '179': it is assigned to no protocol (IANA); write a port beside "
     "ip_protocol=6 or 17 if one was meant, or deny it\n"},
    {"ingress type=3", "if ip_protocol=148 then permit",
     "match ip_protocol: '148': it is assigned to no protocol (IANA); write a port beside "
     "ip_protocol=6 or 17 if one was meant, or deny it\n"},
    {"ingress type=3", "if ip_protocol=252 then permit",
     "match ip_protocol: '252': it is assigned to no protocol (IANA); write a port beside "
     "ip_protocol=6 or 17 if one was meant, or deny it\n"},
    {"ingress type=3", "if ip_protocol=80 then permit",
     "match ip_protocol: '80': it is a protocol of the past; write dst_l4_port=80/0xffff "
     "ip_protocol=6 if HTTP was meant\n"},
    {"ingress type=3", "if ip_protocol=22 then permit",
     "match ip_protocol: '22': it is a protocol of the past; write dst_l4_port=22/0xffff "
     "ip_protocol=6 if SSH was meant\n"},
    {"ingress type=3", "if ip_protocol=53 then permit",
     "match ip_protocol: '53': it is a protocol of the past; write dst_l4_port=53/0xffff "
     "ip_protocol=17 if DNS was meant\n"},
    {"ingress type=3", "if tpid=0x0081 then deny",
     "match tpid: '0x0081': it is a length and no EtherType (IEEE 802.3); write 0x8100 or "
     "0x88a8\n"},
    {"ingress type=3", "if tpid=0x05ff then deny",
     "match tpid: '0x05ff': it is a length and no EtherType (IEEE 802.3); write 0x8100 or "
     "0x88a8\n"},
    {"ingress type=3", "if tpid=0x0800 then deny",
     "match tpid: '0x0800': it is the EtherType of IPv4, which begins no tag; write 0x8100 or "
     "0x88a8\n"},
    {"ingress type=3", "if tpid=0x0806 then deny",
     "match tpid: '0x0806': it is the EtherType of ARP, which begins no tag; write 0x8100 or "
     "0x88a8\n"},
    {"ingress type=3", "if tpid=0x86dd then deny",
     "match tpid: '0x86dd': it is the EtherType of IPv6, which begins no tag; write 0x8100 or "
     "0x88a8\n"},
    {"ingress type=3", "if tpid=8100 then deny",
     "match tpid: '0x1fa4': it is 8100 in decimal; write 0x8100\n"},
    {"ingress type=3", "if tpid=9100 then deny",
     "match tpid: '0x238c': it is 9100 in decimal; write 0x9100\n"},
    {"none type=4", "if tos=46 then permit",
     "match tos: '46': the whole byte is DSCP 11 and ECN 2; write tos=184 if DSCP 46 was meant\n"},
    {"none type=4", "if tos=63 then permit",
     "match tos: '63': the whole byte is DSCP 15 and ECN 3; write tos=252 if DSCP 63 was meant\n"},
    {"none type=11", "if dst_l4_port_range=2000-1000 then permit",
     "match dst_l4_port_range: '2000-1000': its range ends before it begins; write 1000-2000\n"},
    {"lookup type=6", "if external_vlan_id={} pcp={} internal_pcp={9} then permit",
     "match external_vlan_id: '{}': its set is empty; write what is meant, or leave the match out\n"
     "match pcp: '{}': its set is empty; write what is meant, or leave the match out\n"},
    {"lookup type=6", "if external_vlan_id={10,4095} pcp={3,8,9} then permit",
     "match external_vlan_id: '{10,4095}': no frame carries 4095, which is reserved (IEEE 802.1Q); "
     "write numbers of 0 to 4094\n"
     "match pcp: '{3,8,9}': no frame carries 8 (IEEE 802.1Q); write numbers of 0 to 7\n"},
    {"ingress type=3",
     "if "
     "external_vlan_id={4080,4081,4082,4083,4084,4085,4086,4087,4088,4089,4090,4091,4092,4093,4094,"
     "4095} "
     "then deny",
     "match external_vlan_id: '{4080,4081,4082,4083,4084,4085,4086,4087,4088,4089,4090,4091...': "
     "no frame "
     "carries 4095, which is reserved (IEEE 802.1Q); write numbers of 0 to 4094\n"},
    {"ingress type=3", "if external_vlan_id={4096} then permit",
     "match external_vlan_id: '{4096}': no frame carries 4096 (IEEE 802.1Q); write numbers of 0 to "
     "4094\n"},
    {"lookup type=6", "if vlan_tagging=7 ingress_ports=[]!7 then permit",
     "match ingress_ports: '[]!7': no name is known for 7; write one that is known: cpu\n"
     "match vlan_tagging: '7': no name is known for 7; write one that is known: untagged, "
     "tagged\n"},
    {"lookup type=6",
     "if external_vlan_id={10} tpid=0x8100 pcp={3} vlan_tagging=untagged then permit",
     "match external_vlan_id: '{10}': untagged frames have none; write vlan_tagging=tagged, or "
     "leave one of the two out\n"
     "match tpid: '0x8100': untagged frames have none; write vlan_tagging=tagged, or leave one of "
     "the two out\n"
     "match pcp: '{3}': untagged frames have none; write vlan_tagging=tagged, or leave one of the "
     "two out\n"},
    {"ingress type=3", "if dst_l4_port=22/0xffff src_l4_port=22/0xffff ip_protocol=1 then permit",
     "match dst_l4_port: '22/0xffff': packets of ip_protocol=1 have no ports; write ip_protocol=6 "
     "for TCP or 17 for UDP, or leave the ports out\n"
     "match src_l4_port: '22/0xffff': packets of ip_protocol=1 have no ports; write ip_protocol=6 "
     "for TCP or 17 for UDP, or leave the ports out\n"},
    {"none type=11", "if dst_l4_port_range=1-2 ip_protocol=89 then permit",
     "match dst_l4_port_range: '1-2': packets of ip_protocol=89 have no ports; write ip_protocol=6 "
     "for TCP or 17 for UDP, or leave the ports out\n"},
    {"ingress type=3", "if ip_protocol=58 src_ipv4=192.0.2.1 then deny",
     "match ip_protocol: '58': it is of IPv6, beside an IPv4 address; write another protocol, or "
     "leave the match out if every one was meant\n"},
    {"ingress type=3", "if ip_protocol=6 dst_ipv4=224.0.0.5 then permit",
     "match dst_ipv4: '224.0.0.5': TCP goes to no multicast address (RFC 9293); write the protocol "
     "that does, or another address\n"},
    {"ingress type=3", "if src_ipv4=10.0.0.1 dst_ipv4=10.0.0.1 then permit",
     "match dst_ipv4: '10.0.0.1': source and destination are one address; write the two that were "
     "meant\n"},
    {"lookup type=6", "if src_mac=00:1b:21:00:00:01 dst_mac=00:1b:21:00:00:01 then permit",
     "match dst_mac: '00:1b:21:00:00:01': source and destination are one address; write the two "
     "that were meant\n"},
    {"ingress type=3", "if all ttl=1 then permit",
     "match all: it asks nothing beside other matches; leave it out, or the others if every packet "
     "was meant\n"},
    {"ingress type=3", "if ttl=1 count 1=packets",
     "it has no action, and what becomes of its packets is the device's choice; write permit or "
     "deny\n"},
    {"ingress type=3", "then permit deny set_pcp=7",
     "action deny: it stands beside permit, and only one of the two can be done; leave the other "
     "out\n"},
    {"ingress type=3", "then permit black_hole",
     "action black_hole: it stands beside permit, and only one of the two can be done; leave the "
     "other out\n"},
    {"ingress type=3", "then copy_to_cpu copy_to_cpu_cancel=copy_to_cpu_cancel",
     "action copy_to_cpu_cancel: it stands beside copy_to_cpu, and only one of the two can be "
     "done; leave the other out\n"},
    {"ingress type=3", "then redirect=[0x01000003] redirect_cancel",
     "action redirect_cancel: it stands beside redirect, and only one of the two can be done; "
     "leave the other out\n"},
    {"lookup type=6", "then permit set_inner_pcp=1 copy_inner_pcp",
     "action copy_inner_pcp: it stands beside set_inner_pcp, and only one of the two can be done; "
     "leave the other out\n"},
    {"ingress type=3", "then deny set_dscp=46 redirect=[0x01000003]",
     "action set_dscp: it stands beside deny, and does nothing to what is dropped; leave it out\n"
     "action redirect: it stands beside deny, and does nothing to what is dropped; leave it out\n"},
    {"ingress type=3", "then black_hole l3_switch=1",
     "action l3_switch: it stands beside black_hole, and does nothing to what is dropped; leave it "
     "out\n"},
    {"ingress type=3", "then set_pcp=8 set_dscp=184 map_to_cos_queue=8 map_to_cpu_cos_queue=8",
     "action set_pcp: '8': there are eight priorities (IEEE 802.1Q); write 0 to 7\n"
     "action set_dscp: '184': a DSCP has six bits (RFC 2474); write 0 to 63, 46 if this is a whole "
     "ToS byte\n"
     "action map_to_cos_queue: '8': there are eight classes of service (IEEE 802.1Q); write 0 to "
     "7, unless the device has a queue of this number\n"
     "action map_to_cpu_cos_queue: '8': there are eight classes of service (IEEE 802.1Q); write 0 "
     "to 7, unless the device has a queue of this number\n"},
    {"lookup type=6", "then set_pcp_and_queue=8 set_inner_pcp=8",
     "action set_pcp_and_queue: '8': there are eight priorities (IEEE 802.1Q); write 0 to 7\n"
     "action set_inner_pcp: '8': there are eight priorities (IEEE 802.1Q); write 0 to 7\n"},
    {"ingress type=3", "then block_egress_ports=[] redirect=[]",
     "action block_egress_ports: '[]': it names no port; write the ports, or leave the action out\n"
     "action redirect: '[]': it names no port; write the ports, or leave the action out\n"},
    {"ingress type=3", "then replace_dst_mac=00:00:00:00:00:00 replace_src_mac=01:00:5e:00:00:01",
     "action replace_dst_mac: '00:00:00:00:00:00': it is no station's (IEEE 802.3); write the "
     "address of one\n"
     "action replace_src_mac: '01:00:5e:00:00:01': a group address is no source (IEEE 802.3); "
     "write the address of one\n"},
    {"ingress type=3", "then permit copy_to_cpu_cancel=7",
     "action copy_to_cpu_cancel: '7': no name is known for 7; write one that is known: "
     "copy_to_cpu_cancel, switch_to_cpu_cancel\n"},
};

TEST(AnalyseTest, SaysWhatHardlyAnySenderMeans) {
  for (const auto& [head, entry, said] : kOdd) EXPECT_EQ(odditiesOf(head, entry), said) << entry;
}

TEST(AnalyseTest, SaysNothingOfWhatIsUsual) {
  const std::pair<const char*, std::vector<const char*>> usual[] = {
      {"ingress type=3",
       {"if src_ipv4=0.0.0.0/0 dst_ipv4=0.0.0.0/0 then permit",
        "if src_ipv4=0.0.0.0 dst_ipv4=255.255.255.255 ip_protocol=17 then permit",
        "if dst_ipv4=224.1.0.0 ip_protocol=17 then permit",
        "if src_ipv4=224.0.0.0/4 ttl=0 ip_protocol=255 then deny",
        "if src_ipv4=127.0.0.0/8 dst_l4_port=0/0xffff then deny copy_to_cpu set_dscp=8",
        "if src_ipv4=192.0.2.0/24 dst_ipv4=192.0.2.0/24 dst_l4_port=0/0x8000 then permit",
        "if ip_protocol=6 src_l4_port=22/0xffff then permit",
        "if external_vlan_id={0,4094} then deny",
        "if ip_protocol=17 dst_l4_port=53/0xffff then permit",
        "if tpid=0x0600 then permit",
        "if ip_protocol=147 then permit",
        "if ip_protocol=253 then permit",
        "if ip_protocol=33 dst_l4_port=5/0xffff then permit",
        "if ip_protocol=0 then deny",
        "if ip_protocol=132 dst_l4_port=5/0xffff then permit",
        "if all then permit",
        "if ip_protocol=136 dst_l4_port=5/0xffff then permit set_pcp=7 set_dscp=63",
        "then copy_to_cpu copy_to_cpu_cancel=switch_to_cpu_cancel map_to_cpu_cos_queue=7",
        "if ttl=1 police 120f080110d00f180020002800300038001800780a",
        "if ttl=1 parent 120e0804100018002000280030003800180278ffffffff0f"}},
      {"ingress type=8",
       {"if dst_ipv6=::5/::ffff:ffff:ffff:ffff then permit",
        "if dst_ipv6=2001:db8:0:1:: then permit", "if dst_ipv6=::/0 then permit",
        "if dst_ipv6=ff02:: then permit"}},
      {"lookup type=6",
       {"if dst_mac=01:00:00:00:00:00/01:00:00:00:00:00 then permit",
        "if src_mac=00:1b:21:00:00:00/fe:ff:ff:00:00:00 then permit",
        "if dst_mac=00:00:00:00:00:00/00:00:00:00:00:00 vlan_tagging=untagged then permit",
        "if src_mac=01:00:00:00:00:00/01:00:00:00:00:00 then deny",
        "if src_mac=02:00:00:00:00:00/03:00:00:00:00:00 then permit",
        "if pcp={0,7} internal_pcp={8} internal_vlan_id={4095,5000} vlan_tagging=tagged then "
        "deny"}},
      {"none type=11", {"if dst_l4_port_range=7-7 ip_protocol=6 then permit"}},
      {"none type=4", {"if tos=184 then permit", "if tos=3 then permit", "if tos=186 then permit"}},
  };
  for (const auto& [head, entries] : usual) {
    for (const char* entry : entries) EXPECT_EQ(odditiesOf(head, entry), "") << entry;
  }
}

// Tests those fields of findings that programs use.
TEST(AnalyseTest, TellsWhatAnOddityIsAbout) {
  const auto parsed = groupsFromText(
      "filter-groups 1\ngroup 5 priority=0 stage=ingress type=3\n"
      "entry 1 priority=0 if dst_l4_port=1/0xffff ip_protocol=1 then deny permit\n"
      "entry 2 priority=0");
  ASSERT_EQ(parsed.groups.size(), 1u) << parsed.report;
  const Report report = unusualValues(parsed.groups[0]);
  ASSERT_EQ(report.findings.size(), 3u) << report;
  const auto expect = [&](std::size_t i, Subject subject, std::uint32_t offender,
                          std::optional<std::uint32_t> other, filtersEntryId_t entry) {
    const Finding& finding = report.findings[i];
    EXPECT_EQ(finding.code, Code::kValueUnusual);
    EXPECT_EQ(finding.subject, subject);
    EXPECT_EQ(finding.offender, offender);
    EXPECT_EQ(finding.others, other ? std::vector{*other} : std::vector<std::uint32_t>());
    EXPECT_EQ(finding.entry, entry);
    EXPECT_EQ(finding.group, 5);
  };
  expect(0, Subject::kMatch, FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_IP_PROTOCOL, 1);
  expect(1, Subject::kAction, FILTERS_ACTION_DENY, FILTERS_ACTION_PERMIT, 1);
  expect(2, Subject::kEntry, 0, std::nullopt, 2);
  EXPECT_NE(toJson(report).find("\"permit\""), std::string::npos);
  EXPECT_EQ(unusualValues(parsed.groups[0], 1).left_out, 2u);
}

}  // namespace
