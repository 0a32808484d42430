// Tests the findings about changed rules. For tiny groups it tries every packet.

#include <filter_inspect/filter_diff.h>
#include <filter_inspect/filter_text.h>
#include <gtest/gtest.h>

#include "../../cases.h"
#include "tiny_sets.h"

using namespace tiny;

namespace {

struct Random {
  unsigned below(std::size_t limit) { return static_cast<unsigned>(engine() % limit); }
  std::mt19937 engine{1};
};

// The rules of `a`, but some are removed or changed, and new rules are added.
Case changed(const Case& a, Maker<Random>* maker, Random* random) {
  Case b;
  b.fields = a.fields;
  EXPECT_EQ(b.group.setType(a.group.getType()), FILTERS_OK);
  for (filtersEntryId_t id = 0; id < a.rules.size() + 1; ++id) {
    const unsigned what = random->below(6);
    if (what == 0) continue;
    const PlainRule* rule = a.find(id);
    if (what == 1 || rule == nullptr) {
      maker->add(&b, id);
    } else {
      b.rules.push_back(*rule);
      EXPECT_EQ(b.group.insertEntry(a.group.getEntriesRef().at(id)), FILTERS_OK);
    }
  }
  return b;
}

// How two groups treat the packets for which `has` is true.
struct Differences {
  bool some = false;    // some packet is treated differently in some reading
  bool surely = false;  // some packet is surely treated differently
};

template <class Has>
Differences differencesOf(const Case& a, const Case& b, const PlainSet& all, Order order,
                          const Has& has) {
  std::vector<PlainRule> rules = a.rules;
  rules.insert(rules.end(), b.rules.begin(), b.rules.end());
  std::map<Row, bool> rows;
  all.forEach([&](const PlainPacket& packet) {
    if (has(packet)) rows[rowOf(rules, packet)] = true;
  });
  Differences found;
  for (const auto& [row, ignored] : rows) {
    bool always = true;
    forEachReading(rules, row, [&](const Takers& takers) {
      std::uint32_t bits[2] = {};
      for (const bool second : {false, true}) {
        Takers its;
        for (const PlainRule* rule : takers) {
          if ((rule >= rules.data() + a.rules.size()) == second) its.push_back(rule);
        }
        bits[second] =
            treatmentsOf(firstOf(its, [&](const PlainRule& rule) { return rankOf(rule, order); }));
      }
      found.some = found.some || bits[0] != bits[1];
      always = always && (bits[0] & bits[1]) == 0;
    });
    found.surely = found.surely || always;
  }
  return found;
}

bool isOpen(const Case& c) {
  return std::any_of(c.rules.begin(), c.rules.end(), [](const PlainRule& rule) {
    return std::any_of(rule.asks.begin(), rule.asks.end(),
                       [](const Ask& ask) { return ask.readings.size() > 1; });
  });
}

std::string faultOfFinding(const Case& a, const Case& b, const PlainSet& set, const Finding& one,
                           Order order) {
  const FiltersEntry* rules[2] = {};
  for (const Case* c : {&a, &b}) {
    const auto& entries = c->group.getEntriesRef();
    const auto found = entries.find(*one.entry);
    if (found != entries.end()) rules[c == &b] = &found->second;
  }
  if (rules[0] != nullptr && rules[1] != nullptr && *rules[0] == *rules[1]) return "not changed";
  if (one.code == Code::kNoDifference) return {};
  const auto packet = Packet::parse(one.witness, nullptr);
  if (!packet || !set.has(one.witness)) return "the packet is not in the set";
  return surelyDiffers(a, b, *packet, order) ? "" : "the packet shows nothing";
}

TEST(ChangesTest, SayWhatEveryPacketOfTinyGroupsSays) {
  Random random;
  for (RandomCases i(2500); i.more(); ++i) {
    Maker<Random> maker(random);
    const Case a = maker.make(random.below(5));
    const Case b = changed(a, &maker, &random);
    const PlainSet set = SetMaker<Random>(random, a.fields).make();
    PlainSet all = set;
    for (PlainFieldSet& asks : all.asks) asks.named = false;  // packets without it stay
    const Order order = kAllOrders[random.below(kAllOrders.size())];
    AnalysisOptions options;
    options.order = order;
    const auto packets = PacketSet::parse(set.text, nullptr);
    ASSERT_TRUE(packets) << set.text;
    const Report report = explainChanges(a.group, b.group, options, &*packets);
    std::ostringstream text;
    text << i.done() << ' ' << nameOf(order) << ' ' << set.text << '\n'
         << report << a.group << b.group;
    bool differs = false, open = false;
    for (const Finding& one : report.findings) {
      differs = differs || one.code == Code::kTreatmentDiffers;
      open = open || one.code == Code::kNotDecided;
      if (one.code == Code::kNotDecided) continue;
      ASSERT_EQ(faultOfFinding(a, b, set, one, order), "") << text.str();
    }
    const auto isIn = [&](const PlainPacket& packet) {
      for (std::size_t f = 0; f < packet.size(); ++f) {
        if (!set.asks[f].isIn(packet[f])) return false;
      }
      return true;
    };
    const Differences in = differencesOf(a, b, set, order, isIn);
    ASSERT_LE(differs, in.surely) << text.str();
    ASSERT_LE(in.some, differs || open) << text.str();

    const std::optional<bool> others = changesOthers(a.group, b.group, *packets, options);
    const Differences out =
        differencesOf(a, b, all, order, [&](const PlainPacket& packet) { return !isIn(packet); });
    ASSERT_TRUE(others != true || out.surely) << text.str();
    ASSERT_TRUE(others != false || !out.some) << text.str();
    // Everything is decided if no match has several readings, no entries tie, and no set has a mask
    // with holes beside ranges.
    const bool may_be_open = isOpen(a) || isOpen(b) || set.text.find("/0x") != std::string::npos ||
                             nameOf(order).find("-id") == std::string_view::npos;
    ASSERT_TRUE(may_be_open || (others && !open)) << text.str();
  }
}

TEST(ChangesTest, OneSentenceForEachChangedRule) {
  constexpr char kBefore[] =
      "filter-groups 1\n"
      "group 1 priority=10 stage=ingress type=3\n"
      "entry 10 priority=90 if src_ipv4=10.1.0.0/16 then permit\n"
      "entry 20 priority=80 if src_ipv4=10.2.0.0/16 then permit\n"
      "entry 30 priority=70 if src_ipv4=10.3.0.0/16 then deny\n"
      "entry 40 priority=60 if ip_protocol=17 then deny\n"
      "entry 50 priority=50 if ip_protocol=6 then permit\n";
  const struct {
    const char *from, *to, *wanted;
  } rows[] = {
      {"10.1.0.0/16 then permit", "10.1.0.0/16 then deny",
       "entry 10: permit became deny: packets like this one are now dropped"},
      {"entry 30 priority=70 if src_ipv4=10.3.0.0/16 then deny\n", "",
       "entry 30: gone: its packets go to entry 50; packets like this one are now permitted\n"
       "entry 30: gone: no entry takes packets like this one any more"},
      {"entry 40", "entry 15 priority=99 if ip_protocol=6 then deny\nentry 40",
       "entry 15: new: it takes packets of entries 10, 20 and 50; packets like this one are now "
       "dropped"},
      {"entry 30 priority=70", "entry 30 priority=55",
       "entry 30: priority=70 became priority=55: no packet is treated differently"},
      {"src_ipv4=10.3.0.0/16", "src_ipv4=10.4.0.0/16",
       "entry 30: other matches: its packets go to entry 50; packets like this one are now "
       "permitted\n"
       "entry 30: other matches: no entry takes packets like this one any more\n"
       "entry 30: other matches: it takes packets of entry 50; packets like this one are now "
       "dropped\n"
       "entry 30: other matches: it takes packets that no entry took; packets like this one are "
       "now dropped"},
      // Two rules have changed: the one that took some packets before, and the one that takes them
      // now. The finding is about the first of them only if it no longer matches the packets.
      {"entry 10 priority=90",
       "entry 15 priority=99 if ip_protocol=6 then deny\nentry 10 priority=85",
       "entry 15: new: it takes packets of entries 10, 20 and 50; packets like this one are now "
       "dropped"},
      {"entry 10 priority=90 if src_ipv4=10.1.0.0/16",
       "entry 15 priority=99 if ip_protocol=6 then deny\nentry 10 priority=90 if "
       "src_ipv4=10.9.0.0/16",
       "entry 10: other matches: its packets go to entries 15 and 40; packets like this one are "
       "now "
       "dropped\n"
       "entry 10: other matches: no entry takes packets like this one any more\n"
       "entry 15: new: it takes packets of entries 20 and 50; packets like this one are now "
       "dropped\n"
       "entry 10: other matches: it takes packets of entry 40; packets like this one are now "
       "permitted\n"
       "entry 10: other matches: it takes packets that no entry took; packets like this one are "
       "now permitted"},
      {"then deny\nentry 50", "then deny count 1=packets\nentry 50", ""},
  };
  const auto groupOf = [](const std::string& text) { return groupsFromText(text).groups.at(0); };
  AnalysisOptions options;
  options.order = Order::kHighestPriority;
  for (const auto& row : rows) {
    std::string after = kBefore;
    after.replace(after.find(row.from), std::string(row.from).size(), row.to);
    std::string said;
    const Report report = explainChanges(groupOf(kBefore), groupOf(after), options);
    for (const Finding& one : report.findings) {
      said +=
          (said.empty() ? "entry " : "\nentry ") + std::to_string(*one.entry) + ": " + one.message;
    }
    EXPECT_EQ(said, row.wanted) << after;
  }
}

TEST(ChangesTest, RulesThatHaveNotChangedShareWhatIsOpen) {
  // Entries 10 and 11 tie, so packets that both match are not decided.
  constexpr char kBefore[] =
      "filter-groups 1\n"
      "group 1 priority=10 stage=ingress type=3\n"
      "entry 10 priority=90 if src_ipv4=10.0.0.0/8 then permit\n"
      "entry 11 priority=90 if ip_protocol=6 then deny\n"
      "entry 12 priority=90 if ttl=1 then copy_to_cpu\n";
  const FiltersGroup before = groupsFromText(kBefore).groups.at(0);
  FiltersGroup after = before;
  FiltersEntry rule(20);
  rule.setPriority(95);
  set(&rule, MatchTTL(1));
  ASSERT_EQ(after.insertEntry(rule), FILTERS_OK);
  AnalysisOptions options;
  options.order = Order::kHighestPriority;
  std::string said;
  for (const Finding& one : explainChanges(before, after, options).findings) {
    if (one.code != Code::kNotDecided) continue;
    said += (one.entry ? std::to_string(*one.entry) : "-") + ": " + one.message + '\n';
  }
  EXPECT_EQ(
      said,
      "-: whether packets of entries 10 and 11, which have not changed, are treated differently "
      "is not decided\n");
}

}  // namespace
