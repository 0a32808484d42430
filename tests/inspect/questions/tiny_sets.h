#ifndef FILTER_COMMON_TESTS_INSPECT_TINY_SETS_H_
#define FILTER_COMMON_TESTS_INSPECT_TINY_SETS_H_

// Makes random packet sets over the fields of tiny groups, in every written form. Each set is
// written a second time by hand, as a function that says for each value of a field whether the set
// has it.

#include <arpa/inet.h>
#include <filter_inspect/filter_questions.h>

#include <array>
#include <cstdio>

#include "../analysis/tiny_checks.h"

namespace tiny {

// In a value of the plain form, this bit says that the upper half of an IPv6 address is 1. Without
// this bit, the upper half is 0.
constexpr Value kUpper = Value{1} << 40;

// A field with more values than the rules distinguish. So a set can have some of the values that
// the rules treat alike, and lack the others.
struct WideField {
  explicit WideField(const Field& its) : field(its) {
    const auto starts = [&](const char* name) { return field.name.rfind(name, 0) == 0; };
    const auto has = [&](const char* part) { return field.name.find(part) != std::string::npos; };
    const bool flag = field.values.size() == 2 && field.in_every;
    bits = has("ipv6")                                      ? 128
           : has("mac")                                     ? 48
           : has("ipv4")                                    ? 32
           : has("l4_port") || has("vlan_id") || has("vrf") ? 16
           : has("pcp") || starts("t")                      ? 8
           : flag && !has("ingress")                        ? 1
                                                            : 32;
    if (bits == 1) {
      values = {0, 1};
      ends = 2;
      return;
    }
    const Value most = isAddress() || has("l4_port") || has("tos") ? 20 : 6;
    for (Value v = 0; v < most; ++v) values.push_back(v);
    if (bits == 128) {
      for (Value v = 0; v < 12; ++v) values.push_back(kUpper | v);
    }
    ends = values.size();
    // Values that are larger than those of the rules: one for each combination of the low bits that
    // a mask can test.
    const Value more = most > 6 ? 16 : 2;
    for (Value v = most; v < most + more; ++v) values.push_back(v);
    for (Value v = 12; bits == 128 && v < 12 + more; ++v) values.push_back(kUpper | v);
  }
  bool isAddress() const { return !field.prefix.empty(); }

  std::string textOf(Value v) const {
    char text[64];
    const char* form = bits == 48 ? "00:00:00:00:00:%02x" : bits == 32 ? "0.0.0.%u" : "::%x";
    if (bits == 128 && (v & kUpper) != 0) form = "0:0:0:1::%x";
    std::snprintf(text, sizeof text, isAddress() ? form : "%u", static_cast<unsigned>(v));
    return text;
  }
  // A mask with the given low four bits, and ones or zeros above them.
  std::string maskOf(unsigned low, bool ones) const {
    char text[64];
    const unsigned byte = low | (ones ? 0xf0U : 0U);
    const char* form = bits == 48   ? ones ? "ff:ff:ff:ff:ff:%02x" : "00:00:00:00:00:%02x"
                       : bits == 32 ? ones ? "255.255.255.%u" : "0.0.0.%u"
                       : ones       ? "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ff%02x"
                                    : "::%x";
    if (isAddress()) {
      std::snprintf(text, sizeof text, form, byte);
    } else {
      const Value rest = (bits < 32 ? (Value{1} << bits) - 1 : ~0U) & ~Value{15};
      std::snprintf(text, sizeof text, "0x%x", static_cast<unsigned>(low | (ones ? rest : 0)));
    }
    return text;
  }
  std::string highest() const {
    return bits == 128   ? "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"
           : bits == 48  ? "ff:ff:ff:ff:ff:ff"
           : isAddress() ? "255.255.255.255"
                         : std::to_string(bits < 32 ? (Value{1} << bits) - 1 : ~0U);
  }
  // A number of up to 128 bits as bytes, with the highest byte first.
  using Bytes = std::array<unsigned char, 16>;
  Bytes bytesOf(Value v) const {
    Bytes bytes = {};
    const bool upper = bits == 128 && (v & kUpper) != 0;
    if (upper) bytes[7] = 1;
    for (unsigned i = 0; i < 8; ++i) {
      bytes[15 - i] = static_cast<unsigned char>((upper ? v ^ kUpper : v) >> 8 * i);
    }
    return bytes;
  }
  Bytes bytesIn(const std::string& text) const {
    Bytes bytes = {};
    if (!isAddress() || bits == 48) return bytesOf(*read(text));
    inet_pton(bits == 32 ? AF_INET : AF_INET6, text.c_str(), &bytes[16 - bits / 8]);
    return bytes;
  }
  // True if the set with this word for the field has the value.
  bool isIn(std::string word, Value v) const {
    const Bytes value = bytesOf(v);
    if (word[0] == '{') word = word.substr(1, word.size() - 2);
    std::istringstream items(word);
    for (std::string item; std::getline(items, item, ',');) {
      const std::size_t slash = item.find('/'), hyphen = item.find('-');
      const Bytes first = bytesIn(item.substr(0, std::min(slash, hyphen)));
      if (slash == item.npos) {
        const Bytes last = hyphen == item.npos ? first : bytesIn(item.substr(hyphen + 1));
        if (first <= value && value <= last) return true;
        continue;
      }
      const std::string text = item.substr(slash + 1);
      Bytes mask = {};
      if (isAddress() && text.find_first_of(".:") == text.npos) {
        for (unsigned bit = 128 - bits, end = bit + std::stoul(text) % 256; bit < end; ++bit) {
          mask[bit / 8] = static_cast<unsigned char>(mask[bit / 8] | 0x80 >> bit % 8);
        }
      } else {
        mask = bytesIn(text);
      }
      bool same = true;
      for (std::size_t i = 0; i < mask.size(); ++i) {
        same = same && ((first[i] ^ value[i]) & mask[i]) == 0;
      }
      if (same) return true;
    }
    return false;
  }
  // Reads the value from the text of a packet.
  std::optional<Value> read(const std::string& text) const {
    if (text == "true" || text == "tagged" || text == "untagged") return text == "untagged" ? 0 : 1;
    if (text == "false" || text == "cpu") return text == "cpu" ? Value{FILTERS_PORT_TYPE_CPU} : 0;
    if (!isAddress()) return std::stoul(text, nullptr, 0);
    unsigned char bytes[16] = {};
    if (bits == 48) {
      std::istringstream in(text);
      for (int i = 0; i < 6; ++i, in.ignore()) {
        unsigned byte = 0;
        in >> std::hex >> byte;
        bytes[i] = static_cast<unsigned char>(byte);
      }
    } else if (inet_pton(bits == 32 ? AF_INET : AF_INET6, text.c_str(), bytes) != 1) {
      std::abort();
    }
    Value halves[2] = {};
    for (unsigned i = 0; i < bits / 8; ++i) halves[i / 8] = halves[i / 8] << 8 | bytes[i];
    if (bits != 128) return halves[0];
    // A half of an address in the text may be larger than all values that the test tries. It is
    // then replaced by a large value that the test tries and that has the same four low bits.
    return std::min<Value>(halves[0], 2) * kUpper +
           std::min(halves[1], kUpper - 16 + halves[1] % 16);
  }

  Field field;
  unsigned bits;
  std::vector<Value> values;
  std::size_t ends;  // this many values, from the first, can stand in sets
};

// The condition of a set on one field.
struct PlainFieldSet {
  bool named = false, lacks = false;
  Reading has;
  bool isIn(std::optional<Value> value) const {
    return !named || (value ? !lacks && has(*value) : lacks);
  }
};

struct PlainSet {
  std::vector<WideField> fields;
  std::vector<PlainFieldSet> asks;
  std::string text;

  // Calls `use` with every packet of the set.
  template <class Use>
  void forEach(Use use, PlainPacket packet = {}) const {
    const std::size_t i = packet.size();
    if (i == fields.size()) return use(packet);
    packet.emplace_back();
    const bool may_lack = !fields[i].field.in_every || asks[i].lacks;
    if (may_lack && asks[i].isIn(std::nullopt)) forEach(use, packet);
    for (const Value value : fields[i].values) {
      packet.back() = value;
      if (asks[i].isIn(value)) forEach(use, packet);
    }
  }

  std::string textOf(const PlainPacket& packet) const {
    std::string packet_text;
    for (std::size_t i = 0; i < packet.size(); ++i) {
      packet_text += fields[i].field.name + '=';
      packet_text += (packet[i] ? fields[i].textOf(*packet[i]) : "none") + ' ';
    }
    return packet_text;
  }

  // True if a set with this text has the packet.
  bool isIn(const std::string& set, const PlainPacket& packet) const {
    const auto told = wordsOf(set);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const auto found = told.find(fields[i].field.name);
      if (found == told.end()) continue;
      const bool is = packet[i] && found->second != "none"
                          ? fields[i].isIn(found->second, *packet[i])
                          : !packet[i] && found->second == "none";
      if (!is) return false;
    }
    return true;
  }
  static std::map<std::string, std::string> wordsOf(const std::string& text) {
    std::map<std::string, std::string> words;
    std::istringstream in(text);
    for (std::string word; in >> word;) {
      const std::size_t sign = word.find('=');
      words[word.substr(0, sign)] = word.substr(sign + 1);
    }
    return words;
  }

  // True if the set has the packet with this text. The text must have every field that the set
  // names.
  bool has(const std::string& packet) const {
    const auto told = wordsOf(packet);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (!asks[i].named) continue;
      const auto found = told.find(fields[i].field.name);
      if (found == told.end()) return false;
      const bool none = found->second == "none";
      if (!asks[i].isIn(none ? std::nullopt : fields[i].read(found->second))) return false;
    }
    return true;
  }
};

template <class Random>
class SetMaker {
 public:
  SetMaker(Random& random, const std::vector<Field>& fields) : random_(random) {
    for (const Field& field : fields) fields_.emplace_back(field);
  }

  PlainSet make() {
    PlainSet set{fields_, {}, ""};
    for (const WideField& field : fields_) {
      PlainFieldSet& asks = set.asks.emplace_back();
      if (random_.below(5) < 2) continue;
      asks.named = true;
      std::string value = "none", name = field.field.name;
      asks.lacks = random_.below(8) == 0;
      if (!asks.lacks && name == "tos" && random_.below(4) == 0) {
        name = "dscp";
        const Value a = random_.below(5), b = a + random_.below(3);
        value = std::to_string(a) + '-' + std::to_string(b);
        asks.has = [=](Value v) { return v % 4 == 0 && a <= v / 4 && v / 4 <= b; };
      } else if (!asks.lacks) {
        asks.has = random_.below(3) == 0 ? list(field, &value) : item(field, true, &value);
      }
      set.text += name + '=' + value + ' ';
    }
    return set;
  }
 private:
  Reading list(const WideField& field, std::string* text) {
    std::vector<Reading> items;
    *text = '{';
    for (unsigned i = 0, count = 1 + random_.below(3); i < count; ++i) {
      std::string one;
      items.push_back(item(field, false, &one));
      *text += (i == 0 ? "" : ",") + one;
    }
    *text += '}';
    return [=](Value v) {
      return std::any_of(items.begin(), items.end(), [v](const Reading& one) { return one(v); });
    };
  }

  Reading item(const WideField& field, bool holes, std::string* text) {
    Value a = field.values[random_.below(field.ends)];
    Value b = field.values[random_.below(field.ends)];
    switch (random_.below(field.isAddress() ? 5 : holes ? 4 : 3)) {
      case 0:
        *text = field.textOf(a);
        return is(a);
      case 1:
        *text = field.textOf(a) + '-' + field.highest();
        return [=](Value v) { return a <= v; };
      case 2:
        if (b < a) std::swap(a, b);
        *text = field.textOf(a) + '-' + field.textOf(b);
        return [=](Value v) { return a <= v && v <= b; };
      case 3:
        if (holes) {
          const unsigned low = random_.below(field.ends <= 2 ? 2 : field.ends == 6 ? 4 : 16);
          const bool ones = field.bits > 1 && random_.below(2) == 0;
          *text = field.textOf(a) + '/' + field.maskOf(low, ones);
          const Value mask = low | (ones ? ~Value{15} : 0);
          return [=](Value v) { return (v & mask) == (a & mask); };
        }
        [[fallthrough]];
      default: {
        const unsigned free = random_.below(5);
        *text = field.textOf(a) + '/' + std::to_string(field.bits - free);
        return [=](Value v) { return v >> free == a >> free; };
      }
    }
  }

  Random& random_;
  std::vector<WideField> fields_;
};

// --- Plain answers about a set -------------------------------------------------------------------

// Each list has an element for each rule, and a last element for packets that no rule takes.
struct PlainAnswer {
  enum class Is : std::uint8_t { kNever, kMaybe, kSurely };
  std::vector<Is> goes, real_goes;  // to the rule; the same for packets that a sender can build
  std::vector<Is> meets, real_meets;
  std::vector<bool> meets_all;
};

// Returns the same set with fewer values for the test to try. If the rules, the set and `others` do
// not distinguish several values, only one of these values stays.
inline PlainSet withFewValues(const Case& c, PlainSet set,
                              const std::vector<std::string>& others = {}) {
  for (std::size_t i = 0; i < set.fields.size(); ++i) {
    std::set<std::vector<bool>> known;
    const auto isKnown = [&](Value value) {
      std::vector<bool> signs = {value == 0, set.asks[i].isIn(value)};
      for (const PlainRule& rule : c.rules) {
        for (const Ask& ask : rule.asks) {
          if (ask.field != i) continue;
          for (const Reading& reading : ask.readings) signs.push_back(reading(value));
        }
      }
      for (const std::string& other : others) {
        const auto words = PlainSet::wordsOf(other);
        const auto word = words.find(set.fields[i].field.name);
        if (word == words.end() || word->second == "none") continue;
        signs.push_back(set.fields[i].isIn(word->second, value));
      }
      return !known.insert(signs).second;
    };
    auto& values = set.fields[i].values;
    values.erase(std::remove_if(values.begin(), values.end(), isKnown), values.end());
  }
  return set;
}

inline PlainAnswer answerOf(const Case& c, const PlainSet& whole, Order order) {
  using Is = PlainAnswer::Is;
  const PlainSet set = withFewValues(c, whole);
  const std::size_t n = c.rules.size();
  const std::vector<Is> none(n + 1, Is::kNever);
  PlainAnswer answer{none, none, none, none, std::vector<bool>(n, true)};
  std::map<Row, std::vector<PlainPacket>> rows;
  set.forEach([&](const PlainPacket& packet) { rows[rowOf(c.rules, packet)].push_back(packet); });
  for (const auto& [row, packets] : rows) {
    const bool real = std::any_of(packets.begin(), packets.end(), [&](const PlainPacket& packet) {
      return faultOfFrame(set.textOf(packet)).empty();
    });
    const auto raise = [real = real](Is is, std::size_t i, std::vector<Is>* all,
                                     std::vector<Is>* real_all) {
      (*all)[i] = std::max((*all)[i], is);
      if (real) (*real_all)[i] = std::max((*real_all)[i], is);
    };
    std::vector<unsigned> firsts(n + 1), alone(n + 1);
    unsigned readings = 0;
    forEachReading(c.rules, row, [&](const Takers& takers) {
      ++readings;
      const Takers first =
          firstOf(takers, [&](const PlainRule& rule) { return rankOf(rule, order); });
      if (first.empty()) ++firsts[n], ++alone[n];
      for (const PlainRule* rule : first) {
        ++firsts[rule->id];
        if (first.size() == 1) ++alone[rule->id];
      }
    });
    for (std::size_t i = 0; i <= n; ++i) {
      if (firsts[i] == 0) continue;
      raise(alone[i] == readings ? Is::kSurely : Is::kMaybe, i, &answer.goes, &answer.real_goes);
    }
    for (std::size_t i = 0; i < n; ++i) {
      if (row[i] != kYes) answer.meets_all[i] = false;
      if (row[i] == kNo) continue;
      raise(row[i] == kYes ? Is::kSurely : Is::kMaybe, i, &answer.meets, &answer.real_meets);
    }
  }
  return answer;
}

// Compares the destinations of packets with the plain answer, in which `at` is the index of a
// destination.
template <class Check>
std::string faultOfFound(const Case& c, const PlainSet& set, const Destinations& said,
                         const std::vector<PlainAnswer::Is>& wanted,
                         const std::vector<PlainAnswer::Is>& real, Check check) {
  using Is = PlainAnswer::Is;
  if (!said.complete) return "it is not complete";
  std::size_t count = 0;
  for (const Is is : wanted) count += is != Is::kNever ? 1 : 0;
  if (said.found.size() != count) return "there are others";
  for (const Destination& one : said.found) {
    const std::size_t at = one.entry ? *one.entry : c.rules.size();
    const std::string packet = one.witness.toText(), name = std::to_string(at) + ": " + packet;
    if (wanted[at] == Is::kNever) return "it is none: " + name;
    if ((wanted[at] == Is::kSurely) != (one.hit == Hit::kHit)) return "it is as sure: " + name;
    if (one.reason.empty() != (one.hit == Hit::kHit)) return "a reason: " + name;
    if (!set.has(packet)) return "the packet is not in the set: " + name;
    if (real[at] == wanted[at] && !faultOfFrame(packet).empty()) {
      return faultOfFrame(packet) + ": " + name;
    }
    const auto again = Packet::parse(packet, nullptr);
    if (!again || again->toText() != packet) return "it does not read back: " + name;
    const std::string fault = check(one, at);
    if (!fault.empty()) return fault + ": " + name;
  }
  return {};
}

// Each packet of the set must be in a list if and only if the rule takes the packet.
inline std::string faultOfRemains(const Case& c, const PlainSet& plain, const PacketSet& set,
                                  const PlainRule& rule, const Destinations& found, Order order) {
  const auto remaining = remains(c.group, rule.id, set, order);
  if (!remaining || !remaining->complete) return "nothing remains";
  const auto one = std::find_if(found.found.begin(), found.found.end(),
                                [&](const Destination& d) { return d.entry == rule.id; });
  const Hit wanted = one == found.found.end() ? Hit::kMiss : one->hit;
  if (remaining->hit != wanted) return "another hit remains";
  if (wanted == Hit::kMiss) {
    return remaining->surely.empty() && remaining->possibly.empty() ? "" : "something remains";
  }
  const Trace traced = trace(c.group, remaining->witness, order);
  const auto& ids = traced.candidates;
  const bool may = std::find(ids.begin(), ids.end(), rule.id) != ids.end();
  if (!plain.has(remaining->witness.toText())) return "another packet remains";
  if (wanted == Hit::kHit ? traced.entry != rule.id : !may) return "trace() does not agree";
  if (wanted != Hit::kHit && !remaining->surely.empty()) return "nothing surely remains";
  std::vector<std::string> texts;
  for (const auto* list : {&remaining->possibly, &remaining->surely}) {
    for (const PacketSet& its : *list) {
      const auto again = PacketSet::parse(its.toText(), nullptr);
      if (!again || again->toText() != its.toText()) return "does not read back: " + its.toText();
      texts.push_back(its.toText());
    }
  }
  std::string fault;
  withFewValues(c, plain, texts).forEach([&](const PlainPacket& packet) {
    bool takes_it = false, must = true;
    forEachReading(c.rules, rowOf(c.rules, packet), [&](const Takers& takers) {
      const Takers first = firstOf(takers, [&](const PlainRule& r) { return rankOf(r, order); });
      const bool is = std::find(first.begin(), first.end(), &rule) != first.end();
      takes_it = takes_it || is;
      must = must && is && first.size() == 1;
    });
    const auto isIn = [&](const std::vector<PacketSet>& sets) {
      return std::any_of(sets.begin(), sets.end(), [&](const PacketSet& one_set) {
        return plain.isIn(one_set.toText(), packet);
      });
    };
    const bool wrong = (!remaining->possibly.empty() && isIn(remaining->possibly) != takes_it) ||
                       (!remaining->surely.empty() && isIn(remaining->surely) != must);
    if (wrong) fault = "it is left, or it is not: " + remaining->witness.toText();
  });
  return fault;
}

inline std::string faultOfSearch(const Case& c, const PlainSet& plain, Order order) {
  std::ostringstream all;
  all << '\n' << plain.text << '\n' << nameOf(order) << '\n' << c.group;
  Report report;
  const auto set = PacketSet::parse(plain.text, &report);
  if (!set) {
    all << report;
    return "it cannot be read" + all.str();
  }
  const auto again = PacketSet::parse(set->toText(), nullptr);
  if (!again || again->toText() != set->toText()) return "it does not read back" + all.str();
  const PlainAnswer answer = answerOf(c, plain, order);
  const Destinations found = search(c.group, *set, order);
  std::string fault = faultOfFound(
      c, plain, found, answer.goes, answer.real_goes, [&](const Destination& one, std::size_t) {
        const Trace traced = trace(c.group, one.witness, order);
        const auto& ids = traced.candidates;
        const bool may = one.entry ? std::find(ids.begin(), ids.end(), *one.entry) != ids.end()
                                   : traced.may_be_none;
        const bool is =
            traced.outcome == (one.entry ? Hit::kHit : Hit::kMiss) && traced.entry == one.entry;
        if (one.hit == Hit::kHit ? !is : !may) return std::string("trace() does not agree");
        return std::string(one.all == (found.found.size() == 1) ? "" : "it is not all");
      });
  if (!fault.empty()) return fault + all.str();
  fault = faultOfFound(c, plain, touching(c.group, *set, order), answer.meets, answer.real_meets,
                       [&](const Destination& one, std::size_t at) {
                         const Hit hit = hitOf(trace(c.group, one.witness, order), *one.entry);
                         if (hit != one.hit) return std::string("trace() does not agree");
                         return std::string(one.all == answer.meets_all[at] ? "" : "all differs");
                       });
  if (!fault.empty()) return "touching: " + fault + all.str();
  if (c.rules.empty() || plain.text.size() % 8 != 0) return {};
  const PlainRule& rule = c.rules[plain.text.size() / 8 % c.rules.size()];
  fault = faultOfRemains(c, plain, *set, rule, found, order);
  return fault.empty() ? fault : std::to_string(rule.id) + ": " + fault + all.str();
}

}  // namespace tiny

#endif  // FILTER_COMMON_TESTS_INSPECT_TINY_SETS_H_
