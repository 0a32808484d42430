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

// Whether an entry admits objects of class T: exactly the classes of filter_matches.def and
// filter_actions.def, so that a caller's own class is refused even when it derives from one.
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

// Hands every object of the source over to the destination, in place of what the destination holds
// under the same key; other keys of the destination stay. The source is left empty, unless it is
// the destination itself. Neither allocates nor fails.
template <class K, class V>
void copy_map(std::map<K, std::unique_ptr<V>>& destination,
              std::map<K, std::unique_ptr<V>>& source) {
  if (&destination == &source) return;
  while (!source.empty()) {
    auto result = destination.insert(source.extract(source.begin()));
    if (!result.inserted) result.position->second = std::move(result.node.mapped());
  }
}

// One filter rule: which packets (at most one match of each code), what happens to them (at most
// one action of each code), how fast (a policer, and optionally a parent shared with other rules)
// and what is counted. For example:
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
// Invariants: every match and action is the entry's own copy, stored under its own code. IPv4 and
// IPv6 addresses never stand together, nor do a destination port and a destination port range.
//
// Refusals are result codes and leave the entry unchanged, except where a function says otherwise.
// Building an entry from bytes reports nothing: what is unknown, refused or unreadable is left out.
// WARNING: an entry whose bytes were cut off or damaged can come back with fewer matches, or with a
// match that holds what could be read of it and zeros for the rest: of an address without its mask,
// one that fits every packet. It then applies to more packets than its sender meant. Neither the
// bytes nor the number of matches tell; callers protect the bytes on their way (a length and a
// checksum around them), or compare the entry with what they expected.
// Every function that stores, copies or converts something may throw std::bad_alloc. The entry is
// then unchanged, except where a function says otherwise; nothing is leaked.
//
// Objects are not synchronised: any number of threads may read one entry at a time, a writer needs
// it alone. Entries that share a parent policer may be copied and destroyed on different threads.
class FILTERS_API FiltersEntry {
 public:
  using Matches = std::map<filtersMatch_t, std::unique_ptr<Match>>;
  using Actions = std::map<filtersAction_t, std::unique_ptr<Action>>;

  // What the setters go by, for reading: the classes admitted, each by the hash code of its type
  // (typeid(T).hash_code()), and the codes of which one entry cannot hold two kinds: IPv4 beside
  // IPv6, a destination port beside a destination port range. Built while the library is loaded,
  // in this order.
  static const std::set<std::size_t> validMatchTypes;
  static const std::set<filtersMatch_t> ipv4OnlyMatchTypes;
  static const std::set<filtersMatch_t> ipv6OnlyMatchTypes;
  static const std::set<std::size_t> validActionTypes;
  static const std::set<filtersMatch_t> l4DstPortMatchTypes;

  // Priority 0, the policer library's default policer, nothing else.
  FiltersEntry() : FiltersEntry(0) {}
  explicit FiltersEntry(const filtersEntryId_t& id) : id_(id) {}

  // From the bytes of serialize(). Bytes that do not parse give what could be read of them; empty
  // bytes give id 0, priority 0 and a policer made from no bytes. Throws std::invalid_argument when
  // they hold an MPLS port action that lacks one of its interfaces or names one of the wrong kind,
  // and std::logic_error for a buffer without data whose size is not 0.
  explicit FiltersEntry(const std::string& bytes);
  explicit FiltersEntry(const FiltersSerialized& buffer);

  // Copies share the parent policer and nothing else. A held MatchDSCP is copied as a MatchToS.
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

  // Assigns the held match of out's code to out. FILTERS_ERR_INVALID for a class that has no row in
  // filter_matches.def, FILTERS_ERR_NOT_FOUND when there is none; out is then unchanged.
  // Deliberate: of MatchToS and MatchDSCP, either can be read as the other.
  template <class T>
  FILTERS_NODISCARD filtersErr_t getMatch(T& out) const;

  // Stores a copy in place of a match of the same code. FILTERS_ERR_INVALID for a class that has no
  // row, or when the match cannot stand beside one already held.
  template <class T>
  FILTERS_NODISCARD filtersErr_t setMatch(const T& match);

  // Whether the match may join those held, as to the IP version and as to the destination port;
  // only its code matters.
  template <class T>
  bool isL3CompatibleMatch(T match) const;
  template <class T>
  bool isL4DstPortCompatibleMatch(T match) const;

  // FILTERS_ERR_NOT_FOUND when there is none.
  FILTERS_NODISCARD filtersErr_t deleteMatch(filtersMatch_t code);

  // Replaces all matches by copies of the given ones, or none: the first refusal is returned and
  // the entry keeps what it had. Null pointers and unknown codes are skipped; every other match
  // must be of the class of its code.
  FILTERS_NODISCARD filtersErr_t setMatches(const Matches& matches);

  // Adds copies of the given matches in ascending order of the map. The first refusal is returned;
  // what was stored before it, or before std::bad_alloc, stays. Otherwise as setMatches().
  FILTERS_NODISCARD filtersErr_t copyMatches(const Matches& matches);

  // --- Actions: as matches; no action excludes another ---

  template <class T>
  FILTERS_NODISCARD filtersErr_t getAction(T& out) const;
  template <class T>
  FILTERS_NODISCARD filtersErr_t setAction(const T& action);
  FILTERS_NODISCARD filtersErr_t deleteAction(filtersAction_t code);
  FILTERS_NODISCARD filtersErr_t setActions(const Actions& actions);
  FILTERS_NODISCARD filtersErr_t copyActions(const Actions& actions);

  // --- Policer and counters ---

  // The entry's own policer; valid as long as the entry lives.
  const policer::Policer& getPolicer() const { return policer_; }
  filtersErr_t setPolicer(const policer::Policer& policer);

  // The shared parent, null when there is none. Setting makes a new shared object of the argument;
  // copies of this entry keep the one they have. A parent cannot be taken away again.
  std::shared_ptr<policer::Policer> getPolicerParent() const { return policerParent_; }
  filtersErr_t setPolicerParent(const policer::Policer& policer);

  // The counter with this id, null when there is none; valid until the counters change.
  const Counter* getCounter(unsigned short id) const;
  const std::map<unsigned short, Counter>& getCounters() const { return counters_; }
  // Stores the counter in place of one with its id. FILTERS_ERR_INVALID for type 0 and for a type
  // that a held counter has. Deliberate: also when that counter is the very same.
  FILTERS_NODISCARD filtersErr_t setCounter(const Counter& counter);
  // FILTERS_ERR_INVALID_ARGUMENT when there is none.
  FILTERS_NODISCARD filtersErr_t deleteCounter(unsigned short id);
  filtersErr_t deleteCounters();

  // --- Conversion and comparison ---

  // Fills a fresh message: counters, matches and actions in ascending order.
  void convertToFiltersEntryPB(FiltersEntryPB* message) const;
  // Takes id, priority and policer from the message, and the parent if it has one; adds its
  // counters, matches and actions to those held, in place of one of the same id or code. Matches
  // that cannot stand beside one already held are left out. Meant for a fresh entry. An MPLS port
  // action's std::invalid_argument passes through; what was converted before it, or before
  // std::bad_alloc, stays.
  void convertFromFiltersEntryPB(const FiltersEntryPB* message);

  // The bytes of the entry's message, in place of the string's content or into an empty buffer.
  // When it throws, the buffer is still empty; the string's content is unspecified.
  void serialize(std::string* out) const;
  void serialize(FiltersSerialized* out) const;

  // Everything compared by value, the parent too.
  bool operator==(const FiltersEntry& other) const;
 private:
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
  // In ascending order of their codes, which they tell themselves.
  std::vector<std::unique_ptr<Match>> matches_;
  std::vector<std::unique_ptr<Action>> actions_;
};

// Prints the entry, its policer unless it has no stage, counters, matches, actions and the parent.
FILTERS_API std::ostream& operator<<(std::ostream& os, const FiltersEntry& entry);

template <class T>
filtersErr_t FiltersEntry::getMatch(T& out) const {
  static_assert(!std::is_const_v<T>, "getMatch() fills its argument, which therefore is not const");
  if constexpr (!isEntryClass<T>) {
    return FILTERS_ERR_INVALID;
  } else {
    const Match* held = findMatch(out.getType());
    if (held == nullptr) return FILTERS_ERR_NOT_FOUND;
    // Under the code of MatchToS stands a MatchToS or a MatchDSCP: what both have is assigned.
    using Held = std::conditional_t<std::is_same_v<T, MatchDSCP>, MatchToS, T>;
    static_cast<Held&>(out) = Held(static_cast<const Held&>(*held));  // all of it or nothing
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
    out = T(static_cast<const T&>(*held));  // all of it or nothing
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

// For the library's classes the library holds the instances.
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
