// Groups and entries: their forms, and what changes them.

#include <filter_inspect/filter_decode.h>
#include <filter_inspect/filter_diff.h>
#include <filter_inspect/filter_explain.h>
#include <filter_inspect/filter_head.h>
#include <filter_inspect/filter_text.h>

#include <limits>
#include <optional>
#include <type_traits>
#include <vector>

#include "binding.h"

namespace FilterInspectPython {
namespace {

constexpr char kKinds[] = "a text or a number";

// Reads a code, which Python gives as its name or its number.
template <class Enum, const char* kName>
Enum codeOf(const py::object& value) {
  if (PyIndex_Check(value.ptr()) != 0 && !py::isinstance<py::str>(value)) {
    // The number of an unknown type prints as unsigned, so an argument is unsigned too.
    using Number = std::conditional_t<std::is_same_v<Enum, filtersGroupType_t>, std::uint32_t,
                                      std::underlying_type_t<Enum>>;
    return static_cast<Enum>(Number{argument<Whole<Number, kName>>(value, kName, kKinds)});
  }
  const std::string name = textOf(value, kName, kKinds);
  if (const auto code = fromName<Enum>(name)) return *code;
  std::vector<std::string_view> names;
  for (const auto& [code, itsName] : namesOf<Enum>()) names.push_back(itsName);
  throw py::value_error("there is no " + std::string(kName) + " '" + name + "'" +
                        suggestion(name, names));
}

py::object stageOfGroup(const Group& group) {
  const std::string_view name = nameOf(group->getStage());
  if (name.empty()) return py::int_(static_cast<std::int32_t>(group->getStage()));
  return member("Stage", name);
}
py::object typeOfGroup(const Group& group) {
  const py::int_ number(static_cast<std::uint32_t>(group->getType()));
  if (nameOf(group->getType()).empty()) return std::move(number);
  return py::module_::import("filter_inspect._core").attr("Type")(number);
}

void setStage(Group& group, Named<filtersGroupStage_t> stage) {
  if (const filtersErr_t result = group.own().setStage(stage); result != FILTERS_OK) {
    refuse(result, explainStage(*group, stage));
  }
}
void setType(Group& group, Named<filtersGroupType_t> type) {
  if (const filtersErr_t result = group.own().setType(type); result != FILTERS_OK) {
    refuse(result, explainType(*group, type));
  }
}
void insert(Group& group, const FiltersEntry& entry) {
  if (const filtersErr_t result = group.own().insertEntry(entry); result != FILTERS_OK) {
    refuse(result, explainInsert(*group, entry));
  }
}
void removeEntry(Group& group, Whole<filtersEntryId_t, kId> id) {
  if (group.own().removeEntry(id) != FILTERS_OK) refuseKey(py::int_(id.its));
}

template <class Object>
py::bytes bytesOf(const Object& object) {
  std::string bytes;
  object.serialize(&bytes);
  return bytes;
}

// Decodes bytes without the interpreter's lock. If the buffer can be written, the function keeps
// the lock, because another thread could change the bytes meanwhile.
template <class Decode>
auto decodeUnlocked(const py::buffer& object, Decode decode) {
  const BytesView view(object);
  if (view.isReadOnly()) return unlocked([&] { return decode(view.bytes()); });
  return decode(view.bytes());
}

DecodeLimits limitsOf(MaxFindings max_findings, MaxBytes max_bytes) {
  DecodeLimits limits;
  limits.max_findings = max_findings;
  limits.max_bytes = max_bytes;
  return limits;
}

std::optional<Group> shared(std::optional<FiltersGroup>&& group) {
  if (!group) return std::nullopt;
  return Group(std::move(*group));
}

py::tuple decode(const py::buffer& bytes, MaxFindings max_findings, MaxBytes max_bytes) {
  DecodedGroup decoded = decodeUnlocked(bytes, [&](std::string_view all) {
    return decodeGroup(all, limitsOf(max_findings, max_bytes));
  });
  return py::make_tuple(shared(std::move(decoded.group)), std::move(decoded.report));
}

py::tuple decodeOne(const py::buffer& bytes, MaxFindings max_findings, MaxBytes max_bytes) {
  const DecodedEntry decoded = decodeUnlocked(bytes, [&](std::string_view all) {
    return decodeEntry(all, limitsOf(max_findings, max_bytes));
  });
  return py::make_tuple(decoded.entry, decoded.report);
}

// Refuses what loses something.
DecodeLimits strict() {
  DecodeLimits limits;
  limits.max_bytes = std::numeric_limits<std::size_t>::max();
  limits.least = Severity::kWarning;
  return limits;
}

Group groupFromBytes(const py::buffer& bytes) {
  DecodedGroup decoded =
      decodeUnlocked(bytes, [](std::string_view all) { return decodeGroup(all, strict()); });
  if (!decoded.report.empty()) refuse(std::move(decoded.report));
  return Group(std::move(*decoded.group));
}

FiltersEntry entryFromBytes(const py::buffer& bytes) {
  DecodedEntry decoded =
      decodeUnlocked(bytes, [](std::string_view all) { return decodeEntry(all, strict()); });
  if (!decoded.report.empty()) refuse(std::move(decoded.report));
  return *decoded.entry;
}

FiltersEntry entryOf(ParsedEntry&& parsed) {
  if (!parsed.entry) refuse(std::move(parsed.report));
  return *parsed.entry;
}

std::vector<Group> groupsOf(ParsedGroups&& parsed) {
  if (!parsed.report.empty()) refuse(std::move(parsed.report));
  std::vector<Group> groups;
  groups.reserve(parsed.groups.size());
  for (FiltersGroup& group : parsed.groups) groups.emplace_back(std::move(group));
  return groups;
}

std::vector<Group> fromText(const Text<kText>& text) {
  return groupsOf(unlocked([&] { return groupsFromText(text.its); }));
}
std::vector<Group> fromJson(const Text<kJson>& json) {
  return groupsOf(unlocked([&] { return groupsFromJson(json.its); }));
}

Group onlyOne(std::vector<Group>&& groups) {
  if (groups.size() == 1) return std::move(groups[0]);
  throw py::value_error("there are " + std::to_string(groups.size()) +
                        " groups, and not one: the functions groups_from_text and "
                        "groups_from_json read them");
}

std::vector<FiltersGroup> copies(const py::iterable& groups) {
  std::vector<FiltersGroup> all;
  for (const py::handle group : groups) {
    all.push_back(*argument<const Group&>(group, "a group", "an object of the class Group"));
  }
  return all;
}

JsonLayout layoutOf(bool compact) { return compact ? JsonLayout::kCompact : JsonLayout::kIndented; }

// A Python function that writes Python's values as text lines or JSON objects, which the library's
// readers then read.
py::object form(const char* function) {
  return py::module_::import("filter_inspect._forms").attr(function);
}

FiltersEntry newEntry(Whole<filtersEntryId_t, kId> id,
                      Whole<filtersEntryPriority_t, kPriority> priority, const Words& match,
                      const Words& then, const Words& count, const Words& police,
                      const Words& parent) {
  const py::cpp_function standsAlone(
      [](const Text<kText>& line) { return entryFromText(line.its).report.empty(); });
  const auto line =
      form("entry_line")(id.its, priority.its, match, then, count, police, parent, standsAlone)
          .cast<std::string>();
  ParsedEntry parsed = entryFromText(line);
  if (parsed.entry) return std::move(*parsed.entry);
  const std::string sentence = linesOf(parsed.report) + "\n  " + line;
  refuse(sentence, std::move(parsed.report));
}

// A part of an entry, in a form that newEntry() takes.
template <const char* kKeyword>
py::object partOf(const FiltersEntry& entry) {
  return form("entry_part")(toText(entry), kKeyword);
}
constexpr char kIf[] = "if", kCount[] = "count", kPolice[] = "police", kParent[] = "parent";

Group newGroup(Whole<filtersGroupId_t, kId> id, Whole<filtersGroupPriority_t, kPriority> priority,
               Named<filtersGroupStage_t> stage, Named<filtersGroupType_t> type,
               const py::iterable& entries) {
  Group group{FiltersGroup(id)};
  group.own().setPriority(priority);
  setStage(group, stage);
  setType(group, type);
  const bool areMapped =
      py::isinstance(entries, py::module_::import("collections.abc").attr("Mapping"));
  for (const py::handle entry : areMapped ? entries.attr("values")() : py::object(entries)) {
    insert(group, argument<const FiltersEntry&>(entry, "an entry", "an object of the class Entry"));
  }
  return group;
}

template <class Enum>
std::vector<std::string_view> namesIn() {
  std::vector<std::string_view> names;
  for (const auto& [code, name] : namesOf<Enum>()) names.push_back(name);
  return names;
}

// The entries of a group by id. Each call sees the entries that the group has at that time.
struct Entries {
  py::object owner;

  const Group& group() const { return owner.cast<const Group&>(); }
  // The entry with this id. Null for an id that no entry has, and for a key of another type.
  const FiltersEntry* find(const py::object& key) const {
    py::detail::make_caster<filtersEntryId_t> id;
    if (PyIndex_Check(key.ptr()) == 0 || !id.load(key, true)) return nullptr;
    const auto& all = group()->getEntriesRef();
    const auto found = all.find(id);
    return found == all.end() ? nullptr : &found->second;
  }
  const FiltersEntry& at(const py::object& key) const {
    const FiltersEntry* entry = find(key);
    if (entry == nullptr) refuseKey(key);
    return *entry;
  }
  py::list ids() const {
    py::list all;
    for (const auto& [id, entry] : group()->getEntriesRef()) all.append(id);
    return all;
  }
};

void addEntry(py::module_* module) {
  auto made = addClass<FiltersEntry>(module, "Entry", R"(One rule, which does not change.

The names of matches and actions, and their values, are those of the text form. A match or an
action without a value is a word alone, or has the value None or True. `count` maps ids to what is
counted. `police` and `parent` are policers: texts or mappings with the words of the text form.

>>> import filter_inspect as fi
>>> entry = fi.Entry(10, priority=100, match={"src_ipv4": "192.0.2.0/24", "dst_l4_port": 179},
...                  then=["permit", {"set_pcp": 5}], count={1: "packets"})
>>> print(entry)
entry 10 priority=100 if dst_l4_port=179/0xffff src_ipv4=192.0.2.0/24 then permit set_pcp=5 count 1=packets
>>> entry == fi.Entry.from_text(str(entry)) == fi.Entry.from_bytes(bytes(entry))
True
)");
  addCopies(&made);
  made.def(py::init(&newEntry), py::arg("id"), py::kw_only(), py::arg("priority") = 0,
           py::arg("match") = py::tuple(), py::arg("then") = py::tuple(),
           py::arg("count") = py::dict(), py::arg("police") = py::none(),
           py::arg("parent") = py::none())
      .def_static("from_bytes", &entryFromBytes, py::arg("data"),
                  R"(Reads the bytes of an entry, and refuses bytes that lose something.

>>> import filter_inspect as fi
>>> fi.Entry.from_bytes(fi.Entry(10).to_bytes())
<Entry entry 10 priority=0>
)")
      .def_static(
          "from_text", [](const Text<kText>& text) { return entryOf(entryFromText(text.its)); },
          py::arg("text"), R"(Reads the line of an entry.

>>> import filter_inspect as fi
>>> fi.Entry.from_text("entry 10 priority=5 if ttl=1 then deny").match
{'ttl': '1'}
)")
      .def_static(
          "from_json", [](const Text<kJson>& json) { return entryOf(entryFromJson(json.its)); },
          py::arg("json"), R"(Reads the JSON object of an entry.

>>> import filter_inspect as fi
>>> fi.Entry.from_json(fi.Entry(10, then="deny").to_json()).then
{'deny': None}
)")
      .def_static(
          "from_dict",
          [](const py::dict& values) {
            return entryOf(entryFromJson(form("dumped")(values).cast<std::string>()));
          },
          py::arg("values"), R"(Reads what json.loads() makes of the JSON object of an entry.

>>> import filter_inspect as fi
>>> fi.Entry.from_dict({"id": 10, "priority": 5, "matches": {"ttl": 1}})
<Entry entry 10 priority=5 if ttl=1>
)")
      .def("to_bytes", &bytesOf<FiltersEntry>, R"(The bytes of the entry's message.

>>> import filter_inspect as fi
>>> fi.Entry(10).to_bytes() == bytes(fi.Entry(10))
True
)")
      .def("__bytes__", &bytesOf<FiltersEntry>)
      .def(
          "to_text", [](const FiltersEntry& entry) { return toText(entry); },
          R"(The line of the entry.

>>> import filter_inspect as fi
>>> fi.Entry(10, then=["permit", {"set_pcp": 5}]).to_text()
'entry 10 priority=0 then permit set_pcp=5'
)")
      .def("__str__", [](const FiltersEntry& entry) { return toText(entry); })
      .def(
          "to_json",
          [](const FiltersEntry& entry, bool compact) { return toJson(entry, layoutOf(compact)); },
          py::kw_only(), py::arg("compact").noconvert() = false, R"(The JSON object of the entry.

>>> import filter_inspect as fi
>>> print(fi.Entry(10, match="ttl=1").to_json(compact=True), end="")
{"id":10,"priority":0,"matches":{"ttl":1}}
)")
      .def(
          "to_dict",
          [](const FiltersEntry& entry) {
            return py::dict(form("loaded")(toJson(entry, JsonLayout::kCompact)));
          },
          R"(The JSON object of the entry, as a dict.

>>> import filter_inspect as fi
>>> fi.Entry(10, match="ttl=1", then="deny").to_dict()["matches"]
{'ttl': 1}
)")
      .def_property_readonly("id", &FiltersEntry::getId, "The entry's id, unique in its group.")
      .def_property_readonly("priority", &FiltersEntry::getPriority, "The entry's priority.")
      .def_property_readonly("match", &partOf<kIf>,
                             "Its matches: a dict from names to texts, None without a value.")
      .def_property_readonly("then", &partOf<kThen>,
                             "Its actions: a dict from names to texts, None without a value.")
      .def_property_readonly("count", &partOf<kCount>,
                             "Its counters: a dict from ids to the names of what they count.")
      .def_property_readonly("police", &partOf<kPolice>,
                             "Its policer as a text, or None for the default policer.")
      .def_property_readonly("parent", &partOf<kParent>,
                             "The policer above its policer as a text, or None.")
      .def("__repr__", [](const FiltersEntry& entry) { return "<Entry " + toText(entry) + '>'; })
      .def(
          "__eq__", [](const FiltersEntry& a, const FiltersEntry& b) { return a == b; },
          py::is_operator())
      .def("__hash__",
           [](const FiltersEntry& entry) { return py::hash(bytesOf<FiltersEntry>(entry)); });
}

void addEntries(py::module_* module) {
  auto made =
      addClass<Entries>(module, "Entries", R"(The entries of a group, by id: a mapping to read.

>>> import filter_inspect as fi
>>> entries = fi.Group(1, entries=[fi.Entry(10), fi.Entry(20, then="deny")]).entries
>>> [id for id, entry in entries.items() if "deny" in entry.then]
[20]
)");
  made.def("__getitem__", &Entries::at, py::return_value_policy::copy)
      .def("__contains__",
           [](const Entries& self, const py::object& key) { return self.find(key) != nullptr; })
      .def("__len__", [](const Entries& self) { return self.group()->getEntriesRef().size(); })
      .def("__iter__", [](const Entries& self) { return py::iter(self.ids()); })
      .def("__repr__", [](const Entries& self) {
        return "<Entries " + py::repr(self.ids()).cast<std::string>() + '>';
      });
  addMixins(&made, "Mapping", {"keys", "values", "items", "get", "__eq__", "__reversed__"});
  made.attr("__hash__") = py::none();
}

void addGroup(py::module_* module) {
  addClass<Group>(module, "Group", R"(Rules by id, with the stage and type that admit them.

>>> import filter_inspect as fi
>>> group = fi.Group(1, priority=10, stage="ingress", type=3)
>>> group.insert(fi.Entry(10, match={"ip_protocol": "tcp"}, then="permit"))
>>> print(group, end="")
filter-groups 1
group 1 priority=10 stage=ingress type=3
entry 10 priority=0 if ip_protocol=6 then permit
>>> group.entries[10].priority
0
>>> group == fi.Group.from_bytes(bytes(group)) == fi.Group.from_dict(group.to_dict())
True
)")
      .def(py::init(&newGroup), py::arg("id"), py::kw_only(), py::arg("priority") = 0,
           py::arg("stage") = "none", py::arg("type") = "none", py::arg("entries") = py::tuple())
      .def_static(
          "from_bytes", &groupFromBytes, py::arg("data"),
          R"(Reads the bytes of a group, and refuses bytes that lose something; see decode().

>>> import filter_inspect as fi
>>> fi.Group.from_bytes(fi.Group(7).to_bytes()).id
7
)")
      .def_static(
          "from_text", [](const Text<kText>& text) { return onlyOne(fromText(text)); },
          py::arg("text"),
          R"(Reads a text with one group.

>>> import filter_inspect as fi
>>> fi.Group.from_text("filter-groups 1\ngroup 7 priority=0 stage=none type=none\n").id
7
)")
      .def_static(
          "from_json", [](const Text<kJson>& json) { return onlyOne(fromJson(json)); },
          py::arg("json"),
          R"(Reads a JSON document with one group.

>>> import filter_inspect as fi
>>> fi.Group.from_json(fi.Group(7).to_json()).id
7
)")
      .def_static(
          "from_dict",
          [](const py::dict& values) {
            return onlyOne(fromJson({form("document")(values, kJsonVersion).cast<std::string>()}));
          },
          py::arg("values"),
          R"(Reads the dict of a group, as to_dict() makes it, or of a document with one group.

>>> import filter_inspect as fi
>>> fi.Group.from_dict(fi.Group(7).to_dict()).id
7
)")
      .def(
          "to_bytes", [](const Group& group) { return bytesOf(*group); },
          R"(The bytes of the group's message.

>>> import filter_inspect as fi
>>> fi.Group(7).to_bytes() == bytes(fi.Group(7))
True
)")
      .def("__bytes__", [](const Group& group) { return bytesOf(*group); })
      .def(
          "to_text", [](const Group& group) { return toText(*group); }, R"(The text form.

>>> import filter_inspect as fi
>>> print(fi.Group(7).to_text(), end="")
filter-groups 1
group 7 priority=0 stage=none type=none
)")
      .def("__str__", [](const Group& group) { return toText(*group); })
      .def(
          "to_json",
          [](const Group& group, bool compact) { return toJson(*group, layoutOf(compact)); },
          py::kw_only(), py::arg("compact").noconvert() = false, R"(A JSON document with the group.

>>> import filter_inspect as fi, json
>>> json.loads(fi.Group(7).to_json())["groups"][0]["id"]
7
)")
      .def(
          "to_dict",
          [](const Group& group) {
            return py::dict(form("group_of")(toJson(*group, JsonLayout::kCompact)));
          },
          R"(The JSON object of the group, as a dict.

>>> import filter_inspect as fi
>>> fi.Group(7).to_dict()
{'id': 7, 'priority': 0, 'stage': 'none', 'type': 0, 'entries': []}
)")
      .def_property_readonly(
          "id", [](const Group& group) { return group->getId(); }, "The group's id.")
      .def_property(
          "priority", [](const Group& group) { return group->getPriority(); },
          [](Group& group, Whole<filtersGroupPriority_t, kPriority> priority) {
            group.own().setPriority(priority);
          },
          "The group's priority, which can be set.")
      .def_property("stage", &stageOfGroup, &setStage,
                    "A Stage, or a number that has no name. Setting it may be refused.")
      .def_property("type", &typeOfGroup, &setType,
                    "A Type, or a number that has no name. Setting it may be refused.")
      .def_property_readonly(
          "entries", [](const py::object& self) { return Entries{self}; },
          "The entries by id: a mapping that shows the group as it is now.")
      .def("insert", &insert, py::arg("entry"), R"(Stores the entry, in place of one with its id.

>>> import filter_inspect as fi
>>> group = fi.Group(1, stage="ingress", type=3)
>>> try:
...     group.insert(fi.Entry(30, match="vrf_id=1"))
... except fi.Refused as refused:
...     print(refused.report[0].message)
a group of type 3 does not admit it; types that do: 8
)")
      .def("remove", &removeEntry, py::arg("id"),
           R"(Removes the entry; raises KeyError if there is none.

>>> import filter_inspect as fi
>>> group = fi.Group(1, entries=[fi.Entry(10)])
>>> group.remove(10)
>>> len(group.entries)
0
)")
      .def("__repr__",
           [](const Group& group) {
             return "<Group " + toText(headOf(*group)) +
                    ", entries: " + std::to_string(group->getEntriesRef().size()) + '>';
           })
      .def(
          "__eq__", [](const Group& a, const Group& b) { return *a == *b; }, py::is_operator())
      .def("__copy__", [](const Group& group) { return Group(FiltersGroup(*group)); })
      .def(
          "__deepcopy__",
          [](const Group& group, const py::dict&) { return Group(FiltersGroup(*group)); },
          py::arg("memo"))
      .attr("__hash__") = py::none();
}

}  // namespace

filtersGroupStage_t named(const py::object& object, filtersGroupStage_t*) {
  return codeOf<filtersGroupStage_t, kStage>(object);
}
filtersGroupType_t named(const py::object& object, filtersGroupType_t*) {
  return codeOf<filtersGroupType_t, kType>(object);
}

void addGroups(py::module_* module) {
  addEntry(module);
  addEntries(module);
  addGroup(module);
  module->def("match_names", &namesIn<filtersMatch_t>, R"(The names of all matches.

>>> import filter_inspect as fi
>>> "src_ipv4" in fi.match_names()
True
)");
  module->def("action_names", &namesIn<filtersAction_t>, R"(The names of all actions.

>>> import filter_inspect as fi
>>> "permit" in fi.action_names()
True
)");
  module->def("decode", &decode, py::arg("data"), py::kw_only(), py::arg("max_findings") = 1000,
              py::arg("max_bytes") = DecodeLimits().max_bytes,
              R"(Reads the bytes of a group as a device does, and reports what is lost.

The group is None exactly if a device would throw, or if there are more than `max_bytes` bytes. The
report keeps the most severe findings, at most `max_findings`, and counts the others.

>>> import filter_inspect as fi
>>> group, report = fi.decode(bytes(fi.Group(7)) + b"\xff")
>>> group.id, report[0].code.name
(7, 'BYTES_BROKEN')
)");
  module->def("decode_entry", &decodeOne, py::arg("data"), py::kw_only(),
              py::arg("max_findings") = 1000, py::arg("max_bytes") = DecodeLimits().max_bytes,
              R"(Reads the bytes of an entry, like decode().

>>> import filter_inspect as fi
>>> fi.decode_entry(bytes(fi.Entry(10)))
(<Entry entry 10 priority=0>, <Report without findings>)
)");
  module->def("groups_from_text", &fromText, py::arg("text"), R"(Reads all groups of a text.

>>> import filter_inspect as fi
>>> fi.groups_from_text("filter-groups 1\ngroup 1 priority=0 stage=none type=none\n")
[<Group group 1 priority=0 stage=none type=none, entries: 0>]
)");
  module->def("groups_from_json", &fromJson, py::arg("json"),
              R"(Reads all groups of a JSON document.

>>> import filter_inspect as fi
>>> fi.groups_from_json(fi.groups_to_json([fi.Group(1), fi.Group(2)]))[1].id
2
)");
  module->def(
      "groups_to_text", [](const py::iterable& groups) { return toText(copies(groups)); },
      py::arg("groups"), R"(Writes groups as one text.

>>> import filter_inspect as fi
>>> fi.groups_to_text([]), len(fi.groups_from_text(fi.groups_to_text([fi.Group(1), fi.Group(2)])))
('filter-groups 1\n', 2)
)");
  module->def(
      "groups_to_json",
      [](const py::iterable& groups, bool compact) {
        return toJson(copies(groups), layoutOf(compact));
      },
      py::arg("groups"), py::kw_only(), py::arg("compact").noconvert() = false,
      R"(Writes groups as one JSON document.

>>> import filter_inspect as fi
>>> fi.groups_to_json([], compact=True)
'{"format":"filter-groups","version":1,"groups":[]}\n'
)");
}

}  // namespace FilterInspectPython
