// Policers of another device. What differs from the stand-in: a policer is 32 bytes without heap,
// its bytes are a copy of them, enumerations take one byte, and what it holds is returned by value.
#ifndef DEVICE_POLICER_POLICER_H_
#define DEVICE_POLICER_POLICER_H_

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

namespace policer {

enum class Stage : std::uint8_t { Ingress = 0, Egress = 1, None = 2 };
enum class Color : std::uint8_t { Red = 0, Yellow = 1, Green = 2 };
enum class ModeType : std::uint8_t { SrTcm = 0, TrTcm = 1, TrTcmDs = 2, Flow = 3, None = 4 };
enum class ActionType : std::uint8_t { Drop = 0, SetPcp = 1, SetDscp = 2 };

// A way of metering. No way has more than four figures: committed rate and size, and two of its
// own.
class Mode {
 public:
  static Mode SrTcm(std::uint32_t cir, std::uint32_t cbs, std::uint32_t ebs) {
    return {ModeType::SrTcm, cir, cbs, ebs, 0};
  }
  static Mode TrTcm(std::uint32_t cir, std::uint32_t cbs, std::uint32_t pir, std::uint32_t pbs) {
    return {ModeType::TrTcm, cir, cbs, pir, pbs};
  }
  static Mode TrTcmDs(std::uint32_t cir, std::uint32_t cbs, std::uint32_t eir, std::uint32_t ebs) {
    return {ModeType::TrTcmDs, cir, cbs, eir, ebs};
  }
  static Mode Flow(std::uint32_t cir, std::uint32_t cbs) {
    return {ModeType::Flow, cir, cbs, 0, 0};
  }
  static Mode None() { return {ModeType::None, 0, 0, 0, 0}; }

  ModeType GetType() const { return type_; }
  std::uint32_t GetCir() const { return cir_; }
  std::uint32_t GetCbs() const { return cbs_; }
  std::uint32_t GetPir() const { return type_ == ModeType::TrTcm ? third_ : 0; }
  std::uint32_t GetPbs() const { return type_ == ModeType::TrTcm ? fourth_ : 0; }
  std::uint32_t GetEir() const { return type_ == ModeType::TrTcmDs ? third_ : 0; }
  std::uint32_t GetEbs() const {
    return type_ == ModeType::SrTcm ? third_ : type_ == ModeType::TrTcmDs ? fourth_ : 0;
  }
 private:
  friend class Policer;
  Mode(ModeType type, std::uint32_t cir, std::uint32_t cbs, std::uint32_t third,
       std::uint32_t fourth)
      : type_(type), cir_(cir), cbs_(cbs), third_(third), fourth_(fourth) {}

  ModeType type_;
  std::uint32_t cir_;
  std::uint32_t cbs_;
  std::uint32_t third_;
  std::uint32_t fourth_;
};

// What happens to the packets of one colour.
class Action {
 public:
  static Action Drop(Color color) { return {ActionType::Drop, color, 0}; }
  static Action SetPcp(Color color, std::uint8_t pcp) { return {ActionType::SetPcp, color, pcp}; }
  static Action SetDscp(Color color, std::uint8_t dscp) {
    return {ActionType::SetDscp, color, dscp};
  }

  ActionType GetType() const { return type_; }
  Color GetColor() const { return color_; }
  std::uint8_t GetPcp() const { return type_ == ActionType::SetPcp ? value_ : std::uint8_t{0}; }
  std::uint8_t GetDscp() const { return type_ == ActionType::SetDscp ? value_ : std::uint8_t{0}; }
 private:
  friend class Policer;
  Action() = default;
  Action(ActionType type, Color color, std::uint8_t value)
      : type_(type), color_(color), value_(value) {}

  ActionType type_ = ActionType::Drop;
  Color color_ = Color::Red;
  std::uint8_t value_ = 0;
};

// The actions of a policer; valid as long as it lives and does not change.
class Actions {
 public:
  Actions(const Action* first, std::size_t size) : first_(first), size_(size) {}
  const Action* begin() const { return first_; }
  const Action* end() const { return first_ + size_; }
  std::size_t size() const { return size_; }
 private:
  const Action* first_;
  std::size_t size_;
};

class Policer {
 public:
  static constexpr std::size_t kMaxActions = 3;

  // No policer: id 4294967295, stage None, mode None, no actions.
  Policer() = default;
  // From the bytes of Serialize(); any others make no policer.
  explicit Policer(const std::string& bytes);
  // Actions beyond kMaxActions are left out.
  Policer(std::uint32_t id, Stage stage, const Mode& mode, std::initializer_list<Action> actions);

  std::string Serialize() const;

  std::uint32_t GetId() const { return id_; }
  Stage GetStage() const { return stage_; }
  Mode GetMode() const { return {mode_, cir_, cbs_, third_, fourth_}; }
  Actions GetActions() const { return {actions_, count_}; }

  friend bool operator==(const Policer& a, const Policer& b);
  friend bool operator!=(const Policer& a, const Policer& b) { return !(a == b); }
 private:
  std::uint32_t id_ = UINT32_MAX;
  std::uint32_t cir_ = 0;
  std::uint32_t cbs_ = 0;
  std::uint32_t third_ = 0;
  std::uint32_t fourth_ = 0;
  ModeType mode_ = ModeType::None;
  Stage stage_ = Stage::None;
  std::uint8_t count_ = 0;
  Action actions_[kMaxActions];
};

}  // namespace policer

#endif  // DEVICE_POLICER_POLICER_H_
