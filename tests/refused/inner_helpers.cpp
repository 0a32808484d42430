// What the library does not export is out of reach of a user's class too, which would not link.
#include <filter_common/filter_matches.h>

using namespace FiltersCommon;

struct Ports : MatchIngressPorts {
  void convertToMatchPB(MatchPB* message) const override { appendTo(message); }
  void convertFromMatchPB(const MatchPB* message) override { appendFrom(*message, true); }
  void show(std::ostream& os) const { print(os); }
};
struct VlanIds : MatchExternalVlanId {
  void show(std::ostream& os) const { print(os); }
};
