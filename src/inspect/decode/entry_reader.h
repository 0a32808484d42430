#ifndef FILTER_INSPECT_SRC_DECODE_ENTRY_READER_H_
#define FILTER_INSPECT_SRC_DECODE_ENTRY_READER_H_

// What is lost of entries when they are read from bytes.

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

// Whether setCounter() would have taken each counter, of types that have names.
bool isUsual(const std::map<unsigned short, FiltersCommon::Counter>& counters);

// Reads entries beside their bytes, one after the other.
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

  // Where entries go that could be made, if anywhere.
  void keepEntries(std::vector<FiltersCommon::FiltersEntry>* entries) { entries_ = entries; }

  // Whether something of them made the constructor throw.
  bool threw() const { return threw_; }
 private:
  // What of a kind is kept so far, by code or by id, and where it came from.
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

  // Of the entry that is read.
  FiltersCommon::FiltersEntry blanks_;  // a blank match of each code that is kept
  KeptByCode matches_, actions_, counters_;
  bool parts_ascend_ = true;

  // Of the group.
  KeptByCode held_;
  bool entries_ascend_ = true;
  std::vector<FiltersCommon::FiltersEntry>* entries_ = nullptr;
  bool threw_ = false;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_DECODE_ENTRY_READER_H_
