#ifndef FILTER_COMMON_BENCHMARKS_RULE_SETS_H_
#define FILTER_COMMON_BENCHMARKS_RULE_SETS_H_

// Groups like real filters: access lists (ACL), firewalls (FW) and chains of both (IPC). These
// kinds differ in the number of networks, in the length of the prefixes, and in how many rules have
// no condition on an address, a port or the protocol. Some networks lie within other networks. The
// groups are the same on every machine.

#include <filter_common/filter_groups.h>

#include <algorithm>
#include <array>
#include <random>
#include <set>
#include <tuple>
#include <vector>

#include "require.h"

namespace benchmarks {

using namespace FiltersCommon;

struct Shape {
  const char* name;
  unsigned open_source, open_destination;  // how many rules in 100 have no condition on the address
  unsigned open_source_port, open_destination_port, open_protocol;
  unsigned exact_port;              // of 100 ports, how many are single; the others are ranges
  std::array<unsigned, 4> lengths;  // of 100 prefixes, how many have length 8-16, 17-24, 25-31, 32
  unsigned networks;                // rules for each network
};

constexpr Shape kShapes[] = {
    {"ACL", 10, 3, 95, 25, 8, 85, {2, 35, 18, 45}, 4},
    {"FW", 45, 35, 70, 40, 20, 55, {10, 30, 15, 45}, 10},
    {"IPC", 25, 20, 85, 35, 25, 70, {5, 30, 25, 40}, 6},
};

class RuleSet {
 public:
  struct Masked {
    std::uint32_t value = 0, mask = 0;
    bool open = true;
    bool operator<(const Masked& other) const {
      return std::tie(open, mask, value) < std::tie(other.open, other.mask, other.value);
    }
  };
  using Tuple = std::array<Masked, 5>;  // source, destination, their ports, protocol

  RuleSet(const Shape& shape, unsigned rules) : shape_(shape) {
    for (unsigned i = 0; i < 1 + rules / shape.networks; ++i) {
      // Half of the networks lie within another network.
      const bool nested = i > 0 && below(2) == 0;
      networks_.push_back(nested ? networks_[below(i)] ^ below(1U << below(16))
                                 : static_cast<std::uint32_t>(engine_()));
    }
  }

  // The rules have ascending ids and descending priorities. The last rule denies everything.
  FiltersGroup make(unsigned rules) {
    FiltersGroup group = FiltersGroup(kGroupId);
    require(group.setStage(FILTERS_GROUP_STAGE_INGRESS) == FILTERS_OK &&
                group.setType(FILTERS_GROUP_TYPE_3) == FILTERS_OK,
            "the group is refused");
    makeTuples(rules - 1);
    for (unsigned id = 1; id < rules; ++id) {
      FiltersEntry rule(id);
      rule.setPriority(rules - id);
      setMatches(tuples_[id - 1], &rule);
      require((below(3) == 0 ? rule.setAction(ActionDeny()) : rule.setAction(ActionPermit())) ==
                      FILTERS_OK &&
                  group.insertEntry(rule) == FILTERS_OK,
              "a rule is refused");
    }
    FiltersEntry last(rules);
    require(last.setAction(ActionDeny()) == FILTERS_OK && group.insertEntry(last) == FILTERS_OK,
            "the last rule is refused");
    return group;
  }
  // The conditions of all rules except the last, in the order of the rules. The ids begin with 1.
  const std::vector<Tuple>& tuples() const { return tuples_; }
 private:
  std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(engine_() % limit); }
  bool happens(unsigned of100) { return below(100) < of100; }

  unsigned length() {
    unsigned choice = below(100);
    const unsigned first[] = {8, 17, 25, 32}, count[] = {9, 8, 7, 1};
    for (unsigned i = 0; i < 3; ++i) {
      if (choice < shape_.lengths[i]) return first[i] + below(count[i]);
      choice -= shape_.lengths[i];
    }
    return 32;
  }
  static Masked masked(std::uint32_t value, std::uint32_t mask) {
    return {value & mask, mask, false};
  }

  void addAddresses() {
    const unsigned open[] = {shape_.open_source, shape_.open_destination};
    for (unsigned i : {0U, 1U}) {
      if (happens(open[i])) continue;
      const std::uint32_t network = networks_[below(static_cast<std::uint32_t>(networks_.size()))];
      tuple_[i] = masked(network ^ below(256), ~std::uint32_t{0} << (32 - length()));
    }
  }

  void addPorts() {
    const unsigned open[] = {shape_.open_source_port, shape_.open_destination_port};
    const std::uint32_t known[] = {22,  25,  53,  80,  123,  161,  179,
                                   389, 443, 445, 993, 1433, 3306, 8080};
    for (unsigned i : {0U, 1U}) {
      if (happens(open[i])) continue;
      const bool exact = happens(shape_.exact_port);
      const std::uint32_t port = below(3) == 0 ? below(65536) : known[below(14)];
      tuple_[2 + i] = masked(port, exact ? 0xffff : 0xffffU << (2 + below(14)) & 0xffff);
    }
    const std::uint32_t protocols[] = {6, 6, 6, 17, 17, 1};
    if (!happens(shape_.open_protocol)) tuple_[4] = masked(protocols[below(6)], 0xff);
  }

  // No two tuples are equal, each has an address, and most narrow tuples come before the wide ones.
  void makeTuples(unsigned count) {
    std::set<Tuple> seen;
    std::vector<std::pair<unsigned, Tuple>> ordered;
    while (ordered.size() < count) {
      tuple_ = {};
      addAddresses();
      addPorts();
      if (tuple_[0].open && tuple_[1].open) continue;
      if (!seen.insert(tuple_).second) continue;
      unsigned width = below(40);
      for (const Masked& part : tuple_) {
        for (std::uint32_t bits = ~part.mask; bits != 0; bits &= bits - 1) ++width;
      }
      ordered.emplace_back(width, tuple_);
    }
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [width, tuple] : ordered) tuples_.push_back(tuple);
  }

  void setMatches(const Tuple& tuple, FiltersEntry* rule) const {
    const auto address = [](std::uint32_t value) { return in_addr{htonl(value)}; };
    const auto half = [](std::uint32_t value) { return static_cast<unsigned short>(value); };
    bool good = true;
    const auto set = [&](const Masked& part, const auto& match) {
      if (!part.open) good = rule->setMatch(match) == FILTERS_OK && good;
    };
    const auto& [source, destination, from, to, protocol] = tuple;
    set(source, MatchSrcIPv4(address(source.value), address(source.mask)));
    set(destination, MatchDstIPv4(address(destination.value), address(destination.mask)));
    set(from, MatchSrcL4Port(half(from.value), half(from.mask)));
    set(to, MatchDstL4Port(half(to.value), half(to.mask)));
    set(protocol, MatchIpProtocol(static_cast<unsigned char>(protocol.value)));
    require(good, "a match is refused");
  }

  const Shape& shape_;
  std::mt19937 engine_{1};
  std::vector<std::uint32_t> networks_;
  Tuple tuple_;
  std::vector<Tuple> tuples_;
};

}  // namespace benchmarks

#endif  // FILTER_COMMON_BENCHMARKS_RULE_SETS_H_
