#include "policer/policer.h"

#include <cstring>
#include <type_traits>

namespace policer {

static_assert(sizeof(Policer) == 32, "the bytes of a policer are 32");
static_assert(std::is_trivially_copyable_v<Policer>, "a policer is copied as bytes");
static_assert(std::has_unique_object_representations_v<Policer>, "equal policers have equal bytes");

Policer::Policer(const std::string& bytes) : Policer() {
  Policer read;
  if (bytes.size() != sizeof read) return;
  std::memcpy(static_cast<void*>(&read), bytes.data(), sizeof read);
  if (read.count_ <= kMaxActions) *this = read;
}

Policer::Policer(std::uint32_t id, Stage stage, const Mode& mode,
                 std::initializer_list<Action> actions)
    : id_(id),
      cir_(mode.cir_),
      cbs_(mode.cbs_),
      third_(mode.third_),
      fourth_(mode.fourth_),
      mode_(mode.type_),
      stage_(stage) {
  for (const Action& action : actions) {
    if (count_ < kMaxActions) actions_[count_++] = action;
  }
}

std::string Policer::Serialize() const {
  return std::string(reinterpret_cast<const char*>(this), sizeof *this);
}

bool operator==(const Policer& a, const Policer& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

}  // namespace policer
