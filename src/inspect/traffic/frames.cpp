#include <filter_inspect/filter_traffic.h>

#include <algorithm>
#include <optional>

#include "analysis/packet_fields.h"
#include "analysis/packet_shapes.h"
#include "analysis/readings.h"

namespace FiltersInspect {
namespace {

// --- Numbers of the protocols --------------------------------------------------------------------

// Ether types, and the lengths that can stand in their place (IEEE 802.3, IEEE 802.1Q, IANA).
constexpr std::uint32_t kMostLength = 1500, kLeastType = 0x600;
constexpr std::uint32_t kIPv4Type = 0x0800, kIPv6Type = 0x86dd;
constexpr std::uint32_t kTags[] = {0x8100, 0x88a8, 0x9100};
constexpr std::size_t kTagSize = 4;
// Ether types of headers that may have IP after them: MPLS, PPPoE, IEEE 802.1AE, 802.1ah, 802.1BR
// and 802.1CB, TRILL, and the network service header.
constexpr std::uint32_t kEncapsulating[] = {0x8847, 0x8848, 0x8864, 0x88e5, 0x88e7,
                                            0x893f, 0xf1c1, 0x22f3, 0x894f};
// LLC with SNAP, and the SNAP prefixes after which an ether type stands (RFC 1042, IEEE 802.1H).
constexpr std::uint32_t kSnap = 0xaaaa03, kSnapPrefixes[] = {0x000000, 0x0000f8};
constexpr std::size_t kLlcSize = 3, kSnapSize = 8;

// Linux cooked frames: values of the protocol field that are not ether types, and the kinds of
// devices whose frames do not begin with the header that the protocol field names (Frame Relay,
// radiotap and netlink).
constexpr std::uint32_t kCookedNovell = 1, kCookedLlc = 4;
constexpr std::uint32_t kForeignDevices[] = {770, 803, 824};

// Address families. The number of IPv6 depends on the system that captured the frame.
constexpr std::uint32_t kFamilyIPv4 = 2, kFamiliesIPv6[] = {10, 23, 24, 28, 30};

constexpr std::size_t kLeastIPv4Header = 20, kIPv6Header = 40, kAddressSize = 16;
constexpr std::uint32_t kFragmentOffset = 0x1fff;  // in the 16 bits of IPv4

// Extension headers of IPv6 (IANA's registry). Headers after ESP are encrypted, so the protocol is
// the number of ESP.
enum Extension : std::uint32_t {
  kHopByHop = 0,
  kRouting = 43,
  kFragment = 44,
  kAuthentication = 51,
  kDestination = 60,
  kMobility = 135,
  kHostIdentity = 139,
  kShim6 = 140,
};
constexpr std::uint32_t kExtensions[] = {kHopByHop,    kRouting,  kFragment,     kAuthentication,
                                         kDestination, kMobility, kHostIdentity, kShim6};
constexpr std::size_t kFragmentSize = 8, kLeastAuthentication = 12;
constexpr std::uint32_t kPad1 = 0, kJumbo = 0xc2, kJumboSize = 4, kMostPayload = 0xffff;

template <class Numbers>
bool isOneOf(const Numbers& numbers, std::uint32_t number) {
  return std::find(std::begin(numbers), std::end(numbers), number) != std::end(numbers);
}

// --- Fields --------------------------------------------------------------------------------------

// The fields that frames show, in the order of the names.
enum Shown : std::uint8_t {
  kVlanId,
  kTpid,
  kDstMac,
  kDstPort,
  kSrcPort,
  kSrcMac,
  kSrcIPv4,
  kDstIPv4,
  kPcp,
  kSrcIPv6,
  kDstIPv6,
  kTagging,
  kProtocol,
  kTos,
  kTtl,
};
constexpr std::string_view kNames[] = {
    "external_vlan_id", "tpid",         "dst_mac",     "dst_l4_port", "src_l4_port",
    "src_mac",          "src_ipv4",     "dst_ipv4",    "pcp",         "src_ipv6",
    "dst_ipv6",         "vlan_tagging", "ip_protocol", "tos",         "ttl"};
constexpr std::size_t kShown = std::size(kNames);

using FieldNumbers = std::array<std::uint8_t, kShown>;
const FieldNumbers& fieldNumbers() {
  static const FieldNumbers numbers = [] {
    FieldNumbers made = {};
    for (std::size_t i = 0; i < kShown; ++i) made[i] = *packetField(kNames[i]);
    return made;
  }();
  return numbers;
}

// --- The dissector -------------------------------------------------------------------------------

class Frame {
 public:
  Frame(const void* bytes, std::size_t captured, std::size_t length)
      : bytes_(static_cast<const unsigned char*>(bytes)),
        captured_(std::min(captured, length)),
        end_(length) {}

  void read(Link link);
  Packet packet() const;
  FrameFault fault() const { return fault_; }
 private:
  enum class Known : std::uint8_t { kNot, kAbsent, kValue };

  // --- Bytes ---

  void blame(FrameFault fault) {
    if (fault_ == FrameFault::kNone) fault_ = fault;
  }
  // True if these bytes belong to the packet and were captured.
  bool has(std::size_t at, std::size_t size) {
    if (at > end_ || size > end_ - at) {
      blame(FrameFault::kEndsEarly);
      return false;
    }
    if (at > captured_ || size > captured_ - at) {
      blame(FrameFault::kCut);
      return false;
    }
    return true;
  }
  // Reads a number of up to 8 bytes, with the most significant byte first.
  std::optional<std::uint64_t> number(std::size_t at, std::size_t size) {
    if (!has(at, size)) return std::nullopt;
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value = value << 8 | bytes_[at + i];
    return value;
  }
  std::optional<std::uint32_t> word(std::size_t at, std::size_t size) {
    const auto value = number(at, size);
    return value ? std::optional(static_cast<std::uint32_t>(*value)) : std::nullopt;
  }

  // --- Making fields known ---

  void set(Shown field, std::uint64_t value, std::uint64_t lower = 0) {
    known_[field] = Known::kValue;
    values_[field] = {value, lower};
  }
  template <class... Fields>
  void lacks(Fields... fields) {
    ((known_[fields] = Known::kAbsent), ...);
  }
  // Makes a field known, with the value in the frame.
  void tell(Shown field, std::size_t at, std::size_t size) {
    if (const auto value = number(at, size)) set(field, *value);
  }
  void tellIPv6(Shown field, std::size_t at) {
    if (!has(at, kAddressSize)) return;
    set(field, *number(at, kAddressSize / 2), *number(at + kAddressSize / 2, kAddressSize / 2));
  }
  void lacksIp() {
    lacks(kSrcIPv4, kDstIPv4, kSrcIPv6, kDstIPv6, kProtocol, kTos, kTtl, kSrcPort, kDstPort);
  }

  // --- Headers; each function gets the offset at which its header begins ---

  void cooked(std::size_t device, std::size_t protocol, std::size_t behind);
  void loopback();
  void raw();
  void tagged(std::uint32_t type, std::size_t behind);
  void typed(std::uint32_t type, std::size_t behind);
  void lengthed(std::uint32_t length, std::size_t behind);
  void llc(std::size_t at);
  void ipv4(std::size_t at);
  void ipv6(std::size_t at);
  bool readJumbo(std::size_t at);
  void extensions(std::uint32_t next, std::size_t at);
  void ports(std::uint32_t protocol, std::size_t at, bool is_later_fragment);

  const unsigned char* bytes_;
  const std::size_t captured_;
  std::size_t end_;  // of the frame, or of the packet in it
  FrameFault fault_ = FrameFault::kNone;
  std::array<Known, kShown> known_ = {};
  std::array<FieldValue, kShown> values_;
};

void Frame::read(Link link) {
  switch (link) {
    case Link::kEthernet:
      tell(kDstMac, 0, 6);
      tell(kSrcMac, 6, 6);
      if (const auto type = word(12, 2)) {
        if (!isOneOf(kTags, *type)) {
          set(kTagging, FiltersCommon::FILTERS_VLAN_UNTAGGED);
          lacks(kTpid, kVlanId, kPcp);
        }
        tagged(*type, 14);
      }
      return;
    case Link::kRaw:
      return raw();
    case Link::kLinuxCooked:
      return cooked(2, 14, 16);
    case Link::kLinuxCooked2:
      return cooked(8, 0, 20);
    case Link::kLoopback:
      return loopback();
  }
  blame(FrameFault::kUnknownLink);
}

void Frame::cooked(std::size_t device, std::size_t protocol, std::size_t behind) {
  const auto kind = word(device, 2), type = word(protocol, 2);
  if (!kind || !type) return;
  if (isOneOf(kForeignDevices, *kind)) return blame(FrameFault::kUnknownLink);
  if (*type >= kLeastType) return tagged(*type, behind);
  if (*type == kCookedLlc) return llc(behind);
  if (*type == kCookedNovell) return lacksIp();
  blame(FrameFault::kUnknownLink);
}

void Frame::loopback() {
  const auto written = word(0, 4);
  if (!written) return;
  const bool isSwapped = *written > 0xffff;
  const std::uint32_t family = isSwapped ? *written >> 24 : *written;
  if (isSwapped && (*written & 0xffffff) != 0) return blame(FrameFault::kUnknownLink);
  if (family == kFamilyIPv4) return ipv4(4);
  if (isOneOf(kFamiliesIPv6, family)) return ipv6(4);
  blame(FrameFault::kUnknownLink);
}

void Frame::raw() {
  const auto first = word(0, 1);
  if (!first) return;
  if (*first >> 4 == 4) return ipv4(0);
  if (*first >> 4 == 6) return ipv6(0);
  blame(FrameFault::kWrongVersion);
}

// Reads the outer tag, if there is one.
void Frame::tagged(std::uint32_t type, std::size_t behind) {
  if (isOneOf(kTags, type)) {
    set(kTagging, FiltersCommon::FILTERS_VLAN_TAGGED);
    set(kTpid, type);
    if (const auto priority = word(behind, 1)) set(kPcp, *priority >> 5);
    if (const auto control = word(behind, 2)) set(kVlanId, *control & 0xfff);
  }
  typed(type, behind);
}

// Reads the tags, and then the header that the last ether type or length indicates.
void Frame::typed(std::uint32_t type, std::size_t behind) {
  for (; isOneOf(kTags, type); behind += kTagSize) {
    const auto next = word(behind + 2, 2);
    if (!next) return;
    type = *next;
  }
  if (type == kIPv4Type) return ipv4(behind);
  if (type == kIPv6Type) return ipv6(behind);
  if (isOneOf(kEncapsulating, type)) return blame(FrameFault::kEncapsulated);
  if (type < kLeastType) return lengthed(type, behind);
  lacksIp();
}

void Frame::lengthed(std::uint32_t length, std::size_t behind) {
  if (length > kMostLength || length > end_ - behind) return blame(FrameFault::kWrongLength);
  end_ = behind + length;
  llc(behind);
}

void Frame::llc(std::size_t at) {
  const auto control = word(at, kLlcSize);
  if (!control) return;
  if (*control != kSnap) return lacksIp();
  const auto prefix = word(at + 3, 3), type = word(at + 6, 2);
  if (!prefix || !type) return;
  if (isOneOf(kSnapPrefixes, *prefix) && *type >= kLeastType) return typed(*type, at + kSnapSize);
  lacksIp();
}

void Frame::ipv4(std::size_t at) {
  const auto first = word(at, 4);
  if (!first) return;
  if (*first >> 28 != 4) return blame(FrameFault::kWrongVersion);
  const std::size_t header = (*first >> 24 & 0xf) * 4, total = *first & 0xffff;
  if (header < kLeastIPv4Header || total < header || total > end_ - at) {
    return blame(FrameFault::kWrongLength);
  }
  end_ = at + total;
  lacks(kSrcIPv6, kDstIPv6);
  tell(kTos, at + 1, 1);
  tell(kTtl, at + 8, 1);
  tell(kProtocol, at + 9, 1);
  tell(kSrcIPv4, at + 12, 4);
  tell(kDstIPv4, at + 16, 4);
  const auto fragment = word(at + 6, 2), protocol = word(at + 9, 1);
  if (fragment && protocol) ports(*protocol, at + header, (*fragment & kFragmentOffset) != 0);
}

void Frame::ipv6(std::size_t at) {
  const auto first = word(at, 4);
  if (!first) return;
  if (*first >> 28 != 6) return blame(FrameFault::kWrongVersion);
  const auto payload = word(at + 4, 2);
  if (!payload) return;
  const std::size_t left = end_ - at;
  if (left < kIPv6Header || *payload > left - kIPv6Header) return blame(FrameFault::kWrongLength);
  lacks(kSrcIPv4, kDstIPv4);
  set(kTos, *first >> 20 & 0xff);
  tell(kTtl, at + 7, 1);
  tellIPv6(kSrcIPv6, at + 8);
  tellIPv6(kDstIPv6, at + 24);
  const auto next = word(at + 6, 1);
  at += kIPv6Header;
  if (!next) return;
  if (*payload != 0 || *next != kHopByHop) {
    end_ = at + *payload;
  } else if (!readJumbo(at)) {
    return;
  }
  extensions(*next, at);
}

// Finds the length of a packet in its hop-by-hop options, if its IPv6 header has the length 0 (RFC
// 2675).
bool Frame::readJumbo(std::size_t at) {
  const std::size_t begin = at;
  const auto length = word(at + 1, 1);
  if (!length) return false;
  const std::size_t size = (std::size_t{*length} + 1) * 8, behind = at + size;
  if (size > end_ - at) {
    blame(FrameFault::kWrongLength);
    return false;
  }
  for (at += 2; at < behind;) {
    const auto option = word(at, 1);
    if (!option) return false;
    if (*option == kPad1) {
      ++at;
      continue;
    }
    const auto its = word(at + 1, 1);
    if (!its) return false;
    if (*option == kJumbo && *its == kJumboSize && behind - at >= 2 + kJumboSize) {
      const auto payload = word(at + 2, kJumboSize);
      if (!payload) return false;
      if (*payload <= kMostPayload || *payload > end_ - begin) break;
      end_ = begin + *payload;
      return true;
    }
    at += 2 + *its;
  }
  blame(FrameFault::kWrongLength);
  return false;
}

void Frame::extensions(std::uint32_t next, std::size_t at) {
  while (isOneOf(kExtensions, next)) {
    const auto behind = word(at, 1), length = word(at + 1, 1);
    if (!behind || !length) return;
    const std::size_t size = next == kFragment         ? kFragmentSize
                             : next == kAuthentication ? (std::size_t{*length} + 2) * 4
                                                       : (std::size_t{*length} + 1) * 8;
    const bool isShort = next == kAuthentication && size < kLeastAuthentication;
    if (size > end_ - at || isShort) return blame(FrameFault::kWrongLength);
    if (next == kFragment) {
      const auto offset = word(at + 2, 2);
      if (!offset) return;
      if (*offset >> 3 != 0) {
        lacks(kSrcPort, kDstPort);
        if (isOneOf(kExtensions, *behind)) return blame(FrameFault::kLaterFragment);
        return set(kProtocol, *behind);
      }
    }
    next = *behind;
    at += size;
  }
  set(kProtocol, next);
  ports(next, at, false);
}

void Frame::ports(std::uint32_t protocol, std::size_t at, bool is_later_fragment) {
  if (is_later_fragment || !hasPorts(protocol)) return lacks(kSrcPort, kDstPort);
  tell(kSrcPort, at, 2);
  tell(kDstPort, at + 2, 2);
}

Packet Frame::packet() const {
  const FieldNumbers& numbers = fieldNumbers();
  Packet packet;
  PacketFields::reserve(&packet, kShown);
  for (std::size_t i = 0; i < kShown; ++i) {
    if (known_[i] == Known::kNot) continue;
    PacketFields::tell(&packet, numbers[i],
                       known_[i] == Known::kValue ? std::optional(values_[i]) : std::nullopt);
  }
  return packet;
}

}  // namespace

std::string_view nameOf(Link link) {
  switch (link) {
    case Link::kEthernet:
      return "ethernet";
    case Link::kRaw:
      return "raw";
    case Link::kLinuxCooked:
      return "linux-cooked";
    case Link::kLinuxCooked2:
      return "linux-cooked-2";
    case Link::kLoopback:
      return "loopback";
  }
  return {};
}

namespace {

struct FaultRow {
  std::string_view name, words;
};

FaultRow rowOf(FrameFault fault) {
  switch (fault) {
    case FrameFault::kNone:
      return {"none", "all headers were read"};
    case FrameFault::kCut:
      return {"cut", "a header lies beyond what was captured"};
    case FrameFault::kEndsEarly:
      return {"ends-early", "the frame or the IP packet ends within a header"};
    case FrameFault::kWrongLength:
      return {"wrong-length", "a length in a header contradicts the header or the frame"};
    case FrameFault::kWrongVersion:
      return {"wrong-version", "the IP header has another version than the frame announces"};
    case FrameFault::kUnknownLink:
      return {"unknown-link", "the frame announces its protocol in a way that is not known"};
    case FrameFault::kEncapsulated:
      return {"encapsulated", "a header before IP is not read, such as MPLS"};
    case FrameFault::kLaterFragment:
      return {"later-fragment", "only the first fragment has the headers before the protocol"};
  }
  return {};
}

}  // namespace

std::string_view nameOf(FrameFault fault) { return rowOf(fault).name; }
std::string_view describe(FrameFault fault) { return rowOf(fault).words; }

Packet packetOf(const void* frame, std::size_t captured, std::size_t length, Link link,
                FrameFault* fault) {
  Frame one(frame, captured, length);
  one.read(link);
  if (fault != nullptr) *fault = one.fault();
  return one.packet();
}

}  // namespace FiltersInspect
