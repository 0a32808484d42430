#ifndef FILTER_COMMON_TESTS_INSPECT_FRAME_SAMPLES_H_
#define FILTER_COMMON_TESTS_INSPECT_FRAME_SAMPLES_H_

// Frames written by hand, and the packet that each frame shows. The tests and the seeds of fuzzing
// share these frames.

#include <filter_inspect/filter_traffic.h>

#include <cstdio>
#include <string>
#include <vector>

namespace frames {

using namespace FiltersInspect;

inline std::string bytesOf(const std::string& hex) {
  std::string bytes, digits;
  for (const char c : hex) {
    if (c == ' ') continue;
    digits += c;
    if (digits.size() < 2) continue;
    bytes += static_cast<char>(std::stoi(digits, nullptr, 16));
    digits.clear();
  }
  return bytes;
}

// Parts of frames, in hexadecimal digits.
inline const std::string kMacs = "00005e005302 00005e005301 ", kAddresses = "c0000201 c6336401 ";
inline const std::string kTcp = "1388 00b3 0000 0000 0000 0000 5000 0000 0000 0000 ";
inline const std::string kUdp = "1388 0035 0008 0000 ";

inline std::string hex(unsigned value, int digits) {
  char text[16];
  std::snprintf(text, sizeof text, "%0*x ", digits, value);
  return text;
}
// An IP header with the ToS 184 and the TTL 64, for a payload of this length.
inline std::string ipv4(unsigned protocol, unsigned payload, unsigned fragment = 0,
                        const std::string& options = "") {
  const auto size = static_cast<unsigned>(bytesOf(options).size());
  return hex(0x45 + size / 4, 2) + "b8" + hex(20 + size + payload, 4) + "0000" + hex(fragment, 4) +
         "40" + hex(protocol, 2) + "0000" + kAddresses + options;
}
inline std::string ipv6(unsigned next, unsigned payload) {
  return "6b80 0000" + hex(payload, 4) + hex(next, 2) + "40" +
         "2001 0db8 0000 0000 0000 0000 0000 0001 2001 0db8 0000 0000 0000 0000 0000 0002 ";
}

// The packet fields that the sample frames show, as text.
inline const std::string kMacWords = "dst_mac=00:00:5e:00:53:02 src_mac=00:00:5e:00:53:01 ";
inline const std::string kUntagged =
    kMacWords + "vlan_tagging=untagged tpid=none external_vlan_id=none pcp=none ";
inline const std::string kIPv4 =
    "src_ipv4=192.0.2.1 dst_ipv4=198.51.100.1 src_ipv6=none dst_ipv6=none tos=184 ttl=64 ";
inline const std::string kIPv6 =
    "src_ipv4=none dst_ipv4=none src_ipv6=2001:db8::1 dst_ipv6=2001:db8::2 tos=184 ttl=64 ";
inline const std::string kNoPorts = "src_l4_port=none dst_l4_port=none ";
inline const std::string kNoIp =
    "src_ipv4=none dst_ipv4=none src_ipv6=none dst_ipv6=none ip_protocol=none tos=none ttl=none " +
    kNoPorts;
inline const std::string kIsTcp = "ip_protocol=tcp src_l4_port=5000 dst_l4_port=179 ";
inline const std::string kIsUdp = "ip_protocol=udp src_l4_port=5000 dst_l4_port=53 ";

struct Sample {
  const char* what;
  Link link;
  std::string frame;  // in hexadecimal digits
  std::string told;
  FrameFault fault = FrameFault::kNone;
  std::size_t beyond = 0;  // how many bytes of the frame were not captured
};

inline std::vector<Sample> samples() {
  const auto ethernet = Link::kEthernet, raw = Link::kRaw;
  const auto tag = [](const char* type, unsigned control) { return type + hex(control, 4); };
  const auto tagged = [](const char* words) {
    return kMacWords + "vlan_tagging=tagged " + words + ' ';
  };
  const std::string tcp4 = ipv4(6, 20) + kTcp, tcp6 = ipv6(6, 20) + kTcp, udp6 = ipv6(17, 8) + kUdp;
  const auto cut = FrameFault::kCut, ends = FrameFault::kEndsEarly,
             length = FrameFault::kWrongLength, version = FrameFault::kWrongVersion,
             unknown = FrameFault::kUnknownLink, within = FrameFault::kEncapsulated,
             later = FrameFault::kLaterFragment;
  const std::string cooked = "0000 0001 0006 00005e005301 0000 ";
  const std::string jumbo = "06 00 c2 04 00010008 ";  // a hop-by-hop header with its option
  return {
      // Links
      {"Ethernet", ethernet, kMacs + "0800" + tcp4, kUntagged + kIPv4 + kIsTcp},
      {"padding is no header", ethernet, kMacs + "0800" + ipv4(17, 2) + "1388 0035 0000",
       kUntagged + kIPv4 + "ip_protocol=udp src_l4_port=5000", ends},
      {"ARP", ethernet, kMacs + "0806 0001", kUntagged + kNoIp},
      {"half a MAC address", ethernet, "00005e005302 00005e", "dst_mac=00:00:5e:00:53:02", ends},
      {"an empty frame", ethernet, "", "", ends},
      {"an empty raw frame", raw, "", "", ends},
      {"raw IPv4", raw, tcp4, kIPv4 + kIsTcp},
      {"raw IPv6", raw, udp6, kIPv6 + kIsUdp},
      {"raw of no version", raw, "50" + tcp4, "", version},
      {"loopback, small bytes first", Link::kLoopback, "02000000" + tcp4, kIPv4 + kIsTcp},
      {"loopback, large bytes first", Link::kLoopback, "00000002" + tcp4, kIPv4 + kIsTcp},
      {"loopback of Linux", Link::kLoopback, "0000000a" + tcp6, kIPv6 + kIsTcp},
      {"loopback of Windows", Link::kLoopback, "17000000" + tcp6, kIPv6 + kIsTcp},
      {"loopback of NetBSD", Link::kLoopback, "18000000" + tcp6, kIPv6 + kIsTcp},
      {"loopback of FreeBSD", Link::kLoopback, "1c000000" + tcp6, kIPv6 + kIsTcp},
      {"loopback of Darwin", Link::kLoopback, "1e000000" + tcp6, kIPv6 + kIsTcp},
      {"loopback, other family", Link::kLoopback, "00000007" + tcp4, "", unknown},
      {"loopback, both ends set", Link::kLoopback, "02000002" + tcp4, "", unknown},
      {"loopback, wrong family", Link::kLoopback, "02000000" + tcp6, "", version},
      {"cooked", Link::kLinuxCooked, cooked + "86dd" + tcp6, kIPv6 + kIsTcp},
      {"cooked, tagged", Link::kLinuxCooked, cooked + "8100 0064 0800" + tcp4,
       "vlan_tagging=tagged tpid=0x8100 external_vlan_id=100 pcp=0 " + kIPv4 + kIsTcp},
      {"cooked ARP", Link::kLinuxCooked, cooked + "0806", kNoIp},
      {"cooked LLC", Link::kLinuxCooked, cooked + "0004 424203", kNoIp},
      {"cooked IPX", Link::kLinuxCooked, cooked + "0001 ffff", kNoIp},
      {"cooked CAN", Link::kLinuxCooked, cooked + "000c 0000", "", unknown},
      {"cooked radiotap", Link::kLinuxCooked, "0000 0323 0006 00005e005301 0000 0800" + tcp4, "",
       unknown},
      {"cooked 2", Link::kLinuxCooked2, "0800 0000 00000002 0001 00 06 00005e0053010000" + tcp4,
       kIPv4 + kIsTcp},
      {"cooked 2 of netlink", Link::kLinuxCooked2, "0800 0000 00000002 0338 00 06" + tcp4, "",
       unknown},

      // Tags
      {"a tag", ethernet, kMacs + tag("8100", 0xa064) + "0800" + tcp4,
       tagged("tpid=0x8100 external_vlan_id=100 pcp=5") + kIPv4 + kIsTcp},
      {"a priority tag", ethernet, kMacs + tag("8100", 0xe000) + "0806",
       tagged("tpid=0x8100 external_vlan_id=0 pcp=7") + kNoIp},
      {"two tags", ethernet, kMacs + tag("88a8", 0x1fff) + tag("8100", 0x2002) + "86dd" + tcp6,
       tagged("tpid=0x88a8 external_vlan_id=4095 pcp=0") + kIPv6 + kIsTcp},
      {"three tags", ethernet,
       kMacs + tag("9100", 1) + tag("9100", 2) + tag("88a8", 3) + "0800" + tcp4,
       tagged("tpid=0x9100 external_vlan_id=1 pcp=0") + kIPv4 + kIsTcp},
      {"a tag that ends", ethernet, kMacs + "8100 a0", tagged("tpid=0x8100 pcp=5"), ends},
      {"a tag that is cut", ethernet, kMacs + "8100 a064",
       tagged("tpid=0x8100 external_vlan_id=100 pcp=5"), cut, 60},
      {"another TPID", ethernet, kMacs + "9200 0064 0800" + tcp4, kUntagged + kNoIp},

      // Ethernet frames with a length in place of a type, and frames with other headers before IP
      {"STP", ethernet, kMacs + "0003 424203", kUntagged + kNoIp},
      {"STP with padding", ethernet, kMacs + "0003 424203 00000000", kUntagged + kNoIp},
      {"IP behind SNAP", ethernet, kMacs + "0030 aaaa03 000000 0800" + tcp4,
       kUntagged + kIPv4 + kIsTcp},
      {"SNAP of a vendor", ethernet, kMacs + "0008 aaaa03 00000c 2000", kUntagged + kNoIp},
      {"SNAP that ends", ethernet, kMacs + "0006 aaaa03 000000 0800", kUntagged, ends},
      {"a length beyond the frame", ethernet, kMacs + "0004 424203", kUntagged, length},
      {"neither length nor type", ethernet, kMacs + "05dd 424203", kUntagged, length},
      {"MPLS", ethernet, kMacs + "8847 00001140" + tcp4, kUntagged, within},
      {"a network service header", ethernet, kMacs + "894f 0fc60101 00000b0a" + tcp4, kUntagged,
       within},
      {"PPPoE", ethernet, kMacs + "8864 11000001002a0021" + tcp4, kUntagged, within},

      // IPv4
      {"options", raw, ipv4(6, 20, 0, "01010101 01010100") + kTcp, kIPv4 + kIsTcp},
      {"a first fragment", raw, ipv4(6, 20, 0x2000) + kTcp, kIPv4 + kIsTcp},
      {"a later fragment", raw, ipv4(6, 20, 0x2001) + kTcp, kIPv4 + kNoPorts + "ip_protocol=tcp"},
      {"the last fragment", raw, ipv4(6, 20, 0x1fff) + kTcp, kIPv4 + kNoPorts + "ip_protocol=tcp"},
      {"a reserved flag", raw, ipv4(6, 20, 0xc000) + kTcp, kIPv4 + kIsTcp},
      {"ICMP", raw, ipv4(1, 8) + kUdp, kIPv4 + kNoPorts + "ip_protocol=icmp"},
      {"SCTP", raw, ipv4(132, 8) + kUdp,
       kIPv4 + "ip_protocol=sctp src_l4_port=5000 dst_l4_port=53"},
      {"DCCP", raw, ipv4(33, 8) + kUdp, kIPv4 + "ip_protocol=33 src_l4_port=5000 dst_l4_port=53"},
      {"UDP-Lite", raw, ipv4(136, 8) + kUdp,
       kIPv4 + "ip_protocol=136 src_l4_port=5000 dst_l4_port=53"},
      {"AH over IPv4 is a protocol", raw, ipv4(51, 20) + kTcp, kIPv4 + kNoPorts + "ip_protocol=ah"},
      {"a short header", raw, "44" + ipv4(6, 20).substr(3) + kTcp, "", length},
      {"a header beyond its packet", raw, "4fb8 0028" + tcp4, "", length},
      {"a packet beyond the frame", raw, ipv4(6, 21) + kTcp, "", length},
      {"a packet beyond a tagged frame", ethernet, kMacs + "8100 0064 0800" + ipv4(6, 21) + kTcp,
       tagged("tpid=0x8100 external_vlan_id=100 pcp=0"), length},
      {"no length", raw, "45b8 0000 0000 0000" + tcp4, "", length},
      {"half a header", raw, "45b8 0028 0000 0000 40 06", "", length},
      {"half a header is captured", raw, "45b8 0028 0000 0000 40 06",
       "src_ipv6=none dst_ipv6=none tos=184 ttl=64 ip_protocol=tcp", cut, 30},
      {"IPv6 announced as IPv4", ethernet, kMacs + "0800" + tcp6, kUntagged, version},
      {"one port is captured", raw, ipv4(6, 20) + "1388 00",
       kIPv4 + "ip_protocol=tcp src_l4_port=5000", cut, 17},
      {"no port is needed", raw, ipv4(1, 20), kIPv4 + kNoPorts + "ip_protocol=icmp",
       FrameFault::kNone, 20},

      // IPv6
      {"hop-by-hop and destination", raw,
       ipv6(0, 36) + "3c00 0104 00000000 0600 0104 00000000" + kTcp, kIPv6 + kIsTcp},
      {"routing of 24 bytes", raw, ipv6(43, 32) + "11020000" + std::string(40, '0') + kUdp,
       kIPv6 + kIsUdp},
      {"AH of 16 bytes", raw, ipv6(51, 36) + "06020000 00000001 00000001 00000000" + kTcp,
       kIPv6 + kIsTcp},
      {"AH that is too short", raw, ipv6(51, 28) + "06000000 00000001" + kTcp, kIPv6, length},
      {"mobility, identity and shim6", raw,
       ipv6(135, 44) + "8b00 0000 00000000 8c00 0000 00000000 0600 0000 00000000" + kTcp,
       kIPv6 + kIsTcp},
      {"ESP", raw, ipv6(50, 20) + kTcp, kIPv6 + kNoPorts + "ip_protocol=esp"},
      {"nothing behind", raw, ipv6(59, 20) + kTcp, kIPv6 + kNoPorts + "ip_protocol=59"},
      {"a first fragment of IPv6", raw, ipv6(44, 28) + "0600 0001 00000001" + kTcp, kIPv6 + kIsTcp},
      {"a later fragment of IPv6", raw, ipv6(44, 28) + "0600 0009 00000001" + kTcp,
       kIPv6 + kNoPorts + "ip_protocol=tcp"},
      {"a later fragment of headers", raw, ipv6(44, 28) + "3c00 0009 00000001" + kTcp,
       kIPv6 + kNoPorts, later},
      {"a header beyond the packet", raw, ipv6(60, 8) + "0601 0104 00000000" + kTcp, kIPv6, length},
      {"no room for a header", raw, ipv6(60, 0) + "0600 0104 00000000" + kTcp, kIPv6, ends},
      {"no room for ports", raw, ipv6(17, 3) + kUdp, kIPv6 + "ip_protocol=udp src_l4_port=5000",
       ends},
      {"IPv6 beyond the frame", raw, ipv6(6, 21) + kTcp, "", length},
      {"half an IPv6 header", raw, "6b80 0000 0014 06 40 2001", "", length},
      {"half an address is captured", raw, "6b80 0000 0014 06 40 2001",
       "src_ipv4=none dst_ipv4=none tos=184 ttl=64 ip_protocol=tcp", cut, 50},
      {"a chain that is cut", raw, ipv6(60, 36) + "3c00 0104 00000000 06", kIPv6, cut, 27},
      {"a protocol behind a cut header", raw, ipv6(60, 36) + "0601", kIPv6 + "ip_protocol=tcp", cut,
       34},
      {"a jumbo packet", raw, ipv6(0, 0) + jumbo + kTcp, kIPv6 + kIsTcp, FrameFault::kNone, 65536},
      {"a jumbo packet beyond the frame", raw, ipv6(0, 0) + jumbo + kTcp, kIPv6, length, 65000},
      {"a small jumbo packet", raw, ipv6(0, 0) + "0600 c204 0000001c" + kTcp, kIPv6, length},
      {"no length and no jumbo option", raw, ipv6(0, 0) + "0600 0104 00000000" + kTcp, kIPv6,
       length},
      {"IPv4 announced as IPv6", ethernet, kMacs + "86dd" + tcp4, kUntagged, version},
  };
}

}  // namespace frames

#endif  // FILTER_COMMON_TESTS_INSPECT_FRAME_SAMPLES_H_
