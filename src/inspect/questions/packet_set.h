#ifndef FILTER_INSPECT_SRC_QUESTIONS_PACKET_SET_H_
#define FILTER_INSPECT_SRC_QUESTIONS_PACKET_SET_H_

#include <vector>

#include <filter_inspect/filter_questions.h>

#include "analysis/packet_words.h"

namespace FiltersInspect {

// Access to the private fields of a PacketSet. The fields are in the order of their numbers.
struct PacketSetFields {
  static const std::vector<FieldSet>& of(const PacketSet& set);
  static PacketSet make(std::vector<FieldSet> fields);
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_QUESTIONS_PACKET_SET_H_
