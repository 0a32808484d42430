#ifndef FILTER_COMMON_BENCHMARKS_WORKLOAD_H_
#define FILTER_COMMON_BENCHMARKS_WORKLOAD_H_

// The group of all measurements: each rule has five matches, three actions, two counters and a
// policer. This header compiles against the stand-ins (if BENCHMARKS_WITH_STANDINS is defined) and
// against the libraries in platform/plain. The policers of platform/plain have 32 bytes and no
// memory on the heap, so the figures with them show the cost of this library alone.

#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>
#include <policer/policer.h>
#ifdef BENCHMARKS_WITH_STANDINS
#include <limid/limid_standin.h>
#else
#include <limid/limid.h>
#endif

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <streambuf>
#include <string>

#include "require.h"

namespace benchmarks {

using namespace FiltersCommon;

inline limid_t makePort(std::uint16_t number) {
#ifdef BENCHMARKS_WITH_STANDINS
  return limid_make_ethernet(number);
#else
  return limid_make(limid_type_ethernet, 0, number);
#endif
}

const limid_t kPorts[] = {makePort(1), makePort(2), makePort(3), makePort(4)};
const unsigned short kVlans[] = {10, 20, 30};
constexpr std::uint16_t kTpid = 0x88a8;
constexpr ether_addr kMac = {{2, 0, 0, 1, 2, 3}};
constexpr ether_addr kMask = {{255, 255, 255, 255, 255, 0}};
constexpr std::uint8_t kPcp = 5;
constexpr counter_type_t kCounters[] = {FILTERS_COUNTER_TYPE_PACKETS, FILTERS_COUNTER_TYPE_OCTETS};

inline policer::Policer makePolicer() {
  return policer::Policer(5, policer::Stage::Ingress,
                          policer::Mode::TrTcm(100000, 4000, 200000, 8000),
                          {policer::Action::Drop(policer::Color::Red)});
}

inline FiltersEntry makeRule(unsigned id) {
  FiltersEntry rule(id);
  rule.setPriority(id);
  const filtersErr_t results[] = {
      rule.setMatch(MatchIngressPorts(std::list<limid_t>(std::begin(kPorts), std::end(kPorts)))),
      rule.setMatch(
          MatchExternalVlanId(std::set<unsigned short>(std::begin(kVlans), std::end(kVlans)))),
      rule.setMatch(MatchTPID(kTpid)),
      rule.setMatch(MatchDstMac(kMac, kMask)),
      rule.setMatch(MatchSrcMac(kMac, kMask)),
      rule.setAction(ActionPermit()),
      rule.setAction(ActionSetPcp(kPcp)),
      rule.setAction(ActionRedirect(kPorts[0])),
      rule.setCounter(Counter(0, kCounters[0])),
      rule.setCounter(Counter(1, kCounters[1])),
  };
  for (filtersErr_t result : results) require(result == FILTERS_OK, "a part of a rule is refused");
  rule.setPolicer(makePolicer());
  return rule;
}

inline FiltersGroup makeEmptyGroup() {
  FiltersGroup group(kGroupId);
  require(group.setStage(FILTERS_GROUP_STAGE_INGRESS) == FILTERS_OK &&
              group.setType(FILTERS_GROUP_TYPE_1) == FILTERS_OK,
          "stage and type are refused");
  return group;
}

inline FiltersGroup makeGroup(unsigned rules) {
  FiltersGroup group = makeEmptyGroup();
  for (unsigned id = 0; id < rules; ++id) {
    require(group.insertEntry(makeRule(id)) == FILTERS_OK, "a rule is refused");
  }
  return group;
}

// The same group as a message, filled with the message classes alone.
inline void fillMessage(unsigned rules, const std::string& policer, FiltersGroupPB* group) {
  const auto portOnWire = [](const limid_t& port) {
    std::uint32_t value;
    std::memcpy(&value, &port, sizeof value);
    return value;
  };
  const auto raw = [](const ether_addr& mac) { return reinterpret_cast<const char*>(&mac); };
  group->set_id_(kGroupId);
  group->set_priority_(0);
  group->set_stage_(FILTERS_GROUP_STAGE_INGRESS);
  group->set_type_(FILTERS_GROUP_TYPE_1);
  for (unsigned id = 0; id < rules; ++id) {
    FiltersEntryPB* rule = group->add_entries_();
    rule->set_id_(id);
    rule->set_priority_(id);
    rule->set_policer_(policer);
    for (unsigned counter = 0; counter < 2; ++counter) {
      CounterPB* added = rule->add_counters_();
      added->set_id(counter);
      added->set_type(kCounters[counter]);
    }
    MatchPB* match = rule->add_matches_();
    match->set_type_(FILTERS_MATCH_INGRESS_PORTS);
    for (const limid_t& port : kPorts) match->add_ports_(portOnWire(port));
    match = rule->add_matches_();
    match->set_type_(FILTERS_MATCH_EXTERNAL_VLAN_ID);
    for (unsigned short vlan : kVlans) match->add_vlan_id_(vlan);
    match = rule->add_matches_();
    match->set_type_(FILTERS_MATCH_TPID);
    match->set_tpid_(kTpid);
    for (filtersMatch_t code : {FILTERS_MATCH_DST_MAC, FILTERS_MATCH_SRC_MAC}) {
      match = rule->add_matches_();
      match->set_type_(code);
      match->set_mac_(raw(kMac), sizeof kMac);
      match->set_mac_mask_(raw(kMask), sizeof kMask);
    }
    rule->add_actions_()->set_type_(FILTERS_ACTION_PERMIT);
    ActionPB* action = rule->add_actions_();
    action->set_type_(FILTERS_ACTION_SET_PCP);
    action->set_pcp_(kPcp);
    action = rule->add_actions_();
    action->set_type_(FILTERS_ACTION_REDIRECT);
    action->add_ports_(portOnWire(kPorts[0]));
  }
}

// Checks that the message gives the same bytes as the group, so that the floors do the same work.
inline void requireSameBytes(unsigned rules) {
  FiltersGroupPB message;
  fillMessage(rules, makePolicer().Serialize(), &message);
  std::string bytes;
  makeGroup(rules).serialize(&bytes);
  require(message.SerializeAsString() == bytes, "the messages of the floor are not the library's");
}

// A stream buffer that discards all text, so that only printing is measured.
class NullBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
};

// The CPU time of the fastest of five runs of the operation.
inline double secondsOf(const std::function<void()>& work) {
  double best = 1e9;
  for (int run = 0; run < 5; ++run) {
    const std::clock_t start = std::clock();
    work();
    best = std::min(best, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  }
  return best;
}

}  // namespace benchmarks

#endif  // FILTER_COMMON_BENCHMARKS_WORKLOAD_H_
