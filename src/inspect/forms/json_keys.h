#ifndef FILTER_INSPECT_SRC_FORMS_JSON_KEYS_H_
#define FILTER_INSPECT_SRC_FORMS_JSON_KEYS_H_

// The keys of the JSON form, for its writer and its reader. The keys of matches and actions are
// their names. kPolicerKeys has the keys of a policer's description.

#include <string_view>
#include <utility>

#include "form_rows.h"

namespace FiltersInspect {

inline constexpr std::string_view kFormat = "filter-groups";  // the value of kFormatKey

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
inline constexpr std::string_view kColorKey = "color";
inline constexpr std::string_view kDoKey = "do";
inline constexpr std::string_view kValueKey = "value";
inline constexpr std::string_view kLimidKey = "limid";
inline constexpr std::string_view kNameKey = "name";

// The keys of a value with two parts. The second key of a list of ports is optional.
constexpr std::pair<std::string_view, std::string_view> keysOf(ValueForm form) {
  switch (form) {
    case ValueForm::kMac:
    case ValueForm::kIPv4:
    case ValueForm::kIPv6:
      return {"address", "mask"};
    case ValueForm::kPortMask:
      return {"port", "mask"};
    case ValueForm::kPortRange:
      return {"min", "max"};
    case ValueForm::kVlanInfo:
      return {"svc_vlan_type", "proto_cpu_vlan_type"};
    case ValueForm::kMplsPorts:
      return {"vpn", "access_port"};
    case ValueForm::kLimids:
      return {"ports", "excluded_types"};
    case ValueForm::kFlag:
    case ValueForm::kNumber:
    case ValueForm::kHexadecimal:
    case ValueForm::kName:
    case ValueForm::kBoolean:
    case ValueForm::kNumbers:
    case ValueForm::kLimid:
      break;
  }
  return {};
}

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_JSON_KEYS_H_
