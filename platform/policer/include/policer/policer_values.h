// Makes policers from plain values. A device's policer package may have this header or leave it
// out. If it has the header, libfilter_inspect reads and writes policers as values. Without the
// header, it reads and writes them as bytes.
//
//   const policer::Policer policer = policer::MakePolicer(
//       {7, 0, 3, 1000, 1500, 0, 0, 0, 0, {{0, 0, 0}}});  // ingress, flow, drops red packets
#ifndef POLICER_POLICER_VALUES_H_
#define POLICER_POLICER_VALUES_H_

#include <cstdint>
#include <vector>

#include <policer/policer.h>

namespace policer {

// The numbers are those of the enumerations Color and ActionType. An action without a code point
// has value 0.
struct ActionValues {
  std::uint32_t color;
  std::uint32_t type;
  std::uint32_t value;
};

// The numbers are those of the enumerations Stage and ModeType. A parameter that the mode does not
// use is 0. Rates are in kbit/s, sizes in bytes.
struct PolicerValues {
  std::uint32_t id;
  std::uint32_t stage;
  std::uint32_t mode;
  std::uint32_t cir;
  std::uint32_t cbs;
  std::uint32_t pir;
  std::uint32_t pbs;
  std::uint32_t eir;
  std::uint32_t ebs;
  std::vector<ActionValues> actions;
};

// Returns a policer whose getters return these values. A value that a policer cannot hold may be
// changed, so callers compare the getters with the values. The function throws only std::bad_alloc.
POLICER_API Policer MakePolicer(const PolicerValues& values);

}  // namespace policer

#endif  // POLICER_POLICER_VALUES_H_
