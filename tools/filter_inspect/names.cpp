#include <filter_inspect/filter_analysis.h>
#include <filter_inspect/filter_names.h>

#include <iterator>
#include <optional>

#include "console.h"

namespace FilterInspectTool {
namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;

struct NamedCode {
  std::optional<std::int64_t> code;  // fields of packets have none
  std::string_view name;
};

template <class Enum>
std::vector<NamedCode> codesOf() {
  std::vector<NamedCode> codes;
  for (const auto& [code, name] : namesOf<Enum>()) {
    codes.push_back({static_cast<std::int64_t>(code), name});
  }
  return codes;
}

std::vector<NamedCode> packetFields() {
  std::vector<NamedCode> fields;
  for (const std::string_view name : fieldNames()) fields.push_back({std::nullopt, name});
  return fields;
}

// Every enumeration, and the name that the command line has for it.
struct Enumeration {
  const char* name;
  const char* type;
  std::vector<NamedCode> (*codes)();
};

#define ENUMERATION(name, Enum) \
  { name, #Enum, codesOf<Enum> }
constexpr Enumeration kEnumerations[] = {
    ENUMERATION("results", filtersErr_t),
    ENUMERATION("stages", filtersGroupStage_t),
    ENUMERATION("types", filtersGroupType_t),
    ENUMERATION("matches", filtersMatch_t),
    ENUMERATION("actions", filtersAction_t),
    ENUMERATION("counters", counter_type_t),
    ENUMERATION("copy_to_cpu_cancel", cp2cpuCancelParam_t),
    ENUMERATION("l2_src_entry_type", l2SrcEntryType_t),
    ENUMERATION("vlan_tagging", vlan_tagging_t),
    ENUMERATION("packet_res", en_Resolution),
    ENUMERATION("ingress_stp_state", en_StpState),
    ENUMERATION("forwarding_type", en_ForwardingType),
    ENUMERATION("port_types", port_type_t),
    ENUMERATION("policer_stages", policer::Stage),
    {"fields", "Packet", packetFields},
};
#undef ENUMERATION

std::string rowOf(const NamedCode& row) {
  std::string code = row.code ? std::to_string(*row.code) : std::string();
  code.insert(0, 4 - std::min<std::size_t>(code.size(), 4), ' ');
  return code + "  " + std::string(row.name);
}

void printLines(const std::vector<const Enumeration*>& chosen, Console* console) {
  for (const Enumeration* enumeration : chosen) {
    if (chosen.size() > 1) {
      console->writeLine(std::string(enumeration->name) + " (" + enumeration->type + ')');
    }
    for (const NamedCode& row : enumeration->codes()) console->writeLine(rowOf(row));
  }
}

// Names have only lower-case letters, digits and underscores, so nothing needs escaping.
void printJson(const std::vector<const Enumeration*>& chosen, Console* console) {
  console->write("{\n  \"format\": \"filter-names\",\n  \"version\": 1,\n  \"enumerations\": [");
  const char* separator = "\n";
  for (const Enumeration* enumeration : chosen) {
    console->write(std::string(separator) + "    {\n      \"name\": \"" + enumeration->name +
                   "\",\n      \"type\": \"" + enumeration->type + "\",\n      \"codes\": [");
    separator = "\n";
    for (const NamedCode& row : enumeration->codes()) {
      console->write(separator + std::string("        {"));
      if (row.code) console->write("\"code\": " + std::to_string(*row.code) + ", ");
      console->write("\"name\": \"" + std::string(row.name) + "\"}");
      separator = ",\n";
    }
    console->write("\n      ]\n    }");
    separator = ",\n";
  }
  console->write("\n  ]\n}\n");
}

}  // namespace

std::vector<std::string_view> fieldNames() {
  std::vector<std::string_view> names = packetFieldNames();
  names.push_back("dscp");  // another way to write tos
  return names;
}

std::vector<std::string> enumerationNames() {
  std::vector<std::string> names;
  for (const Enumeration& enumeration : kEnumerations) {
    names.insert(names.end(), {enumeration.name, enumeration.type});
  }
  return names;
}

Exit runNames(const Options& options, Console* console) {
  std::vector<const Enumeration*> chosen;
  for (const Enumeration& enumeration : kEnumerations) {
    const std::string& name = options.enumeration;
    if (name.empty() || name == enumeration.name || name == enumeration.type) {
      chosen.push_back(&enumeration);
    }
  }
  if (options.json) {
    printJson(chosen, console);
  } else {
    printLines(chosen, console);
  }
  return kExitFine;
}

}  // namespace FilterInspectTool
