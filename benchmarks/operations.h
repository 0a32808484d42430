#ifndef FILTER_COMMON_BENCHMARKS_OPERATIONS_H_
#define FILTER_COMMON_BENCHMARKS_OPERATIONS_H_

// The operations that are measured on a group of N rules, by name. Some are operations of the
// library, the others are floors. A floor handles the same bytes with the message classes alone.
// Each operation is done for the whole group. The preparation of an operation is not timed or
// counted, so that the operation and its floor can be compared. For example, the operation makes a
// group and the floor makes a message, or each of them also destroys its result.

#include <google/protobuf/arena.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <ostream>
#include <random>
#include <sstream>
#include <vector>

#include "workload.h"
#ifdef BENCHMARKS_WITH_INSPECT
#include <filter_inspect/filter_decode.h>
#endif

namespace benchmarks {

// A group and everything that the operations need.
class Fixture {
 public:
  explicit Fixture(unsigned rules) : rules_(rules), group_(makeGroup(rules)), twin_(group_) {
    group_.serialize(&bytes_);
    kept_.ParseFromString(bytes_);
    for (const auto& [id, rule] : group_.getEntriesRef()) inOrder_.push_back(&rule);
    shuffled_ = inOrder_;
    std::shuffle(shuffled_.begin(), shuffled_.end(), std::mt19937(1));
  }

  // --- Preparing ---

  // Frees the results of the last operation. The string is swapped with an empty one, because an
  // assignment would keep its memory.
  void forget() {
    made_.reset();
    parsed_.reset();
    std::string().swap(out_);
  }
  void makeEmpty() { made_.emplace(makeEmptyGroup()); }
  void nothing() {}

  // --- The library ---

  // Uses the setters of entries, one rule after the other.
  void make() { made_.emplace(makeGroup(rules_)); }
  void serialize() { group_.serialize(&out_); }
  void rebuild() { made_.emplace(bytes_); }
  void destroy() { made_.reset(); }
  void rebuildAndDestroy() { FiltersGroup rebuilt(bytes_); }
  void copy() { made_.emplace(group_); }
  void insert() { insertAll(inOrder_); }
  void insertShuffled() { insertAll(shuffled_); }
  void compare() { require(group_ == twin_, "a copy differs"); }
  void setType() { require(group_.setType(group_.getType()) == FILTERS_OK, "a type is refused"); }
  void print() {
    NullBuffer nowhere;
    std::ostream(&nowhere) << group_;
  }
  void printToString() {
    std::ostringstream os;
    os << group_;
    out_ = os.str();
  }
  // Sends only one rule of the group, and reads it into the existing group.
  void change() {
    FiltersGroup changed = makeEmptyGroup();
    require(changed.insertEntry(*inOrder_.back()) == FILTERS_OK, "a rule is refused");
    changed.serialize(&out_);
    FiltersGroupPB message;
    require(message.ParseFromString(out_), "the bytes do not parse");
    made_->convertFromFiltersGroupPB(&message);
  }

#ifdef BENCHMARKS_WITH_INSPECT
  // --- Strict decoding by the second library ---

  void decode() { require(FiltersInspect::decodeGroup(bytes_).report.empty(), "a loss"); }
  void rebuildLosses() { made_.emplace(out_); }
  void decodeLosses() { require(!FiltersInspect::decodeGroup(out_).report.empty(), "no loss"); }
  // The same group, but each rule has a field that its match ignores.
  void writeLosses() {
    parseAgain();
    for (FiltersEntryPB& rule : *kept_.mutable_entries_()) {
      rule.mutable_matches_(2)->set_vrf_id_(1);
    }
    require(kept_.SerializeToString(&out_), "a message is not written");
  }
#endif

  // --- Floors: messages on the heap, messages on an arena, and one message used again ---

  void write() {
    FiltersGroupPB message;
    write(&message);
  }
  void writeOnArena() {
    google::protobuf::Arena arena;
    write(FiltersGroupPB::default_instance().New(&arena));
  }
  void writeAgain() {
    kept_.Clear();
    write(&kept_);
  }
  void parse() { read(&parsed_.emplace()); }
  void parseAndDestroy() {
    FiltersGroupPB message;
    read(&message);
  }
  void parseOnArena() {
    google::protobuf::Arena arena;
    read(FiltersGroupPB::default_instance().New(&arena));
  }
  void parseAgain() { read(&kept_); }
  void debugString() { require(!kept_.DebugString().empty(), "a message prints nothing"); }
 private:
  void insertAll(const std::vector<const FiltersEntry*>& entries) {
    for (const FiltersEntry* rule : entries) {
      require(made_->insertEntry(*rule) == FILTERS_OK, "a rule is refused");
    }
  }
  void write(FiltersGroupPB* message) {
    fillMessage(rules_, policer_, message);
    require(message->SerializeToString(&out_), "a message is not written");
  }
  void read(FiltersGroupPB* message) {
    require(message->ParseFromString(bytes_), "the bytes do not parse");
  }

  unsigned rules_;
  std::string policer_ = makePolicer().Serialize();
  FiltersGroup group_;
  FiltersGroup twin_;
  std::string bytes_;
  FiltersGroupPB kept_;
  std::vector<const FiltersEntry*> inOrder_;
  std::vector<const FiltersEntry*> shuffled_;
  std::optional<FiltersGroup> made_;
  std::optional<FiltersGroupPB> parsed_;
  std::string out_;
};

struct Operation {
  const char* name;
  void (Fixture::*prepare)();
  void (Fixture::*run)();

  // Prepares the operation, runs it once and prepares it again. The caches then hold the data of
  // this operation.
  void warm(Fixture* fixture) const {
    (fixture->*prepare)();
    (fixture->*run)();
    (fixture->*prepare)();
  }
};

using F = Fixture;
constexpr Operation kOperations[] = {
    {"make", &F::forget, &F::make},
    {"serialize", &F::forget, &F::serialize},
    {"rebuild", &F::forget, &F::rebuild},
    {"destroy", &F::rebuild, &F::destroy},
    {"rebuild_destroy", &F::nothing, &F::rebuildAndDestroy},
    {"copy", &F::forget, &F::copy},
    {"insert", &F::makeEmpty, &F::insert},
    {"insert_shuffled", &F::makeEmpty, &F::insertShuffled},
    {"compare", &F::nothing, &F::compare},
    {"set_type", &F::nothing, &F::setType},
    {"print", &F::nothing, &F::print},
    {"print_string", &F::forget, &F::printToString},
    {"change", &F::copy, &F::change},
#ifdef BENCHMARKS_WITH_INSPECT
    {"decode", &F::nothing, &F::decode},
    {"rebuild_losses", &F::writeLosses, &F::rebuildLosses},
    {"decode_losses", &F::writeLosses, &F::decodeLosses},
#endif
    {"write", &F::forget, &F::write},
    {"write_arena", &F::forget, &F::writeOnArena},
    {"write_again", &F::forget, &F::writeAgain},
    {"parse", &F::forget, &F::parse},
    {"parse_destroy", &F::nothing, &F::parseAndDestroy},
    {"parse_arena", &F::nothing, &F::parseOnArena},
    {"parse_again", &F::nothing, &F::parseAgain},
    {"debug_string", &F::parseAgain, &F::debugString},
};

inline const Operation& operationOf(const char* name) {
  const auto found = std::find_if(
      std::begin(kOperations), std::end(kOperations),
      [&](const Operation& operation) { return std::strcmp(operation.name, name) == 0; });
  require(found != std::end(kOperations), "there is no such operation");
  return *found;
}

}  // namespace benchmarks

#endif  // FILTER_COMMON_BENCHMARKS_OPERATIONS_H_
