#ifndef FILTER_COMMON_TESTS_SAMPLES_H_
#define FILTER_COMMON_TESTS_SAMPLES_H_

// Sample objects of every match and action class, with their names, bytes and printed text.
// samples.cpp has one row for each class in the library's catalogue. Tests use the samples by type
// (typed tests over AllMatches, AllActions and EveryClass call samples<T>()) or as a list
// (oneMatchOfEachCode, oneActionOfEachCode).

#include <filter_common/filter_actions.h>
#include <filter_common/filter_actions.pb.h>
#include <filter_common/filter_matches.h>
#include <filter_common/filter_matches.pb.h>
#include <gtest/gtest.h>
#include <limid/limid_standin.h>

#include <cstdint>
#include <list>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace catalogue {

using namespace FiltersCommon;

// --- Text and bytes ------------------------------------------------------------------------------

// The base class of T: Match or Action.
template <class T>
using BaseOf = std::conditional_t<std::is_base_of_v<Match, T>, Match, Action>;

template <class T>
const BaseOf<T>& generic(const T& object) {
  return object;
}

// The printed text of an object. T chooses the operator<<. If T is Match or Action, the object is
// printed as the class of its code.
template <class T>
std::string printed(const T& object) {
  std::ostringstream os;
  os << object;
  return os.str();
}

// A buffer that counts how often it is flushed.
struct CountingBuffer : std::stringbuf {
  int sync() override { return ++flushes, 0; }
  int flushes = 0;
};

// The bytes of hexadecimal text such as "08 1a b001". Blanks are ignored.
std::string fromHex(std::string hex);
std::string toHex(const std::string& bytes);

// The bytes of a number in a message, as hexadecimal text. Rows use this function for numbers that
// depend on the platform.
std::string varint(std::uint32_t value);

std::uint32_t interfaceIndex(limid_t limid);

// These functions have the same names for matches and for actions, so that tests can be templates.
template <class T>
using MessageOf = std::conditional_t<std::is_base_of_v<Match, T>, MatchPB, ActionPB>;
inline void write(const Match& match, MatchPB* message) { match.convertToMatchPB(message); }
inline void write(const Action& action, ActionPB* message) { action.convertToActionPB(message); }
inline void read(Match& match, const MatchPB& message) { match.convertFromMatchPB(&message); }
inline void read(Action& action, const ActionPB& message) { action.convertFromActionPB(&message); }

// The bytes that the object writes into a new message, as hexadecimal text.
template <class T>
std::string wireOf(const T& object) {
  MessageOf<T> message;
  write(object, &message);
  return toHex(message.SerializePartialAsString());
}

// Makes the object read a message, which is given as hexadecimal text.
template <class T>
void readInto(T* object, const std::string& hex) {
  MessageOf<T> message;
  ASSERT_TRUE(message.ParsePartialFromString(fromHex(hex)));
  read(*object, message);
}

// --- Values --------------------------------------------------------------------------------------

using Ports = std::list<limid_t>;
using PortTypes = std::list<port_type_t>;
using VlanIds = std::set<unsigned short>;
using Pcps = std::set<unsigned char>;

// An address that begins with these bytes. Its other bytes are zero.
template <class Address>
Address addressOf(const std::string& hex) {
  Address address{};
  fromHex(hex).copy(reinterpret_cast<char*>(&address), sizeof address);
  return address;
}
inline const auto kMac = addressOf<ether_addr>("001b210aff42");
inline const auto kNextMac = addressOf<ether_addr>("001b210aff43");
inline const auto kMacMask = addressOf<ether_addr>("ffffff");
inline const auto kIPv4 = addressOf<in_addr>("c0000201");
inline const auto kNextIPv4 = addressOf<in_addr>("c0000202");
inline const auto kIPv4Mask = addressOf<in_addr>("fffff0");
inline const auto kIPv6 = addressOf<in6_addr>("20010db812340000000000000000abcd");
inline const auto kIPv6Mask = addressOf<in6_addr>("ffffffffffff");

inline const limid_t kEth3 = limid_make_ethernet(3);
inline const limid_t kLag1 = limid_make_lag(1);
inline const limid_t kVpws7 = limid_make_mpls_vpws(7);
inline const limid_t kVpls9 = limid_make_bridgedomain(limid_bridgedomain_type_vpls, 9);
inline const limid_t kBridge9 = limid_make_bridgedomain(limid_bridgedomain_type_vpls + 1, 9);

inline const PortTypes kCpuPort{FILTERS_PORT_TYPE_CPU};
constexpr std::uint32_t kMax = 0xffffffff;  // no enumerator has this value

// Makes a redirection to several ports by reading a message, because no constructor can.
ActionRedirect redirectTo(const Ports& ports);

// --- Rows ----------------------------------------------------------------------------------------

using Lines = std::vector<std::string>;

template <class T>
struct Row {
  std::string name;
  unsigned code;
  std::string text;    // the name of the class in filter_text.h, and the values of its objects
  std::string fields;  // the bytes that the first object writes after its code
  Lines lines;         // the lines that the first object prints below its code
  // The objects differ from each other, and the last one has zeros and empty lists.
  std::vector<T> objects;
};

// Returns the row of a class from samples.cpp.
template <class T>
const Row<T>& rowOf();

// The objects of a class, which differ from each other. The first object has no default values. The
// last object has zeros and empty lists, so that a test can read a message into a copy of it.
template <class T>
const std::vector<T>& samples() {
  return rowOf<T>().objects;
}

// --- Walking -------------------------------------------------------------------------------------

template <class... T>
::testing::Types<T...> typesOf(int, const T*...);

using AllMatches = decltype(typesOf(0
#define FILTERS_MATCH(code, T, blank) , static_cast<T*>(nullptr)
#define FILTERS_MATCH_TWIN FILTERS_MATCH
#include <filter_common/filter_matches.def>
                                    ));
using AllActions = decltype(typesOf(0
#define FILTERS_ACTION(code, T, blank) , static_cast<T*>(nullptr)
#include <filter_common/filter_actions.def>
                                    ));

template <class... M, class... A>
::testing::Types<M..., A...> both(::testing::Types<M...>, ::testing::Types<A...>);
using EveryClass = decltype(both(AllMatches(), AllActions()));

// Fresh copies of the first sample of each code's class, in the order of the codes. For the code
// that MatchToS and MatchDSCP share, the object is a MatchToS.
std::vector<std::pair<filtersMatch_t, std::unique_ptr<Match>>> oneMatchOfEachCode();
std::vector<std::pair<filtersAction_t, std::unique_ptr<Action>>> oneActionOfEachCode();

}  // namespace catalogue

#endif  // FILTER_COMMON_TESTS_SAMPLES_H_
