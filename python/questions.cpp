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

AnalysisOptions optionsOf(const py::object& order, Whole<std::size_t> max_findings,
                          Whole<std::uint64_t> max_steps) {
  AnalysisOptions how;
  how.order = orderOf(order);
  how.max_findings = max_findings;
  how.max_steps = max_steps;
  return how;
}

Report analyseGroup(const Group& group, const py::object& order, bool redundant, bool overlaps,
                    Whole<std::size_t> max_findings, Whole<std::uint64_t> max_steps,
                    const py::object& progress) {
  AnalysisOptions how = optionsOf(order, max_findings, max_steps);
  how.redundant = redundant;
  how.overlaps = overlaps;
  const Snapshot its = group.snapshot();
  return ask(how, progress, [&](const AnalysisOptions& all) { return analyse(*its, all); });
}

Report compareGroups(const Group& a, const Group& b, const py::object& order,
                     Whole<std::size_t> max_findings, Whole<std::uint64_t> max_steps,
                     const py::object& progress) {
  const AnalysisOptions how = optionsOf(order, max_findings, max_steps);
  const Snapshot old = a.snapshot(), its = b.snapshot();
  return ask(how, progress,
             [&](const AnalysisOptions& all) { return compareTreatment(*old, *its, all); });
}

Report explainGroups(const Group& a, const Group& b, const py::object& order,
                     const std::optional<Text>& packets, Whole<std::size_t> max_findings,
                     Whole<std::uint64_t> max_steps, const py::object& progress) {
  const AnalysisOptions how = optionsOf(order, max_findings, max_steps);
  const auto set = packets ? std::optional(parse<PacketSet>(*packets)) : std::nullopt;
  const Snapshot old = a.snapshot(), its = b.snapshot();
  return ask(how, progress, [&](const AnalysisOptions& all) {
    return explainChanges(*old, *its, all, set ? &*set : nullptr);
  });
}

Report searchGroup(const Group& group, const Text& packets, const py::object& order,
                   const std::optional<Text>& then, bool touches,
                   const std::optional<Whole<filtersEntryId_t>>& entry,
                   Whole<std::size_t> max_findings, Whole<std::uint64_t> max_steps,
                   const py::object& progress) {
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

Report checkGroup(const Group& group, const Policy& policy, Whole<std::uint64_t> max_steps,
                  const py::object& progress) {
  AnalysisOptions how;
  how.max_steps = max_steps;
  const Snapshot its = group.snapshot();
  return ask(how, progress,
             [&](const AnalysisOptions& all) { return checkPolicy(*its, policy, all); });
}

// A plan keeps the group that it leads to.
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

// Takes all steps or none.
void applyRoute(const Route& route, Group& group) {
  FiltersGroup changed(*group);
  const filtersErr_t result = apply(route.plan.steps, *route.to, &changed);
  if (result != FILTERS_OK) refuse(result, {});
  group = Group(std::move(changed));
}

void addTrace(py::module_* module) {
  addClass<Traced>(module, "Traced", "What one entry does with a traced packet.")
      .def_readonly("entry", &Traced::entry)
      .def_property_readonly("hit",
                             [](const Traced& one) { return member("Hit", nameOf(one.hit)); })
      .def_readonly("lacking", &Traced::lacking)
      .def_readonly("reason", &Traced::reason)
      .def("__str__", [](const Traced& one) { return toText(one); });
  addClass<Trace>(module, "Trace", "Which entry takes a packet; str() gives the lines.")
      .def_property_readonly("outcome",
                             [](const Trace& one) { return member("Hit", nameOf(one.outcome)); })
      .def_readonly("entry", &Trace::entry)
      .def_readonly("entries", &Trace::entries, py::return_value_policy::copy)
      .def_readonly("candidates", &Trace::candidates)
      .def_readonly("may_be_none", &Trace::may_be_none)
      .def_readonly("at_most", &Trace::at_most)
      .def_readonly("treatment", &Trace::treatment)
      .def_readonly("treatments", &Trace::treatments)
      .def("__repr__",
           [](const Trace& one) {
             return "<Trace " + std::string(nameOf(one.outcome)) +
                    (one.entry ? " entry " + std::to_string(*one.entry) : std::string()) + '>';
           })
      .def("__str__", &linesOf<Trace>);
  module->def(
      "trace",
      [](const Group& group, const Text& packet, const py::object& order) {
        const auto its = parse<Packet>(packet);
        const Order how = orderOf(order);
        const Snapshot snapshot = group.snapshot();
        return unlocked([&] { return trace(*snapshot, its, how); });
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
  addClass<Route>(module, "Plan", "The steps from one group to another; see plan().")
      .def_property_readonly("steps", &Route::lines)
      .def_property_readonly("fewest", [](const Route& route) { return route.plan.fewest; })
      .def("__len__", [](const Route& route) { return route.plan.steps.size(); })
      .def("__repr__", [](const Route& route) {
        return "<Plan, steps: " + std::to_string(route.plan.steps.size()) + '>';
      });
  module->def("plan", &routeOf, py::arg("old"), py::arg("new"), py::kw_only(),
              py::arg("remove_first") = false, R"(Finds the fewest steps from one group to another.

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
              "Takes the steps of a plan on a group: all of them, or none. See plan().");
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
              py::kw_only(), py::arg("redundant") = limits.redundant,
              py::arg("overlaps") = limits.overlaps, py::arg("max_findings") = limits.max_findings,
              py::arg("max_steps") = limits.max_steps, py::arg("progress") = py::none(),
              R"(Reports what the rules of a group do to each other.

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

>>> import filter_inspect as fi
>>> old = fi.Group(1, entries=[fi.Entry(10, then="permit")])
>>> new = fi.Group(1, entries=[fi.Entry(10, then="deny")])
>>> fi.explain_changes(old, new, "ascending-id")[0].message
'permit became deny: packets like this one are now dropped'
)");
  module->def("search", &searchGroup, py::arg("group"), py::arg("packets"), py::arg("order"),
              py::kw_only(), py::arg("then") = py::none(), py::arg("touching") = false,
              py::arg("entry") = py::none(), py::arg("max_findings") = limits.max_findings,
              py::arg("max_steps") = limits.max_steps, py::arg("progress") = py::none(),
              R"(Reports where the packets of a set go.

With `touching` it reports the entries that match some of them, and with an `entry` what earlier
rules leave for it.

>>> import filter_inspect as fi
>>> group = fi.Group(1, entries=[fi.Entry(10, then="deny")])
>>> [(one.entry, one.treatment) for one in fi.search(group, "ttl=1", "ascending-id")]
[(10, 'deny')]
)");
  addClass<Policy>(module, "Policy", "What rules promise to do with packets; see check_policy().")
      .def(py::init([](const Text& text) { return parse<Policy>(text); }), py::arg("text"))
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
          [](const Policy& policy, Whole<filtersGroupId_t> group) {
            const PolicyGroup* its = policy.find(group);
            return its == nullptr ? 0 : its->promises.size();
          },
          py::arg("group"), "How many promises it has for a group.");
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
