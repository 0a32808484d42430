// Everything that touches the device's two libraries, with the pair in the folder above: stored,
// checked, printed, compared, sent and rebuilt.
#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>
#include <limid/limid.h>
#include <policer/policer.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

using namespace FiltersCommon;

namespace {

static_assert(alignof(limid_t) == 1 && sizeof(policer::Policer) == 32, "not the stand-in's");

void check(bool good, const char* what) {
  if (good) return;
  std::cerr << "round_trip: " << what << '\n';
  std::exit(1);
}

const limid_t kPort = limid_make(limid_type_ethernet, 0, 3);
const limid_t kLag = limid_make(limid_type_lag, 0, 1);
const limid_t kVpls = limid_make(limid_type_bridgedomain, limid_bridgedomain_type_vpls, 9);
const limid_t kBridge = limid_make(limid_type_bridgedomain, 0x56, 9);

const policer::Policer kPolicer(5, policer::Stage::Ingress,
                                policer::Mode::TrTcmDs(1000, 1500, 2000, 3000),
                                {policer::Action::Drop(policer::Color::Red),
                                 policer::Action::SetDscp(policer::Color::Yellow, 46)});

FiltersGroup makeGroup(const limid_t& second) {
  FiltersGroup group(7);
  FiltersEntry entry(1);
  entry.setPolicer(kPolicer);
  entry.setPolicerParent(policer::Policer());
  const filtersErr_t results[] = {
      entry.setMatch(MatchIngressPorts(std::list<limid_t>{kPort, second})),
      entry.setAction(ActionRedirect(kLag)),
      group.setStage(FILTERS_GROUP_STAGE_INGRESS),
      group.setType(FILTERS_GROUP_TYPE_9),
      group.insertEntry(entry),
  };
  for (filtersErr_t result : results) check(result == FILTERS_OK, "a call is refused");
  return group;
}

}  // namespace

int main() {
  FiltersGroup group = makeGroup(kLag);
  check(!(group == makeGroup(kPort)), "other ports compare equal");
  std::string bytes;
  group.serialize(&bytes);
  check(FiltersGroup(bytes) == group, "rebuilt group differs");
  std::ostringstream os;
  os << group;
  for (const char* text : {"\"ge-0/0/3\" \"ae1\"", "Policer Id: 5\n", "EBS: 3000 bytes"}) {
    check(os.str().find(text) != std::string::npos, text);
  }

  // Ids and policers travel as their bytes, whatever these are.
  FiltersGroupPB message = group.convertToFiltersGroupPB();
  FiltersEntryPB& entry = *message.mutable_entries_(0);
  const std::uint32_t port = entry.matches_(0).ports_(0);
  check(std::memcmp(&port, &kPort, sizeof port) == 0, "the id's bytes differ");
  check(entry.policer_() == kPolicer.Serialize(), "the policer's bytes differ");
  entry.mutable_policer_()->pop_back();
  FiltersGroup cut(0);
  cut.convertFromFiltersGroupPB(&message);
  check(cut.getEntriesRef().at(1).getPolicer() == policer::Policer(), "cut policer is taken");

  // The checks that the library leaves to the device: stages of policers, kinds of interfaces.
  FiltersEntry other(2);
  other.setPolicer(policer::Policer(6, policer::Stage::Egress, kPolicer.GetMode(), {}));
  check(group.insertEntry(other) == FILTERS_ERR_POLICER_STAGE, "wrong stage is taken");
  const ActionMplsPortSet action(kVpls, kPort);
  check(!(action == ActionMplsPortSet(kVpls, kLag)), "other ports compare equal");
  ActionPB actionMessage;
  action.convertToActionPB(&actionMessage);
  check(actionMessage.mpls_access_port() == 0x03000011, "no interface index is sent");
  ActionMplsPortSet rebuilt;
  rebuilt.convertFromActionPB(&actionMessage);
  check(rebuilt == action, "rebuilt action differs");
  try {
    ActionMplsPortSet(kBridge, kPort);
    check(false, "a bridge that is no VPLS is taken for a VPN");
  } catch (const std::invalid_argument&) {
  }
}
