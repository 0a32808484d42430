#include "packet_shapes.h"

#include <algorithm>
#include <utility>

#include "packet_fields.h"
#include "readings.h"

namespace FiltersInspect {
namespace {

enum class Version { k4, k6, kNone };

// A range of IP protocols. TCP, UDP, DCCP, SCTP and UDP-Lite have layer-4 ports (IANA, Assigned
// Internet Protocol Numbers).
struct Protocols {
  bool ports;
  std::vector<std::pair<std::uint8_t, std::uint8_t>> ranges;
};
const std::vector<Protocols>& protocols() {
  static const std::vector<Protocols> protocols = {
      {true, {{6, 6}}},
      {true, {{17, 17}}},
      {true, {{33, 33}, {132, 132}, {136, 136}}},
      {false, {{0, 5}, {7, 16}, {18, 32}, {34, 131}, {133, 135}, {137, 255}}},
  };
  return protocols;
}

struct Shape {
  bool tagged;
  Version version;
  const Protocols* protocols;  // of packets with this version
};

bool has(const Shape& shape, Layer layer) {
  switch (layer) {
    case Layer::kSome:
    case Layer::kEvery:
    case Layer::kTagging:
      break;
    case Layer::kTag:
      return shape.tagged;
    case Layer::kIp:
    case Layer::kIpProtocol:
      return shape.version != Version::kNone;
    case Layer::kIPv4:
      return shape.version == Version::k4;
    case Layer::kIPv6:
      return shape.version == Version::k6;
    case Layer::kPorts:
      return shape.version != Version::kNone && shape.protocols->ports;
  }
  return true;
}

std::vector<Constraint> constraintsOf(const Shape& shape, const std::vector<bool>& fields) {
  constexpr std::uint64_t kMostOf32Bits = 0xffffffff;
  std::vector<Constraint> constraints;
  for (std::uint32_t field = 0; field < fields.size(); ++field) {
    const Layer layer = packetFields()[field].layer;
    const std::uint32_t half = halfOf(field, 0);
    if (!fields[field] || layer == Layer::kSome || layer == Layer::kEvery) continue;
    if (!has(shape, layer)) {
      constraints.push_back({half, Asks::kLack, 0, 0});
    } else if (layer == Layer::kTagging) {
      constraints.push_back(
          {half, Asks::kRange, shape.tagged ? 1U : 0U, shape.tagged ? kMostOf32Bits : 0});
    } else if (layer == Layer::kIpProtocol) {
      for (const auto& [first, last] : shape.protocols->ranges) {
        constraints.push_back({half, Asks::kRange, first, last});
      }
    } else {
      constraints.push_back({half, Asks::kMasked, 0, 0});
    }
  }
  return constraints;
}

bool areSame(const std::vector<Constraint>& a, const std::vector<Constraint>& b) {
  return std::equal(
      a.begin(), a.end(), b.begin(), b.end(), [](const Constraint& x, const Constraint& y) {
        return x.field == y.field && x.asks == y.asks && x.first == y.first && x.last == y.last;
      });
}

// If the packet has a field of a header, adds the other fields of that header. Fields that the
// packet is known to lack stay absent.
void complete(Packet* packet) {
  const auto& fields = PacketFields::of(*packet);
  const auto& rows = packetFields();
  const auto isAny = [&](Layer layer, bool has) {
    return std::any_of(fields.begin(), fields.end(), [&](const PacketFields::Field& field) {
      return field.has == has && rows[field.number].layer == layer;
    });
  };
  const auto addAll = [&](Layer layer) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (rows[i].layer != layer) continue;
      PacketFields::tell(packet, static_cast<std::uint8_t>(i), rows[i].usual[0]);
    }
  };
  // If the packet is known to lack a field of a header, that header stays incomplete.
  for (const Layer layer : {Layer::kIPv4, Layer::kIPv6}) {
    if (isAny(layer, true) && !isAny(layer, false)) addAll(layer);
  }
  if (isAny(Layer::kPorts, false)) return;
  if (isAny(Layer::kPorts, true)) addAll(Layer::kIpProtocol);
  const bool addsPorts =
      std::any_of(fields.begin(), fields.end(), [&](const PacketFields::Field& field) {
        return field.has && rows[field.number].layer == Layer::kIpProtocol &&
               hasPorts(static_cast<std::uint32_t>(field.value[0]));
      });
  if (addsPorts) addAll(Layer::kPorts);
}

}  // namespace

bool hasPorts(std::uint32_t protocol) {
  for (const Protocols& some : protocols()) {
    for (const auto& [first, last] : some.ranges) {
      if (first <= protocol && protocol <= last) return some.ports;
    }
  }
  return false;
}

std::vector<std::vector<Constraint>> packetShapes(const std::vector<bool>& fields) {
  std::vector<std::vector<Constraint>> shapes;
  const auto add = [&](const Shape& shape) {
    std::vector<Constraint> its = constraintsOf(shape, fields);
    const bool known = std::any_of(shapes.begin(), shapes.end(),
                                   [&](const auto& other) { return areSame(its, other); });
    if (!known) shapes.push_back(std::move(its));
  };
  for (const bool tagged : {true, false}) {
    for (const Version version : {Version::k4, Version::k6}) {
      for (const Protocols& one : protocols()) add({tagged, version, &one});
    }
  }
  for (const bool tagged : {true, false}) add({tagged, Version::kNone, nullptr});
  std::stable_sort(shapes.begin(), shapes.end(), [](const auto& a, const auto& b) {
    return fieldsLacking(a) < fieldsLacking(b);
  });
  return shapes;
}

std::size_t fieldsLacking(const std::vector<Constraint>& shape) {
  return static_cast<std::size_t>(std::count_if(
      shape.begin(), shape.end(), [](const Constraint& one) { return one.asks == Asks::kLack; }));
}

Packet packetOf(const Space& space, const Point& point, const std::vector<bool>* shown) {
  Packet packet;
  const auto values = space.valuesOf(point);
  for (auto half = values.begin(); half != values.end(); ++half) {
    const auto field = static_cast<std::uint8_t>(half->first / 2);
    std::optional<FieldValue> whole;
    if (half->first % 2 != 0) {
      // The lower half of an address can be constrained although the upper half is not.
      whole = FieldValue{packetFields()[field].usual[0][0], half->second.value_or(0)};
    } else if (half->second) {
      whole = FieldValue{*half->second, 0};
    }
    const auto next = half + 1;
    if (half->first % 2 == 0 && next != values.end() && next->first == half->first + 1) {
      if (whole && next->second) (*whole)[1] = *next->second;
      half = next;
    }
    if (shown == nullptr || (*shown)[field]) PacketFields::tell(&packet, field, whole);
  }
  complete(&packet);
  // If no set has a constraint, any packet can be returned, but it must have at least one field.
  if (PacketFields::of(packet).empty()) PacketFields::tell(&packet, 0, packetFields()[0].usual[0]);
  return packet;
}

}  // namespace FiltersInspect
