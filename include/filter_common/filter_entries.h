#ifndef FILTER_COMMON_FILTER_ENTRIES_H_
#define FILTER_COMMON_FILTER_ENTRIES_H_

#include <cstddef>
#include <iosfwd>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <policer/policer.h>

#include <filter_common/filter_actions.h>
#include <filter_common/filter_counter.h>
#include <filter_common/filter_matches.h>
#include <filter_common/filter_types.h>

namespace FiltersCommon {

class FiltersEntryPB;
class FiltersSerialized;

// True if an entry admits objects of class T. It admits exactly the classes of filter_matches.def
// and filter_actions.def. A caller's own class is refused, even if it derives from one of these.
template <class T>
inline constexpr bool isEntryClass = false;
#define FILTERS_ENTRY_CLASS(code, Class, blank) \
  template <>                                   \
  inline constexpr bool isEntryClass<Class> = true;
#define FILTERS_MATCH FILTERS_ENTRY_CLASS
#define FILTERS_MATCH_TWIN FILTERS_ENTRY_CLASS
#include <filter_common/filter_matches.def>
#define FILTERS_ACTION FILTERS_ENTRY_CLASS
#include <filter_common/filter_actions.def>
#undef FILTERS_ENTRY_CLASS

// Moves every object from the source to the destination. A moved object replaces the object that
// has the same key there. Other objects of the destination stay. The source is left empty, unless
// it is the destination itself. The functions do not allocate and cannot fail.
template <class K, class V>
void copy_map(std::map<K, std::unique_ptr<V>>& destination,
              std::map<K, std::unique_ptr<V>>& source) {
  if (&destination == &source) return;
  while (!source.empty()) {
    auto result = destination.insert(source.extract(source.begin()));
    if (!result.inserted) result.position->second = std::move(result.node.mapped());
  }
}

// One filter rule: which packets it applies to (at most one match of each code), what happens to
// them (at most one action of each code), how fast they may arrive (a policer, and optionally a
// parent policer shared with other rules) and what is counted. For example:
//
//     FiltersEntry entry(10);
//     if (entry.setMatch(MatchTTL(1)) != FILTERS_OK) return 1;
//     if (entry.setMatch(MatchIpProtocol(6)) != FILTERS_OK) return 1;  // in place of another one
//     if (entry.setAction(ActionDeny()) != FILTERS_OK) return 1;
//     MatchTTL ttl(0);
//     if (entry.getMatch(ttl) != FILTERS_OK || ttl.getTTL() != 1) return 1;
//     std::string bytes;
//     entry.serialize(&bytes);
//     if (!(FiltersEntry(bytes) == entry)) return 1;  // as another process reads it
//
// Invariants: every match and action is the entry's own copy, stored under its own code. An entry
// never holds both IPv4 and IPv6 addresses, nor both a destination port and a destination port
// range.
//
// A refused call returns a result code and leaves the entry unchanged, unless the function says
// otherwise. Building an entry from bytes reports nothing: unknown, refused and unreadable parts
// are left out. WARNING: an entry whose bytes were cut off or damaged can come back with fewer
// matches, or with a match that has zeros for the bytes that could not be read. For example, an
// address without its mask fits every packet. The entry then applies to more packets than its
// sender meant. The receiver cannot see this in the bytes or in the number of matches. Callers
// protect the bytes in transit with a length and a checksum, or compare the entry with the one that
// they expected. Every function that stores, copies or converts something may throw std::bad_alloc.
// The entry is then unchanged, unless the function says otherwise, and nothing is leaked.
//
// Objects are not synchronised: any number of threads may read an entry at once, but a thread that
// changes it must be the only one to use it. Entries that share a parent policer may be copied and
// destroyed on different threads.
class FILTERS_API FiltersEntry {
 public:
  using Matches = std::map<filtersMatch_t, std::unique_ptr<Match>>;
  using Actions = std::map<filtersAction_t, std::unique_ptr<Action>>;

  // The setters check with these sets, and callers can read them. validMatchTypes and
  // validActionTypes hold the admitted classes, each as typeid(T).hash_code(). An entry cannot hold
  // a code of ipv4OnlyMatchTypes together with a code of ipv6OnlyMatchTypes. It cannot hold two
  // codes of l4DstPortMatchTypes. The sets are built while the library is loaded, in this order.
  static const std::set<std::size_t> validMatchTypes;
  static const std::set<filtersMatch_t> ipv4OnlyMatchTypes;
  static const std::set<filtersMatch_t> ipv6OnlyMatchTypes;
  static const std::set<std::size_t> validActionTypes;
  static const std::set<filtersMatch_t> l4DstPortMatchTypes;

  // The new entry has priority 0, the policer library's default policer, and nothing else.
  FiltersEntry() : FiltersEntry(0) {}
  explicit FiltersEntry(const filtersEntryId_t& id) : id_(id) {}

  // Reads the bytes of serialize(). If the bytes do not parse, the entry keeps whatever could be
  // read. Empty bytes give id 0, priority 0 and a policer made from empty bytes. Throws
  // std::invalid_argument if the bytes hold an MPLS port action that lacks an interface or names an
  // interface of the wrong kind. Throws std::logic_error for a buffer without data whose size is
  // not 0.
  explicit FiltersEntry(const std::string& bytes);
  explicit FiltersEntry(const FiltersSerialized& buffer);

  // A copy shares the parent policer and nothing else. A held MatchDSCP is copied as a MatchToS.
  FiltersEntry(const FiltersEntry& other);
  FiltersEntry& operator=(const FiltersEntry&) = delete;
  // The source is left valid, with unspecified content.
  FiltersEntry& operator=(FiltersEntry&& other);
  ~FiltersEntry() = default;

  filtersEntryId_t getId() const { return id_; }
  void setId(filtersEntryId_t id) { id_ = id; }
  filtersEntryPriority_t getPriority() const { return priority_; }
  void setPriority(const filtersEntryPriority_t& priority) { priority_ = priority; }

  // --- Matches ---

  // Assigns to `out` the held match that has the same code as `out`. Returns FILTERS_ERR_INVALID if
  // the class has no row in filter_matches.def, and FILTERS_ERR_NOT_FOUND if no such match is held;
  // `out` is then unchanged. Deliberate: a MatchToS can be read as a MatchDSCP, and a MatchDSCP as
  // a MatchToS.
  template <class T>
  FILTERS_NODISCARD filtersErr_t getMatch(T& out) const;

  // Stores a copy, which replaces a held match with the same code. Returns FILTERS_ERR_INVALID if
  // the class has no row, or if a held match excludes this one (IPv4 beside IPv6, for example).
  template <class T>
  FILTERS_NODISCARD filtersErr_t setMatch(const T& match);

  // True if no held match excludes this one. Matches exclude each other by their IP version, or by
  // their kind of destination port. The functions look only at the match's code.
  template <class T>
  bool isL3CompatibleMatch(T match) const;
  template <class T>
  bool isL4DstPortCompatibleMatch(T match) const;

  // Returns FILTERS_ERR_NOT_FOUND if no such match is held.
  FILTERS_NODISCARD filtersErr_t deleteMatch(filtersMatch_t code);

  // Replaces all matches by copies of the given ones. If a match is refused, the function returns
  // that refusal and the entry keeps all its old matches. Null pointers and unknown codes are
  // skipped. Every other match must be of the class of its code.
  FILTERS_NODISCARD filtersErr_t setMatches(const Matches& matches);

  // Adds copies of the given matches in ascending order of the map, and otherwise works like
  // setMatches(). The first refusal ends the call and is returned. The matches that were stored
  // before it, or before std::bad_alloc, stay.
  FILTERS_NODISCARD filtersErr_t copyMatches(const Matches& matches);

  // --- Actions: the same functions as for matches, but no action excludes another ---

  template <class T>
  FILTERS_NODISCARD filtersErr_t getAction(T& out) const;
  template <class T>
  FILTERS_NODISCARD filtersErr_t setAction(const T& action);
  FILTERS_NODISCARD filtersErr_t deleteAction(filtersAction_t code);
  FILTERS_NODISCARD filtersErr_t setActions(const Actions& actions);
  FILTERS_NODISCARD filtersErr_t copyActions(const Actions& actions);

  // --- Policer and counters ---

  // The entry's own policer. The reference is valid until the entry is destroyed.
  const policer::Policer& getPolicer() const { return policer_; }
  filtersErr_t setPolicer(const policer::Policer& policer);

  // The shared parent policer, or null. The setter makes a new shared object from the argument;
  // existing copies of this entry keep the old one. A parent cannot be removed, only replaced.
  std::shared_ptr<policer::Policer> getPolicerParent() const { return policerParent_; }
  filtersErr_t setPolicerParent(const policer::Policer& policer);

  // The counter with this id, or null. The pointer is valid until the counters change.
  const Counter* getCounter(unsigned short id) const;
  const std::map<unsigned short, Counter>& getCounters() const { return counters_; }
  // Stores the counter. It replaces a held counter with the same id. Returns FILTERS_ERR_INVALID
  // for type 0 and for a type that a held counter has. Deliberate: the type is refused even if that
  // counter has the same id.
  FILTERS_NODISCARD filtersErr_t setCounter(const Counter& counter);
  // Returns FILTERS_ERR_INVALID_ARGUMENT if no counter has this id.
  FILTERS_NODISCARD filtersErr_t deleteCounter(unsigned short id);
  filtersErr_t deleteCounters();

  // --- Conversion and comparison ---

  // Fills a fresh message. Counters, matches and actions are written in ascending order.
  void convertToFiltersEntryPB(FiltersEntryPB* message) const;
  // Sets id, priority and policer from the message, and the parent if the message has one. Adds the
  // message's counters, matches and actions. A held counter, match or action with the same id or
  // code is replaced. A match that a held match excludes is left out. Use it on a fresh entry. An
  // MPLS port action can throw std::invalid_argument. The parts that were converted before an
  // exception stay.
  void convertFromFiltersEntryPB(const FiltersEntryPB* message);

  // Writes the bytes of the entry's message: they replace the content of the string, or fill an
  // empty buffer. After an exception the buffer is still empty, and the string's content is
  // unspecified.
  void serialize(std::string* out) const;
  void serialize(FiltersSerialized* out) const;

  // Compares everything by value, the parent policer too.
  bool operator==(const FiltersEntry& other) const;
 private:
  friend struct WireFields;
  friend class FiltersGroup;  // validates the held matches and actions
  friend FILTERS_API std::ostream& operator<<(std::ostream& os, const FiltersEntry& entry);

  FILTERS_INTERNAL void parse(const char* bytes, std::size_t size);
  const Match* findMatch(filtersMatch_t code) const;
  const Action* findAction(filtersAction_t code) const;
  bool isL3Compatible(filtersMatch_t code) const;
  bool isL4DstPortCompatible(filtersMatch_t code) const;
  bool isCompatible(filtersMatch_t code) const {
    return isL3Compatible(code) && isL4DstPortCompatible(code);
  }
  void storeMatch(std::unique_ptr<Match> match);
  void storeAction(std::unique_ptr<Action> action);

  filtersEntryId_t id_;
  filtersEntryPriority_t priority_ = 0;
  policer::Policer policer_;
  std::shared_ptr<policer::Policer> policerParent_;
  std::map<unsigned short, Counter> counters_;
  // Matches and actions are in ascending order of their codes (getType()).
  std::vector<std::unique_ptr<Match>> matches_;
  std::vector<std::unique_ptr<Action>> actions_;
};

// Prints the entry: its fields, its policer (if that has a stage), its counters, matches, actions
// and its parent policer.
FILTERS_API std::ostream& operator<<(std::ostream& os, const FiltersEntry& entry);

template <class T>
filtersErr_t FiltersEntry::getMatch(T& out) const {
  static_assert(!std::is_const_v<T>, "getMatch() fills its argument, which therefore is not const");
  if constexpr (!isEntryClass<T>) {
    return FILTERS_ERR_INVALID;
  } else {
    const Match* held = findMatch(out.getType());
    if (held == nullptr) return FILTERS_ERR_NOT_FOUND;
    // The match held under the code of MatchToS is a MatchToS or a MatchDSCP. Their common base is
    // assigned.
    using Held = std::conditional_t<std::is_same_v<T, MatchDSCP>, MatchToS, T>;
    static_cast<Held&>(out) = Held(static_cast<const Held&>(*held));  // unchanged if copying throws
    return FILTERS_OK;
  }
}

template <class T>
filtersErr_t FiltersEntry::setMatch(const T& match) {
  if constexpr (std::is_const_v<T>) {
    return setMatch<std::remove_const_t<T>>(match);
  } else if constexpr (!isEntryClass<T>) {
    return FILTERS_ERR_INVALID;
  } else {
    if (!isCompatible(match.getType())) return FILTERS_ERR_INVALID;
    storeMatch(std::make_unique<T>(match));
    return FILTERS_OK;
  }
}

template <class T>
bool FiltersEntry::isL3CompatibleMatch(T match) const {
  return isL3Compatible(match.getType());
}

template <class T>
bool FiltersEntry::isL4DstPortCompatibleMatch(T match) const {
  return isL4DstPortCompatible(match.getType());
}

template <class T>
filtersErr_t FiltersEntry::getAction(T& out) const {
  static_assert(!std::is_const_v<T>,
                "getAction() fills its argument, which therefore is not const");
  if constexpr (!isEntryClass<T>) {
    return FILTERS_ERR_INVALID;
  } else {
    const Action* held = findAction(out.getType());
    if (held == nullptr) return FILTERS_ERR_NOT_FOUND;
    out = T(static_cast<const T&>(*held));  // unchanged if copying throws
    return FILTERS_OK;
  }
}

template <class T>
filtersErr_t FiltersEntry::setAction(const T& action) {
  if constexpr (std::is_const_v<T>) {
    return setAction<std::remove_const_t<T>>(action);
  } else if constexpr (!isEntryClass<T>) {
    return FILTERS_ERR_INVALID;
  } else {
    storeAction(std::make_unique<T>(action));
    return FILTERS_OK;
  }
}

// The library contains the instances for its own classes.
#define FILTERS_MATCH(code, T, blank)                                    \
  extern template filtersErr_t FiltersEntry::getMatch<T>(T & out) const; \
  extern template filtersErr_t FiltersEntry::setMatch<T>(const T& match);
#define FILTERS_MATCH_TWIN FILTERS_MATCH
#include <filter_common/filter_matches.def>
#define FILTERS_ACTION(code, T, blank)                                    \
  extern template filtersErr_t FiltersEntry::getAction<T>(T & out) const; \
  extern template filtersErr_t FiltersEntry::setAction<T>(const T& action);
#include <filter_common/filter_actions.def>

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_FILTER_ENTRIES_H_
