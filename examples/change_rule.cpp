// Keeps a group in another process up to date by sending only its changes: two rules of ten
// thousand change, and two are removed. docs/changes.md describes the effect on the group at the
// other end.
//
//   change_rule    prints what was sent; exits with 1 if the two ends differ

#include <arpa/inet.h>
#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>

#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace fc = FiltersCommon;

namespace {

using Ids = std::vector<fc::filtersEntryId_t>;

// The data that the sender sends to the receiver. The sender chooses how to separate the ids from
// the bytes, because the bytes of a group do not say where they end.
struct Change {
  Ids removed;
  std::string bytes;  // a group of the new and the changed rules alone
};

void require(fc::filtersErr_t result) {
  if (result != fc::FILTERS_OK) throw std::runtime_error("refused: " + std::to_string(result));
}

// A rule that drops the packets of one host.
fc::FiltersEntry rule(fc::filtersEntryId_t id) {
  fc::FiltersEntry entry(id);
  require(entry.setMatch(fc::MatchSrcIPv4(in_addr{htonl(0x0a000000 + id)})));  // 10.0.0.0/8
  require(entry.setAction(fc::ActionDeny()));
  return entry;
}

// --- The sender's end ----------------------------------------------------------------------------

// A group for the changed rules, with the id, priority, stage and type of the whole group. These
// four replace those of the receiver's group, and decide which rules the receiver admits.
fc::FiltersGroup emptyLike(const fc::FiltersGroup& group) {
  fc::FiltersGroup empty(group.getId());
  empty.setPriority(group.getPriority());
  require(empty.setStage(group.getStage()));
  require(empty.setType(group.getType()));
  return empty;
}

Change changeOf(const fc::FiltersGroup& group, const Ids& changed, const Ids& removed) {
  fc::FiltersGroup part = emptyLike(group);
  for (fc::filtersEntryId_t id : changed) require(part.insertEntry(group.getEntriesRef().at(id)));
  Change change = {removed, {}};
  part.serialize(&change.bytes);
  return change;
}

// --- The receiver's end --------------------------------------------------------------------------

// Returns false if the change was made for another state of the group. The receiver then asks for
// the whole group.
bool apply(const Change& change, fc::FiltersGroup* group) {
  fc::FiltersGroupPB message;
  if (!message.ParseFromString(change.bytes) || message.id_() != group->getId()) return false;
  for (fc::filtersEntryId_t id : change.removed) {
    if (group->removeEntry(id) != fc::FILTERS_OK) return false;
  }
  group->convertFromFiltersGroupPB(&message);
  // If the group refuses a rule, it keeps the old rule with this id and reports nothing.
  for (const fc::FiltersEntryPB& sent : message.entries_()) {
    const auto held = group->getEntriesRef().find(sent.id_());
    if (held == group->getEntriesRef().end()) return false;
    std::string bytes;
    held->second.serialize(&bytes);
    if (bytes != sent.SerializeAsString()) return false;
  }
  return true;
}

void run() {
  fc::FiltersGroup ours(1);
  require(ours.setStage(fc::FILTERS_GROUP_STAGE_INGRESS));
  require(ours.setType(fc::FILTERS_GROUP_TYPE_10));
  for (fc::filtersEntryId_t id = 0; id < 10000; ++id) require(ours.insertEntry(rule(id)));
  std::string whole;
  ours.serialize(&whole);
  fc::FiltersGroup theirs(whole);

  fc::FiltersEntry changed = rule(5000);
  require(changed.setAction(fc::ActionCopyToCpu()));
  require(ours.insertEntry(changed));
  require(ours.insertEntry(rule(10000)));
  require(ours.removeEntry(3));
  require(ours.removeEntry(4));
  const Change change = changeOf(ours, {5000, 10000}, {3, 4});

  if (!apply(change, &theirs) || theirs != ours) throw std::runtime_error("the ends differ");
  std::cout << "the whole: " << whole.size() << " bytes\nthe change: " << change.bytes.size()
            << " bytes and " << change.removed.size() << " ids\n";
}

}  // namespace

int main() {
  try {
    run();
  } catch (const std::exception& failure) {
    std::cerr << "change_rule: " << failure.what() << '\n';
    return 1;
  }
  return 0;
}
