#ifndef FILTER_INSPECT_SRC_DECODE_ENTRY_READER_H_
#define FILTER_INSPECT_SRC_DECODE_ENTRY_READER_H_

// Reports what entries lose when they are read from bytes.

#include <filter_common/filter_entries.pb.h>
#include <filter_common/filter_groups.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "message_check.h"
#include "shared/arena.h"

namespace FiltersInspect {

// True if setCounter() would have accepted each counter, and each type has a name.
bool isUsual(const std::map<unsigned short, FiltersCommon::Counter>& counters);

// Reads entries one after the other, and compares each with its bytes.
class EntryReader {
 public:
  EntryReader(std::string_view bytes, bool lenient, FiltersCommon::MessageArena* arena,
              DecodeFindings* findings)
      : bytes_(bytes),
        lenient_(lenient),
        findings_(findings),
        out_(arena->make<FiltersCommon::FiltersEntryPB>()),
        match_out_(arena->make<FiltersCommon::MatchPB>()),
        action_out_(arena->make<FiltersCommon::ActionPB>()),
        counter_out_(arena->make<FiltersCommon::CounterPB>()) {}

  // `group`, if given, must be empty; its stage and type decide admission. False if the bytes end
  // inside this entry.
  bool read(const FiltersCommon::FiltersEntryPB& in, const MessagePart& part, int depth,
            const FiltersCommon::FiltersGroup* group);

  // If this list is not null, read() appends to it each entry that can be made.
  void keepEntries(std::vector<FiltersCommon::FiltersEntry>* entries) { entries_ = entries; }

  // True if the constructor would throw because of an entry.
  bool threw() const { return threw_; }
 private:
  // The index and the bytes of a match, action, counter or entry that has been kept so far.
  struct Kept {
    std::size_t index;
    ByteRange bytes;
  };
  using KeptByCode = std::map<std::uint32_t, Kept>;

  bool readParts(const FiltersCommon::FiltersEntryPB& in, const MessagePart& part, int depth);
  bool readMatch(const FiltersCommon::MatchPB& in, const MessagePart& part, int depth);
  bool readAction(const FiltersCommon::ActionPB& in, const MessagePart& part, int depth);
  bool readCounter(const FiltersCommon::CounterPB& in, const MessagePart& part, int depth);
  void keep(Code replaced, KeptByCode* all, const MessagePart& part);
  void noteOrder(std::uint32_t next, const MessagePart& part);
  void notePolicer(const std::string& in, Subject subject, int field, const MessagePart& part);
  void noteCounters(const FiltersCommon::FiltersEntry& entry, const MessagePart& part);
  void noteRefusal(const Report& refusal, const MessagePart& part);
  void noteHeld(std::uint32_t id, const MessagePart& part);
  void about(Subject subject, std::uint32_t offender = 0) {
    findings_->subject = subject;
    findings_->offender = offender;
  }

  const std::string_view bytes_;
  const bool lenient_;
  DecodeFindings* const findings_;
  FiltersCommon::FiltersEntryPB* const out_;
  FiltersCommon::MatchPB* const match_out_;
  FiltersCommon::ActionPB* const action_out_;
  FiltersCommon::CounterPB* const counter_out_;
  std::string scratch_;
  MessageCheck entry_check_{FiltersCommon::FiltersEntryPB::descriptor()},
      match_check_{FiltersCommon::MatchPB::descriptor()},
      action_check_{FiltersCommon::ActionPB::descriptor()},
      counter_check_{FiltersCommon::CounterPB::descriptor()};

  // The following members are about the entry that is being read.
  FiltersCommon::FiltersEntry blanks_;  // a blank match of each kept code
  KeptByCode matches_, actions_, counters_;
  bool parts_ascend_ = true;

  // The following members are about the group.
  KeptByCode held_;
  bool entries_ascend_ = true;
  std::vector<FiltersCommon::FiltersEntry>* entries_ = nullptr;
  bool threw_ = false;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_DECODE_ENTRY_READER_H_
