// Policers of another device. They differ from the stand-in: a policer is 32 bytes without heap,
// its serialized bytes are a copy of these 32 bytes, getters return by value, and code points are
// signed.
#ifndef DEVICE_POLICER_POLICER_H_
#define DEVICE_POLICER_POLICER_H_

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>

namespace policer {

enum class Stage : std::uint8_t { Ingress = 0, Egress = 1, None = 2 };
enum class Color : std::uint8_t { Red = 0, Yellow = 1, Green = 2 };
enum class ModeType : std::uint32_t { SrTcm = 0, TrTcm = 1, TrTcmDs = 2, Flow = 3, None = 4 };
enum class ActionType : std::uint8_t { Drop = 0, SetPcp = 1, SetDscp = 2 };

// A metering mode. A mode has at most four parameters: the committed rate and size, and two that
// differ from mode to mode.
struct Mode {
  static Mode TrTcm(std::uint32_t cir, std::uint32_t cbs, std::uint32_t pir, std::uint32_t pbs) {
    return {ModeType::TrTcm, {cir, cbs, pir, pbs}};
  }
  static Mode TrTcmDs(std::uint32_t cir, std::uint32_t cbs, std::uint32_t eir, std::uint32_t ebs) {
    return {ModeType::TrTcmDs, {cir, cbs, eir, ebs}};
  }
  ModeType GetType() const { return type; }
  std::uint32_t GetCir() const { return figures[0]; }
  std::uint32_t GetCbs() const { return figures[1]; }
  std::uint32_t GetPir() const { return type == ModeType::TrTcm ? figures[2] : 0; }
  std::uint32_t GetPbs() const { return type == ModeType::TrTcm ? figures[3] : 0; }
  std::uint32_t GetEir() const { return type == ModeType::TrTcmDs ? figures[2] : 0; }
  std::uint32_t GetEbs() const { return type == ModeType::TrTcmDs ? figures[3] : 0; }

  ModeType type;
  std::uint32_t figures[4];
};

// An action on the packets of one colour.
struct Action {
  static Action Drop(Color color) { return {ActionType::Drop, color, 0}; }
  static Action SetPcp(Color color, std::int8_t pcp) { return {ActionType::SetPcp, color, pcp}; }
  static Action SetDscp(Color color, std::int8_t dscp) {
    return {ActionType::SetDscp, color, dscp};
  }
  ActionType GetType() const { return type; }
  Color GetColor() const { return color; }
  std::int8_t GetPcp() const { return type == ActionType::SetPcp ? value : std::int8_t{0}; }
  std::int8_t GetDscp() const { return type == ActionType::SetDscp ? value : std::int8_t{0}; }

  ActionType type;
  Color color;
  std::int8_t value;
};

// The actions of a policer. The pointers are valid until the policer is changed or destroyed.
struct Actions {
  const Action* begin() const { return first; }
  const Action* end() const { return last; }
  const Action *first, *last;
};

class Policer {
 public:
  // Makes a policer that polices nothing: it has id 4294967295, stage None, mode None and no
  // actions.
  Policer() = default;
  // Reads the bytes of Serialize(). Any other bytes make the policer of the default constructor.
  explicit Policer(const std::string& bytes);
  // Only the first two actions are kept.
  Policer(std::uint32_t id, Stage stage, const Mode& mode, std::initializer_list<Action> actions);

  std::string Serialize() const;

  std::uint32_t GetId() const { return id_; }
  Stage GetStage() const { return stage_; }
  Mode GetMode() const { return mode_; }
  Actions GetActions() const { return {actions_, actions_ + count_}; }

  bool operator==(const Policer& other) const { return std::memcmp(this, &other, 32) == 0; }
  bool operator!=(const Policer& other) const { return !(*this == other); }
 private:
  std::uint32_t id_ = UINT32_MAX;
  Mode mode_ = {ModeType::None, {}};
  Stage stage_ = Stage::None;
  std::uint8_t count_ = 0;
  Action actions_[2] = {};
};

}  // namespace policer

#endif  // DEVICE_POLICER_POLICER_H_
