#include <filter_inspect/filter_names.h>

#include <cstddef>

namespace FiltersInspect {
namespace {

// An enumerator in lower case, made at compile time.
template <std::size_t size>
struct LowerCase {
  char text[size] = {};
  constexpr explicit LowerCase(const char* enumerator) {
    for (std::size_t i = 0; i < size; ++i) {
      const char c = enumerator[i];
      text[i] = 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
  }
  constexpr operator std::string_view() const { return {text, size - 1}; }
};

#define LOWER_CASE(enumerator, prefix) \
  LowerCase<sizeof enumerator - sizeof prefix + 1>(&enumerator[sizeof prefix - 1])

#define FILTERS_MATCH(code, Class, blank) \
  constexpr auto k##Class = LOWER_CASE(#code, "FILTERS_MATCH_");
#include <filter_common/filter_matches.def>
#define FILTERS_ACTION(code, Class, blank) \
  constexpr auto k##Class = LOWER_CASE(#code, "FILTERS_ACTION_");
#include <filter_common/filter_actions.def>
#undef LOWER_CASE

}  // namespace

using namespace FiltersCommon;

#define NAMES_BEGIN(Enum)               \
  std::string_view nameOf(Enum value) { \
    switch (value) {
#define NAME(enumerator, name) \
  case enumerator:             \
    return name;
#define NAMES_END() \
  }                 \
  return {};        \
  }
#include "names.def"

#define NAMES_BEGIN(Enum)              \
  template <>                          \
  const Names<Enum>& namesOf<Enum>() { \
    static const Names<Enum> names = {
#define NAME(enumerator, name) {enumerator, name},
#define NAMES_END() \
  }                 \
  ;                 \
  return names;     \
  }
#include "names.def"

std::string_view describe(filtersErr_t result) {
  switch (result) {
    case FILTERS_OK:
      return "It was done.";
    case FILTERS_ERR_NOT_FOUND:
      return "The entry, match or action is not held: look at the id or the code that was given.";
    case FILTERS_ERR_INVALID:
      return "What was given cannot stand there: a class or code that the library does not know, a "
             "match beside one that excludes it, a counter whose type is 0 or taken, or a group "
             "whose type is unknown.";
    case FILTERS_ERR_INVALID_ARGUMENT:
      return "The argument cannot be used: a null handle, a counter that is not held, or ports for "
             "a match that leaves out kinds of port.";
    case FILTERS_ERR_MATCH_NOT_ALLOWED:
      return "The group's type does not admit one of the entry's matches: take the match away or "
             "choose another type.";
    case FILTERS_ERR_TYPE_NOT_ALLOWED:
      return "A group of this type may not live in this stage: choose another type or stage.";
    case FILTERS_ERR_INVALID_STAGE:
      return "The stage is none that the library knows: look at where it came from.";
    case FILTERS_ERR_ACTION_NOT_ALLOWED:
      return "The group's stage does not admit one of the entry's actions: take the action away or "
             "choose another stage.";
    case FILTERS_ERR_POLICER_STAGE:
      return "The entry's policer belongs to another stage than the group's: give it one of the "
             "group's stage, or none.";
  }
  return "The library returns no such result.";
}

std::string_view describe(filtersGroupStage_t stage) {
  switch (stage) {
    case FILTERS_GROUP_STAGE_NONE:
      return "no place in the pipeline yet";
    case FILTERS_GROUP_STAGE_LOOKUP:
      return "as tables are looked up";
    case FILTERS_GROUP_STAGE_INGRESS:
      return "as packets come in";
    case FILTERS_GROUP_STAGE_EGRESS:
      return "as packets go out";
  }
  return "unknown";
}

std::string_view describe(filtersGroupType_t type) {
  switch (type) {
    case FILTERS_GROUP_TYPE_NONE:
      return "no kind of table yet";
    case FILTERS_GROUP_TYPE_1:
      return "MAC addresses and forwarding results";
    case FILTERS_GROUP_TYPE_2:
      return "source addresses, VLANs and virtual ports";
    case FILTERS_GROUP_TYPE_3:
      return "IPv4 addresses, layer-4 ports and TTL";
    case FILTERS_GROUP_TYPE_4:
      return "IPv4 addresses, VLANs and ToS";
    case FILTERS_GROUP_TYPE_5:
      return "MAC destinations, VLANs and egress ports";
    case FILTERS_GROUP_TYPE_6:
      return "MAC addresses and VLANs";
    case FILTERS_GROUP_TYPE_7:
      return "MAC destinations and layer-4 ports";
    case FILTERS_GROUP_TYPE_8:
      return "IPv6 destinations and VRFs";
    case FILTERS_GROUP_TYPE_9:
      return "VLANs and ToS";
    case FILTERS_GROUP_TYPE_10:
      return "IPv4 addresses";
    case FILTERS_GROUP_TYPE_11:
      return "MAC destinations, port ranges, injected packets";
  }
  return "unknown";
}

}  // namespace FiltersInspect
