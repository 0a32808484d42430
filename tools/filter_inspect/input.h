#ifndef FILTER_INSPECT_TOOLS_INPUT_H_
#define FILTER_INSPECT_TOOLS_INPUT_H_

// What the program reads: files that hold groups as bytes, with or without their lengths in front,
// as text or as JSON.

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
  std::size_t number = 0;  // of the file's groups, counted from 1
  std::string place;       // "g.bin: group 1", or where it begins in text and JSON, "g.txt:2:1"
  // What a device would hold; nothing where it would refuse to build it, or where a frame is
  // broken.
  std::optional<FiltersGroup> group;
  std::vector<FiltersEntry> entries;         // as they came, refused ones too, if they were wanted
  FiltersInspect::ByteRange range;           // of bytes: where they stand in the content
  FiltersInspect::GroupPositions positions;  // of text and JSON
  bool is_broken = false;                    // whether some of the bytes could not be read
};

struct Input {
  std::string file;
  std::string content;
  FileForm form = FileForm::kBytes;
  std::string framing;  // of bytes: "none", "be32" or "varint"
  std::vector<InputGroup> groups;
  Report report;  // of bytes: what strict decoding says of the groups

  bool isBroken() const;
  // The bytes of one group: those read, or where it was read otherwise those that it writes.
  std::string bytesOf(const InputGroup& group) const;
  // Says in findings about a group which one it is, and of text and JSON where the entry stands.
  void locate(const InputGroup& group, Finding* finding) const;
  void locate(const InputGroup& group, Report* all) const;
};

// Tells what a device would lose of it; what is broken is trouble.
void tellLosses(const Input& input, Console* console);

// What a command needs of bytes.
struct Wanted {
  Severity least = Severity::kWarning;  // findings below are left out
  bool entries = false;                 // InputGroup::entries
};

// Visits each file of the command line, "-" for standard input, that can be read; of others the
// trouble is told.
void forEachInput(const Options& options, const Wanted& wanted, Console* console,
                  const std::function<void(Input& input)>& visit);

// All of them, with what is lost of bytes.
std::vector<Input> readInputs(const Options& options, Console* console);

// The same with tellLosses(), for commands that need every byte: nothing after trouble.
std::optional<std::vector<Input>> readWholeInputs(const Options& options, Console* console);

// The groups that could be built, of all inputs.
std::vector<FiltersGroup> groupsOf(const std::vector<Input>& inputs);

// The bytes of groups, in front of each its length by the framing.
std::string framed(const std::vector<FiltersGroup>& groups, std::string_view framing);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_INPUT_H_
