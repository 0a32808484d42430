#ifndef FILTER_INSPECT_FILTER_TRAFFIC_H_
#define FILTER_INSPECT_FILTER_TRAFFIC_H_

// Reads the packet fields from frames of real traffic, and counts the packets that each rule takes.
// For example, with frames that a program has captured:
//
//     HitCounter counter(group, Order::kHighestPriority);
//     for (const auto& frame : frames)
//       counter.count(frame.bytes, frame.captured, frame.length, Link::kEthernet, frame.time);
//     for (const EntryHits& one : counter.hits().entries)
//       if (one.hits.sure.frames == 0) std::cout << one.entry << " was not surely hit\n";
//
// The library takes frames as bytes. It does not read capture files, but filter-inspect does.
//
// Frames need not be trusted. Nothing beyond the captured bytes is read, and no frame takes more
// steps than it has bytes. packetOf() may be called from any thread. A counter may be used by one
// thread at a time. All functions throw std::bad_alloc.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <filter_inspect/filter_analysis.h>

namespace FiltersInspect {

// The kind of header with which a frame begins.
enum class Link : std::uint8_t {
  kEthernet,      // MAC addresses and an ether type (IEEE 802.3), without preamble
  kRaw,           // an IPv4 or IPv6 header
  kLinuxCooked,   // the 16 bytes of Linux's capture on all interfaces
  kLinuxCooked2,  // the 20 bytes of its second version
  kLoopback,      // an address family in 4 bytes, in either byte order
};
constexpr std::array<Link, 5> kAllLinks = {Link::kEthernet, Link::kRaw, Link::kLinuxCooked,
                                           Link::kLinuxCooked2, Link::kLoopback};

// The reason why some fields of a frame are unknown. If there are several reasons, it is the first
// one.
enum class FrameFault : std::uint8_t {
  kNone,           // there is no such field
  kCut,            // the field lies beyond what was captured
  kEndsEarly,      // the frame or the IP packet ends within a header
  kWrongLength,    // a length in a header contradicts the header or the frame
  kWrongVersion,   // the version of the IP header is not the one that the frame announces
  kUnknownLink,    // the frame announces a protocol in a way that is not known
  kEncapsulated,   // the IP header may stand behind a header that is not read, such as MPLS
  kLaterFragment,  // only the first fragment has the headers before the protocol
};
constexpr std::array<FrameFault, 8> kAllFrameFaults = {
    FrameFault::kNone,         FrameFault::kCut,          FrameFault::kEndsEarly,
    FrameFault::kWrongLength,  FrameFault::kWrongVersion, FrameFault::kUnknownLink,
    FrameFault::kEncapsulated, FrameFault::kLaterFragment};

// The names of the values: "ethernet", "raw", "linux-cooked", "linux-cooked-2" and "loopback";
// "none", "cut", "ends-early" and so on. Each name ends with a zero byte.
FILTERS_API std::string_view nameOf(Link);
FILTERS_API std::string_view nameOf(FrameFault);
// The reason in words, for example "a header lies beyond what was captured".
FILTERS_API std::string_view describe(FrameFault);

// Returns the fields that a frame shows of its packet. `length` is the length of the frame on the
// wire, of which the first `captured` bytes are at `frame`. `frame` may be null if `captured` is 0.
// `fault`, which may be null, gets the reason why fields are unknown.
//
// - dst_mac and src_mac: from Ethernet.
// - vlan_tagging, tpid, external_vlan_id and pcp: from the outer tag (0x8100, 0x88a8 or 0x9100). In
//   an Ethernet frame without a tag, vlan_tagging is untagged and the other three fields are
//   absent. A VLAN id of 0 is returned as 0, although such a tag has only a priority. On other
//   links a frame can show that there is a tag, but not that there is none.
// - src_ipv4, dst_ipv4, src_ipv6, dst_ipv6, ip_protocol, tos and ttl: from the outermost IP header,
//   after all tags (RFC 791, RFC 8200). The addresses of the other family are absent, and so are
//   all of these fields in frames without IP, such as ARP. For IPv6, ip_protocol is the protocol
//   after the extension headers. IP after LLC and SNAP (RFC 1042) is found. IP after MPLS, PPPoE
//   and similar headers is not searched for, and then all these fields are unknown.
// - src_l4_port and dst_l4_port: from TCP, UDP, DCCP, SCTP and UDP-Lite. They are absent in other
//   protocols, in all fragments except the first, and in frames without IP.
//
// All other fields are known only to the device, and stay unknown here. A field beyond the captured
// bytes is unknown too, and so are the fields of an IP header that contradicts itself or the frame.
// So a longer capture of the same frame never changes a field that was already known. Bytes after
// the length that the IP header gives are padding.
FILTERS_API Packet packetOf(const void* frame, std::size_t captured, std::size_t length, Link link,
                            FrameFault* fault = nullptr);

// A count of frames with the same outcome, entry or fault, and the first of these frames.
struct FrameCount {
  std::uint64_t frames = 0;
  std::uint64_t first = 0;      // its number, counted from 1; 0 if there is none
  std::int64_t first_time = 0;  // its time, as it was given

  void add(std::uint64_t number, std::int64_t time) {
    if (frames++ != 0) return;
    first = number;
    first_time = time;
  }
};

using FrameCounts = std::array<FrameCount, kAllFrameFaults.size()>;  // by FrameFault

// `sure` counts the frames for which the outcome is certain: it holds for all values of unknown
// fields and under every reading. `possible` counts other frames that may have the outcome.
struct HitCounts {
  FrameCount sure, possible;
};

struct EntryHits {
  FiltersCommon::filtersEntryId_t entry;
  HitCounts hits;
};

struct Hits {
  std::uint64_t frames = 0;
  // `decided` frames: it is certain which entry takes them, or that no entry does. The other frames
  // are `undecided`.
  FrameCount decided, undecided;
  std::vector<EntryHits> entries;  // in the order of the rules
  HitCounts none;                  // frames that no entry takes
  FrameCounts faults;
};

// Counts the packets that the entries of a group take. The object may outlive the group.
class FILTERS_API HitCounter {
 public:
  // `assumed` gives fields that no frame shows, such as vrf_id. They hold for all frames. If a
  // frame shows such a field, or shows that the packet lacks it, the field in `assumed` is ignored
  // for that frame.
  HitCounter(const FiltersCommon::FiltersGroup& group, Order order, Packet assumed = {});
  HitCounter(HitCounter&&) noexcept;
  HitCounter& operator=(HitCounter&&) noexcept;
  ~HitCounter();

  // Counts a frame. `time` can have any unit, for example nanoseconds since 1970. If memory runs
  // out, the frame is not counted.
  void count(const void* frame, std::size_t captured, std::size_t length, Link link,
             std::int64_t time = 0);
  // Counts a packet that packetOf() has returned. Several counters can count the same packet.
  void count(const Packet& packet, FrameFault fault = FrameFault::kNone, std::int64_t time = 0);
  const Hits& hits() const;
 private:
  struct Counting;
  std::unique_ptr<Counting> counting_;
};

// Frames that entry `a` of one group and entry `b` of another one treat differently. If an entry is
// not set, no entry of that group takes the frames.
struct TreatedDifferently {
  std::optional<FiltersCommon::filtersEntryId_t> a, b;
  std::string before, after;  // what they do with the frames; empty if no entry takes them
  HitCounts hits;
};

struct TrafficDifferences {
  std::uint64_t frames = 0;
  HitCounts differing;                    // frames that are treated differently
  std::vector<TreatedDifferently> pairs;  // in the order of their first frames
  FrameCounts faults = {};
};

// Counts the packets that two groups treat differently. Treatment has the same meaning as in
// compareTreatment(). Equal matches of the groups take the same packets under every reading, and an
// unknown field has one value for both groups. So two equal groups show no difference, unless
// entries tie.
class FILTERS_API TrafficComparison {
 public:
  // These functions work like those of HitCounter.
  TrafficComparison(const FiltersCommon::FiltersGroup& a, const FiltersCommon::FiltersGroup& b,
                    Order order, Packet assumed = {});
  TrafficComparison(TrafficComparison&&) noexcept;
  TrafficComparison& operator=(TrafficComparison&&) noexcept;
  ~TrafficComparison();

  void count(const void* frame, std::size_t captured, std::size_t length, Link link,
             std::int64_t time = 0);
  void count(const Packet& packet, FrameFault fault = FrameFault::kNone, std::int64_t time = 0);
  const TrafficDifferences& differences() const;
 private:
  struct Comparing;
  std::unique_ptr<Comparing> comparing_;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_TRAFFIC_H_
