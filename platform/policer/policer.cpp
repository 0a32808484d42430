#include "policer/policer.h"

#include <google/protobuf/arena.h>

#include <limits>
#include <utility>

#include "policer.pb.h"
#include "policer/policer_values.h"

namespace policer {
namespace {

// Calls the named functions of Mode, so that a parameter that the mode does not use stays 0 even if
// the bytes have it.
Mode ModeOf(const PolicerValues& values) {
  const auto type = static_cast<ModeType>(values.mode);
  switch (type) {
    case ModeType::SrTcm:
      return Mode::SrTcm(values.cir, values.cbs, values.ebs);
    case ModeType::TrTcm:
      return Mode::TrTcm(values.cir, values.cbs, values.pir, values.pbs);
    case ModeType::TrTcmDs:
      return Mode::TrTcmDs(values.cir, values.cbs, values.eir, values.ebs);
    case ModeType::Flow:
      return Mode::Flow(values.cir, values.cbs);
    case ModeType::None:
      break;
  }
  return Mode(type);
}

void WriteMode(const Mode& mode, ModePB* message) {
  message->set_type(static_cast<std::uint32_t>(mode.GetType()));
  message->set_cir(mode.GetCir());
  message->set_cbs(mode.GetCbs());
  message->set_ebs(mode.GetEbs());
  message->set_pir(mode.GetPir());
  message->set_pbs(mode.GetPbs());
  message->set_eir(mode.GetEir());
}

// Uses the partial parse, because the full parse prints missing fields on standard error.
bool Parse(const std::string& bytes, PolicerPB* message) {
  return message->ParsePartialFromString(bytes) && message->IsInitialized();
}

}  // namespace

Policer::Policer(const std::string& bytes) {
  google::protobuf::Arena arena;
  auto* message = PolicerPB::default_instance().New(&arena);
  if (!Parse(bytes, message)) {
    return;
  }
  const ModePB& mode = message->mode();
  PolicerValues values{message->id(), message->stage(), mode.type(), mode.cir(), mode.cbs(),
                       mode.pir(),    mode.pbs(),       mode.eir(),  mode.ebs(), {}};
  values.actions.reserve(static_cast<std::size_t>(message->actions_size()));
  for (const ActionPB& action : message->actions()) {
    if (action.value() > std::numeric_limits<std::uint8_t>::max()) {
      return;
    }
    values.actions.push_back({action.color(), action.type(), action.value()});
  }
  *this = MakePolicer(values);
}

Policer MakePolicer(const PolicerValues& values) {
  std::vector<Action> actions;
  actions.reserve(values.actions.size());
  for (const ActionValues& action : values.actions) {
    actions.emplace_back(static_cast<ActionType>(action.type), static_cast<Color>(action.color),
                         static_cast<std::uint8_t>(action.value));
  }
  return Policer(values.id, static_cast<Stage>(values.stage), ModeOf(values), std::move(actions));
}

std::string Policer::Serialize() const {
  google::protobuf::Arena arena;  // a message outside of one leaks when memory runs out
  auto& message = *PolicerPB::default_instance().New(&arena);
  for (const Action& action : actions_) {
    ActionPB* added = message.add_actions();
    added->set_type(static_cast<std::uint32_t>(action.type_));
    added->set_color(static_cast<std::uint32_t>(action.color_));
    added->set_value(action.value_);
  }
  WriteMode(mode_, message.mutable_mode());
  message.set_stage(static_cast<std::uint32_t>(stage_));
  message.set_id(id_);
  return message.SerializeAsString();
}

}  // namespace policer
