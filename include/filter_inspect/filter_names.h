#ifndef FILTER_INSPECT_FILTER_NAMES_H_
#define FILTER_INSPECT_FILTER_NAMES_H_

// Names of every code, both ways. A name is the enumerator's own, in lower case, without the prefix
// that its enumeration shares: FILTERS_MATCH_DST_L4_PORT is "dst_l4_port". Of results the prefix is
// FILTERS_ERR_, and FILTERS_ of the one that is no error: "not_found", "ok". Names are part of the
// text and JSON forms: they are never changed. C callers: filter_inspect_c.h.
//
// All of this may be called from any thread. The texts live as long as the library is loaded, and
// each is followed by a zero.

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <filter_common/filter_types.h>
#include <policer/policer.h>

namespace FiltersInspect {

// One overload an enumeration. Empty for a value that has no name; callers then write the number.
FILTERS_API std::string_view nameOf(FiltersCommon::filtersErr_t);
FILTERS_API std::string_view nameOf(FiltersCommon::filtersGroupStage_t);
FILTERS_API std::string_view nameOf(FiltersCommon::filtersGroupType_t);
FILTERS_API std::string_view nameOf(FiltersCommon::filtersMatch_t);
FILTERS_API std::string_view nameOf(FiltersCommon::filtersAction_t);
FILTERS_API std::string_view nameOf(FiltersCommon::counter_type_t);
FILTERS_API std::string_view nameOf(FiltersCommon::cp2cpuCancelParam_t);
FILTERS_API std::string_view nameOf(FiltersCommon::l2SrcEntryType_t);
FILTERS_API std::string_view nameOf(FiltersCommon::vlan_tagging_t);
FILTERS_API std::string_view nameOf(FiltersCommon::en_Resolution);
FILTERS_API std::string_view nameOf(FiltersCommon::en_StpState);
FILTERS_API std::string_view nameOf(FiltersCommon::en_ForwardingType);
FILTERS_API std::string_view nameOf(FiltersCommon::port_type_t);
FILTERS_API std::string_view nameOf(policer::Stage);

// Every enumerator of one of the types above with its name, in the order of the declaration.
template <class Enum>
using Names = std::vector<std::pair<Enum, std::string_view>>;
template <class Enum>
const Names<Enum>& namesOf();
template <>
FILTERS_API const Names<FiltersCommon::filtersErr_t>& namesOf();
template <>
FILTERS_API const Names<FiltersCommon::filtersGroupStage_t>& namesOf();
template <>
FILTERS_API const Names<FiltersCommon::filtersGroupType_t>& namesOf();
template <>
FILTERS_API const Names<FiltersCommon::filtersMatch_t>& namesOf();
template <>
FILTERS_API const Names<FiltersCommon::filtersAction_t>& namesOf();
template <>
FILTERS_API const Names<FiltersCommon::counter_type_t>& namesOf();
template <>
FILTERS_API const Names<FiltersCommon::cp2cpuCancelParam_t>& namesOf();
template <>
FILTERS_API const Names<FiltersCommon::l2SrcEntryType_t>& namesOf();
template <>
FILTERS_API const Names<FiltersCommon::vlan_tagging_t>& namesOf();
template <>
FILTERS_API const Names<FiltersCommon::en_Resolution>& namesOf();
template <>
FILTERS_API const Names<FiltersCommon::en_StpState>& namesOf();
template <>
FILTERS_API const Names<FiltersCommon::en_ForwardingType>& namesOf();
template <>
FILTERS_API const Names<FiltersCommon::port_type_t>& namesOf();
template <>
FILTERS_API const Names<policer::Stage>& namesOf();

// The way back: the code of a name, exactly as written.
template <class Enum>
std::optional<Enum> fromName(std::string_view name) {
  for (const auto& [code, itsName] : namesOf<Enum>()) {
    if (itsName == name) return code;
  }
  return std::nullopt;
}

// One sentence for a person: what a result of the library means and what to look at. For a value
// that is none, a sentence that says so.
FILTERS_API std::string_view describe(FiltersCommon::filtersErr_t);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_NAMES_H_
