// A program of somebody else, which knows the library as installed: classes, messages, exceptions.
#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>
#include <filter_common/filter_serialized.h>
#include <google/protobuf/arena.h>
#include <limid/limid_standin.h>

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

using namespace FiltersCommon;

namespace {

void check(bool good, const char* what) {
  if (good) return;
  std::cerr << "consumer: " << what << '\n';
  std::exit(1);
}

// A buffer of the program's own: its virtual table needs the base's type information.
class CountingBuffer : public FiltersSerialized {
 public:
  void setData(const std::string& bytes) override {
    ++fillings;
    FiltersSerialized::setData(bytes);
  }
  int fillings = 0;
};

}  // namespace

int main() {
  FiltersEntry entry(1);
  check(entry.setMatch(MatchTTL(64)) == FILTERS_OK, "match refused");
  check(entry.setAction(ActionRedirect(limid_make_lag(1))) == FILTERS_OK, "action refused");
  entry.setPolicer(policer::Policer(5, policer::Stage::Ingress, policer::Mode::Flow(1000, 1500),
                                    {policer::Action::Drop(policer::Color::Red)}));

  FiltersGroup group(7);
  check(group.setStage(FILTERS_GROUP_STAGE_INGRESS) == FILTERS_OK, "stage refused");
  check(group.setType(FILTERS_GROUP_TYPE_3) == FILTERS_OK, "type refused");
  check(group.insertEntry(entry) == FILTERS_OK, "entry refused");
  check(FiltersGroup::TypeDescription_.at(FILTERS_GROUP_TYPE_3).count(FILTERS_MATCH_TTL) == 1,
        "the published table lacks a match");

  CountingBuffer buffer;
  group.serialize(&buffer);
  check(buffer.fillings == 1, "the buffer's own override was not called");
  FiltersGroup rebuilt(buffer);
  check(rebuilt == group, "rebuilt group differs");
  std::ostringstream text;
  text << rebuilt;
  check(text.str().find("\"lag-1\"") != std::string::npos, "print lacks the port's name");

  std::string bytes;
  group.serialize(&bytes);
  google::protobuf::Arena arena;
  auto* message = google::protobuf::Arena::CreateMessage<FiltersGroupPB>(&arena);
  check(message->ParseFromString(bytes), "bytes do not parse as the installed message");
  check(message->entries_(0).matches_(0).ttl_() == 64, "message lacks the match");
  message->mutable_entries_(0)->mutable_matches_(0)->set_ttl_(65);
  FiltersGroup changed(0);
  changed.convertFromFiltersGroupPB(message);
  check(!(changed == group), "a changed message makes the same group");

  bool caught = false;
  try {
    ActionMplsPortSet(limid_make_ethernet(1), limid_make_ethernet(2));
  } catch (const std::invalid_argument&) {
    caught = true;
  }
  check(caught, "a port in place of a VPN was accepted");
  std::cout << "consumer: passed\n";
}
