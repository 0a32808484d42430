#include <filter_common/filter_entries.h>

#include <charconv>
#include <cstdint>
#include <iterator>
#include <ostream>

namespace FiltersCommon {
namespace {

constexpr std::uint32_t kInvalidPolicerId = 0xffffffff;

// Deliberate: these numbers are decimal even if the stream is in hexadecimal. Rates and sizes use
// the base of the stream.
template <class Value>
void printDecimal(std::ostream& os, Value value) {
  char text[sizeof "-2147483648"] = {};
  std::to_chars(text, std::end(text), value);
  os << text;
}

const char* stageName(policer::Stage stage) {
  switch (stage) {
    case policer::Stage::Egress:
      return "Egress";
    case policer::Stage::None:
      return "None";
    default:
      return "Ingress";  // for any other value of the policer library too
  }
}

const char* colorName(policer::Color color) {
  switch (color) {
    case policer::Color::Red:
      return "Red";
    case policer::Color::Yellow:
      return "Yellow";
    case policer::Color::Green:
      return "Green";
  }
  return "";
}

void printMode(std::ostream& os, const policer::Mode& mode) {
  const auto rate = [&](const char* label, auto value) { os << label << value << " kbits/s"; };
  const auto burst = [&](const char* label, auto value) { os << label << value << " bytes"; };
  const auto committed = [&](const char* name) {
    os << name;
    rate(" (CIR: ", mode.GetCir());
    burst(", CBS: ", mode.GetCbs());
  };
  switch (mode.GetType()) {
    case policer::ModeType::SrTcm:
      committed("SrTcm");
      burst(", EBS: ", mode.GetEbs());
      os << ')';
      return;
    case policer::ModeType::TrTcm:
      committed("TrTcm");
      rate(", PIR: ", mode.GetPir());
      burst(", PBS: ", mode.GetPbs());
      os << ')';
      return;
    case policer::ModeType::TrTcmDs:
      committed("TrTcmDs");
      rate(", EIR: ", mode.GetEir());
      burst(", EBS: ", mode.GetEbs());
      os << ')';
      return;
    case policer::ModeType::Flow:
      committed("Flow");
      os << ')';
      return;
    case policer::ModeType::None:
      os << "None";
      return;
  }
}

void printPolicerAction(std::ostream& os, const policer::Action& action) {
  os << "+ " << colorName(action.GetColor()) << ' ';
  switch (action.GetType()) {
    case policer::ActionType::Drop:
      os << "Drop";
      return;
    case policer::ActionType::SetPcp:
      os << "Set PCP ";
      printDecimal<int>(os, action.GetPcp());
      return;
    case policer::ActionType::SetDscp:
      os << "Set DSCP ";
      printDecimal<int>(os, action.GetDscp());
      return;
  }
}

// Prints no line end after the last line. A width that the caller has set does not indent these
// lines, because earlier output of the entry has already used it.
void printPolicer(std::ostream& os, const policer::Policer& policer) {
  os << "Policer Id: ";
  if (policer.GetId() == kInvalidPolicerId) {
    os << "Invalid";
  } else {
    printDecimal<std::uint32_t>(os, policer.GetId());
  }
  os << "\nStage: " << stageName(policer.GetStage()) << "\nMode: ";
  printMode(os, policer.GetMode());
  os << "\nActions:";
  for (const policer::Action& action : policer.GetActions()) {
    os << '\n';
    printPolicerAction(os, action);
  }
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const FiltersEntry& entry) {
  os << "  =FiltersEntry=" << std::endl;  // one string, which a width set by the caller pads
  os << "    ID: " << entry.id_ << std::endl;
  os << "    Priority: " << entry.priority_ << std::endl;
  if (entry.policer_.GetStage() != policer::Stage::None) {
    os << "  =Policer=\n" << std::flush;
    printPolicer(os, entry.policer_);
    os << std::endl;
  }
  for (const auto& [id, counter] : entry.counters_) os << "  =Counter=\n" << std::flush << counter;
  for (const auto& match : entry.matches_) os << *match;
  for (const auto& action : entry.actions_) ::operator<<(os, *action);
  if (entry.policerParent_ != nullptr) {
    os << "  =Parent=\n" << std::flush;
    printPolicer(os, *entry.policerParent_);
    os << std::endl;
  }
  return os;
}

}  // namespace FiltersCommon
