#ifndef FILTER_COMMON_BENCHMARKS_PACKETS_H_
#define FILTER_COMMON_BENCHMARKS_PACKETS_H_

// Packets for the groups of rule_sets.h, the same on every machine.

#include <filter_inspect/filter_analysis.h>

#include <arpa/inet.h>
#include <string>

#include "rule_sets.h"

namespace benchmarks {

// The fields of a packet in the order of a Tuple.
using Values = std::array<std::uint32_t, 5>;

// Most packets have the values of the conditions of some rule. No two packets are alike.
inline std::vector<Values> makeValues(const std::vector<RuleSet::Tuple>& tuples,
                                      std::size_t count) {
  std::mt19937 engine(7);
  constexpr std::uint32_t kAll[] = {~0U, ~0U, 0xffff, 0xffff, 0xff};
  std::set<Values> made;
  while (made.size() < count) {
    const RuleSet::Tuple& near = tuples[engine() % tuples.size()];
    Values values;
    for (std::size_t i = 0; i < values.size(); ++i) {
      const std::uint32_t random = static_cast<std::uint32_t>(engine()) & kAll[i];
      values[i] = near[i].value | (random & ~near[i].mask);
    }
    if (near[4].open) values[4] = engine() % 2 == 0 ? 6 : 17;
    made.insert(values);
  }
  std::vector<Values> all(made.begin(), made.end());
  std::shuffle(all.begin(), all.end(), engine);
  return all;
}

inline FiltersInspect::Packet packetOf(const Values& values) {
  const auto address = [](std::uint32_t value) {
    char text[INET_ADDRSTRLEN];
    const in_addr bytes{htonl(value)};
    return std::string(inet_ntop(AF_INET, &bytes, text, sizeof text));
  };
  const auto packet = FiltersInspect::Packet::parse(
      "src_ipv4=" + address(values[0]) + " dst_ipv4=" + address(values[1]) +
          " src_l4_port=" + std::to_string(values[2]) +
          " dst_l4_port=" + std::to_string(values[3]) + " ip_protocol=" + std::to_string(values[4]),
      nullptr);
  require(packet.has_value(), "a packet cannot be read");
  return *packet;
}

}  // namespace benchmarks

#endif  // FILTER_COMMON_BENCHMARKS_PACKETS_H_
