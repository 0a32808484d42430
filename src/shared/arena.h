#ifndef FILTER_COMMON_SRC_ARENA_H_
#define FILTER_COMMON_SRC_ARENA_H_

// Where messages stand while they are read or written.

#include <google/protobuf/arena.h>

#include <cstddef>

namespace FiltersCommon {

// An arena whose first block stands on the stack: the message of one entry finds room there, and
// the heap is not asked for large blocks between the many small ones of which entries are made.
// What a message on an arena allocates belongs to the arena, also when memory runs out midway.
class MessageArena {
 public:
  MessageArena() : arena_(optionsFor(block_)) {}
  MessageArena(const MessageArena&) = delete;
  MessageArena& operator=(const MessageArena&) = delete;

  // An empty message that lives as long as the arena. Functions of the runtime's own that do this
  // have another name in each age of it; this one is in all.
  template <class Message>
  Message* make() {
    return Message::default_instance().New(&arena_);
  }
 private:
  static constexpr std::size_t kSize = 4096;

  static google::protobuf::ArenaOptions optionsFor(char* block) {
    google::protobuf::ArenaOptions options;
    options.initial_block = block;
    options.initial_block_size = kSize;
    return options;
  }

  alignas(std::max_align_t) char block_[kSize];
  google::protobuf::Arena arena_;
};

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_ARENA_H_
