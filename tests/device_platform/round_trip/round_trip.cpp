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
#include <type_traits>

using namespace FiltersCommon;

namespace {

static_assert(std::is_class_v<limid_t> && alignof(limid_t) == 1, "not the stand-in's ids");
static_assert(sizeof(policer::Policer) == 32, "not the stand-in's policers");

void check(bool good, const std::string& what) {
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

FiltersEntry makeEntry() {
  FiltersEntry entry(1);
  check(entry.setMatch(MatchIngressPorts(std::list<limid_t>{kPort, kLag})) == FILTERS_OK, "ports");
  check(entry.setAction(ActionRedirect(kLag)) == FILTERS_OK, "redirect");
  check(entry.setPolicer(kPolicer) == FILTERS_OK, "policer");
  check(entry.setPolicerParent(policer::Policer()) == FILTERS_OK, "parent");
  check(entry.setCounter(Counter(1, FILTERS_COUNTER_TYPE_PACKETS)) == FILTERS_OK, "counter");
  return entry;
}

FiltersGroup makeGroup() {
  FiltersGroup group(7);
  check(group.setStage(FILTERS_GROUP_STAGE_INGRESS) == FILTERS_OK, "stage");
  check(group.setType(FILTERS_GROUP_TYPE_9) == FILTERS_OK, "type");
  check(group.insertEntry(makeEntry()) == FILTERS_OK, "entry");
  return group;
}

void comesBackWhole() {
  const FiltersGroup group = makeGroup();
  std::string bytes;
  group.serialize(&bytes);
  const FiltersGroup rebuilt(bytes);
  check(rebuilt == group, "rebuilt group differs");
  const FiltersEntry& entry = rebuilt.getEntriesRef().at(1);
  check(entry.getPolicer() == kPolicer, "policer differs");
  check(*entry.getPolicerParent() == policer::Policer(), "parent differs");

  FiltersEntry other = makeEntry();
  check(other.setMatch(MatchIngressPorts(std::list<limid_t>{kPort, kPort})) == FILTERS_OK, "ports");
  check(!(other == entry), "other ports compare equal");
}

// Ids and policers travel as their bytes, whatever these are.
void travelsAsBytes() {
  FiltersGroupPB message = makeGroup().convertToFiltersGroupPB();
  const FiltersEntryPB& entry = message.entries_(0);
  const std::uint32_t port = entry.matches_(0).ports_(0);
  check(std::memcmp(&port, &kPort, sizeof port) == 0, "the id's bytes differ");
  check(entry.policer_().size() == 32, "the policer's bytes are not a copy");
  check(std::memcmp(entry.policer_().data(), &kPolicer, 32) == 0, "the policer's bytes differ");

  message.mutable_entries_(0)->mutable_policer_()->pop_back();
  FiltersGroup cut(0);
  cut.convertFromFiltersGroupPB(&message);
  check(cut.getEntriesRef().at(1).getPolicer() == policer::Policer(), "cut policer is taken");
}

void printsWhatTheDeviceSays() {
  std::ostringstream os;
  os << makeGroup();
  for (const char* text : {"\"ge-0/0/3\" \"ae1\"", "Policer Id: 5\n", "Stage: Ingress\n",
                           "CIR: 1000 kbits/s", "EIR: 2000 kbits/s", "EBS: 3000 bytes"}) {
    check(os.str().find(text) != std::string::npos,
          std::string("print lacks ") + text + "; it is:\n" + os.str());
  }
}

// The checks that the library leaves to the device: kinds of interfaces, and stages of policers.
void asksTheDevice() {
  const ActionMplsPortSet action(kVpls, kPort);
  check(action == ActionMplsPortSet(kVpls, kPort), "equal actions differ");
  check(!(action == ActionMplsPortSet(kVpls, kLag)), "other ports compare equal");
  ActionPB message;
  action.convertToActionPB(&message);
  check(message.mpls_access_port() == 0x03000011, "no interface index is sent");
  ActionMplsPortSet rebuilt;
  rebuilt.convertFromActionPB(&message);
  check(rebuilt == action, "rebuilt action differs");
  try {
    ActionMplsPortSet(kBridge, kPort);
    check(false, "a bridge that is no VPLS is taken for a VPN");
  } catch (const std::invalid_argument&) {
  }

  const policer::Policer egress(6, policer::Stage::Egress, policer::Mode::None(), {});
  FiltersEntry entry(2);
  entry.setPolicer(egress);
  check(makeGroup().insertEntry(entry) == FILTERS_ERR_POLICER_STAGE, "wrong stage is taken");
}

}  // namespace

int main() {
  comesBackWhole();
  travelsAsBytes();
  printsWhatTheDeviceSays();
  asksTheDevice();
  std::cout << "round_trip: passed\n";
}
