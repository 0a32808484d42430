// Writes what fuzzing starts from: make_seeds FOLDER HARNESS...
// For each harness a folder of inputs and a dictionary. The harnesses that read bytes start from
// messages that hold every field of every code; those that read a sequence of calls, from fixed
// noise. The same on every machine.

#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>
#include <google/protobuf/descriptor.h>
#include <limid/limid_standin.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace {

using namespace FiltersCommon;
using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;

class Folder {
 public:
  explicit Folder(const std::filesystem::path& path) : path_(path) {
    std::filesystem::remove_all(path);  // what an earlier run may have left
    std::filesystem::create_directories(path);
  }
  void add(const std::string& bytes) {
    std::ofstream(path_ / std::to_string(count_++), std::ios::binary) << bytes;
  }
  template <class Message>
  void addMessage(const Message& message) {
    add(message.SerializePartialAsString());
  }
 private:
  std::filesystem::path path_;
  int count_ = 0;
};

// Every field set, so that it suits any code.
MatchPB matchOf(std::uint32_t code) {
  MatchPB match;
  const google::protobuf::Reflection* fields = match.GetReflection();
  for (int i = 0; i < MatchPB::descriptor()->field_count(); ++i) {
    const FieldDescriptor* field = MatchPB::descriptor()->field(i);
    if (field->cpp_type() == FieldDescriptor::CPPTYPE_STRING) {
      fields->SetString(&match, field, std::string(16, '\x2a'));
    } else if (field->cpp_type() == FieldDescriptor::CPPTYPE_BOOL) {
      fields->SetBool(&match, field, true);
    } else if (field->is_repeated()) {
      for (std::uint32_t value : {3u, 7u}) fields->AddUInt32(&match, field, value);
    } else {
      fields->SetUInt32(&match, field, 300);
    }
  }
  match.set_type_(code);
  return match;
}

ActionPB actionOf(std::uint32_t code) {
  ActionPB action;
  if (code == FILTERS_ACTION_MPLS_PORT_SET) {
    ActionMplsPortSet(limid_make_mpls_vpws(7), limid_make_lag(1)).convertToActionPB(&action);
  }
  action.set_type_(code);
  for (std::uint32_t port : {3u, 7u}) action.add_ports_(port);
  for (auto set : {&ActionPB::set_pcp_, &ActionPB::set_pcp_and_queue_, &ActionPB::set_dscp_,
                   &ActionPB::set_cosq_, &ActionPB::set_l3_dest_id_}) {
    (action.*set)(300);
  }
  action.set_cp2cpu_cancel_type_(SWITCH_TO_CPU_CANCEL);
  action.set_mac_("\x02router");
  return action;
}

FiltersEntryPB entryOf(std::uint32_t id, policer::Stage stage) {
  const policer::Policer policer(id, stage, policer::Mode::TrTcm(1, 2, 3, 4),
                                 {policer::Action::SetPcp(policer::Color::Yellow, 5)});
  FiltersEntryPB entry;
  entry.set_id_(id);
  entry.set_priority_(70000);
  entry.set_policer_(policer.Serialize());
  entry.set_policer_parent_(policer::Policer().Serialize());
  for (int i = 0; i < 3; ++i) {
    CounterPB* counter = entry.add_counters_();
    counter->set_id(i);
    counter->set_type(i);
  }
  return entry;
}

// An entry of each match and of each action, and one of everything.
void addEntries(Folder* folder) {
  FiltersEntryPB all = entryOf(0, policer::Stage::Ingress);
  for (std::uint32_t code = 0; code <= FILTERS_MATCH_DST_L4_PORT_RANGE + 1; ++code) {
    FiltersEntryPB entry = entryOf(code, policer::Stage::None);
    *entry.add_matches_() = matchOf(code);
    *all.add_matches_() = matchOf(code);
    folder->addMessage(entry);
  }
  for (std::uint32_t code = 0; code <= FILTERS_ACTION_L2_TO_CPU_DROP + 1; ++code) {
    FiltersEntryPB entry = entryOf(code, policer::Stage::None);
    *entry.add_actions_() = actionOf(code);
    *all.add_actions_() = actionOf(code);
    folder->addMessage(entry);
  }
  folder->addMessage(all);
  folder->add("");
}

FiltersGroupPB groupOf(filtersGroupStage_t stage, filtersGroupType_t type) {
  FiltersGroupPB group;
  group.set_id_(7);
  group.set_priority_(300);
  group.set_stage_(static_cast<std::uint32_t>(stage));
  group.set_type_(static_cast<std::uint32_t>(type));
  return group;
}

// Two groups of each stage and type that may stand together: one with an entry of each match that
// is admitted there, one with an entry of each action.
void addGroups(Folder* folder) {
  for (const auto& [stage, types] : FiltersGroup::StageTypesDescription_) {
    for (filtersGroupType_t type : types) {
      FiltersGroupPB group = groupOf(stage, type);
      for (filtersMatch_t code : FiltersGroup::TypeDescription_.at(type)) {
        FiltersEntryPB* entry = group.add_entries_();
        *entry = entryOf(code, policer::Stage::None);
        *entry->add_matches_() = matchOf(code);
      }
      folder->addMessage(group);
      group.clear_entries_();
      for (filtersAction_t code : FiltersGroup::StageActionsDescription_.at(stage)) {
        FiltersEntryPB* entry = group.add_entries_();
        *entry = entryOf(code, policer::Stage::None);
        *entry->add_actions_() = actionOf(code);
      }
      folder->addMessage(group);
    }
  }
  folder->add("");
}

// Groups as no writer of ours would send them, whole and broken off: fields in another order or
// twice, fields that nobody knows, entries that are not messages, bytes that are not fields.
void addOddGroups(Folder* folder) {
  using Bytes = std::string;
  FiltersGroupPB group = groupOf(FILTERS_GROUP_STAGE_INGRESS, FILTERS_GROUP_TYPE_1);
  const Bytes head = group.SerializeAsString();
  const Bytes otherHead =
      groupOf(FILTERS_GROUP_STAGE_EGRESS, FILTERS_GROUP_TYPE_5).SerializeAsString();
  group.Clear();
  for (std::uint32_t id : {5u, 3u, 5u}) {
    FiltersEntryPB* entry = group.add_entries_();
    *entry = entryOf(id, policer::Stage::Ingress);
    entry->set_priority_(static_cast<std::uint32_t>(group.entries__size()));
    *entry->add_matches_() = matchOf(FILTERS_MATCH_DST_MAC);
  }
  const Bytes entries = group.SerializePartialAsString();
  // clang-format off
  const Bytes odd[] = {
      // An entry without any field.
      Bytes("\x2a\0", 2),
      // Unknown fields, of each wire type.
      "\x30\x07", "\x31of eight", "\x32\x03odd", "\x33\x08\x07\x34", "\x35now!",
      // An entry and a stage of other wire types.
      "\x28\x07", "\x1a\x03odd",
      // A tag, a length and a stage that are longer than needed.
      Bytes("\xaa\0\0", 3), Bytes("\x2a\x82\0\x08\x07", 5), "\x18\x82\x80\x80\x80\xf0\x7f",
      // A number without an end, the end of what never began, and no field at all.
      "\x18\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\x01", "\x34", Bytes("\0", 1),
      // Lengths that are cut to 32 bits, or too long, or written longer than any is; a tag without an
      // end; tags of zero, longer than needed.
      Bytes("\x2a\x82\x80\x80\x80\x80\0\x08\x07", 9), "\x2a\x82\x80\x80\x80\x10\x08\x07",
      "\x2a\xff\xff\xff\xff\x07\x08\x07", "\xaa", Bytes("\x80\0", 2), "\x80\x80\x80\x80\x10",
      // An entry in which a group ends that never began, and one with a zero tag.
      "\x2a\x03\x08\x07\x0c", Bytes("\x2a\x03\x08\x07\0", 5),
      // An entry that is not all there, and a match that is longer than its entry.
      "\x2a\x7f\x08\x07", "\x2a\x04\x08\x07\x2a\x09",
  };
  // clang-format on
  folder->add(entries + head);
  folder->add(head + entries + otherHead);
  folder->add(otherHead + entries + head);
  for (const Bytes& field : odd) {
    folder->add(head + field + entries);
    folder->add(entries + field + head);
    folder->add(head + entries + field);
  }
  for (std::size_t left : {1u, 2u, 40u}) {
    folder->add(head + entries.substr(0, entries.size() - left));
  }
}

void addNoise(Folder* folder) {
  std::mt19937 noise(1);
  for (int i = 0; i < 256; ++i) {
    std::string bytes(static_cast<std::size_t>(16 << i % 6), '\0');
    for (char& byte : bytes) byte = static_cast<char>(noise());
    folder->add(bytes);
  }
}

// The tag of every field, as it stands in front of the field's value.
void writeTags(const Descriptor* message, std::ofstream* out) {
  for (int i = 0; i < message->field_count(); ++i) {
    const FieldDescriptor* field = message->field(i);
    const bool isNumber = field->cpp_type() != FieldDescriptor::CPPTYPE_STRING &&
                          field->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE;
    const int tag = field->number() << 3 | (isNumber ? 0 : 2);
    char text[16];
    if (tag < 128) {
      std::snprintf(text, sizeof text, "\"\\x%02x\"", tag);
    } else {
      std::snprintf(text, sizeof text, "\"\\x%02x\\x%02x\"", (tag & 127) | 128, tag >> 7);
    }
    *out << message->name() << '_' << field->name() << '=' << text << '\n';
  }
}

void writeDictionary(const std::filesystem::path& path) {
  std::ofstream out(path);
  for (const Descriptor* message :
       {FiltersGroupPB::descriptor(), FiltersEntryPB::descriptor(), MatchPB::descriptor(),
        ActionPB::descriptor(), CounterPB::descriptor()}) {
    writeTags(message, &out);
  }
  out << "largest_32_bits=\"\\xff\\xff\\xff\\xff\\x0f\"\n";
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 2; i < argc; ++i) {
    const std::string harness = argv[i];
    const std::filesystem::path path = std::filesystem::path(argv[1]) / harness;
    Folder folder(path);
    writeDictionary(path.string() + ".dict");
    if (harness == "group_bytes") {
      addGroups(&folder);
      addOddGroups(&folder);
    } else if (harness == "entry_bytes") {
      addEntries(&folder);
    } else {
      addNoise(&folder);
    }
  }
  return 0;
}
