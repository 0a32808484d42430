// Checks that any text can be read as a packet set or gives findings. If a set was read, writing
// and reading it again must give the same text. The text of every packet must also be the text of a
// set. In small groups trace() must agree with each packet that search() shows.

#include <filter_inspect/filter_questions.h>
#include <filter_inspect/filter_text.h>

#include "fuzz.h"

using namespace FiltersInspect;

namespace {

// Groups whose matches have masks with holes, ranges, and values that devices may read in several
// ways.
constexpr char kGroups[] =
    "filter-groups 1\n"
    "group 1 priority=1 stage=ingress type=3\n"
    "entry 10 priority=4 if src_ipv4=10.0.0.1/255.0.0.255 dst_l4_port=80/0xff0f then permit\n"
    "entry 20 priority=4 if ttl=64 ip_protocol=6 then deny\n"
    "entry 30 priority=3 if dst_l4_port=179/0x0 my_station_hit=true then permit\n"
    "group 2 priority=1 stage=ingress type=8\n"
    "entry 10 priority=4 if dst_ipv6=2001:db8::1/ffff:ffff::ffff then permit\n"
    "entry 20 priority=3 if dst_ipv6=2001:db8::/48 vrf_id=3 then deny\n"
    "group 3 priority=1 stage=ingress type=11\n"
    "entry 10 priority=4 if dst_l4_port_range=1000-2000 cpu_injected_packets=true then permit\n"
    "entry 20 priority=3 if vlan_info=1/2 then deny\n"
    "entry 30 priority=2 if dst_l4_port_range=9-3 then permit\n";

const std::vector<FiltersCommon::FiltersGroup>& groups() {
  static const ParsedGroups parsed = groupsFromText(kGroups);
  FUZZ_CHECK(parsed.groups.size() == 3);
  return parsed.groups;
}

void ask(const FiltersCommon::FiltersGroup& group, const PacketSet& set) {
  AnalysisOptions options;
  options.max_steps = 1000;
  const Order order = Order::kHighestPriority;
  const Tracer tracer(group, order);
  const Destinations all = search(group, set, order, options);
  for (const Destination& one : all.found) {
    const Trace traced = tracer.trace(one.witness);
    const bool is = traced.outcome != Hit::kUndecided && traced.entry == one.entry;
    FUZZ_CHECK(is || one.hit == Hit::kUndecided);
    FUZZ_CHECK(!is || one.hit == Hit::kHit || !all.complete);
    FUZZ_CHECK(PacketSet::parse(one.witness.toText(), nullptr));
  }
  const auto left = remains(group, 20, set, order, options);
  for (const PacketSet& its : left->possibly) {
    const auto again = PacketSet::parse(its.toText(), nullptr);
    FUZZ_CHECK(again && again->toText() == its.toText());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  Report report;
  const auto set = PacketSet::parse(text, &report);
  FUZZ_CHECK(set.has_value() == report.empty());
  const auto packet = Packet::parse(text, nullptr);
  FUZZ_CHECK(!packet || (set && set->toText() == packet->toText()));
  if (set) {
    const auto again = PacketSet::parse(set->toText(), nullptr);
    FUZZ_CHECK(again && again->toText() == set->toText());
    for (const auto& group : groups()) ask(group, *set);
  }
  if (const auto actions = ActionTest::parse(text, nullptr)) {
    const auto again = ActionTest::parse(actions->toText(), nullptr);
    FUZZ_CHECK(again && again->toText() == actions->toText());
  }
  return 0;
}
