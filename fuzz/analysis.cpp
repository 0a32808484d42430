// Checks the analysis of tiny groups by trying every packet that the rules can distinguish. For a
// group read from arbitrary bytes, it checks that trace() agrees with the example packet of each
// finding. It also checks that comparing the group with itself reports nothing.

#include "../tests/inspect/analysis/tiny_checks.h"
#include "fuzz.h"

using namespace tiny;

namespace {

void checkTinyGroups(fuzz::ByteReader in, Order order) {
  Maker<fuzz::ByteReader> maker(in);
  const Case a = maker.make(1 + in.below(4));
  AnalysisOptions options;
  options.order = order;
  options.overlaps = in.flag();
  FUZZ_NO_FAULT(faultOfAnalysis(a, a.everyRow(), options));
  const auto packets = a.everyPacket();
  const PlainPacket& packet = packets[in.u32() % packets.size()];
  std::vector<bool> told;
  for (std::size_t i = 0; i < packet.size(); ++i) told.push_back(in.flag());
  FUZZ_NO_FAULT(faultOfTrace(a, packet, told, order));
  Case b = in.flag() ? a : maker.make(1 + in.below(3));
  if (in.flag()) maker.add(&b, static_cast<filtersEntryId_t>(b.rules.size()));
  FUZZ_NO_FAULT(faultOfComparison(a, b, order));
}

void checkAnyGroup(const std::string& bytes, Order order) {
  std::optional<FiltersGroup> group;
  try {
    group.emplace(bytes);
  } catch (const std::invalid_argument&) {
    return;
  }
  AnalysisOptions options;
  options.order = order;
  options.max_findings = 20;
  options.max_steps = 1000;
  const Report report = analyse(*group, options);
  for (const Finding& finding : report.findings) {
    const auto packet = Packet::parse(finding.witness, nullptr);
    FUZZ_CHECK(packet && packet->toText() == finding.witness);
    const Trace traced = trace(*group, *packet, order);
    if (finding.witness.empty()) continue;
    FUZZ_CHECK(hitOf(traced, *finding.entry) != Hit::kMiss);
    FUZZ_CHECK(finding.code != Code::kEntryUnreachable || traced.entry != finding.entry);
  }
  FUZZ_CHECK(compareTreatment(*group, *group, options).empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::ByteReader in(data, size);
  const unsigned choice = in.u8();
  const Order order = kAllOrders[choice >> 1 & 7];
  const std::string rest(reinterpret_cast<const char*>(data) + (size > 0 ? 1 : 0),
                         size > 0 ? size - 1 : 0);
  if ((choice & 1) != 0) {
    checkTinyGroups(in, order);
  } else {
    checkAnyGroup(rest, order);
    if (const auto packet = Packet::parse(rest, nullptr)) {
      const auto again = Packet::parse(packet->toText(), nullptr);
      FUZZ_CHECK(again && again->toText() == packet->toText());
    }
  }
  return 0;
}
