#ifndef FILTER_INSPECT_SRC_ANALYSIS_RULE_SPACE_H_
#define FILTER_INSPECT_SRC_ANALYSIS_RULE_SPACE_H_

// Rules as sets of packets. Each rule has two sets: the packets that it must take (under every
// reading), and the packets that it may take (under some reading).
//
// A match that two rules share takes the same packets in both rules, under every reading. So if one
// of the rules takes a packet, this match of the other rule takes it too. For example, it is not
// known which packets `tos=184` takes. But if a rule with this match takes a packet, then another
// rule with only this match certainly takes it too.

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "packet_words.h"
#include "readings.h"
#include "space.h"

namespace FiltersInspect {

// A packet set to compare with rules: the packets of `core` that are in no set of `outside`.
struct SetAmongRules {
  SetId core = kNothing;
  std::vector<SetId> outside;
  // True if, for some field, the set has only one of several values that no rule distinguishes.
  bool is_sample = false;
};

class RuleSpace {
 public:
  // Add all rules and packet sets, each numbered from 0, before seal(). `shapes` also adds
  // packetShapes().
  void add(const std::vector<Asked>& asked);
  void addSet(std::vector<FieldSet> fields) { fields_of_sets_.push_back(std::move(fields)); }
  void seal(bool shapes = true);

  const Space& space() const { return space_; }
  const std::vector<SetId>& shapes() const { return shapes_; }
  // For a shape, the number of constrained fields that it does not have.
  std::size_t lacking(std::size_t shape) const { return lacking_[shape]; }
  std::size_t size() const { return rules_.size(); }
  SetId must(std::uint32_t rule) const { return rules_[rule].must; }
  SetId may(std::uint32_t rule) const { return rules_[rule].may; }
  const SetAmongRules& set(std::size_t number) const { return sets_[number]; }
  // For each field, whether some rule constrains it.
  const std::vector<bool>& fieldsOfRules() const { return fields_of_rules_; }

  // The packets that a rule must take, among those that all rules of `takers` take. The set lives
  // until forget(). It is not valid for other packets.
  SetId mustBeside(std::uint32_t rule, const std::vector<std::uint32_t>& takers);
  void forget() { space_.forget(sealed_); }
  // True if all readings of the rule give the same result for each packet that all of `takers`
  // take.
  bool isSettledBeside(std::uint32_t rule, const std::vector<std::uint32_t>& takers) const;
 private:
  struct OpenMatch {
    std::uint32_t number, field;
    bool nothing;  // it must take no packet
  };
  struct Rule {
    SetId must, may;
    SetId asked;  // `must`, but ignoring matches that must take no packet
    std::uint32_t open_begin, open_end;
  };
  // The constraints of the rules and the sets on half a field.
  struct Use {
    bool ranges = false, holes = false;
    bool lacks = false;  // some set has packets without it, although every packet has it
  };
  bool isShared(const OpenMatch& match, const std::vector<std::uint32_t>& takers) const;
  void note(const std::vector<Constraint>& constraints);
  void addSets();
  SetAmongRules placed(const std::vector<FieldSet>& fields);

  Space space_{spaceFields()};
  std::vector<Rule> rules_;
  std::vector<OpenMatch> open_;
  std::vector<bool> fields_of_rules_;
  std::vector<SetId> shapes_;
  std::vector<std::size_t> lacking_;
  std::vector<Use> uses_;  // of each half
  std::vector<std::vector<FieldSet>> fields_of_sets_;
  std::vector<SetAmongRules> sets_;
  SetId sealed_ = 0;  // the number of sets at seal()
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_RULE_SPACE_H_
