#ifndef FILTER_COMMON_SRC_SHARED_ARENA_H_
#define FILTER_COMMON_SRC_SHARED_ARENA_H_

// The arena on which messages are read and written.

#include <google/protobuf/arena.h>

#include <cstddef>

namespace FiltersCommon {

// An arena whose first block is on the stack. The message of one entry fits into it, so no large
// blocks are allocated between the many small blocks of entries. The arena owns everything that its
// messages allocate, even if memory runs out while a message is being filled.
class MessageArena {
 public:
  MessageArena() : arena_(optionsFor(block_)) {}
  MessageArena(const MessageArena&) = delete;
  MessageArena& operator=(const MessageArena&) = delete;

  // An empty message, which the arena destroys. The runtime's other functions that make a message
  // have different names in different releases; New() is in all releases.
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

#endif  // FILTER_COMMON_SRC_SHARED_ARENA_H_
