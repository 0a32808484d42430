// Policers: they decide how a device treats traffic that exceeds its agreed rates.
//
// A policer meters packets by its Mode (the number of token buckets, how fast they fill and how
// deep they are). The outcome is a colour for each packet, and the policer applies the Actions for
// that colour. It works at one Stage in the device.
//
// Policers are plain values. A copy copies everything, a move is cheap, and no object refers to
// another. Different threads may use different objects freely. Many threads may read one object
// while no thread changes it.
//
// Rates are in kbit/s and sizes in bytes. Each can have any value of 32 bits.
//
// Enumerations may hold values without a name here, because a newer device may send them. Such a
// value can be cast to the enumeration, and is kept, compared and serialized like any other.
//
// The device's own library also has functions to read a policer. Only this stand-in has the
// constructors from values and the named functions of Mode and Action. For example:
//
//   const policer::Policer policer(7, policer::Stage::Ingress, policer::Mode::Flow(1000, 1500),
//                                  {policer::Action::Drop(policer::Color::Red)});
#ifndef POLICER_POLICER_H_
#define POLICER_POLICER_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#if defined(__GNUC__)
#define POLICER_API __attribute__((visibility("default")))
#else
#define POLICER_API
#endif

namespace policer {

// The part of the device in which the policer works. A policer with stage None works in no part.
enum class Stage : std::uint32_t { Ingress = 0, Egress = 1, None = 2 };

// The outcome of metering, from Red (exceeds every rate) to Green (conforms).
enum class Color : std::uint32_t { Red = 0, Yellow = 1, Green = 2 };

// The metering mode: single-rate three-colour, two-rate three-colour, two-rate three-colour for
// differentiated services, one plain rate, or none.
enum class ModeType : std::uint32_t { SrTcm = 0, TrTcm = 1, TrTcmDs = 2, Flow = 3, None = 4 };

// The effect of an action on packets of its colour.
enum class ActionType : std::uint32_t { Drop = 0, SetPcp = 1, SetDscp = 2 };

// A metering mode and its parameters. A parameter that the mode does not use is 0.
class Mode {
 public:
  static constexpr Mode SrTcm(std::uint32_t cir, std::uint32_t cbs, std::uint32_t ebs) {
    Mode mode(ModeType::SrTcm, cir, cbs);
    mode.ebs_ = ebs;
    return mode;
  }
  static constexpr Mode TrTcm(std::uint32_t cir, std::uint32_t cbs, std::uint32_t pir,
                              std::uint32_t pbs) {
    Mode mode(ModeType::TrTcm, cir, cbs);
    mode.pir_ = pir;
    mode.pbs_ = pbs;
    return mode;
  }
  static constexpr Mode TrTcmDs(std::uint32_t cir, std::uint32_t cbs, std::uint32_t eir,
                                std::uint32_t ebs) {
    Mode mode(ModeType::TrTcmDs, cir, cbs);
    mode.eir_ = eir;
    mode.ebs_ = ebs;
    return mode;
  }
  static constexpr Mode Flow(std::uint32_t cir, std::uint32_t cbs) {
    return Mode(ModeType::Flow, cir, cbs);
  }
  static constexpr Mode None() { return Mode(ModeType::None); }

  // Makes a mode whose parameters are all 0. This is for types without a function above.
  explicit constexpr Mode(ModeType type) : type_(type) {}

  constexpr ModeType GetType() const { return type_; }

  // Committed, peak and excess information rate, in kbit/s.
  constexpr std::uint32_t GetCir() const { return cir_; }
  constexpr std::uint32_t GetPir() const { return pir_; }
  constexpr std::uint32_t GetEir() const { return eir_; }

  // Committed, peak and excess burst size, in bytes.
  constexpr std::uint32_t GetCbs() const { return cbs_; }
  constexpr std::uint32_t GetPbs() const { return pbs_; }
  constexpr std::uint32_t GetEbs() const { return ebs_; }

  friend constexpr bool operator==(const Mode& a, const Mode& b) {
    return a.type_ == b.type_ && a.cir_ == b.cir_ && a.cbs_ == b.cbs_ && a.ebs_ == b.ebs_ &&
           a.pir_ == b.pir_ && a.pbs_ == b.pbs_ && a.eir_ == b.eir_;
  }
  friend constexpr bool operator!=(const Mode& a, const Mode& b) { return !(a == b); }
 private:
  constexpr Mode(ModeType type, std::uint32_t cir, std::uint32_t cbs)
      : type_(type), cir_(cir), cbs_(cbs) {}

  ModeType type_;
  std::uint32_t cir_ = 0;
  std::uint32_t cbs_ = 0;
  std::uint32_t ebs_ = 0;
  std::uint32_t pir_ = 0;
  std::uint32_t pbs_ = 0;
  std::uint32_t eir_ = 0;
};

// An action on the packets of one colour.
class Action {
 public:
  static constexpr Action Drop(Color color) { return Action(ActionType::Drop, color, 0); }

  // A priority code point has 3 bits and a differentiated-services code point has 6. This class
  // does not check the width: the getter returns the value that was passed.
  static constexpr Action SetPcp(Color color, std::uint8_t pcp) {
    return Action(ActionType::SetPcp, color, pcp);
  }
  static constexpr Action SetDscp(Color color, std::uint8_t dscp) {
    return Action(ActionType::SetDscp, color, dscp);
  }

  // This is for types without a function above. The value is kept, compared and serialized even for
  // types that have no code point.
  constexpr Action(ActionType type, Color color, std::uint8_t value)
      : type_(type), color_(color), value_(value) {}

  constexpr ActionType GetType() const { return type_; }
  constexpr Color GetColor() const { return color_; }

  // The code point to write into the packet. GetPcp() is 0 unless the type is SetPcp, and GetDscp()
  // is 0 unless the type is SetDscp.
  constexpr std::uint8_t GetPcp() const { return ValueIf(ActionType::SetPcp); }
  constexpr std::uint8_t GetDscp() const { return ValueIf(ActionType::SetDscp); }

  friend constexpr bool operator==(const Action& a, const Action& b) {
    return a.type_ == b.type_ && a.color_ == b.color_ && a.value_ == b.value_;
  }
  friend constexpr bool operator!=(const Action& a, const Action& b) { return !(a == b); }
 private:
  friend class Policer;  // serializes value_ without asking for the type

  constexpr std::uint8_t ValueIf(ActionType type) const {
    return type_ == type ? value_ : std::uint8_t{0};
  }

  ActionType type_;
  Color color_;
  std::uint8_t value_;
};

// A policer: an id, a stage, one mode, and any number of actions in the order they were given.
class POLICER_API Policer {
 public:
  // Makes a policer that polices nothing: its id is 4294967295, which no real policer has, and it
  // has stage None, mode None and no actions.
  Policer() = default;

  // Reads the bytes of Serialize(). Empty, cut-off or unreadable bytes give a default policer.
  // Other damage is not detected and may give another policer. Additional bytes that can be read as
  // fields are not detected either. The constructor throws only std::bad_alloc and prints nothing.
  explicit Policer(const std::string& bytes);

  Policer(std::uint32_t id, Stage stage, const Mode& mode, std::vector<Action> actions)
      : id_(id), stage_(stage), mode_(mode), actions_(std::move(actions)) {}

  // Bytes from which this or another process can make an equal policer. They are never empty, and
  // equal policers have equal bytes. Their format is private to this library.
  std::string Serialize() const;

  std::uint32_t GetId() const { return id_; }
  Stage GetStage() const { return stage_; }

  // The references are valid until the policer is destroyed. After an assignment they refer to the
  // new values.
  const Mode& GetMode() const { return mode_; }
  const std::vector<Action>& GetActions() const { return actions_; }

  // Compares everything, the order of the actions too.
  friend bool operator==(const Policer& a, const Policer& b) {
    return a.id_ == b.id_ && a.stage_ == b.stage_ && a.mode_ == b.mode_ && a.actions_ == b.actions_;
  }
  friend bool operator!=(const Policer& a, const Policer& b) { return !(a == b); }
 private:
  std::uint32_t id_ = UINT32_MAX;
  Stage stage_ = Stage::None;
  Mode mode_ = Mode::None();
  std::vector<Action> actions_;
};

}  // namespace policer

#endif  // POLICER_POLICER_H_
