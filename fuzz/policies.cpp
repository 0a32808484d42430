// Checks that any text can be read as a policy or gives findings. For tiny groups, the verdicts
// must agree with what happens to every packet. For other groups, trace() must confirm the example
// packet of each verdict.

#include <filter_inspect/filter_text.h>

#include "../tests/inspect/questions/tiny_policies.h"
#include "fuzz.h"

using namespace tiny;

namespace {

void checkTinyGroup(fuzz::ByteReader in, Order order) {
  const Case c = Maker<fuzz::ByteReader>(in).make(1 + in.below(7));
  const std::uint64_t steps = in.flag() ? in.below(20) : 100000;
  const PlainSet set = SetMaker<fuzz::ByteReader>(in, c.fields).make();
  FUZZ_NO_FAULT(faultOfPolicy(c, {set}, order, steps));
}

// A group with this id. It has entries that tie, a mask with holes, and matches that devices may
// read in several ways.
FiltersGroup groupOf(filtersGroupId_t id) {
  const ParsedGroups parsed = groupsFromText(
      "filter-groups 1\ngroup " + std::to_string(id) +
      " priority=1 stage=ingress type=4\n"
      "entry 10 priority=40 if src_ipv4=10.0.0.1/255.0.0.255 tos=8 then permit set_pcp=5\n"
      "entry 20 priority=30 if tos=8 external_vlan_id={7,8} then deny\n"
      "entry 30 priority=30 if dst_l4_port=179/0x0 then permit\n"
      "entry 40 priority=20 if internal_pcp={} then deny set_pcp=3\n");
  FUZZ_CHECK(parsed.groups.size() == 1);
  return parsed.groups[0];
}

void checkAnyPolicy(std::string_view text) {
  Report faults;
  const auto policy = Policy::parse(text, &faults, 5);
  FUZZ_CHECK(policy.has_value() == faults.empty() && faults.findings.size() <= 5);
  if (!policy) return;
  AnalysisOptions options;
  options.max_steps = 200;
  for (const PolicyGroup& its : policy->groups()) {
    const FiltersGroup group = groupOf(its.group);
    const Report report = checkPolicy(group, *policy, options);
    FUZZ_CHECK(report.findings.size() == its.promises.size());
    for (const Finding& finding : report.findings) {
      const auto packet = Packet::parse(finding.witness, nullptr);
      FUZZ_CHECK(packet && packet->toText() == finding.witness);
      if (finding.witness.empty()) continue;
      const Trace traced = trace(group, *packet, its.order);
      const auto& all = traced.candidates;
      const bool goes = finding.entry
                            ? traced.entry == finding.entry ||
                                  std::find(all.begin(), all.end(), *finding.entry) != all.end()
                            : traced.outcome == Hit::kMiss || traced.may_be_none;
      FUZZ_CHECK(goes);
    }
    options.order = its.order;
    Report analysed = analyse(group, options);
    acceptFindings(*policy, its.group, &analysed);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 0 && (data[0] & 0x80) != 0) {
    fuzz::ByteReader in(data, size);
    checkTinyGroup(in, kAllOrders[in.u8() & 7]);
  } else {
    checkAnyPolicy({reinterpret_cast<const char*>(data), size});
  }
  return 0;
}
