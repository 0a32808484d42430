#include <filter_common/filter_entries.h>

#include <filter_common/filter_entries.pb.h>
#include <filter_common/filter_serialized.h>

#include <algorithm>
#include <array>
#include <climits>
#include <iterator>
#include <typeinfo>
#include <utility>

#include "action_visit.h"
#include "match_visit.h"
#include "parse.h"
#include "wire_fields.h"

namespace FiltersCommon {
namespace {

// The codes of matches that exclude each other. The checks use these lists, and the public sets are
// made from the lists.
using Codes = std::array<filtersMatch_t, 2>;
constexpr Codes kIPv4Only = {FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_DST_IPV4};
constexpr Codes kIPv6Only = {FILTERS_MATCH_SRC_IPV6, FILTERS_MATCH_DST_IPV6};
constexpr Codes kL4DstPort = {FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_DST_L4_PORT_RANGE};

constexpr bool contains(const Codes& codes, filtersMatch_t code) {
  return codes[0] == code || codes[1] == code;
}

std::set<filtersMatch_t> publish(const Codes& codes) { return {codes.begin(), codes.end()}; }

template <class R, class F>
R visit(filtersMatch_t code, R unknown, F&& f) {
  return visitMatch(code, unknown, f);
}
template <class R, class F>
R visit(filtersAction_t code, R unknown, F&& f) {
  return visitAction(code, unknown, f);
}

// A blank object of the code's class, or null for a code without a class.
template <class Object, class Code>
std::unique_ptr<Object> makeBlank(Code code) {
  return std::unique_ptr<Object>(
      visit<Object*>(code, nullptr, [](auto tag) { return tag.makeBlank().release(); }));
}

// A copy whose class is the class of the object's code, so a MatchDSCP becomes a MatchToS. Null for
// a code without a class.
template <class Object>
std::unique_ptr<Object> clone(const Object& object) {
  return std::unique_ptr<Object>(visit<Object*>(object.getType(), nullptr, [&](auto tag) {
    using T = typename decltype(tag)::Class;
    return new T(static_cast<const T&>(object));
  }));
}

// The position of the object with this code, or the position at which to insert it. Matches and
// actions are held in ascending order of their codes. The search starts at the end, because most
// objects arrive in order.
template <class Held, class Code>
auto placeOf(Held& held, Code code) {
  auto place = held.end();
  while (place != held.begin() && (*std::prev(place))->getType() >= code) --place;
  return place;
}

template <class Held, class Code>
auto findIn(const Held& held, Code code) {
  const auto place = placeOf(held, code);
  return place == held.end() || (*place)->getType() != code ? nullptr : place->get();
}

template <class Held, class Object>
void storeIn(Held* held, Object object) {
  const auto place = placeOf(*held, object->getType());
  if (place == held->end()) {
    held->push_back(std::move(object));
  } else if ((*place)->getType() == object->getType()) {
    *place = std::move(object);
  } else {
    held->insert(place, std::move(object));
  }
}

template <class Held, class Code>
filtersErr_t eraseFrom(Held* held, Code code) {
  const auto place = placeOf(*held, code);
  if (place == held->end() || (*place)->getType() != code) return FILTERS_ERR_NOT_FOUND;
  held->erase(place);
  return FILTERS_OK;
}

// Reserves space for `count` more objects, but never for more objects than there are codes: a
// message may repeat a code, but an entry holds each code once.
template <class Held>
void reserveObjects(Held* held, std::size_t count) {
  constexpr std::size_t kMost = 64;  // more than there are codes
  held->reserve(std::min(kMost, held->size() + count));
}

}  // namespace

#define FILTERS_HASH_CODE(code, T, blank) typeid(T).hash_code(),
const std::set<std::size_t> FiltersEntry::validMatchTypes = {
#define FILTERS_MATCH FILTERS_HASH_CODE
#define FILTERS_MATCH_TWIN FILTERS_HASH_CODE
#include <filter_common/filter_matches.def>
};
const std::set<filtersMatch_t> FiltersEntry::ipv4OnlyMatchTypes = publish(kIPv4Only);
const std::set<filtersMatch_t> FiltersEntry::ipv6OnlyMatchTypes = publish(kIPv6Only);
const std::set<std::size_t> FiltersEntry::validActionTypes = {
#define FILTERS_ACTION FILTERS_HASH_CODE
#include <filter_common/filter_actions.def>
};
const std::set<filtersMatch_t> FiltersEntry::l4DstPortMatchTypes = publish(kL4DstPort);
#undef FILTERS_HASH_CODE

FiltersEntry::FiltersEntry(const FiltersEntry& other)
    : id_(other.id_),
      priority_(other.priority_),
      policer_(other.policer_),
      policerParent_(other.policerParent_),
      counters_(other.counters_) {
  // The matches and actions of `other` were checked when they were stored there.
  matches_.reserve(other.matches_.size());
  for (const auto& match : other.matches_) matches_.push_back(clone(*match));
  actions_.reserve(other.actions_.size());
  for (const auto& action : other.actions_) actions_.push_back(clone(*action));
}

FiltersEntry::FiltersEntry(const std::string& bytes) : FiltersEntry() {
  parse(bytes.data(), bytes.size());
}

FiltersEntry::FiltersEntry(const FiltersSerialized& buffer) : FiltersEntry() {
  parse(checkedData(buffer), buffer.size());
}

FiltersEntry& FiltersEntry::operator=(FiltersEntry&& other) {
  if (this == &other) return *this;
  policer_ = std::move(other.policer_);
  id_ = other.id_;
  priority_ = other.priority_;
  policerParent_ = std::move(other.policerParent_);
  counters_ = std::move(other.counters_);
  matches_ = std::move(other.matches_);
  actions_ = std::move(other.actions_);
  return *this;
}

// --- Matches -------------------------------------------------------------------------------------

const Match* FiltersEntry::findMatch(filtersMatch_t code) const { return findIn(matches_, code); }

void FiltersEntry::storeMatch(std::unique_ptr<Match> match) {
  storeIn(&matches_, std::move(match));
}

// Every setMatch<T>() calls these two functions. If they were inlined, the library would contain
// them once for each class.
[[gnu::noinline]] bool FiltersEntry::isL3Compatible(filtersMatch_t code) const {
  const auto holdsNone = [&](const Codes& others) {
    return findMatch(others[0]) == nullptr && findMatch(others[1]) == nullptr;
  };
  if (contains(kIPv4Only, code)) return holdsNone(kIPv6Only);
  if (contains(kIPv6Only, code)) return holdsNone(kIPv4Only);
  return true;
}

[[gnu::noinline]] bool FiltersEntry::isL4DstPortCompatible(filtersMatch_t code) const {
  if (code == kL4DstPort[0]) return findMatch(kL4DstPort[1]) == nullptr;
  if (code == kL4DstPort[1]) return findMatch(kL4DstPort[0]) == nullptr;
  return true;
}

filtersErr_t FiltersEntry::deleteMatch(filtersMatch_t code) { return eraseFrom(&matches_, code); }

filtersErr_t FiltersEntry::setMatches(const Matches& matches) {
  FiltersEntry fresh;
  const filtersErr_t result = fresh.copyMatches(matches);
  if (result != FILTERS_OK) return result;
  matches_.swap(fresh.matches_);
  return FILTERS_OK;
}

filtersErr_t FiltersEntry::copyMatches(const Matches& matches) {
  reserveObjects(&matches_, matches.size());
  for (const auto& held : matches) {
    if (held.second == nullptr) continue;
    if (!isCompatible(held.second->getType())) return FILTERS_ERR_INVALID;
    if (auto match = clone(*held.second)) storeMatch(std::move(match));
  }
  return FILTERS_OK;
}

// --- Actions -------------------------------------------------------------------------------------

const Action* FiltersEntry::findAction(filtersAction_t code) const {
  return findIn(actions_, code);
}

void FiltersEntry::storeAction(std::unique_ptr<Action> action) {
  storeIn(&actions_, std::move(action));
}

filtersErr_t FiltersEntry::deleteAction(filtersAction_t code) { return eraseFrom(&actions_, code); }

filtersErr_t FiltersEntry::setActions(const Actions& actions) {
  FiltersEntry fresh;
  static_cast<void>(fresh.copyActions(actions));  // no action is refused
  actions_.swap(fresh.actions_);
  return FILTERS_OK;
}

filtersErr_t FiltersEntry::copyActions(const Actions& actions) {
  reserveObjects(&actions_, actions.size());
  for (const auto& held : actions) {
    if (held.second == nullptr) continue;
    if (auto action = clone(*held.second)) storeAction(std::move(action));
  }
  return FILTERS_OK;
}

// --- Policer and counters ------------------------------------------------------------------------

filtersErr_t FiltersEntry::setPolicer(const policer::Policer& policer) {
  policer_ = policer::Policer(policer);  // if copying throws, nothing changes
  return FILTERS_OK;
}

filtersErr_t FiltersEntry::setPolicerParent(const policer::Policer& policer) {
  policerParent_ = std::make_shared<policer::Policer>(policer);
  return FILTERS_OK;
}

const Counter* FiltersEntry::getCounter(unsigned short id) const {
  const auto it = counters_.find(id);
  return it == counters_.end() ? nullptr : &it->second;
}

filtersErr_t FiltersEntry::setCounter(const Counter& counter) {
  if (counter.GetType() == FILTERS_COUNTER_TYPE_INVALID) return FILTERS_ERR_INVALID;
  for (const auto& [id, held] : counters_) {
    if (held.GetType() == counter.GetType()) return FILTERS_ERR_INVALID;
  }
  counters_.insert_or_assign(counter.GetId(), counter);
  return FILTERS_OK;
}

filtersErr_t FiltersEntry::deleteCounter(unsigned short id) {
  return counters_.erase(id) == 0 ? FILTERS_ERR_INVALID_ARGUMENT : FILTERS_OK;
}

filtersErr_t FiltersEntry::deleteCounters() {
  counters_.clear();
  return FILTERS_OK;
}

// --- The fields of an entry ----------------------------------------------------------------------

namespace {

// For each kind of field, the accessor of the message that changes a field of this kind.
#define FILTERS_CHANGE_number(n, name) FILTERS_FIELD(n, set_, name)
#define FILTERS_CHANGE_bytes(n, name) FILTERS_FIELD(n, set_, name)
#define FILTERS_CHANGE_messages(n, name) FILTERS_FIELD(n, mutable_, name)
#define FILTERS_ENTRY_FIELD(constant, kind, n, name) \
  constexpr auto constant = FILTERS_CHANGE_##kind(n, name);
#include "wire_fields.def"

// Writes a match, an action or a counter.
void putPart(const std::unique_ptr<Match>& match, MatchPB* message) {
  match->convertToMatchPB(message);
}
void putPart(const std::unique_ptr<Action>& action, ActionPB* message) {
  action->convertToActionPB(message);
}
void putPart(const std::pair<const unsigned short, Counter>& held, CounterPB* message) {
  held.second.Serialize(message);
}
// True if T's row of wire_fields.def belongs to the class from which T has its conversions.
template <class T>
constexpr bool hasRow() {
  using Row = decltype(WireFields::rowOf(static_cast<const T*>(nullptr)));
  if constexpr (std::is_base_of_v<Match, T>) {
    return isOf<Row>(&T::convertToMatchPB);
  } else {
    return isOf<Row>(&T::convertToActionPB);
  }
}
template <class Object>
void putPart(const std::unique_ptr<Object>& object, WireWriter* out) {
  out->number(kCodeField, toWire(object->getType()));
  visit(object->getType(), false, [&](auto tag) {
    using T = typename decltype(tag)::Class;
    static_assert(hasRow<T>(), "the class has conversions and needs a row in wire_fields.def");
    PutFields<WireWriter> put{*out};
    WireFields::of(put, static_cast<const T&>(*object));
    return true;
  });
}
void putPart(const std::pair<const unsigned short, Counter>& held, WireWriter* out) {
  PutFields<WireWriter> put{*out};
  WireFields::of(put, held.second);
}

void takePart(const MatchPB& message, Match* match) { match->convertFromMatchPB(&message); }
void takePart(const ActionPB& message, Action* action) { action->convertFromActionPB(&message); }

// Reads a counter. A message always gives a counter. Bytes give a counter only if they have the
// form in which a counter is written.
bool takeCounter(const CounterPB& message, Counter* counter) {
  *counter = Counter(message);
  return true;
}
bool takeCounter(WireReader in, Counter* counter) {
  TakeFields<WireReader> take{in};
  WireFields::of(take, *counter);
  return in.finished();
}

}  // namespace

template <class Writer>
void WireFields::Entry::put(const FiltersEntry& entry, Writer& out) {
  const auto putBytes = [&](const auto& field, const std::string& bytes) {
    out.bytes(field, bytes.data(), bytes.size());
  };
  const auto write = [](const auto& part, auto* message) { putPart(part, message); };
  out.number(kId, entry.id_);
  out.number(kPriority, entry.priority_);
  putBytes(kPolicer, entry.policer_.Serialize());
  out.appendMessages(kMatches, entry.matches_, write);
  out.appendMessages(kActions, entry.actions_, write);
  out.appendMessages(kCounters, entry.counters_, write);
  if (entry.policerParent_ != nullptr) putBytes(kParent, entry.policerParent_->Serialize());
}

bool WireFields::Entry::admits(const FiltersEntry& entry, filtersMatch_t code) {
  return entry.isCompatible(code);
}
void WireFields::Entry::store(FiltersEntry* entry, std::unique_ptr<Match> match) {
  entry->storeMatch(std::move(match));
}
void WireFields::Entry::store(FiltersEntry* entry, std::unique_ptr<Action> action) {
  entry->storeAction(std::move(action));
}

// A message with an unknown code, or with a code that a held match excludes, is skipped. Bytes with
// such a code make the reader fail.
template <class Object, class Code, class Part>
bool WireFields::Entry::takeObject(FiltersEntry* entry, const Part& part) {
  if constexpr (std::is_same_v<Part, WireReader>) {
    WireReader in = part;
    const auto code = static_cast<Code>(in.number(kCodeField));
    auto object = admits(*entry, code) ? makeBlank<Object>(code) : nullptr;
    const bool known = object != nullptr && visit(code, false, [&](auto tag) {
                         TakeFields<WireReader> take{in};
                         of(take, static_cast<typename decltype(tag)::Class&>(*object));
                         return in.finished();
                       });
    if (known) store(entry, std::move(object));
    return known;
  } else {
    const auto code = static_cast<Code>(part.type_());
    auto object = admits(*entry, code) ? makeBlank<Object>(code) : nullptr;
    if (object == nullptr) return true;
    takePart(part, object.get());
    store(entry, std::move(object));
    return true;
  }
}

template <class Reader>
bool WireFields::Entry::take(FiltersEntry* entry, Reader in, [[maybe_unused]] std::string* scratch,
                             [[maybe_unused]] bool isAll) {
  constexpr bool kBytes = std::is_same_v<Reader, WireReader>;
  entry->id_ = in.number(kId);
  entry->priority_ = in.number(kPriority);
  const auto& policer = in.bytes(kPolicer);
  const auto& matches = in.messages(kMatches);
  const auto& actions = in.messages(kActions);
  const auto& counters = in.messages(kCounters);
  const bool hasParent = in.hasBytes(kParent);
  const auto& parent = in.bytes(kParent);
  if constexpr (kBytes) {
    if (!(isAll ? in.finishedOrZero() : in.finished())) return false;
  }
  const auto takePolicers = [&] {
    const auto policerFrom = [&](const auto& bytes) {
      if constexpr (kBytes)
        return policer::Policer(scratch->assign(bytes.data(), bytes.size()));
      else
        return policer::Policer(bytes);
    };
    entry->policer_ = policerFrom(policer);
    if (hasParent) entry->policerParent_ = std::make_shared<policer::Policer>(policerFrom(parent));
  };
  // The constructors of policers may throw. When an entry is made from a message, they run first.
  // When it is made from bytes, they run last, because bytes whose matches or actions have another
  // form are parsed again as a message, and this message may lack the parent.
  if (!kBytes) takePolicers();
  // Deliberate: this does not call setCounter(). All counters of another process are kept, even
  // those with type 0 or a repeated type.
  for (const auto& part : counters) {
    Counter counter;
    if (!takeCounter(part, &counter)) return false;
    entry->counters_.insert_or_assign(entry->counters_.end(), counter.GetId(), counter);
  }
  reserveObjects(&entry->matches_, static_cast<std::size_t>(matches.size()));
  for (const auto& part : matches) {
    if (!takeObject<Match, filtersMatch_t>(entry, part)) return false;
  }
  reserveObjects(&entry->actions_, static_cast<std::size_t>(actions.size()));
  for (const auto& part : actions) {
    if (!takeObject<Action, filtersAction_t>(entry, part)) return false;
  }
  if (kBytes) takePolicers();
  return true;
}

// For groups.
template void WireFields::Entry::put(const FiltersEntry& entry, WireWriter& out);
template bool WireFields::Entry::take(FiltersEntry* entry, WireReader in, std::string* scratch,
                                      bool isAll);

// --- Conversion and comparison -------------------------------------------------------------------

void FiltersEntry::convertToFiltersEntryPB(FiltersEntryPB* message) const {
  MessageWriter<FiltersEntryPB> out(message);
  WireFields::Entry::put(*this, out);
}

void FiltersEntry::convertFromFiltersEntryPB(const FiltersEntryPB* message) {
  WireFields::Entry::take(this, MessageReader<FiltersEntryPB>(*message), nullptr);
}

void FiltersEntry::parse(const char* bytes, std::size_t size) {
  std::string scratch;
  if (size <= INT_MAX && WireFields::Entry::take(this, WireReader(bytes, size), &scratch, true)) {
    return;
  }
  *this = FiltersEntry();
  MessageArena arena;
  convertFromFiltersEntryPB(parseMessage<FiltersEntryPB>(bytes, size, &arena));
}

void FiltersEntry::serialize(std::string* out) const {
  WireWriter writer;
  WireFields::Entry::put(*this, writer);
  // A message has at most 2 GiB. A larger entry cannot be written.
  out->assign(writer.data(), writer.size() <= INT_MAX ? writer.size() : 0);
}

void FiltersEntry::serialize(FiltersSerialized* out) const {
  std::string bytes;
  serialize(&bytes);
  out->setData(bytes);
}

bool FiltersEntry::operator==(const FiltersEntry& other) const {
  const auto sameParent = [&] {
    if (policerParent_ == nullptr || other.policerParent_ == nullptr) {
      return policerParent_ == other.policerParent_;
    }
    return *policerParent_ == *other.policerParent_;
  };
  const auto sameMatch = [](const auto& mine, const auto& theirs) {
    return mine->getType() == theirs->getType() && *theirs == *mine;
  };
  const auto sameAction = [](const auto& mine, const auto& theirs) {
    return mine->getType() == theirs->getType() && *mine == *theirs;
  };
  return id_ == other.id_ && priority_ == other.priority_ && policer_ == other.policer_ &&
         matches_.size() == other.matches_.size() && actions_.size() == other.actions_.size() &&
         counters_ == other.counters_ && sameParent() &&
         std::equal(matches_.begin(), matches_.end(), other.matches_.begin(), sameMatch) &&
         std::equal(actions_.begin(), actions_.end(), other.actions_.begin(), sameAction);
}

#define FILTERS_MATCH(code, T, blank)                                    \
  template FILTERS_API filtersErr_t FiltersEntry::getMatch<T>(T&) const; \
  template FILTERS_API filtersErr_t FiltersEntry::setMatch<T>(const T&);
#define FILTERS_MATCH_TWIN FILTERS_MATCH
#include <filter_common/filter_matches.def>

#define FILTERS_ACTION(code, T, blank)                                    \
  template FILTERS_API filtersErr_t FiltersEntry::getAction<T>(T&) const; \
  template FILTERS_API filtersErr_t FiltersEntry::setAction<T>(const T&);
#include <filter_common/filter_actions.def>

}  // namespace FiltersCommon
