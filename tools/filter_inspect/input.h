#ifndef FILTER_INSPECT_TOOLS_INPUT_H_
#define FILTER_INSPECT_TOOLS_INPUT_H_

// Reads files that hold groups: as bytes, with or without a length before each group, as text or as
// JSON.

#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_report.h>
#include <filter_inspect/filter_text.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "commands.h"
#include "console.h"

namespace FilterInspectTool {

using FiltersCommon::FiltersEntry;
using FiltersCommon::FiltersGroup;

enum class FileForm { kBytes, kText, kJson };

struct InputGroup {
  std::size_t number = 0;  // in the file, counted from 1
  std::string place;       // "g.bin: group 1"; for text and JSON its line and column, "g.txt:2:1"
  // The group that a device would hold. Empty if the device could not build the group, or if the
  // length before its bytes is wrong.
  std::optional<FiltersGroup> group;
  std::vector<FiltersEntry> entries;         // all entries received, if refused ones are wanted
  FiltersInspect::ByteRange range;           // for bytes: their place in the content
  FiltersInspect::GroupPositions positions;  // for text and JSON
  std::string bytes;                         // for text and JSON, if refused entries are wanted
  bool is_broken = false;                    // true if some of the bytes could not be read
};

struct Input {
  std::string file;
  std::string content;
  FileForm form = FileForm::kBytes;
  std::string framing;  // for bytes: "none", "be32" or "varint"
  std::vector<InputGroup> groups;
  Report report;  // the findings of strict decoding, if there were bytes to decode

  bool isBroken() const;
  // The bytes of a group: those that were read, or for text and JSON, those that the group writes.
  std::string bytesOf(const InputGroup& group) const;
  // Adds the name of the group to a finding about the group. For text and JSON, also adds the
  // position of the entry.
  void locate(const InputGroup& group, Finding* finding) const;
  void locate(const InputGroup& group, Report* all) const;
};

// Reports the losses that a device would have when it reads the input. Broken bytes are errors.
void tellLosses(const Input& input, Console* console);

// Reads a whole file. If it cannot be read or is too large, reports the reason.
bool readFile(const std::string& file, const Options& options, std::string* content,
              Console* console);

// What a command needs from the files that it reads.
struct Wanted {
  Severity least = Severity::kWarning;  // findings below this severity are left out
  // If true, InputGroup::entries has all entries. Text and JSON are then turned into bytes and
  // decoded. So an entry that its group refuses is a finding and not an error.
  bool refused = false;
};

// Visits each readable file of the command line; "-" is standard input. Reports why a file cannot
// be read.
void forEachInput(const Options& options, const Wanted& wanted, Console* console,
                  const std::function<void(Input& input)>& visit);

// Reads all inputs. An input of bytes has a report of what was lost.
std::vector<Input> readInputs(const Options& options, Console* console);

// Reads all inputs, and reports their losses. Returns nothing if there was an error, for commands
// that need every byte.
std::optional<std::vector<Input>> readWholeInputs(const Options& options, Console* console);

// The groups of all inputs that could be built.
std::vector<FiltersGroup> groupsOf(const std::vector<Input>& inputs);

// The bytes of groups, each after its length in the given framing.
std::string framed(const std::vector<FiltersGroup>& groups, std::string_view framing);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_INPUT_H_
