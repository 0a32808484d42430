#ifndef FILTER_COMMON_FILTER_COUNTER_H_
#define FILTER_COMMON_FILTER_COUNTER_H_

#include <iosfwd>

#include <filter_common/filter_types.h>

namespace FiltersCommon {

class CounterPB;

// One counter of a filter rule: an id, which is unique within its entry, and a type, which says
// what is counted. This is a plain value that checks nothing. FiltersEntry::setCounter() decides
// which counters an entry accepts from its callers; an entry that is read from a message accepts
// every counter.
class FILTERS_API Counter {
 public:
  // Makes a counter with id 0 and the invalid type, which FiltersEntry::setCounter() refuses.
  Counter() = default;
  Counter(unsigned short id, counter_type_t type) : id_(id), type_(type) {}

  // Reads a message: keeps the low 16 bits of the id, and the type unchanged.
  explicit Counter(const CounterPB& message);

  unsigned short GetId() const { return id_; }
  counter_type_t GetType() const { return type_; }

  // Sets both fields of the message.
  void Serialize(CounterPB* message) const;

  bool operator==(const Counter& other) const { return id_ == other.id_ && type_ == other.type_; }
  bool operator!=(const Counter& other) const { return !(*this == other); }
 private:
  friend struct WireFields;
  unsigned short id_ = 0;
  counter_type_t type_ = FILTERS_COUNTER_TYPE_INVALID;
};

// Prints two lines: the id, and the name of the type ("Unknown" for a type without a name).
FILTERS_API std::ostream& operator<<(std::ostream& os, const Counter& counter);

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_FILTER_COUNTER_H_
