#ifndef FILTER_COMMON_TESTS_INSPECT_FORM_SAMPLES_H_
#define FILTER_COMMON_TESTS_INSPECT_FORM_SAMPLES_H_

// Groups to write and read, and checks that text and JSON keep their promises for any input. Tests
// and fuzz/ use these groups and checks. Each check returns the fault as text, or an empty text.

#include <filter_inspect/filter_text.h>

#include <random>
#include <sstream>

#include "../../entry_samples.h"

namespace catalogue {

using FiltersInspect::ParsedGroups;

using Groups = std::vector<FiltersGroup>;
struct FormOfGroups {
  std::string (*write)(const Groups&);
  ParsedGroups (*read)(std::string_view);
};
inline const FormOfGroups kText = {FiltersInspect::toText, FiltersInspect::groupsFromText};
inline const FormOfGroups kJson = {FiltersInspect::toJson, FiltersInspect::groupsFromJson};

// True if the first number after each position is the id of the group or entry that has this
// position.
inline bool placesAreRight(std::string_view text, const ParsedGroups& parsed) {
  std::vector<std::size_t> lines = {0};
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n') lines.push_back(i + 1);
  }
  const auto idAt = [&](const FiltersInspect::TextPosition& place) {
    const std::size_t at = lines.at(place.line - 1) + place.column - 1;
    return std::stoul(std::string(text.substr(text.find_first_of("0123456789", at), 10)));
  };
  bool right = parsed.positions.size() == parsed.groups.size();
  for (std::size_t i = 0; i < parsed.groups.size() && right; ++i) {
    const auto& entries = parsed.groups[i].getEntriesRef();
    right = idAt(parsed.positions[i].group) == parsed.groups[i].getId() &&
            parsed.positions[i].entries.size() == entries.size();
    for (const auto& [id, entry] : entries) right = right && idAt(parsed.positions[i].of(id)) == id;
  }
  return right;
}

inline std::string faultOf(const FormOfGroups& form, const Groups& groups) {
  const std::string text = form.write(groups);
  const ParsedGroups parsed = form.read(text);
  std::ostringstream report;
  report << parsed.report;
  if (!parsed.report.empty()) return "refuses what it wrote:\n" + report.str() + text;
  if (parsed.groups != groups) return "reads other groups:\n" + text;
  if (!placesAreRight(text, parsed)) return "tells other places:\n" + text;
  return form.write(parsed.groups) == text ? "" : "writes it differently again:\n" + text;
}

inline std::string faultIn(const FormOfGroups& form, std::string_view text) {
  const ParsedGroups parsed = form.read(text);
  if (parsed.report.empty()) return faultOf(form, parsed.groups);
  for (const auto& finding : parsed.report.findings) {
    if (finding.severity != FiltersInspect::Severity::kError) return "no error refuses";
    if (finding.path.find(':') == finding.path.npos || finding.bytes) return "a place is not told";
  }
  return parsed.groups.empty() ? "" : "a refused text gives groups";
}

// The findings as text, for example "3:1 text-syntax 4:7 text-value".
inline std::string findingsOf(const ParsedGroups& parsed) {
  std::string findings;
  for (const auto& finding : parsed.report.findings) {
    findings += (findings.empty() ? "" : " ") + finding.path + ' ';
    findings += nameOf(finding.code);
  }
  return findings;
}

// --- Groups --------------------------------------------------------------------------------------

// The first stage other than none that admits the type.
inline int stageOf(int type) {
  int stage = FILTERS_GROUP_STAGE_EGRESS;
  while (stage != 0 && !admits(kTypesOfStage, static_cast<unsigned>(stage), unsigned(type)))
    --stage;
  return stage;
}

inline FiltersGroup numberedGroup(unsigned id, int stage, int type) {
  FiltersGroupPB message;
  message.set_id_(id);
  message.set_stage_(static_cast<std::uint32_t>(stage));
  message.set_type_(static_cast<std::uint32_t>(type));
  return FiltersGroup(message.SerializePartialAsString());
}

// The first group has a rule for the control plane, and a last rule that denies everything. The
// other groups have all matches and actions that they admitted when the files in golden/ were
// written.
inline Groups goldenGroups() {
  Groups groups{numberedGroup(1, FILTERS_GROUP_STAGE_INGRESS, FILTERS_GROUP_TYPE_3)};
  FiltersEntry bgp(10), rest(1000);
  bgp.setPriority(100);
  EXPECT_EQ(bgp.setMatch(MatchDstL4Port(179, 0xffff)), FILTERS_OK);
  EXPECT_EQ(
      bgp.setMatch(MatchSrcIPv4(addressOf<in_addr>("c0000200"), addressOf<in_addr>("ffffff"))),
      FILTERS_OK);
  EXPECT_EQ(bgp.setMatch(MatchIpProtocol(6)), FILTERS_OK);
  EXPECT_EQ(bgp.setAction(ActionPermit()), FILTERS_OK);
  EXPECT_EQ(bgp.setAction(ActionMapToCpuCosQueue(6)), FILTERS_OK);
  EXPECT_EQ(bgp.setCounter({1, FILTERS_COUNTER_TYPE_PACKETS}), FILTERS_OK);
  EXPECT_EQ(bgp.setCounter({2, FILTERS_COUNTER_TYPE_RED_OCTETS}), FILTERS_OK);
  bgp.setPolicer(
      policer::Policer(10, policer::Stage::Ingress, policer::Mode::TrTcm(2000, 0, 0, 0), {}));
  EXPECT_EQ(rest.setMatch(MatchDestinationCpu()), FILTERS_OK);
  EXPECT_EQ(rest.setAction(ActionDeny()), FILTERS_OK);
  EXPECT_EQ(rest.setCounter({1, FILTERS_COUNTER_TYPE_PACKETS}), FILTERS_OK);
  for (const auto& entry : {bgp, rest}) EXPECT_EQ(groups[0].insertEntry(entry), FILTERS_OK);
  groups[0].setPriority(10);

  for (int type : {4, 7, 8, 11}) {
    const int stage = stageOf(type);
    groups.push_back(numberedGroup(unsigned(type), stage, type));
    FiltersEntry entry = entryOf(upTo(kLastGoldenMatch, kMatchesOfType[unsigned(type)]),
                                 upTo(kLastGoldenAction, kActionsOfStage[unsigned(stage)]));
    entry.setPolicerParent(policerAt(policer::Stage::Egress, 301));
    EXPECT_EQ(groups.back().insertEntry(entry), FILTERS_OK);
  }
  groups.push_back(numberedGroup(65535, kUnknown, -1));
  return groups;
}

// Fills the fields of a message with random values, and a repeated field with at most `most`
// values. The caller fills the messages that are fields of this message.
inline void fill(google::protobuf::Message* message, std::mt19937& random, unsigned most) {
  using Field = google::protobuf::FieldDescriptor;
  const auto* reflection = message->GetReflection();
  const auto number = [&] {
    const auto any = static_cast<std::uint32_t>(random());
    return random() % 3 == 0 ? any : random() % 2 == 0 ? any % 10 : any >> any % 32;
  };
  for (int i = 0; i < message->GetDescriptor()->field_count(); ++i) {
    const Field* field = message->GetDescriptor()->field(i);
    if (field->cpp_type() == Field::CPPTYPE_MESSAGE) continue;
    if (field->is_repeated()) {
      for (auto left = random() % (most + 1); left > 0; --left) {
        reflection->AddUInt32(message, field, number());
      }
    } else if (field->cpp_type() == Field::CPPTYPE_UINT32) {
      reflection->SetUInt32(message, field, number());
    } else if (field->cpp_type() == Field::CPPTYPE_INT32) {
      reflection->SetInt32(message, field, static_cast<std::int32_t>(number()));
    } else if (field->cpp_type() == Field::CPPTYPE_BOOL) {
      reflection->SetBool(message, field, random() % 2 == 0);
    } else {
      std::string bytes(random() % 20, '\xff');
      for (char& byte : bytes) {
        if (random() % 2 == 0) byte = static_cast<char>(random());
      }
      reflection->SetString(message, field, bytes);
    }
  }
}

inline std::uint32_t anyOf(const CodeSet& codes, std::mt19937& random) {
  if (codes.empty()) return 0;
  return *std::next(codes.begin(), static_cast<std::ptrdiff_t>(random() % codes.size()));
}

// A policer with any mode and any actions. Some modes and actions have numbers without a meaning.
inline policer::Policer randomPolicer(policer::Stage stage, std::mt19937& random) {
  using policer::Mode;
  const auto number = [&random] { return static_cast<std::uint32_t>(random()) >> random() % 32; };
  const Mode modes[] = {Mode::SrTcm(number(), number(), number()),
                        Mode::TrTcm(number(), number(), number(), number()),
                        Mode::TrTcmDs(number(), number(), number(), number()),
                        Mode::Flow(number(), number()),
                        Mode::None(),
                        Mode(policer::ModeType{number()})};
  std::vector<policer::Action> actions;
  for (auto left = random() % 4; left > 0; --left) {
    const auto type = static_cast<unsigned>(random() % 4);
    const bool hasValue = type == 1 || type == 2 || random() % 8 == 0;
    actions.emplace_back(policer::ActionType{type}, policer::Color(random() % 4),
                         static_cast<std::uint8_t>(hasValue ? random() : 0));
  }
  return {number(), stage, modes[random() % std::size(modes)], std::move(actions)};
}

inline void fillEntry(FiltersEntryPB* entry, int stage, int type, std::mt19937& random) {
  fill(entry, random, 4);
  for (auto left = random() % 6; left > 0; --left) {
    MatchPB* match = entry->add_matches_();
    fill(match, random, 4);
    match->set_type_(anyOf(kMatchesOfType[unsigned(type)], random));
  }
  for (auto left = random() % 6; left > 0; --left) {
    ActionPB* action = entry->add_actions_();
    fill(action, random, 4);
    action->set_type_(anyOf(kActionsOfStage[unsigned(stage)], random));
    action->set_vpn_id(interfaceIndex(random() % 2 == 0 ? kVpws7 : kVpls9));
    action->set_mpls_access_port(interfaceIndex(random() % 2 == 0 ? kEth3 : kLag1));
  }
  for (auto left = random() % 4; left > 0; --left) fill(entry->add_counters_(), random, 0);
  const auto at = static_cast<policer::Stage>(anyOf(kPolicersOfStage[unsigned(stage)], random));
  entry->set_policer_(randomPolicer(at, random).Serialize());
  if (entry->has_policer_parent_() && random() % 2 == 0) {
    const auto any = policer::Stage(random() % 4);
    entry->set_policer_parent_(randomPolicer(any, random).Serialize());
  }
}

// A group read from a random message. So it can hold any value that a message can have, even values
// that setters refuse.
inline FiltersGroup randomGroup(std::mt19937& random) {
  const int stage = static_cast<int>(random() % kTypesOfStage.size());
  const int type = static_cast<int>(random() % kMatchesOfType.size());
  FiltersGroupPB message;
  fill(&message, random, 0);
  if (random() % 10 != 0) message.set_stage_(unsigned(stage)), message.set_type_(unsigned(type));
  for (auto left = random() % 5; left > 0; --left) {
    fillEntry(message.add_entries_(), stage, type, random);
  }
  return FiltersGroup(message.SerializeAsString());
}

}  // namespace catalogue

#endif  // FILTER_COMMON_TESTS_INSPECT_FORM_SAMPLES_H_
