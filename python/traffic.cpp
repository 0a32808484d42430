// The rules that frames of traffic hit.

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

#include "binding.h"

namespace FilterInspectPython {
namespace {

constexpr std::size_t kFramesBetweenSignals = 4096;

// Numbers in a buffer or a list, such as the offsets of frames.
class Numbers {
 public:
  explicit Numbers(const py::object& object) {
    if (PyObject_CheckBuffer(object.ptr()) != 0 && readBuffer(object)) return;
    for (const py::handle one : object) {
      all_.push_back(argument<Whole<std::size_t, kOffset>>(one, kOffset, "a number"));
    };
  }
  std::size_t size() const { return all_.size(); }
  std::size_t operator[](std::size_t i) const { return all_[i]; }
 private:
  // Reads numbers of 64 bits, and returns false for other whole numbers.
  bool readBuffer(const py::object& object) {
    const py::buffer_info info = py::reinterpret_borrow<py::buffer>(object).request();
    const bool isWhole = info.format.size() == 1 && info.itemsize > 1 &&
                         std::string("HhIiLlQqNn").find(info.format) != std::string::npos;
    if (!isWhole || info.ndim != 1) {
      throw py::type_error("offsets and lengths are whole numbers of 16 bits or more");
    }
    if (info.itemsize != sizeof(std::uint64_t)) return false;
    const auto* bytes = static_cast<const char*>(info.ptr);
    for (py::ssize_t i = 0; i < info.size; ++i) {
      std::uint64_t one = 0;
      std::memcpy(&one, bytes + i * info.strides[0], sizeof one);
      all_.push_back(one);
    }
    return true;
  }

  std::vector<std::size_t> all_;
};

// Counts frames, and checks for signals such as Ctrl-C now and then.
class Counting {
 public:
  Counting(const Group& group, Order order, Link link, const std::string& assumed,
           Progress progress)
      : link_(link), counter_(*group, order, assumedOf(assumed)), watch_(std::move(progress)) {}

  void count(std::string_view frame, std::size_t length, std::size_t all) {
    if (done_++ % kFramesBetweenSignals == 0) watch_.tell(done_ - 1, all);
    counter_.count(frame.data(), frame.size(), length, link_);
  }
  const Hits& hits() const { return counter_.hits(); }
 private:
  static Packet assumedOf(const std::string& text) {
    Report report;
    std::optional<Packet> packet = Packet::parse(text, &report);
    if (!packet) refuse(std::move(report));
    return std::move(*packet);
  }

  const Link link_;
  HitCounter counter_;
  Watch watch_;
  std::size_t done_ = 0;
};

// Counts frames that are Python objects: each is bytes, or an object that bytes() converts.
void countEach(const py::object& frames, Counting* counting) {
  if (py::hasattr(frames, "readline")) {
    throw py::type_error("frames are bytes, and not the lines of a file");
  }
  // The number is only told to the progress function; 0 if it is unknown.
  const Py_ssize_t all = PyObject_LengthHint(frames.ptr(), 0);
  if (all < 0) throw py::error_already_set();
  std::size_t number = 0;
  for (const py::handle frame : py::reinterpret_borrow<py::object>(frames)) {
    py::object bytes = py::reinterpret_borrow<py::object>(frame);
    if (PyBytes_Check(frame.ptr()) == 0) {
      const bool isFrame = PyLong_Check(frame.ptr()) == 0 && PyUnicode_Check(frame.ptr()) == 0 &&
                           PyTuple_Check(frame.ptr()) == 0;
      if (!isFrame) {
        throw py::type_error("frame " + std::to_string(number) + " is bytes, and not " +
                             Py_TYPE(frame.ptr())->tp_name);
      }
      bytes = py::reinterpret_steal<py::object>(PyObject_Bytes(frame.ptr()));
      if (!bytes) throw py::error_already_set();
    }
    const std::string_view its(PyBytes_AS_STRING(bytes.ptr()),
                               static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr())));
    counting->count(its, its.size(), static_cast<std::size_t>(all));
    ++number;
  }
}

// Counts the frames of one buffer. A frame without a length ends where the next one begins.
void countBuffer(std::string_view all, const Numbers& offsets,
                 const std::optional<Numbers>& lengths, const std::optional<Numbers>& wire,
                 Counting* counting) {
  for (std::size_t i = 0; i < offsets.size(); ++i) {
    const std::size_t begin = offsets[i];
    const std::size_t next = i + 1 < offsets.size() ? offsets[i + 1] : all.size();
    const std::size_t length = lengths ? (*lengths)[i] : next - begin;
    if (begin > all.size() || length > all.size() - begin) {
      const Locked locked;
      throw py::value_error("frame " + std::to_string(i) + " is not inside of the buffer");
    }
    const std::size_t onWire = wire ? std::max((*wire)[i], length) : length;
    counting->count(all.substr(begin, length), onWire, offsets.size());
  }
}

Hits countHits(const Group& group, const py::object& frames, Named<Order> order, Named<Link> link,
               const Text<kAssumed>& assumed, const py::object& offsets, const py::object& lengths,
               const py::object& wire_lengths, const Progress& progress) {
  Counting counting(group, order, link, assumed, progress);
  if (offsets.is_none()) {
    if (PyObject_CheckBuffer(frames.ptr()) != 0 || !lengths.is_none() || !wire_lengths.is_none()) {
      throw py::type_error("one buffer of frames needs their offsets");
    }
    countEach(frames, &counting);
    return counting.hits();
  }
  const BytesView buffer(frames);
  const Numbers begins(offsets);
  const auto numbersOf = [&](const py::object& object) {
    auto numbers = object.is_none() ? std::nullopt : std::optional<Numbers>(object);
    if (numbers && numbers->size() != begins.size()) {
      throw py::value_error("there are as many lengths as offsets");
    }
    return numbers;
  };
  const auto its = numbersOf(lengths), wire = numbersOf(wire_lengths);
  const auto work = [&] { return countBuffer(buffer.bytes(), begins, its, wire, &counting), 0; };
  if (buffer.isReadOnly()) {
    unlocked(work);
  } else {
    work();
  }
  return counting.hits();
}

}  // namespace

Link named(const py::object& object, Link*) {
  const std::string name = textOf(object, "link", "a text or a Link");
  std::vector<std::string_view> names;
  for (const Link one : kAllLinks) {
    if (nameOf(one) == name) return one;
    names.push_back(nameOf(one));
  }
  throw py::value_error("there is no link '" + name + "'" +
                        suggestion(name, names, "filter_inspect.Link"));
}

void addTraffic(py::module_* module) {
  addClass<FrameCount>(module, "FrameCount", R"(How many frames, and which was the first.

>>> import filter_inspect as fi
>>> count = fi.hits(fi.Group(1), [bytes(60), bytes(60)], "ascending-id").decided
>>> count.frames, count.first
(2, 1)
)")
      .def_readonly("frames", &FrameCount::frames, "How many frames there are.")
      .def_readonly("first", &FrameCount::first,
                    "The number of the first frame, counted from 1; 0 if there is none.")
      .def("__repr__", [](const FrameCount& count) {
        return "<FrameCount " + std::to_string(count.frames) + '>';
      });
  addClass<EntryHits>(module, "EntryHits", R"(The frames that an entry takes.

>>> import filter_inspect as fi
>>> hits = fi.hits(fi.Group(1, entries=[fi.Entry(10)]), [bytes(60)], "ascending-id")
>>> hits.entries[0].entry, hits.entries[0].sure.frames, hits.entries[0].possible.frames
(10, 1, 0)
)")
      .def_readonly("entry", &EntryHits::entry, "The id of the entry.")
      .def_property_readonly(
          "sure", [](const EntryHits& one) { return one.hits.sure; },
          "The frames that it surely takes.")
      .def_property_readonly(
          "possible", [](const EntryHits& one) { return one.hits.possible; },
          "Other frames that it may take.")
      .def("__repr__", [](const EntryHits& one) {
        return "<EntryHits entry " + std::to_string(one.entry) + ": " +
               std::to_string(one.hits.sure.frames) + " sure, " +
               std::to_string(one.hits.possible.frames) + " possible>";
      });
  addClass<Hits>(module, "Hits", R"(What frames hit; see hits().

>>> import filter_inspect as fi
>>> hits = fi.hits(fi.Group(1), [bytes(60), b"short"], "ascending-id")
>>> hits.frames, hits.none_sure.frames, list(hits.faults)
(2, 2, [<FrameFault.ENDS_EARLY: 'ends-early'>])
)")
      .def_readonly("frames", &Hits::frames, "How many frames were counted.")
      .def("__repr__",
           [](const Hits& hits) { return "<Hits, frames: " + std::to_string(hits.frames) + '>'; })
      .def_readonly("decided", &Hits::decided, py::return_value_policy::copy,
                    "Frames of which it is sure which entry takes them, or that none does.")
      .def_readonly("undecided", &Hits::undecided, py::return_value_policy::copy,
                    "All other frames.")
      .def_readonly("entries", &Hits::entries, py::return_value_policy::copy,
                    "The hits of each entry, in the order of the rules.")
      .def_property_readonly(
          "none_sure", [](const Hits& hits) { return hits.none.sure; },
          "Frames that surely no entry takes.")
      .def_property_readonly(
          "none_possible", [](const Hits& hits) { return hits.none.possible; },
          "Other frames that perhaps no entry takes.")
      .def_property_readonly(
          "faults",
          [](const Hits& hits) {
            py::dict faults;
            for (const FrameFault fault : kAllFrameFaults) {
              const FrameCount& count = hits.faults[static_cast<std::size_t>(fault)];
              if (fault != FrameFault::kNone && count.frames != 0) {
                faults[member("FrameFault", nameOf(fault))] = count;
              }
            }
            return faults;
          },
          "The frames that do not tell all fields: a dict from FrameFault to FrameCount.");
  module->def(
      "hits", &countHits, py::arg("group"), py::arg("frames"), py::arg("order"), py::kw_only(),
      py::arg("link") = "ethernet", py::arg("assumed") = "", py::arg("offsets") = py::none(),
      py::arg("lengths") = py::none(), py::arg("wire_lengths") = py::none(),
      py::arg("progress") = py::none(),
      R"(hits(group: filter_inspect.Group, frames: object, order: Union[str, Order], *, link: Union[str, Link] = 'ethernet', assumed: str = '', offsets: object = None, lengths: object = None, wire_lengths: object = None, progress: Optional[function] = None) -> filter_inspect.Hits

Counts the frames that each entry takes.

`link` says how frames begin: a Link, such as "ethernet", or "raw" for packets that begin with IP.
`assumed` is a packet, such as "vlan_tagging=untagged", for fields that no frame can show.

Frames are objects of which bytes() makes bytes. With `offsets`, they are one buffer, in which each
frame begins at an offset, and ends after its length or where the next one begins.

>>> import filter_inspect as fi
>>> group = fi.Group(1, entries=[fi.Entry(10, then="deny")])
>>> fi.hits(group, [bytes(60), bytes(60)], "ascending-id").entries
[<EntryHits entry 10: 2 sure, 0 possible>]
>>> fi.hits(group, bytes(180), "ascending-id", offsets=[0, 60, 120]).frames
3
)");
  // If a call fits no function, pybind11 shows all of its arguments, here perhaps a million frames.
  // So another function takes such calls. It also hides the signature that pybind11 writes, so the
  // text above has the signature.
  py::options options;
  options.disable_function_signatures();
  module->def("hits", [](const py::args&, const py::kwargs&) -> py::object {
    throw py::type_error(
        "hits() takes a group, frames and an order, and after these options by their names: see "
        "help(filter_inspect.hits)");
  });
}

}  // namespace FilterInspectPython
