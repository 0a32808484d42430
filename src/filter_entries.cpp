#include <filter_common/filter_entries.h>

#include <filter_common/filter_entries.pb.h>
#include <filter_common/filter_serialized.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <typeinfo>
#include <utility>

#include "action_visit.h"
#include "match_visit.h"
#include "parse.h"
#include "wire.h"

namespace FiltersCommon {
namespace {

// The codes that exclude each other. The checks use these lists, and the public sets are made from
// them.
using Codes = std::array<filtersMatch_t, 2>;
constexpr Codes kIPv4Only = {FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_DST_IPV4};
constexpr Codes kIPv6Only = {FILTERS_MATCH_SRC_IPV6, FILTERS_MATCH_DST_IPV6};
constexpr Codes kL4DstPort = {FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_DST_L4_PORT_RANGE};

constexpr bool contains(const Codes& codes, filtersMatch_t code) {
  return codes[0] == code || codes[1] == code;
}

std::set<filtersMatch_t> publish(const Codes& codes) { return {codes.begin(), codes.end()}; }

// A blank object of the code's class, or null for a code without a class.
std::unique_ptr<Match> makeBlank(filtersMatch_t code) {
  return std::unique_ptr<Match>(
      visitMatch<Match*>(code, nullptr, [](auto tag) { return tag.makeBlank().release(); }));
}

std::unique_ptr<Action> makeBlank(filtersAction_t code) {
  return std::unique_ptr<Action>(
      visitAction<Action*>(code, nullptr, [](auto tag) { return tag.makeBlank().release(); }));
}

// A copy as an object of its code's class, so a MatchDSCP becomes a MatchToS. Null for a code
// without a class.
std::unique_ptr<Match> clone(const Match& match) {
  return std::unique_ptr<Match>(visitMatch<Match*>(match.getType(), nullptr, [&](auto tag) {
    using T = typename decltype(tag)::Class;
    return new T(static_cast<const T&>(match));
  }));
}

std::unique_ptr<Action> clone(const Action& action) {
  return std::unique_ptr<Action>(visitAction<Action*>(action.getType(), nullptr, [&](auto tag) {
    using T = typename decltype(tag)::Class;
    return new T(static_cast<const T&>(action));
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
  if (place != held->end() && (*place)->getType() == object->getType()) {
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

// Makes room for `count` more objects, but at most for one of each code, because a message may
// repeat codes and an entry holds each code once.
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

// --- Conversion and comparison -------------------------------------------------------------------

void FiltersEntry::convertToFiltersEntryPB(FiltersEntryPB* message) const {
  message->set_id_(id_);
  message->set_priority_(priority_);
  message->set_policer_(policer_.Serialize());
  if (policerParent_ != nullptr) message->set_policer_parent_(policerParent_->Serialize());
  reserveMore(message->mutable_counters_(), counters_.size());
  reserveMore(message->mutable_matches_(), matches_.size());
  reserveMore(message->mutable_actions_(), actions_.size());
  for (const auto& [id, counter] : counters_) counter.Serialize(message->add_counters_());
  for (const auto& match : matches_) match->convertToMatchPB(message->add_matches_());
  for (const auto& action : actions_) action->convertToActionPB(message->add_actions_());
}

void FiltersEntry::convertFromFiltersEntryPB(const FiltersEntryPB* message) {
  id_ = message->id_();
  priority_ = message->priority_();
  policer_ = policer::Policer(message->policer_());
  if (message->has_policer_parent_()) {
    policerParent_ = std::make_shared<policer::Policer>(message->policer_parent_());
  }
  // Deliberate: this does not call setCounter(). All counters of another process are kept, even
  // those with type 0 or a repeated type.
  for (const CounterPB& counterMessage : message->counters_()) {
    const Counter counter(counterMessage);
    counters_.insert_or_assign(counter.GetId(), counter);
  }
  reserveObjects(&matches_, static_cast<std::size_t>(message->matches__size()));
  for (const MatchPB& matchMessage : message->matches_()) {
    const auto code = static_cast<filtersMatch_t>(matchMessage.type_());
    if (!isCompatible(code)) continue;
    auto match = makeBlank(code);
    if (match == nullptr) continue;
    match->convertFromMatchPB(&matchMessage);
    storeMatch(std::move(match));
  }
  reserveObjects(&actions_, static_cast<std::size_t>(message->actions__size()));
  for (const ActionPB& actionMessage : message->actions_()) {
    auto action = makeBlank(static_cast<filtersAction_t>(actionMessage.type_()));
    if (action == nullptr) continue;
    action->convertFromActionPB(&actionMessage);
    storeAction(std::move(action));
  }
}

void FiltersEntry::parse(const char* bytes, std::size_t size) {
  MessageArena arena;
  convertFromFiltersEntryPB(parseMessage<FiltersEntryPB>(bytes, size, &arena));
}

void FiltersEntry::serialize(std::string* out) const {
  MessageArena arena;
  auto* message = arena.make<FiltersEntryPB>();
  convertToFiltersEntryPB(message);
  out->clear();
  static_cast<void>(message->AppendToString(out));
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
