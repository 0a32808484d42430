// A user's class that uses helpers which the library does not export must not compile, because it
// could not be linked.
#include <filter_common/filter_matches.h>

using namespace FiltersCommon;

struct Ports : MatchIngressPorts {
  void show(std::ostream& os) const { print(os); }
};
struct VlanIds : MatchExternalVlanId {
  void show(std::ostream& os) const { print(os); }
};
