#ifndef FILTER_INSPECT_FILTER_NAMES_H_
#define FILTER_INSPECT_FILTER_NAMES_H_

// Turns every code into its name, and back. A name is the enumerator in lower case, without the
// prefix that all enumerators of the enumeration share: FILTERS_MATCH_DST_L4_PORT is "dst_l4_port".
// The prefix of results is FILTERS_ERR_, as in "not_found"; FILTERS_OK is "ok". Names are part of
// the text and JSON forms, and never change. C programs use filter_inspect_c.h.
//
// The functions may be called from any thread. The texts live as long as the library is loaded, and
// each ends with a zero byte.

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <filter_common/filter_types.h>
#include <policer/policer.h>

namespace FiltersInspect {

// There is an overload for each enumeration. A value without a name gives an empty text; write its
// number then.
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

// The enumerators of one of the types above, each with its name, in the order of the declaration.
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

// Finds the code of a name. Upper and lower case differ.
template <class Enum>
std::optional<Enum> fromName(std::string_view name) {
  for (const auto& [code, itsName] : namesOf<Enum>()) {
    if (itsName == name) return code;
  }
  return std::nullopt;
}

// The end of a sentence about an unknown word: "; did you mean ingress?" if one of the names is
// near the word, or else "; it can be lookup, ingress or egress". A name is near if at most a third
// of its letters differ, without regard to case. If the names do not fit into two lines, only names
// that contain the word are listed. If no name contains the word, `command` is named as the command
// that lists all names: "; filter-inspect names matches lists them".
FILTERS_API std::string suggestion(std::string_view word,
                                   const std::vector<std::string_view>& names,
                                   std::string_view command = {});

// A sentence for people that says what a result means and what to check. An unknown result has a
// sentence too.
FILTERS_API std::string_view describe(FiltersCommon::filtersErr_t);

// A few words for people: when a stage applies its rules, and which fields the matches of a type
// test. An unknown stage or type has words too.
FILTERS_API std::string_view describe(FiltersCommon::filtersGroupStage_t);
FILTERS_API std::string_view describe(FiltersCommon::filtersGroupType_t);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_NAMES_H_
