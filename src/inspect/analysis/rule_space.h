#ifndef FILTER_INSPECT_SRC_ANALYSIS_RULE_SPACE_H_
#define FILTER_INSPECT_SRC_ANALYSIS_RULE_SPACE_H_

// Rules as sets of packets: what each must take, under every reading, and what it may take, under
// some.
//
// A match that two rules share takes the same packets for both, whatever the device makes of it. So
// for packets that one of them takes, the match holds for the other one too. For example, nobody
// knows which packets `tos=184` takes; but of those that a rule with this match takes, another rule
// with nothing but this match surely takes all.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "readings.h"
#include "space.h"

namespace FiltersInspect {

class RuleSpace {
 public:
  // All rules are added before seal(), numbered from 0. `shapes` also adds packetShapes().
  void add(const std::vector<Asked>& asked);
  void seal(bool shapes = true);

  const Space& space() const { return space_; }
  const std::vector<SetId>& shapes() const { return shapes_; }
  // How many fields that some rule asks of a shape lacks.
  std::size_t lacking(std::size_t shape) const { return lacking_[shape]; }
  std::size_t size() const { return rules_.size(); }
  SetId must(std::uint32_t rule) const { return rules_[rule].must; }
  SetId may(std::uint32_t rule) const { return rules_[rule].may; }

  // What a rule must take of the packets that all rules of `takers` take. New sets are kept until
  // forget(), and are good for no other packets.
  SetId mustBeside(std::uint32_t rule, const std::vector<std::uint32_t>& takers);
  void forget() { space_.forget(sealed_); }
  // Whether every reading that is open for the rule is settled where all of `takers` take a packet.
  bool isSettledBeside(std::uint32_t rule, const std::vector<std::uint32_t>& takers) const;
 private:
  struct OpenMatch {
    std::uint32_t number, field;
    bool nothing;  // it must take nothing
  };
  struct Rule {
    SetId must, may;
    SetId asked;  // `must` without the matches that must take nothing
    std::uint32_t open_begin, open_end;
  };
  bool isShared(const OpenMatch& match, const std::vector<std::uint32_t>& takers) const;

  Space space_{spaceFields()};
  std::vector<Rule> rules_;
  std::vector<OpenMatch> open_;
  std::vector<bool> fields_;  // those that some rule asks of
  std::vector<SetId> shapes_;
  std::vector<std::size_t> lacking_;
  SetId sealed_ = 0;  // how many sets there are for good
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_RULE_SPACE_H_
