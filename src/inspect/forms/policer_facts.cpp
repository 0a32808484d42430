#include "policer_facts.h"

#include <algorithm>
#include <iterator>

#if __has_include(<policer/policer_values.h>)
#include <policer/policer_values.h>
#define FILTER_INSPECT_MAKES_POLICERS
#endif

namespace FiltersInspect {
namespace {

// A mode and the parameters that it uses.
struct ModeRow {
  policer::ModeType value;
  std::string_view name;
  std::string_view parameters;
};
constexpr ModeRow kModes[] = {
    {policer::ModeType::SrTcm, "srtcm", "cir cbs ebs"},
    {policer::ModeType::TrTcm, "trtcm", "cir cbs pir pbs"},
    {policer::ModeType::TrTcmDs, "trtcmds", "cir cbs eir ebs"},
    {policer::ModeType::Flow, "flow", "cir cbs"},
    {policer::ModeType::None, "none", ""},
};

template <class Enum>
struct ValueRow {
  Enum value;
  std::string_view name;
};
constexpr ValueRow<policer::Color> kColors[] = {{policer::Color::Red, "red"},
                                                {policer::Color::Yellow, "yellow"},
                                                {policer::Color::Green, "green"}};
constexpr ValueRow<policer::ActionType> kActionTypes[] = {{policer::ActionType::Drop, "drop"},
                                                          {policer::ActionType::SetPcp, "pcp"},
                                                          {policer::ActionType::SetDscp, "dscp"}};

template <class Rows>
const auto* valueRowOf(const Rows& rows, std::uint32_t value) {
  const auto found = std::find_if(std::begin(rows), std::end(rows), [&](const auto& row) {
    return static_cast<std::uint32_t>(row.value) == value;
  });
  return found == std::end(rows) ? nullptr : &*found;
}

// The device's own types can be narrower than 32 bits, and its code points can be signed.
template <class Value>
std::uint32_t codeOf(Value value) {
  return static_cast<std::uint32_t>(value);
}

bool usesParameter(std::uint32_t mode, std::string_view parameter) {
  const ModeRow* row = valueRowOf(kModes, mode);
  return row != nullptr && row->parameters.find(parameter) != row->parameters.npos;
}

// Returns null, or a sentence that says why the platform cannot make this policer.
const char* makeBytes([[maybe_unused]] const PolicerFacts& facts,
                      [[maybe_unused]] std::string* bytes) {
#ifdef FILTER_INSPECT_MAKES_POLICERS
  const auto& [id, stage, mode, cir, cbs, pir, pbs, eir, ebs] = facts.numbers;
  policer::PolicerValues values{id, stage, mode, cir, cbs, pir, pbs, eir, ebs, {}};
  values.actions.reserve(facts.actions.size());
  for (const PolicerAction& action : facts.actions) {
    values.actions.push_back({action.color, action.type, action.value});
  }
  const policer::Policer made = policer::MakePolicer(values);
  const PolicerFacts said = factsOf(made);
  if (said.numbers != facts.numbers || said.actions != facts.actions) {
    return "the policer library cannot hold all of these values";
  }
  *bytes = made.Serialize();
  return nullptr;
#else
  return "the policer library makes no policers of values, so write the bytes";
#endif
}

}  // namespace

const Enumeration kPolicerModes = kNamesIn<kModes>;
const Enumeration kPolicerColors = kNamesIn<kColors>;
const Enumeration kPolicerActionTypes = kNamesIn<kActionTypes>;

const std::string& defaultPolicer() {
  static const std::string bytes = policer::Policer(std::string()).Serialize();
  return bytes;
}

bool hasCodePoint(std::uint32_t action_type) {
  return action_type == codeOf(policer::ActionType::SetPcp) ||
         action_type == codeOf(policer::ActionType::SetDscp);
}

PolicerFacts factsOf(const policer::Policer& policer) {
  const auto& mode = policer.GetMode();
  PolicerFacts facts;
  facts.numbers = {codeOf(policer.GetId()), codeOf(policer.GetStage()), codeOf(mode.GetType()),
                   codeOf(mode.GetCir()),   codeOf(mode.GetCbs()),      codeOf(mode.GetPir()),
                   codeOf(mode.GetPbs()),   codeOf(mode.GetEir()),      codeOf(mode.GetEbs())};
  for (const auto& action : policer.GetActions()) {
    std::uint8_t value = 0;
    if (action.GetType() == policer::ActionType::SetPcp) {
      value = static_cast<std::uint8_t>(action.GetPcp());
    } else if (action.GetType() == policer::ActionType::SetDscp) {
      value = static_cast<std::uint8_t>(action.GetDscp());
    }
    facts.actions.push_back({codeOf(action.GetColor()), codeOf(action.GetType()), value});
  }
  return facts;
}

std::optional<PolicerFault> makePolicer(const PolicerFacts& facts, std::uint32_t given,
                                        std::string* bytes) {
  const std::uint32_t mode = facts.numbers[kNumberMode];
  for (std::size_t i = 0; i < kPolicerKeys.size(); ++i) {
    const std::string key = kPolicerKeys[i].key;
    const bool isGiven = (given >> i & 1) != 0;
    if (i < kFirstParameter && !isGiven) {
      return {{kPolicerKeys.size(), "the policer has no " + key}};
    }
    if (i >= kFirstParameter && isGiven && !usesParameter(mode, key)) {
      const std::string_view name = kPolicerModes.nameOf(mode);
      return {{i, (name.empty() ? "mode " + std::to_string(mode) : std::string(name)) + " has no " +
                      key}};
    }
  }
  if (const char* why = makeBytes(facts, bytes)) return {{kPolicerKeys.size(), why}};
  return std::nullopt;
}

bool sayAllOf(std::string_view bytes, const PolicerFacts& facts) {
  std::uint32_t given = (1U << kFirstParameter) - 1;
  for (std::size_t i = kFirstParameter; i < facts.numbers.size(); ++i) {
    if (facts.numbers[i] != 0) given |= std::uint32_t{1} << i;
  }
  std::string made;
  return !makePolicer(facts, given, &made) && made == bytes;
}

}  // namespace FiltersInspect
