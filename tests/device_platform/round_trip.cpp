// Runs all code that calls the device's two libraries, with the libraries in platform/plain. It
// stores, checks, prints, compares, sends and rebuilds ids and policers.
#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>
#include <filter_inspect/filter_diff.h>
#include <filter_inspect/filter_text.h>

#include <cstdlib>
#include <iostream>
#include <sstream>

using namespace FiltersCommon;

namespace {

static_assert(alignof(limid_t) == 1 && sizeof(policer::Policer) == 32, "not the stand-in's");

void check(bool good, const char* what) {
  if (good) return;
  std::cerr << "round_trip: " << what << '\n';
  std::exit(1);
}

}  // namespace

int main() {
  const limid_t port = limid_make(limid_type_ethernet, 0, 3),
                lag = limid_make(limid_type_lag, 0, 1);
  const limid_t vpls = limid_make(limid_type_bridgedomain, limid_bridgedomain_type_vpls, 9);
  const policer::Policer policer(5, policer::Stage::Ingress,
                                 policer::Mode::TrTcmDs(1000, 1500, 2000, 3000),
                                 {policer::Action::SetPcp(policer::Color::Red, -1),
                                  policer::Action::SetDscp(policer::Color::Green, -128)});
  FiltersEntry entry(1);
  entry.setPolicer(policer);
  entry.setPolicerParent(policer::Policer());
  check(entry.setMatch(MatchIngressPorts(std::list<limid_t>{port, lag})) == FILTERS_OK, "match");
  check(entry.setAction(ActionMplsPortSet(vpls, port)) == FILTERS_OK, "action");
  FiltersGroup group(7);
  check(group.setType(FILTERS_GROUP_TYPE_9) == FILTERS_OK, "type");
  check(group.insertEntry(entry) == FILTERS_ERR_POLICER_STAGE,
        "a policer of a wrong stage is taken");
  entry.setPolicer(policer::Policer());
  entry.setPolicerParent(policer);
  check(group.insertEntry(entry) == FILTERS_OK, "entry");

  std::string bytes;
  group.serialize(&bytes);
  check(FiltersGroup(bytes) == group, "rebuilt group differs");
  std::ostringstream os;
  os << group;
  for (const char* text : {"\"ge-0/0/3\" \"ae1\"", "Port: ge-0/0/3\n", "Policer Id: 5\n",
                           "+ Red Set PCP -1\n+ Green Set DSCP -128\n"}) {
    check(os.str().find(text) != std::string::npos, text);
  }
  const FiltersEntryPB sent = group.convertToFiltersGroupPB().entries_(0);
  check(sent.policer_parent_() == policer.Serialize(), "the policer's bytes differ");
  check(sent.actions_(0).mpls_access_port() == 0x03000011, "no interface index is sent");

  // These libraries cannot make policers from values, but can return the values of a policer.
  const std::string text = FiltersInspect::toText({group});
  // The bytes of a policer begin with its id, in the byte order of this machine.
  const bool isLittleEndian = sent.policer_parent_()[0] == 5;
  check(text.find(isLittleEndian ? " parent 05000000" : " parent 00000005") != text.npos &&
            text.find(", parent 5 ingress trtcmds cir=1000 cbs=1500 eir=2000 ebs=3000 red=pcp:255 "
                      "green=dscp:128\n") != text.npos,
        "the text has no bytes of policers");
  check(FiltersInspect::groupsFromText(text).groups.at(0) == group, "the text is another group");
  check(FiltersInspect::groupsFromJson(FiltersInspect::toJson({group})).groups.at(0) == group,
        "the JSON is another group");
  const auto refused = FiltersInspect::groupsFromText(
      "filter-groups 1\ngroup 1 priority=1 stage=none type=none\n"
      "entry 1 priority=1 police {id=5 stage=ingress flow cir=1000}\n");
  check(refused.report.findings.at(0).code == FiltersInspect::Code::kTextSyntax,
        "a policer by value is taken");
  FiltersGroup faster(group);
  entry.setPolicerParent(policer::Policer(5, policer::Stage::Ingress,
                                          policer::Mode::TrTcmDs(4000, 1500, 2000, 3000), {}));
  check(faster.insertEntry(entry) == FILTERS_OK, "entry");
  const auto changes = FiltersInspect::diff(group, faster).findings;
  check(changes.at(0).message ==
            "parent 5 ingress trtcmds cir=1000 red=pcp:255 green=dscp:128 "
            "became cir=4000 no actions",
        "the change is not told by values");
  check(FiltersInspect::shownText(entry).find(" parent {id=5 stage=ingress trtcmds cir=4000 ") !=
            std::string::npos,
        "the policer is not shown by value");
}
