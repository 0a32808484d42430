#ifndef FILTER_COMMON_TESTS_INSPECT_TINY_H_
#define FILTER_COMMON_TESTS_INSPECT_TINY_H_

// Makes tiny groups, with so few packets that a test can try every packet. For each match, the
// tests also have a plain form, written by hand: a list of readings. A reading is a function that
// says for each value of the field whether the match takes it. Random choices come from any object
// with a function below(limit), so that tests and the fuzzing harness share this code.

#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_analysis.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace tiny {

using namespace FiltersCommon;
using namespace FiltersInspect;

using Value = std::uint64_t;
using PlainPacket = std::vector<std::optional<Value>>;  // a value for each field of the theme; the
                                                        // packet may lack a field
using Reading = std::function<bool(Value)>;

// The condition of a match on one field, in each reading. Only a match with several readings uses
// `key` and `match`. Two such matches on one field have the same key only if they are equal. Equal
// matches have the same number, `match`, because the device reads them in the same way.
struct Ask {
  std::size_t field;
  std::vector<Reading> readings;
  unsigned key = 0;
  unsigned match = 0;
};
struct PlainRule {
  filtersEntryId_t id = 0;
  filtersEntryPriority_t priority = 0;
  unsigned treatment = 0;
  std::vector<Ask> asks;
};

// A packet field that a kind of match tests, with all values that a test tries and their form as
// text.
struct Field {
  std::string name;
  std::vector<Value> values;
  std::string prefix = "";   // before the number
  bool hexadecimal = false;  // one digit
  bool in_every = false;     // true if every packet has it
  std::string textOf(std::optional<Value> value) const {
    if (!value) return name + "=none";
    return name + '=' + prefix +
           (hexadecimal ? std::string(1, "0123456789abcdef"[*value]) : std::to_string(*value));
  }
};

// Returns the reason why no frame can have these fields, or an empty text. For example, no frame
// has "ip_protocol=6 tos=none". A field that the text does not name can have any value.
inline std::string faultOfFrame(const std::string& text) {
  std::map<std::string, std::string> told;
  std::istringstream in(text);
  for (std::string field; in >> field;) {
    const std::size_t sign = field.find('=');
    told[field.substr(0, sign)] = field.substr(sign + 1);
  }
  const auto has = [&](const char* name) { return told.count(name) != 0 && told[name] != "none"; };
  const auto lacks = [&](const char* name) {
    return told.count(name) != 0 && told[name] == "none";
  };
  const auto any = [](const auto& test, std::initializer_list<const char*> names) {
    return std::any_of(names.begin(), names.end(), test);
  };
  const auto ipv4 = {"src_ipv4", "dst_ipv4"}, ipv6 = {"src_ipv6", "dst_ipv6"};
  const auto ip = {"ip_protocol", "tos", "ttl"}, ports = {"src_l4_port", "dst_l4_port"};
  const auto tag = {"external_vlan_id", "pcp", "tpid"};
  if (any(has, ipv4) && any(has, ipv6)) return "it is IPv4 and IPv6";
  for (const auto& part : {ipv4, ipv6, ip, ports, tag}) {
    if (any(has, part) && any(lacks, part)) return "it has half a header";
  }
  const bool isIp = any(has, ipv4) || any(has, ipv6) || any(has, ip) || any(has, ports);
  if (isIp && any(lacks, ip)) return "an IP packet lacks what they have";
  if (isIp && any(lacks, ipv4) && any(lacks, ipv6)) return "it is of no version";
  if (has("ip_protocol")) {
    const std::set<std::string> those = {"6", "17", "33", "132", "136"};
    const bool its = those.count(told["ip_protocol"]) != 0;
    if (its ? any(lacks, ports) : any(has, ports)) return "its protocol has other ports";
  }
  const bool tagged =
      has("vlan_tagging") && told["vlan_tagging"] != "0" && told["vlan_tagging"] != "untagged";
  if (has("vlan_tagging") && (tagged ? any(lacks, tag) : any(has, tag))) return "the tag differs";
  return {};
}

inline Reading is(Value wanted) {
  return [wanted](Value v) { return v == wanted; };
}
inline Reading always(bool holds) {
  return [holds](Value) { return holds; };
}
inline std::vector<Reading> nothingOrAnything() { return {always(false), always(true)}; }

template <class Address>
Address addressOf(unsigned lowest, unsigned char rest = 0) {
  Address address;
  unsigned char bytes[sizeof address];
  std::memset(bytes, rest, sizeof bytes);
  bytes[sizeof bytes - 1] = static_cast<unsigned char>(lowest);
  std::memcpy(&address, bytes, sizeof bytes);
  return address;
}

// A kind of match: its fields, and a function that puts such a match into an entry. `at` is the
// number of the first of its fields.
template <class Random>
struct Kind {
  std::vector<Field> fields;
  std::function<void(Random&, FiltersEntry*, std::size_t at, std::vector<Ask>*)> put;
};

template <class Match>
void set(FiltersEntry* entry, const Match& match) {
  if (entry->setMatch(match) != FILTERS_OK) std::abort();
}

template <class Set>
Set subset(unsigned bits) {
  Set set;
  for (unsigned char v = 0; v < 3; ++v) {
    if ((bits >> v & 1) != 0) set.insert(v);
  }
  return set;
}

inline std::vector<Reading> amongBits(unsigned bits) {
  if (bits == 0) return nothingOrAnything();
  return {[bits](Value v) { return v < 3 && (bits >> v & 1) != 0; }};
}

template <class Random, class Match, class Set>
Kind<Random> setKind(const char* name) {
  return {{{name, {0, 1, 2, 3}}},
          [](Random& random, FiltersEntry* entry, std::size_t at, std::vector<Ask>* asks) {
            const unsigned bits = random.below(8);
            set(entry, Match(subset<Set>(bits)));
            asks->push_back({at, amongBits(bits)});
          }};
}

template <class Random, class Match>
Kind<Random> portKind(const char* name) {
  return {{{name, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}}},
          [](Random& random, FiltersEntry* entry, std::size_t at, std::vector<Ask>* asks) {
            const unsigned short masks[] = {0, 1, 2, 3, 4, 5, 6, 7, 0xfffc, 0xffff};
            const Value port = random.below(4), mask = masks[random.below(10)];
            set(entry, Match(static_cast<unsigned short>(port), static_cast<unsigned short>(mask)));
            if (mask == 0) {
              asks->push_back({at, {is(port), always(true)}, static_cast<unsigned>(port)});
            } else {
              asks->push_back({at, {[=](Value v) { return (v & mask) == (port & mask); }}});
            }
          }};
}

// Matches on an address whose lowest byte varies. The other bytes of the mask are all ones or all
// zeros.
template <class Random, class Match, class Address>
Kind<Random> addressKind(const char* name, const char* prefix) {
  return {{{name,
            {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15},
            prefix,
            std::string(prefix).back() != '.',
            prefix[0] == '0' && prefix[1] == '0'}},
          [](Random& random, FiltersEntry* entry, std::size_t at, std::vector<Ask>* asks) {
            const unsigned value = random.below(8), low = random.below(8);
            const auto rest = random.below(2) != 0 ? static_cast<unsigned char>(0xff)
                                                   : static_cast<unsigned char>(0);
            const unsigned mask = rest != 0 ? low | 0xf8 : low;
            set(entry, Match(addressOf<Address>(value), addressOf<Address>(mask, rest)));
            asks->push_back({at, {[=](Value v) {
                               return (v & low) == (value & low) && (rest == 0 || v < 8);
                             }}});
          }};
}

template <class Random, class Match, class Code>
Kind<Random> flagKind(const char* name, bool inEvery) {
  return {{{name, {0, 1}, "", false, inEvery}},
          [](Random& random, FiltersEntry* entry, std::size_t at, std::vector<Ask>* asks) {
            const unsigned value = random.below(2);
            set(entry, Match(static_cast<Code>(value)));
            asks->push_back({at, {is(value)}});
          }};
}

// The kinds of match that a group type admits.
template <class Random>
struct Theme {
  filtersGroupType_t type;
  std::vector<Kind<Random>> kinds;
};

template <class Random>
Kind<Random> ingressPorts() {
  return {{{"ingress_port", {0, 1, 2, 3}, "", false, true},
           {"ingress_port_type", {0, 1}, "", false, true}},
          [](Random& random, FiltersEntry* entry, std::size_t at, std::vector<Ask>* asks) {
            if (random.below(4) == 0) {
              set(entry, MatchIngressPorts(std::list<port_type_t>{FILTERS_PORT_TYPE_CPU}));
              asks->push_back({at + 1, {[](Value v) { return v != 0; }}});
              return;
            }
            const unsigned bits = random.below(8);
            std::list<limid_t> ports;
            for (std::uint32_t v = 0; v < 3; ++v) {
              limid_t port;
              static_assert(sizeof port == sizeof v, "a limid travels as its four bytes");
              std::memcpy(&port, &v, sizeof v);
              if ((bits >> v & 1) != 0) ports.push_front(port);
            }
            set(entry, MatchIngressPorts(ports));
            asks->push_back({at, amongBits(bits)});
          }};
}

template <class Random>
Kind<Random> tos() {
  return {{{"tos", {0, 1, 2, 3, 4, 5, 6, 7, 8}}},
          [](Random& random, FiltersEntry* entry, std::size_t at, std::vector<Ask>* asks) {
            const Value value = random.below(6);
            set(entry, MatchToS(static_cast<unsigned char>(value)));
            Ask ask{at, {is(value)}, static_cast<unsigned>(value)};
            if (value % 4 == 0) ask.readings.push_back([=](Value v) { return v / 4 == value / 4; });
            asks->push_back(ask);
          }};
}

template <class Random>
Kind<Random> tagging() {
  return {{{"vlan_tagging", {0, 1, 2, 3}, "", false, true}},
          [](Random& random, FiltersEntry* entry, std::size_t at, std::vector<Ask>* asks) {
            const unsigned value = random.below(3);
            set(entry, MatchVlanTagging(static_cast<vlan_tagging_t>(value)));
            Ask ask{at, {is(value)}, value};
            if (value != 0) ask.readings.push_back([](Value v) { return v != 0; });
            asks->push_back(ask);
          }};
}

template <class Random>
Kind<Random> portRange() {
  return {{{"dst_l4_port", {0, 1, 2, 3, 4, 5, 6, 7}}},
          [](Random& random, FiltersEntry* entry, std::size_t at, std::vector<Ask>* asks) {
            const Value min = random.below(6), max = random.below(7);
            set(entry, MatchDstL4PortRange(static_cast<unsigned short>(min),
                                           static_cast<unsigned short>(max)));
            Ask ask{at, nothingOrAnything(), static_cast<unsigned>(8 * min + max)};
            if (min <= max) ask.readings = {[=](Value v) { return min <= v && v <= max; }};
            asks->push_back(ask);
          }};
}

template <class Random>
Kind<Random> vlanInfo() {
  return {{{"svc_vlan_type", {0, 1, 2}}, {"proto_cpu_vlan_type", {0, 1}}},
          [](Random& random, FiltersEntry* entry, std::size_t at, std::vector<Ask>* asks) {
            const unsigned svc = random.below(2), proto = random.below(2);
            set(entry, MatchVlanInfo({svc, proto}));
            asks->push_back({at, {is(svc)}});
            asks->push_back({at + 1, {is(proto)}});
          }};
}

template <class Random>
Kind<Random> destinationCpu() {
  return {{{"destination_cpu", {0, 1}, "", false, true}},
          [](Random&, FiltersEntry* entry, std::size_t at, std::vector<Ask>* asks) {
            set(entry, MatchDestinationCpu());
            asks->push_back({at, {is(1)}});
          }};
}

template <class Random>
const std::vector<Theme<Random>>& themes() {
  using Vlans = std::set<unsigned short>;
  using Pcps = std::set<unsigned char>;
  static const std::vector<Theme<Random>> themes = {
      {FILTERS_GROUP_TYPE_4,
       {ingressPorts<Random>(), setKind<Random, MatchExternalVlanId, Vlans>("external_vlan_id"),
        setKind<Random, MatchInternalPcp, Pcps>("internal_pcp"), tos<Random>(),
        portKind<Random, MatchDstL4Port>("dst_l4_port"),
        addressKind<Random, MatchSrcIPv4, in_addr>("src_ipv4", "0.0.0.")}},
      {FILTERS_GROUP_TYPE_6,
       {tagging<Random>(), setKind<Random, MatchPcp, Pcps>("pcp"),
        addressKind<Random, MatchSrcMac, ether_addr>("src_mac", "00:00:00:00:00:0")}},
      {FILTERS_GROUP_TYPE_3,
       {portKind<Random, MatchSrcL4Port>("src_l4_port"), destinationCpu<Random>(),
        flagKind<Random, MatchMyStationHit, bool>("my_station_hit", true),
        portKind<Random, MatchDstL4Port>("dst_l4_port")}},
      {FILTERS_GROUP_TYPE_8,
       {addressKind<Random, MatchDstIPv6, in6_addr>("dst_ipv6", "::"),
        flagKind<Random, MatchVrfId, unsigned short>("vrf_id", false)}},
      {FILTERS_GROUP_TYPE_11,
       {portRange<Random>(), vlanInfo<Random>(),
        flagKind<Random, MatchCPUInjectedPackets, bool>("cpu_injected_packets", true)}},
  };
  return themes;
}

// --- Plain evaluation ----------------------------------------------------------------------------

// Says in which readings a rule takes one packet. Each bit stands for a match with several
// readings. The rule takes the packet if every match whose bit is set takes it. kYes means that the
// rule takes the packet in every reading, and kNo that it does so in no reading.
using Takes = std::uint32_t;
constexpr Takes kYes = 0, kNo = ~Takes{0};

inline Takes takes(const PlainRule& rule, const PlainPacket& packet) {
  Takes result = kYes;
  for (const Ask& ask : rule.asks) {
    const auto& value = packet[ask.field];
    std::size_t holding = 0;
    for (const Reading& reading : ask.readings) holding += value && reading(*value) ? 1 : 0;
    if (holding == 0) return kNo;
    if (holding < ask.readings.size()) result |= 1U << ask.match;
  }
  return result;
}

// Says for each rule of a group in which readings it takes one packet.
using Row = std::vector<Takes>;
inline Row rowOf(const std::vector<PlainRule>& rules, const PlainPacket& packet) {
  Row row;
  for (const PlainRule& rule : rules) row.push_back(takes(rule, packet));
  return row;
}

// The rank of a rule in the order. Priorities and ids must be below 100.
inline std::uint64_t rankOf(const PlainRule& rule, Order order) {
  const std::string_view name = nameOf(order);
  std::uint64_t rank = 0;
  if (name.substr(0, 7) == "highest") rank = 1000 * (100 - rule.priority);
  if (name.substr(0, 6) == "lowest") rank = 1000 * rule.priority;
  if (name.find("ascending") != name.npos) return rank + rule.id;
  return name.find("descending") != name.npos ? rank + 100 - rule.id : rank;
}

// A group, and its rules in the plain form that this header evaluates.
struct Case {
  FiltersGroup group{1};
  std::vector<Field> fields;
  std::vector<PlainRule> rules;  // ascending ids

  std::vector<PlainPacket> everyPacket() const {
    std::vector<PlainPacket> packets = {{}};
    for (const Field& field : fields) {
      std::vector<PlainPacket> longer;
      for (PlainPacket packet : packets) {
        packet.emplace_back();
        if (!field.in_every) longer.push_back(packet);
        for (Value value : field.values) {
          packet.back() = value;
          longer.push_back(packet);
        }
      }
      packets = std::move(longer);
    }
    return packets;
  }
  // `all` has the row of every packet, and `built` the rows of the packets that a sender can build.
  // Many packets have equal rows.
  struct Rows {
    std::set<Row> all, built;
  };
  Rows everyRow() const {
    std::map<Row, std::vector<PlainPacket>> packets;
    for (const PlainPacket& packet : everyPacket()) packets[rowOf(rules, packet)].push_back(packet);
    Rows rows;
    for (const auto& [row, its] : packets) {
      rows.all.insert(row);
      const bool built = std::any_of(its.begin(), its.end(), [&](const PlainPacket& packet) {
        return faultOfFrame(textOf(packet)).empty();
      });
      if (built) rows.built.insert(row);
    }
    return rows;
  }
  std::string textOf(const PlainPacket& packet) const {
    std::string text;
    for (std::size_t i = 0; i < fields.size(); ++i) text += fields[i].textOf(packet[i]) + ' ';
    return text;
  }
  const PlainRule* find(filtersEntryId_t id) const {
    const auto found = std::find_if(rules.begin(), rules.end(),
                                    [id](const PlainRule& rule) { return rule.id == id; });
    return found == rules.end() ? nullptr : &*found;
  }
};

// Makes groups whose rules have the same one or two kinds of match. So the groups of one maker can
// be compared with each other.
template <class Random>
struct Maker {
  explicit Maker(Random& itsRandom) : random(itsRandom) {
    const auto& all = themes<Random>();
    theme = &all[random.below(all.size())];
    kinds.push_back(random.below(theme->kinds.size()));
    const std::size_t second = random.below(theme->kinds.size());
    if (second != kinds[0]) kinds.push_back(second);
    for (std::size_t kind : kinds) {
      starts.push_back(fields.size());
      const auto& more = theme->kinds[kind].fields;
      fields.insert(fields.end(), more.begin(), more.end());
    }
  }

  void add(Case* made, filtersEntryId_t id) {
    FiltersEntry entry(id);
    PlainRule rule;
    rule.id = id;
    rule.priority = random.below(3);
    rule.treatment = random.below(3) == 0 ? 1 : 0;
    entry.setPriority(rule.priority);
    for (std::size_t k = 0; k < kinds.size(); ++k) {
      if (random.below(4) == 0) continue;
      theme->kinds[kinds[k]].put(random, &entry, starts[k], &rule.asks);
    }
    for (Ask& ask : rule.asks) {
      if (ask.readings.size() == 1) continue;
      const auto next = static_cast<unsigned>(matches.size());
      ask.match = matches.emplace(std::pair(ask.field, ask.key), next).first->second;
    }
    if (rule.treatment == 1 && entry.setAction(ActionDeny()) != FILTERS_OK) std::abort();
    if (made->group.insertEntry(entry) != FILTERS_OK) std::abort();
    made->rules.push_back(rule);
  }

  Case make(unsigned count) {
    Case made;
    made.fields = fields;
    if (made.group.setType(theme->type) != FILTERS_OK) std::abort();
    for (unsigned i = 0; i < count; ++i) add(&made, i);
    return made;
  }

  Random& random;
  const Theme<Random>* theme;
  std::vector<std::size_t> kinds, starts;
  std::vector<Field> fields;
  std::map<std::pair<std::size_t, unsigned>, unsigned> matches;  // matches with several readings
};

}  // namespace tiny

#endif  // FILTER_COMMON_TESTS_INSPECT_TINY_H_
