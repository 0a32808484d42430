#ifndef FILTER_COMMON_TESTS_SAMPLES_H_
#define FILTER_COMMON_TESTS_SAMPLES_H_

// Sample objects of every match and action class, to be walked by type (typed tests over AllMatches
// and AllActions, samples<T>() in them) or as a list (oneMatchOfEachCode, oneActionOfEachCode).

#include <filter_common/filter_actions.h>
#include <filter_common/filter_actions.pb.h>
#include <filter_common/filter_matches.h>
#include <filter_common/filter_matches.pb.h>
#include <gtest/gtest.h>
#include <limid/limid_standin.h>

#include <cxxabi.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <list>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace catalogue {

using namespace FiltersCommon;

// --- Values --------------------------------------------------------------------------------------

using Ports = std::list<limid_t>;
using PortTypes = std::list<port_type_t>;
using VlanIds = std::set<unsigned short>;
using Pcps = std::set<unsigned char>;

template <class Address>
Address addressOf(std::initializer_list<std::uint8_t> bytes) {
  Address address{};
  std::memcpy(&address, std::data(bytes), bytes.size());
  return address;
}
inline const ether_addr kMac = addressOf<ether_addr>({0x00, 0x1b, 0x21, 0x0a, 0xff, 0x42});
inline const ether_addr kMacMask = addressOf<ether_addr>({0xff, 0xff, 0xff, 0x00, 0x00, 0x00});
inline const in_addr kIPv4 = addressOf<in_addr>({192, 0, 2, 1});
inline const in_addr kIPv4Mask = addressOf<in_addr>({255, 255, 240, 0});
inline const in6_addr kIPv6 =
    addressOf<in6_addr>({0x20, 0x01, 0x0d, 0xb8, 0x12, 0x34, 0, 0, 0, 0,  //
                         0, 0, 0, 0, 0xab, 0xcd});
inline const in6_addr kIPv6Mask = addressOf<in6_addr>({0xff, 0xff, 0xff, 0xff, 0xff, 0xff});

inline const limid_t kEth3 = limid_make_ethernet(3);
inline const limid_t kEth4 = limid_make_ethernet(4);
inline const limid_t kLag1 = limid_make_lag(1);
inline const limid_t kVpws7 = limid_make_mpls_vpws(7);
inline const limid_t kVpls9 = limid_make_bridgedomain(limid_bridgedomain_type_vpls, 9);
inline const limid_t kBridge9 = limid_make_bridgedomain(limid_bridgedomain_type_vpls + 1, 9);

// A redirection to any number of ports comes out of a message only.
inline ActionRedirect redirectTo(const Ports& ports) {
  ActionPB message;
  for (limid_t port : ports) message.add_ports_(port);
  ActionRedirect action(0);
  action.convertFromActionPB(&message);
  return action;
}

// --- Catalogue -----------------------------------------------------------------------------------

// The code that a class must carry, and objects that differ from each other. The first has values
// that no default has; the last has empty lists, so that a message can be read into a copy of it.
template <class T>
struct Row {
  unsigned code;
  std::vector<T> objects;
};

// For a class made from one argument: each argument makes an object, and so do ready objects.
template <class T, class... Arguments>
Row<T> row(unsigned code, const Arguments&... arguments) {
  return {code, {T(arguments)...}};
}

// For a class made from one number of type Value.
template <class T, class Value>
Row<T> numbers(unsigned code, std::initializer_list<std::uint32_t> values) {
  Row<T> result{code, {}};
  for (std::uint32_t value : values) result.objects.emplace_back(static_cast<Value>(value));
  return result;
}
using u8 = unsigned char;
using u16 = unsigned short;
constexpr std::uint32_t kMax = 0xffffffff;  // as an enumerator: one that nobody has named
inline const PortTypes kCpuPort{FILTERS_PORT_TYPE_CPU};

// clang-format off
inline const auto kMatchRows = std::make_tuple(
    Row<MatchAll>{0, {MatchAll()}},
    row<MatchIngressPorts>(1, Ports{kEth3, kLag1}, Ports{kLag1, kEth3}, Ports{kEth3}, kCpuPort,
                           PortTypes{port_type_t(7), FILTERS_PORT_TYPE_CPU}, Ports()),
    row<MatchExternalVlanId>(2, VlanIds{10, 4095}, u16{10}, VlanIds{10, 65535}, VlanIds()),
    numbers<MatchTPID, u16>(3, {0x8100, 0x88a8, 0}),
    row<MatchDstMac>(4, MatchDstMac(kMac, kMacMask), kMac, kMacMask),
    row<MatchDstL4Port>(5, MatchDstL4Port(80, 0xff00), u16{80}, MatchDstL4Port(443, 0xff00)),
    row<MatchSrcL4Port>(6, MatchSrcL4Port(80, 0xff00), u16{80}, MatchSrcL4Port(443, 0xff00)),
    row<MatchSrcMac>(7, MatchSrcMac(kMac, kMacMask), kMac, kMacMask),
    numbers<MatchL2SrcEntryType, l2SrcEntryType_t>(8, {2, 0, kMax}),
    row<MatchSrcIPv4>(9, MatchSrcIPv4(kIPv4, kIPv4Mask), kIPv4, kIPv4Mask),
    row<MatchDstIPv4>(10, MatchDstIPv4(kIPv4, kIPv4Mask), kIPv4, kIPv4Mask),
    row<MatchInternalVlanId>(11, VlanIds{10, 4095}, u16{10}, VlanIds{10, 65535}, VlanIds()),
    row<MatchPcp>(12, Pcps{3, 7}, u8{3}, u8{255}, Pcps()),
    row<MatchInternalPcp>(13, Pcps{3, 7}, u8{3}, u8{255}, Pcps()),
    row<MatchSrcIPv6>(14, kIPv6, kIPv6Mask),
    row<MatchDstIPv6>(15, MatchDstIPv6(kIPv6, kIPv6Mask), kIPv6, kIPv6Mask),
    numbers<MatchVlanTagging, vlan_tagging_t>(16, {1, 0, kMax}),
    numbers<MatchIpProtocol, u8>(17, {6, 255, 0}),
    numbers<MatchPacketRes, en_Resolution>(18, {8, 0, kMax}),
    row<MatchMplsTerm>(19, true, false),
    numbers<MatchToS, u8>(20, {185, 184, 0}),
    row<MatchVirtualPort>(21, kEth3, kLag1, kMax),
    row<MatchEgressPorts>(22, Ports{kEth3, kLag1}, Ports{kLag1, kEth3}, Ports{kEth3, kEth3},
                          Ports()),
    numbers<MatchIngressStpState, en_StpState>(23, {4, 0, kMax}),
    row<MatchVlanInfo>(24, vlan_info_t{1, kMax}, vlan_info_t{1, 2}, vlan_info_t{3, 2}),
    row<MatchSrcPort>(25, kEth3, kLag1, kMax),
    numbers<MatchTTL, u8>(26, {64, 255, 0}),
    numbers<MatchVrfId, u16>(27, {300, 65535, 0}),
    row<MatchDrop>(28, true, false),
    row<MatchMyStationHit>(29, true, false),
    Row<MatchCpuPort>{30, {MatchCpuPort()}},
    numbers<MatchForwardingType, en_ForwardingType>(31, {2, 0, kMax}),
    Row<MatchDestinationCpu>{32, {MatchDestinationCpu()}},
    row<MatchCPUInjectedPackets>(33, true, false),
    row<MatchDstL4PortRange>(34, MatchDstL4PortRange(100, 200), MatchDstL4PortRange(100, 65535),
                             MatchDstL4PortRange(300, 200)),
    numbers<MatchDSCP, u8>(20, {46, 63, 0}));  // last: it shares the code of MatchToS

inline const auto kActionRows = std::make_tuple(
    Row<ActionPermit>{0, {ActionPermit()}},
    Row<ActionDeny>{1, {ActionDeny()}},
    Row<ActionCopyToCpu>{2, {ActionCopyToCpu()}},
    row<ActionBlockEgressPorts>(3, Ports{kEth3, kLag1}, Ports{kLag1, kEth3}, Ports{kEth3}, Ports()),
    numbers<ActionCopyToCpuCancel, cp2cpuCancelParam_t>(4, {1, 0, kMax}),
    numbers<ActionSetPcp, u8>(5, {7, 255, 0}),
    numbers<ActionSetPcpAndQueue, u8>(6, {7, 255, 0}),
    numbers<ActionSetInnerPcp, u8>(7, {7, 255, 0}),
    numbers<ActionSetDSCP, u8>(8, {46, 255, 0}),
    numbers<ActionMapToCosQueue, u8>(9, {5, 255, 0}),
    numbers<ActionMapToCpuCosQueue, u8>(10, {5, 255, 0}),
    row<ActionRedirect>(11, kEth3, redirectTo({kEth3, kLag1}), redirectTo({kLag1, kEth3}),
                        redirectTo({})),
    row<ActionReplaceDstMac>(12, kMac, kMacMask),
    Row<ActionRedirectCancel>{13, {ActionRedirectCancel()}},
    row<ActionReplaceSrcMac>(14, kMac, kMacMask),
    row<ActionL3Switch>(15, 100000u, kMax, 0u),
    Row<ActionBlackHole>{16, {ActionBlackHole()}},
    Row<ActionCopyInnerPcp>{17, {ActionCopyInnerPcp()}},
    row<ActionMplsPortSet>(18, ActionMplsPortSet(kVpws7, kEth3), ActionMplsPortSet(kVpws7, kLag1),
                           ActionMplsPortSet(kVpls9, kEth3)),
    Row<ActionL2ToCpuDrop>{19, {ActionL2ToCpuDrop()}});
// clang-format on

// --- Walking -------------------------------------------------------------------------------------

template <class... T>
::testing::Types<T...> typesOf(const std::tuple<Row<T>...>&);
using AllMatches = decltype(typesOf(kMatchRows));  // 35 in code order, and MatchDSCP
using AllActions = decltype(typesOf(kActionRows));

template <class T>
const Row<T>& rowOf() {
  if constexpr (std::is_base_of_v<Match, T>) {
    return std::get<Row<T>>(kMatchRows);
  } else {
    return std::get<Row<T>>(kActionRows);
  }
}

template <class T>
unsigned codeOf() {
  return rowOf<T>().code;
}

template <class T>
const std::vector<T>& samples() {
  return rowOf<T>().objects;
}

// Names the instances of a typed test after their class.
struct ClassName {
  template <class T>
  static std::string GetName(int) {
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(typeid(T).name(), nullptr, nullptr, nullptr), std::free);
    return name.get() + std::strlen("FiltersCommon::");
  }
};

// Fresh copies of the first sample of every class, in the order of the rows.
template <class Base, class Code, class... T>
std::vector<std::pair<Code, std::unique_ptr<Base>>> firstOfEach(const std::tuple<Row<T>...>&) {
  std::vector<std::pair<Code, std::unique_ptr<Base>>> list;
  (list.emplace_back(Code(codeOf<T>()), std::make_unique<T>(samples<T>().front())), ...);
  return list;
}

// Codes 0 to 34 in order, each with an object of its class: MatchToS for 20.
inline auto oneMatchOfEachCode() {
  auto list = firstOfEach<Match, filtersMatch_t>(kMatchRows);
  list.pop_back();  // MatchDSCP
  return list;
}

// Codes 0 to 19 in order, each with an object of its class.
inline auto oneActionOfEachCode() { return firstOfEach<Action, filtersAction_t>(kActionRows); }

// --- Comparison ----------------------------------------------------------------------------------

template <class C, class Other>
Other comparedWith(bool (C::*)(Other) const);

// A T whose own comparison always says no. The generic comparison hears of it only where T's is
// virtual, so there is no `override` here.
template <class T>
struct Contrary : T {
  using Base = std::conditional_t<std::is_base_of_v<Match, T>, Match, Action>;
  using Base::operator==;
  explicit Contrary(const T& object) : T(object) {}
  bool operator==(decltype(comparedWith(&T::operator==))) const { return false; }
};

// Whether the generic comparison asks the object on its left.
template <class T>
bool comparesVirtually() {
  const Contrary<T> contrary(samples<T>().front());
  const typename Contrary<T>::Base& left = contrary;
  return !(left == samples<T>().front());
}

// --- Text and bytes ------------------------------------------------------------------------------

// What an object prints; chosen by static type, so a Match or an Action prints by its code.
template <class T>
std::string printed(const T& object) {
  std::ostringstream os;
  os << object;
  return os.str();
}

// "08 1a b001" without its blanks.
inline std::string packed(std::string hex) {
  hex.erase(std::remove(hex.begin(), hex.end(), ' '), hex.end());
  return hex;
}

inline std::string fromHex(const std::string& hex) {
  const std::string digits = packed(hex);
  std::string bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

inline std::string toHex(const std::string& bytes) {
  std::string hex;
  for (char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    for (int digit : {byte >> 4, byte & 15}) hex += "0123456789abcdef"[digit];
  }
  return hex;
}

// What an object writes into a fresh message, in hexadecimal.
inline std::string wireOf(const Match& match) {
  MatchPB message;
  match.convertToMatchPB(&message);
  return toHex(message.SerializePartialAsString());
}

inline std::string wireOf(const Action& action) {
  ActionPB message;
  action.convertToActionPB(&message);
  return toHex(message.SerializePartialAsString());
}

// Has an object read a message given in hexadecimal.
inline void readInto(Match* match, const std::string& hex) {
  MatchPB message;
  ASSERT_TRUE(message.ParsePartialFromString(fromHex(hex)));
  match->convertFromMatchPB(&message);
}

inline void readInto(Action* action, const std::string& hex) {
  ActionPB message;
  ASSERT_TRUE(message.ParsePartialFromString(fromHex(hex)));
  action->convertFromActionPB(&message);
}

}  // namespace catalogue

#endif  // FILTER_COMMON_TESTS_SAMPLES_H_
