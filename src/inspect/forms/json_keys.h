#ifndef FILTER_INSPECT_SRC_FORMS_JSON_KEYS_H_
#define FILTER_INSPECT_SRC_FORMS_JSON_KEYS_H_

// The keys of the JSON form, for its writer and its reader. Those of matches and actions are their
// names, those of what is said about policers the keys of PolicerFact.

#include <string_view>
#include <utility>

#include "form_rows.h"

namespace FiltersInspect {

inline constexpr std::string_view kFormat = "filter-groups";  // behind kFormatKey

inline constexpr std::string_view kFormatKey = "format";
inline constexpr std::string_view kVersionKey = "version";
inline constexpr std::string_view kGroupsKey = "groups";
inline constexpr std::string_view kIdKey = "id";
inline constexpr std::string_view kPriorityKey = "priority";
inline constexpr std::string_view kStageKey = "stage";
inline constexpr std::string_view kTypeKey = "type";
inline constexpr std::string_view kEntriesKey = "entries";
inline constexpr std::string_view kMatchesKey = "matches";
inline constexpr std::string_view kActionsKey = "actions";
inline constexpr std::string_view kCountersKey = "counters";
inline constexpr std::string_view kPolicerKey = "policer";
inline constexpr std::string_view kParentKey = "parent";
inline constexpr std::string_view kBytesKey = "bytes";
inline constexpr std::string_view kAboutKey = "about";
inline constexpr std::string_view kLimidKey = "limid";
inline constexpr std::string_view kNameKey = "name";

// Of the message's fields, for a form of two parts; the second of a list of ports is optional.
inline std::pair<std::string_view, std::string_view> keysOf(Form form) {
  switch (form) {
    case Form::kMac:
    case Form::kIPv4:
    case Form::kIPv6:
      return {"address", "mask"};
    case Form::kPortMask:
      return {"port", "mask"};
    case Form::kPortRange:
      return {"min", "max"};
    case Form::kVlanInfo:
      return {"svc_vlan_type", "proto_cpu_vlan_type"};
    case Form::kMplsPorts:
      return {"vpn", "access_port"};
    case Form::kLimids:
      return {"ports", "excluded_types"};
    case Form::kFlag:
    case Form::kNumber:
    case Form::kHexadecimal:
    case Form::kName:
    case Form::kBoolean:
    case Form::kNumbers:
    case Form::kLimid:
      break;
  }
  return {};
}

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_JSON_KEYS_H_
