#include "policer/policer.h"

#include <type_traits>

namespace policer {

static_assert(sizeof(Policer) == 32 && std::is_trivially_copyable_v<Policer>);
static_assert(std::has_unique_object_representations_v<Policer>, "equal policers have equal bytes");

Policer::Policer(const std::string& bytes) : Policer() {
  if (bytes.size() == 32 && bytes[25] <= 2) std::memcpy(static_cast<void*>(this), bytes.data(), 32);
}

Policer::Policer(std::uint32_t id, Stage stage, const Mode& mode,
                 std::initializer_list<Action> actions)
    : id_(id), mode_(mode), stage_(stage) {
  for (const Action& action : actions) {
    if (count_ < 2) actions_[count_++] = action;
  }
}

std::string Policer::Serialize() const {
  return std::string(reinterpret_cast<const char*>(this), 32);
}

}  // namespace policer
