// The questions: what is refused, how groups differ, what rules do to packets.

#include <filter_inspect/filter_diff.h>
#include <filter_inspect/filter_explain.h>
#include <filter_inspect/filter_policy.h>
#include <filter_inspect/filter_questions.h>

#include <optional>
#include <vector>

#include "binding.h"

namespace FilterInspectPython {
namespace {

// Reads a packet, a set of packets, actions or a policy, or raises the exception with the report.
template <class Parsed>
Parsed parse(const std::string& text) {
  Report report;
  std::optional<Parsed> parsed = Parsed::parse(text, &report);
  if (!parsed) refuse(std::move(report));
  return std::move(*parsed);
}

AnalysisOptions optionsOf(Named<Order> order, MaxFindings max_findings, MaxSteps max_steps) {
  AnalysisOptions how;
  how.order = order;
  how.max_findings = max_findings;
  how.max_steps = max_steps;
  return how;
}

Report analyseGroup(const Group& group, Named<Order> order, bool redundant, bool overlaps,
                    MaxFindings max_findings, MaxSteps max_steps, const Progress& progress) {
  AnalysisOptions how = optionsOf(order, max_findings, max_steps);
  how.redundant = redundant;
  how.overlaps = overlaps;
  const Snapshot its = group.snapshot();
  return ask(how, progress, [&](const AnalysisOptions& all) { return analyse(*its, all); });
}

Report compareGroups(const Group& a, const Group& b, Named<Order> order, MaxFindings max_findings,
                     MaxSteps max_steps, const Progress& progress) {
  const AnalysisOptions how = optionsOf(order, max_findings, max_steps);
  const Snapshot old = a.snapshot(), its = b.snapshot();
  return ask(how, progress,
             [&](const AnalysisOptions& all) { return compareTreatment(*old, *its, all); });
}

Report explainGroups(const Group& a, const Group& b, Named<Order> order,
                     const std::optional<Text<kPackets>>& packets, MaxFindings max_findings,
                     MaxSteps max_steps, const Progress& progress) {
  const AnalysisOptions how = optionsOf(order, max_findings, max_steps);
  const auto set = packets ? std::optional(parse<PacketSet>(*packets)) : std::nullopt;
  const Snapshot old = a.snapshot(), its = b.snapshot();
  return ask(how, progress, [&](const AnalysisOptions& all) {
    return explainChanges(*old, *its, all, set ? &*set : nullptr);
  });
}

Report searchGroup(const Group& group, const Text<kPackets>& packets, Named<Order> order,
                   const std::optional<Text<kThen>>& then, bool touches,
                   const std::optional<Whole<filtersEntryId_t, kEntry>>& entry,
                   MaxFindings max_findings, MaxSteps max_steps, const Progress& progress) {
  const AnalysisOptions how = optionsOf(order, max_findings, max_steps);
  const auto set = parse<PacketSet>(packets);
  const auto test = then ? std::optional(parse<ActionTest>(*then)) : std::nullopt;
  if (entry && (then || touches)) {
    throw py::value_error("entry stands without touching and then");
  }
  const Snapshot its = group.snapshot();
  if (entry && its->getEntriesRef().count(*entry) == 0) {
    refuseKey(py::int_(entry->its));
  }
  return ask(how, progress, [&](const AnalysisOptions& all) {
    if (entry) return remainsReport(*its, *entry, *remains(*its, *entry, set, all.order, all));
    const auto where = touches ? touching : search;
    const Destinations found = where(*its, set, all.order, all, test ? &*test : nullptr);
    return touches ? touchingReport(*its, found) : searchReport(*its, found);
  });
}

Report checkGroup(const Group& group, const Policy& policy, MaxSteps max_steps,
                  const Progress& progress) {
  AnalysisOptions how;
  how.max_steps = max_steps;
  const Snapshot its = group.snapshot();
  return ask(how, progress,
             [&](const AnalysisOptions& all) { return checkPolicy(*its, policy, all); });
}

// A plan, together with the group to which it leads.
struct Route {
  Snapshot to;
  Plan plan;

  std::vector<std::string> lines() const {
    std::vector<std::string> all;
    for (const Step& step : plan.steps) all.push_back(toText(step, *to));
    return all;
  }
};

Route routeOf(const Group& from, const Group& to, bool remove_first) {
  const PlanOrder order = remove_first ? PlanOrder::kRemoveFirst : PlanOrder::kAddFirst;
  const Snapshot old = from.snapshot();
  Route route{to.snapshot(), {}};
  route.plan = unlocked([&] { return plan(*old, *route.to, order); });
  if (!route.plan.possible) refuse(std::move(route.plan.report));
  return route;
}

// Why a group refuses a step.
Report explainStep(const Step& step, const FiltersGroup& to, const FiltersGroup& group) {
  switch (step.kind) {
    case Step::Kind::kInsert:
      return explainInsert(group, to.getEntriesRef().at(step.entry));
    case Step::Kind::kSetStage:
      return explainStage(group, static_cast<filtersGroupStage_t>(step.value));
    case Step::Kind::kSetType:
      return explainType(group, static_cast<filtersGroupType_t>(step.value));
    default:
      return {};
  }
}

// Applies all steps, or no step if the group refuses one of them.
void applyRoute(const Route& route, Group& group) {
  FiltersGroup changed(*group);
  for (const Step& step : route.plan.steps) {
    const filtersErr_t result = apply({step}, *route.to, &changed);
    if (result == FILTERS_OK) continue;
    Report report = explainStep(step, *route.to, changed);
    const std::string why = report.empty() ? std::string(describe(result)) : linesOf(report);
    refuse("the group refuses the step '" + toText(step, *route.to) + "'\n" + why,
           std::move(report));
  }
  group = Group(std::move(changed));
}

void addTrace(py::module_* module) {
  addClass<Traced>(module, "Traced",
                   R"(What one entry does with a traced packet; str() gives its line.

>>> import filter_inspect as fi
>>> group = fi.Group(1, stage="ingress", type=3)
>>> group.insert(fi.Entry(10, match="ttl=1"))
>>> group.insert(fi.Entry(20, match="ip_protocol=tcp"))
>>> for one in fi.trace(group, "ttl=2", "ascending-id").entries:
...     print(one.entry, one.hit.value, one.lacking)
10 miss []
20 undecided ['ip_protocol']
)")
      .def_readonly("entry", &Traced::entry, "The id of the entry.")
      .def_property_readonly(
          "hit", [](const Traced& one) { return member("Hit", nameOf(one.hit)); },
          "Whether the entry takes the packet.")
      .def_readonly("lacking", &Traced::lacking, "The unknown fields on which that depends.")
      .def_readonly("reason", &Traced::reason, "Why, as a sentence.")
      .def("__repr__", [](const Traced& one) { return "<Traced " + toText(one) + '>'; })
      .def("__str__", [](const Traced& one) { return toText(one); });
  addClass<Trace>(module, "Trace", R"(Which entry takes a packet; str() gives the lines of the tool.

>>> import filter_inspect as fi
>>> rules = [fi.Entry(10, match="ttl=1", then="deny"), fi.Entry(20, then="permit")]
>>> group = fi.Group(1, stage="ingress", type=3, entries=rules)
>>> answer = fi.trace(group, "ip_protocol=tcp", "ascending-id")
>>> answer.outcome.value, answer.entry, answer.candidates, answer.treatments
('undecided', None, [10, 20], ['deny', 'permit'])
)")
      .def_property_readonly(
          "outcome", [](const Trace& one) { return member("Hit", nameOf(one.outcome)); },
          "HIT if an entry surely takes it, MISS if surely none does, else UNDECIDED.")
      .def_readonly("entry", &Trace::entry, "The id of the entry that takes it, or None.")
      .def_readonly("entries", &Trace::entries, py::return_value_policy::copy,
                    "What each entry does with it, in order.")
      .def_readonly("candidates", &Trace::candidates, "The ids of entries that may take it.")
      .def_readonly("may_be_none", &Trace::may_be_none, "True if perhaps no entry takes it.")
      .def_readonly("at_most", &Trace::at_most,
                    "True if some candidates may be impossible together with the packet.")
      .def_readonly("treatment", &Trace::treatment, "What is done with it; empty if undecided.")
      .def_readonly("treatments", &Trace::treatments, "What may be done with it.")
      .def("__repr__",
           [](const Trace& one) {
             return "<Trace " + std::string(nameOf(one.outcome)) +
                    (one.entry ? " entry " + std::to_string(*one.entry) : std::string()) + '>';
           })
      .def("__str__", &linesOf<Trace>);
  module->def(
      "trace",
      [](const Group& group, const Text<kPacket>& packet, Named<Order> order) {
        const auto its = parse<Packet>(packet);
        const Snapshot snapshot = group.snapshot();
        return unlocked([&] { return trace(*snapshot, its, order); });
      },
      py::arg("group"), py::arg("packet"), py::arg("order"),
      R"(Says which entry takes a packet.

>>> import filter_inspect as fi
>>> group = fi.Group(1, stage="ingress", type=3, entries=[fi.Entry(10, match="ttl=1", then="deny")])
>>> answer = fi.trace(group, "ttl=1", "ascending-id")
>>> answer.outcome.value, answer.entry, answer.treatment
('hit', 10, 'deny')
)");
}

void addPlan(py::module_* module) {
  addClass<Route>(module, "Plan",
                  R"(The steps from one group to another; str() gives a line for each.

>>> import filter_inspect as fi
>>> print(fi.plan(fi.Group(1), fi.Group(1, priority=7)))
set-priority 7
)")
      .def_property_readonly("steps", &Route::lines, "A line for each step.")
      .def_property_readonly(
          "fewest", [](const Route& route) { return route.plan.fewest; },
          "True if surely no plan has fewer steps.")
      .def("__str__",
           [](const Route& route) {
             std::string text;
             for (const std::string& line : route.lines()) (text += line) += '\n';
             if (!text.empty()) text.pop_back();
             return text;
           })
      .def("__len__", [](const Route& route) { return route.plan.steps.size(); })
      .def("__repr__", [](const Route& route) {
        return "<Plan, steps: " + std::to_string(route.plan.steps.size()) + '>';
      });
  module->def("plan", &routeOf, py::arg("old"), py::arg("new"), py::kw_only(),
              py::arg("remove_first").noconvert() = false,
              R"(Finds the fewest steps from one group to another.

With `remove_first` the group never has more entries than the larger of the two.

>>> import filter_inspect as fi
>>> old, new = fi.Group(1), fi.Group(1, entries=[fi.Entry(10)])
>>> steps = fi.plan(old, new)
>>> steps.steps
['insert entry 10 priority=0']
>>> fi.apply(steps, old)
>>> old == new
True
)");
  module->def("apply", &applyRoute, py::arg("plan"), py::arg("group"),
              R"(Takes the steps of a plan on a group: all of them, or none.

>>> import filter_inspect as fi
>>> group = fi.Group(1)
>>> fi.apply(fi.plan(group, fi.Group(1, priority=7)), group)
>>> group.priority
7
)");
}

}  // namespace

void addQuestions(py::module_* module) {
  const AnalysisOptions limits;
  module->def(
      "explain_insert",
      [](const Group& group, const FiltersEntry& entry) { return explainInsert(*group, entry); },
      py::arg("group"), py::arg("entry"), R"(Says why the group would refuse an entry.

>>> import filter_inspect as fi
>>> [one.code.value for one in fi.explain_insert(fi.Group(1), fi.Entry(1, match="vrf_id=1"))]
['match-not-admitted']
)");
  module->def(
      "diff",
      [](const Group& a, const Group& b) {
        const Snapshot old = a.snapshot(), its = b.snapshot();
        return unlocked([&] { return diff(*old, *its); });
      },
      py::arg("old"), py::arg("new"), R"(Reports each difference between two groups.

>>> import filter_inspect as fi
>>> [one.code.value for one in fi.diff(fi.Group(1), fi.Group(1, priority=3, entries=[fi.Entry(4)]))]
['head-changed', 'entry-added']
)");
  addPlan(module);
  module->def("analyse", &analyseGroup, py::arg("group"), py::arg("order") = "unspecified",
              py::kw_only(), py::arg("redundant").noconvert() = limits.redundant,
              py::arg("overlaps").noconvert() = limits.overlaps,
              py::arg("max_findings") = limits.max_findings,
              py::arg("max_steps") = limits.max_steps, py::arg("progress") = py::none(),
              R"(Reports what the rules of a group do to each other.

`redundant` also looks for rules that change nothing, which takes most of the time. `overlaps`
reports each pair of rules that overlap and are treated differently. A rule that takes more than
`max_steps` steps is not decided.

>>> import filter_inspect as fi
>>> group = fi.Group(1, entries=[fi.Entry(10, then="deny"), fi.Entry(20, then="permit")])
>>> [(one.entry, one.code.value) for one in fi.analyse(group, "ascending-id")]
[(20, 'entry-unreachable')]
)");
  module->def("compare_treatment", &compareGroups, py::arg("old"), py::arg("new"), py::arg("order"),
              py::kw_only(), py::arg("max_findings") = limits.max_findings,
              py::arg("max_steps") = limits.max_steps, py::arg("progress") = py::none(),
              R"(Reports packets that two groups treat differently, for each pair of rules.

>>> import filter_inspect as fi
>>> old = fi.Group(1, entries=[fi.Entry(10, then="permit")])
>>> new = fi.Group(1, entries=[fi.Entry(10, then="deny")])
>>> [(one.before, one.after) for one in fi.compare_treatment(old, new, "ascending-id")]
[('permit', 'deny')]
)");
  module->def("explain_changes", &explainGroups, py::arg("old"), py::arg("new"), py::arg("order"),
              py::kw_only(), py::arg("packets") = py::none(),
              py::arg("max_findings") = limits.max_findings,
              py::arg("max_steps") = limits.max_steps, py::arg("progress") = py::none(),
              R"(Reports what each changed rule does to packets.

`packets` limits the report to a set of packets, such as "ip_protocol=tcp dst_l4_port=22".

>>> import filter_inspect as fi
>>> old = fi.Group(1, entries=[fi.Entry(10, then="permit")])
>>> new = fi.Group(1, entries=[fi.Entry(10, then="deny")])
>>> fi.explain_changes(old, new, "ascending-id")[0].message
'permit became deny: packets like this one are now dropped'
)");
  module->def("search", &searchGroup, py::arg("group"), py::arg("packets"), py::arg("order"),
              py::kw_only(), py::arg("then") = py::none(), py::arg("touching").noconvert() = false,
              py::arg("entry") = py::none(), py::arg("max_findings") = limits.max_findings,
              py::arg("max_steps") = limits.max_steps, py::arg("progress") = py::none(),
              R"(Reports where the packets of a set go.

`then` keeps the entries whose actions have these words, such as "permit set_pcp".

With `touching` it reports the entries that match some of them, and with an `entry` what earlier
rules leave for it.

>>> import filter_inspect as fi
>>> group = fi.Group(1, entries=[fi.Entry(10, then="deny")])
>>> [(one.entry, one.treatment) for one in fi.search(group, "ttl=1", "ascending-id")]
[(10, 'deny')]
)");
  addClass<Policy>(module, "Policy", R"(What rules promise to do with packets; see check_policy().

>>> import filter_inspect as fi
>>> policy = fi.Policy("filter-policy 1\ngroup 1 order=ascending-id\nnever permit\n")
>>> policy.groups, policy.promises(1)
([1], 1)
)")
      .def(py::init([](const Text<kText>& text) { return parse<Policy>(text); }), py::arg("text"))
      .def_property_readonly(
          "groups",
          [](const Policy& policy) {
            std::vector<filtersGroupId_t> ids;
            for (const PolicyGroup& group : policy.groups()) ids.push_back(group.group);
            return ids;
          },
          "The ids of the groups of which it says something.")
      .def("__repr__",
           [](const Policy& policy) {
             return "<Policy, groups: " + std::to_string(policy.groups().size()) + '>';
           })
      .def(
          "promises",
          [](const Policy& policy, Whole<filtersGroupId_t, kGroup> group) {
            const PolicyGroup* its = policy.find(group);
            return its == nullptr ? 0 : its->promises.size();
          },
          py::arg("group"), R"(How many promises it has for a group.

>>> import filter_inspect as fi
>>> fi.Policy("filter-policy 1\ngroup 1 order=ascending-id\nnever permit\n").promises(2)
0
)");
  module->def("check_policy", &checkGroup, py::arg("group"), py::arg("policy"), py::kw_only(),
              py::arg("max_steps") = limits.max_steps, py::arg("progress") = py::none(),
              R"(Reports the verdict about each promise that a policy has for the group.

>>> import filter_inspect as fi
>>> policy = fi.Policy("filter-policy 1\ngroup 1 order=ascending-id\nnever permit\n")
>>> group = fi.Group(1, entries=[fi.Entry(10, then="deny")])
>>> fi.check_policy(group, policy)[0].code.name
'POLICY_HOLDS'
)");
  addTrace(module);
}

}  // namespace FilterInspectPython
