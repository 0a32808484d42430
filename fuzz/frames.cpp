// Checks packetOf() and a counter on any frame. packetOf() must not read beyond the captured bytes.
// If more bytes are captured, the fields that were known before must not change. The counter must
// count each frame once.

#include <filter_inspect/filter_text.h>

#include "../tests/inspect/traffic/frame_checks.h"
#include "fuzz.h"

namespace {

const FiltersCommon::FiltersGroup& rules() {
  static const FiltersCommon::FiltersGroup group =
      FiltersInspect::groupsFromText(
          "filter-groups 1\ngroup 1 priority=1 stage=ingress type=3\n"
          "entry 1 priority=4 if dst_l4_port=179/0xffff ttl=1 then permit\n"
          "entry 2 priority=3 if external_vlan_id={100} then deny\n"
          "entry 3 priority=2 if src_ipv4=192.0.2.0/24 ip_protocol=6 then permit\n")
          .groups.at(0);
  return group;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kHead = 3, kMost = 160;  // checking each prefix of longer ones takes long
  if (size < kHead) return 0;
  const auto link = static_cast<FiltersInspect::Link>(data[0] % 5);
  const std::size_t beyond = std::size_t{data[1]} << 8 | data[2];
  const std::string frame(reinterpret_cast<const char*>(data) + kHead,
                          std::min(size - kHead, kMost));
  const std::size_t length = frame.size() + beyond;
  FUZZ_NO_FAULT(frames::faultOfPrefixes(frame, length, link));
  static FiltersInspect::HitCounter counter(rules(), FiltersInspect::Order::kHighestPriority);
  const FiltersInspect::Hits before = counter.hits();
  counter.count(frame.data(), frame.size(), length, link);
  const FiltersInspect::Hits& hits = counter.hits();
  std::uint64_t sure = hits.none.sure.frames - before.none.sure.frames;
  std::uint64_t possible = hits.none.possible.frames - before.none.possible.frames;
  for (std::size_t i = 0; i < hits.entries.size(); ++i) {
    sure += hits.entries[i].hits.sure.frames - before.entries[i].hits.sure.frames;
    possible += hits.entries[i].hits.possible.frames - before.entries[i].hits.possible.frames;
  }
  const bool isDecided = hits.decided.frames != before.decided.frames;
  FUZZ_CHECK(hits.frames == before.frames + 1);
  FUZZ_CHECK(hits.decided.frames + hits.undecided.frames == hits.frames);
  FUZZ_CHECK(sure == (isDecided ? 1 : 0) && (isDecided ? possible == 0 : possible > 1));
  return 0;
}
