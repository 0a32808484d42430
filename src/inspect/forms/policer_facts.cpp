#include "policer_facts.h"

#include <filter_inspect/filter_names.h>

namespace FiltersInspect {
namespace {

std::string_view modeName(policer::ModeType type) {
  switch (type) {
    case policer::ModeType::SrTcm:
      return "srtcm";
    case policer::ModeType::TrTcm:
      return "trtcm";
    case policer::ModeType::TrTcmDs:
      return "trtcmds";
    case policer::ModeType::Flow:
      return "flow";
    case policer::ModeType::None:
      return "none";
  }
  return {};
}

}  // namespace

const std::string& defaultPolicer() {
  static const std::string bytes = policer::Policer(std::string()).Serialize();
  return bytes;
}

PolicerFacts factsOf(const policer::Policer& policer) {
  const auto& mode = policer.GetMode();
  const auto figure = [](const char* key, auto value) {
    return PolicerFact{key, {}, static_cast<std::uint32_t>(value), true};
  };
  const auto named = [](const char* key, std::string_view name, auto value) {
    return PolicerFact{key, name, static_cast<std::uint32_t>(value), false};
  };
  return {named("id", {}, policer.GetId()),
          named("stage", nameOf(policer.GetStage()), policer.GetStage()),
          named("mode", modeName(mode.GetType()), mode.GetType()),
          figure("cir", mode.GetCir()),
          figure("cbs", mode.GetCbs()),
          figure("pir", mode.GetPir()),
          figure("pbs", mode.GetPbs()),
          figure("eir", mode.GetEir()),
          figure("ebs", mode.GetEbs())};
}

void appendFacts(const policer::Policer& policer, std::string* out) {
  for (const PolicerFact& fact : factsOf(policer)) {
    if (fact.is_figure && fact.number == 0) continue;
    *out += ' ';
    if (fact.is_figure) (*out += fact.key) += '=';
    *out += fact.name;
    if (fact.name.empty()) *out += std::to_string(fact.number);
  }
}

}  // namespace FiltersInspect
