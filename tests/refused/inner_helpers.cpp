// A user's class cannot use helpers that the library does not export: it does not compile, and it
// would not link.
#include <filter_common/filter_matches.h>

using namespace FiltersCommon;

struct Ports : MatchIngressPorts {
  void show(std::ostream& os) const { print(os); }
};
struct VlanIds : MatchExternalVlanId {
  void show(std::ostream& os) const { print(os); }
};
