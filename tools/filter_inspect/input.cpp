#include "input.h"

#include <filter_common/filter_groups.pb.h>
#include <filter_inspect/filter_decode.h>
#include <filter_inspect/filter_text.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "input_file.h"

namespace FilterInspectTool {
namespace {

using FiltersInspect::ByteRange;

// --- Files ---------------------------------------------------------------------------------------

// Reads up to `limit` bytes. If the file has more bytes, reads one more, so that the caller
// notices. Returns 0 or the system's error.
int readAll(const std::string& name, std::size_t limit, std::string* content) {
  constexpr std::size_t kAtOnce = 64 << 10;
  InputFile file(name);
  limit = std::min(limit, SIZE_MAX / 4);
  std::size_t held = 0;
  while (held <= limit) {
    content->resize(std::min(std::max(2 * held, kAtOnce), limit + 1));
    const std::size_t count = file.read(content->data() + held, content->size() - held);
    if (count == 0) break;
    held += count;
  }
  content->resize(held);
  return file.error();
}

// True if the content has no control characters except tabs and line ends. The bytes of a group
// have other control characters: the tags of its id, its priority and its stage.
bool isPrintable(std::string_view content) {
  return !content.empty() && std::none_of(content.begin(), content.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte == 0x7f || (byte < ' ' && c != '\t' && c != '\r' && c != '\n');
  });
}

// A file holds bytes if it is not printable and does not begin like the text or the JSON of groups.
// The bytes of a group never begin like text or JSON. If a file begins like text or JSON but has a
// control character, the reader of text or JSON reports the position of this character.
FileForm formOf(std::string_view content, const std::string& forced) {
  if (forced == "text") return FileForm::kText;
  if (forced == "json") return FileForm::kJson;
  if (forced == "bytes") return FileForm::kBytes;
  constexpr std::string_view kBlanks = " \t\r\n", kText = "filter-groups", kJson = "\"format\"";
  const bool isText = isPrintable(content);
  content = withoutMark(content);
  const auto skipBlanks = [&](std::string_view* text) {
    text->remove_prefix(std::min(text->find_first_not_of(kBlanks), text->size()));
  };
  skipBlanks(&content);
  std::string_view head = content;
  while (head.substr(0, 1) == "#") {
    head.remove_prefix(std::min(head.find('\n'), head.size()));
    skipBlanks(&head);
  }
  if (head.substr(0, kText.size()) == kText) return FileForm::kText;
  if (content.substr(0, 1) == "{") {
    if (isText) return FileForm::kJson;
    content.remove_prefix(1);
    skipBlanks(&content);
    if (content.substr(0, kJson.size()) == kJson) return FileForm::kJson;
  }
  return isText ? FileForm::kText : FileForm::kBytes;
}

// --- Frames --------------------------------------------------------------------------------------

// Takes one length from the beginning of the bytes. The length has four bytes in network byte
// order, or is a varint: seven bits in each byte, the least significant first.
bool takeLength(bool isVarint, std::string_view* bytes, std::uint64_t* length) {
  *length = 0;
  const std::size_t most = isVarint ? 10 : 4;
  for (std::size_t i = 0; i < most && i < bytes->size(); ++i) {
    const auto byte = static_cast<unsigned char>((*bytes)[i]);
    if (isVarint) {
      *length |= std::uint64_t{byte & 0x7fu} << 7 * i;
    } else {
      *length = *length << 8 | byte;
    }
    if (isVarint ? byte < 0x80 : i == most - 1) {
      bytes->remove_prefix(i + 1);
      return true;
    }
  }
  return false;
}

// Visits the bytes of each group behind their length, until a length is wrong or `visit` returns
// false. Returns what is wrong with the length, or an empty text.
template <class Visit>
std::string walkFrames(std::string_view content, bool isVarint, const Visit& visit) {
  std::string_view rest = content;
  while (!rest.empty()) {
    const std::size_t left = rest.size();
    std::uint64_t length = 0;
    if (!takeLength(isVarint, &rest, &length)) {
      return "the length in front of it is not whole: " + counted(left, "byte") + " of it";
    }
    if (length > rest.size()) {
      return "its length is " + std::to_string(length) + ", and " + counted(rest.size(), "byte") +
             " follow";
    }
    const auto size = static_cast<std::size_t>(length);
    if (!visit(ByteRange{content.size() - rest.size(), size})) return "";
    rest.remove_prefix(size);
  }
  return "";
}

bool addsUp(std::string_view content) {
  return !content.empty() && walkFrames(content, false, [](ByteRange) { return true; }).empty();
}

// --- Groups --------------------------------------------------------------------------------------

// True if the bytes of the group end too early. If the report has left out findings, it may also
// have left out the finding about this.
bool breaks(const Report& report, std::string_view bytes) {
  const auto isBreak = [](const Finding& finding) { return finding.code == Code::kBytesBroken; };
  if (std::any_of(report.findings.begin(), report.findings.end(), isBreak)) return true;
  return report.left_out != 0 && report.worst() == Severity::kError &&
         !FiltersCommon::FiltersGroupPB().ParsePartialFromArray(bytes.data(),
                                                                static_cast<int>(bytes.size()));
}

// Reads the groups of an input.
class Reader {
 public:
  Reader(const Options& options, const Wanted& wanted, Console* console, Input* input)
      : options_(options),
        wanted_(wanted),
        console_(*console),
        input_(*input),
        report_(options.max_findings) {}

  void readBytes() {
    input_.framing = options_.framing;
    if (options_.framing == "auto") input_.framing = addsUp(input_.content) ? "be32" : "none";
    // The library reads an empty input as a group of zeros. So an empty input is one group here,
    // with any framing.
    if (input_.framing == "none" || input_.content.empty()) {
      addBytes({0, input_.content.size()});
      return hintAtFrames();
    }
    const std::string broken =
        walkFrames(input_.content, input_.framing == "varint", [this](ByteRange range) {
          if (!hasRoom()) return false;
          addBytes(range);
          return true;
        });
    if (broken.empty()) return;
    add({}).is_broken = true;
    keep({{findingOf(Code::kBytesBroken, broken)}});
  }

  Report takeReport() { return report_.take(); }

  // Returns false if something cannot be read.
  bool readForm() {
    const bool isText = input_.form == FileForm::kText;
    // Keeps one finding even if --max-findings is 0, to say why the input cannot be read.
    const std::size_t most = std::max(options_.max_findings, std::size_t{1});
    if (wanted_.refused) {
      FiltersInspect::ParsedBytes parsed =
          isText ? FiltersInspect::groupBytesFromText(input_.content, most)
                 : FiltersInspect::groupBytesFromJson(input_.content, most);
      for (std::size_t i = 0; i < parsed.groups.size() && hasRoom(); ++i) {
        InputGroup& group = add(std::move(parsed.positions[i]));
        group.bytes = std::move(parsed.groups[i]);
        decode(group.bytes, SIZE_MAX, &group);
      }
      return tellRefusal(std::move(parsed.report));
    }
    FiltersInspect::ParsedGroups parsed =
        isText ? FiltersInspect::groupsFromText(input_.content, most)
               : FiltersInspect::groupsFromJson(input_.content, most);
    for (std::size_t i = 0; i < parsed.groups.size() && hasRoom(); ++i) {
      add(std::move(parsed.positions[i])).group = std::move(parsed.groups[i]);
    }
    return tellRefusal(std::move(parsed.report));
  }
 private:
  InputGroup& add(FiltersInspect::GroupPositions positions) {
    InputGroup& group = input_.groups.emplace_back();
    group.number = input_.groups.size();
    group.positions = std::move(positions);
    Finding its = {};
    input_.locate(group, &its);
    group.place = placeOf(input_.file, its);
    return group;
  }

  // Adds a report about the last group.
  void keep(Report&& report) {
    input_.locate(input_.groups.back(), &report);
    report_.append(std::move(report));
  }

  void addBytes(ByteRange range) {
    const std::string_view bytes =
        std::string_view(input_.content).substr(range.offset, range.length);
    InputGroup& group = add({});
    group.range = range;
    decode(bytes, options_.max_bytes, &group);
  }

  void decode(std::string_view bytes, std::size_t max_bytes, InputGroup* group) {
    FiltersInspect::DecodedGroup decoded =
        FiltersInspect::decodeGroupAndEntries(bytes, wanted_.refused ? &group->entries : nullptr,
                                              {options_.max_findings, max_bytes, wanted_.least});
    group->is_broken = !decoded.group || breaks(decoded.report, bytes);
    group->group = std::move(decoded.group);
    keep(std::move(decoded.report));
  }

  bool hasRoom() {
    if (input_.groups.size() < options_.max_groups) return true;
    console_.trouble(Code::kLimitExceeded, input_.file,
                     "there are more than " + counted(options_.max_groups, "group") +
                         ", and only those are read; --max-groups=N reads more");
    return false;
  }

  // Returns true if there was nothing to report.
  bool tellRefusal(Report report) {
    if (report.empty()) return true;
    for (const Finding& finding : report.findings) {
      console_.trouble(input_.file, finding, input_.content);
    }
    report.findings.clear();
    console_.aside(input_.file, report);
    console_.refuse(input_.file);
    return false;
  }

  // If a file with lengths was cut off while it was written, it looks like one group without a
  // length. The bytes of a group never begin with a zero byte, but a length does.
  void hintAtFrames() {
    std::string_view rest = input_.content;
    std::uint64_t length = 0;
    if (options_.framing == "auto" && input_.isBroken() && takeLength(false, &rest, &length) &&
        length != 0 && (length <= rest.size() || input_.content[0] == '\0')) {
      console_.hint(input_.file + ": it begins as one with lengths; --framing=be32 reads it so");
    }
  }

  const Options& options_;
  const Wanted wanted_;
  Console& console_;
  Input& input_;
  FiltersInspect::LimitedReport report_;
};

// "g.bin: 1500 bytes, read as bytes with the framing be32: 2 groups"
std::string aboutReading(const Input& input) {
  std::string how = "text";
  if (input.form == FileForm::kJson) how = "JSON";
  if (input.form == FileForm::kBytes) how = "bytes with the framing " + input.framing;
  return input.file + ": " + counted(input.content.size(), "byte") + ", read as " + how + ": " +
         counted(input.groups.size(), "group");
}

std::optional<Input> readInput(const std::string& file, const Options& options,
                               const Wanted& wanted, Console* console) {
  Input input;
  input.file = file;
  console->showProgress(file);
  if (!readFile(file, options, &input.content, console)) return std::nullopt;
  input.form = formOf(input.content, options.from);
  Reader reader(options, wanted, console, &input);
  if (input.form == FileForm::kBytes) {
    reader.readBytes();
  } else if (!reader.readForm()) {
    return std::nullopt;
  }
  input.report = reader.takeReport();
  console->hideProgress();
  console->note(aboutReading(input));
  return input;
}

}  // namespace

bool readFile(const std::string& file, const Options& options, std::string* content,
              Console* console) {
  if (const int error = readAll(file, options.max_bytes, content)) {
    console->systemTrouble(Code::kFileUnreadable, file.empty() ? "''" : file, error);
    return false;
  }
  if (content->size() <= options.max_bytes) return true;
  console->trouble(Code::kLimitExceeded, file,
                   "there are more than " + counted(options.max_bytes, "byte") +
                       ", and none is read; --max-bytes=N raises the limit");
  return false;
}

bool Input::isBroken() const {
  return std::any_of(groups.begin(), groups.end(),
                     [](const InputGroup& group) { return group.is_broken; });
}

std::string Input::bytesOf(const InputGroup& group) const {
  if (form == FileForm::kBytes) return content.substr(group.range.offset, group.range.length);
  if (!group.bytes.empty()) return group.bytes;
  std::string bytes;
  group.group->serialize(&bytes);
  return bytes;
}

void Input::locate(const InputGroup& group, Finding* finding) const {
  finding->group_number = group.number;
  if (!finding->group && group.group) finding->group = group.group->getId();
  if (form == FileForm::kBytes) return;
  finding->path = FiltersInspect::toText(group.positions.of(finding->entry));
  finding->bytes.reset();
}

void Input::locate(const InputGroup& group, Report* all) const {
  for (Finding& finding : all->findings) locate(group, &finding);
}

void forEachInput(const Options& options, const Wanted& wanted, Console* console,
                  const std::function<void(Input& input)>& visit) {
  bool tookStandardInput = false;
  for (const std::string& file : options.files) {
    if (file == "-" && std::exchange(tookStandardInput, true)) {
      console->trouble(Code::kUsage, file, "standard input is read once");
    } else if (std::optional<Input> input = readInput(file, options, wanted, console)) {
      visit(*input);
    }
  }
}

std::vector<Input> readInputs(const Options& options, Console* console) {
  std::vector<Input> inputs;
  forEachInput(options, {}, console, [&](Input& input) { inputs.push_back(std::move(input)); });
  return inputs;
}

std::optional<std::vector<Input>> readWholeInputs(const Options& options, Console* console) {
  std::vector<Input> inputs = readInputs(options, console);
  for (const Input& input : inputs) tellLosses(input, console);
  if (console->hasFailed()) return std::nullopt;
  return inputs;
}

void tellLosses(const Input& input, Console* console) {
  bool isTold = false;  // true if a broken group has its reason
  for (const Finding& finding : input.report.findings) {
    const auto group =
        std::find_if(input.groups.begin(), input.groups.end(),
                     [&](const InputGroup& one) { return one.number == *finding.group_number; });
    if (group->is_broken) {
      console->trouble(input.file, finding);
      isTold = true;
    } else {
      console->aside(input.file, {{finding}});
    }
  }
  for (const InputGroup& group : input.groups) {
    if (!group.is_broken || std::exchange(isTold, true)) continue;  // its finding was left out
    Finding broken = findingOf(Code::kBytesBroken, "it cannot be read to its end");
    input.locate(group, &broken);
    console->trouble(input.file, broken);
  }
  Report rest = input.report;
  rest.findings.clear();
  console->aside(input.file, rest);
}

std::vector<FiltersGroup> groupsOf(const std::vector<Input>& inputs) {
  std::vector<FiltersGroup> groups;
  for (const Input& input : inputs) {
    for (const InputGroup& group : input.groups) {
      if (group.group) groups.push_back(*group.group);
    }
  }
  return groups;
}

std::string framed(const std::vector<FiltersGroup>& groups, std::string_view framing) {
  std::string all, bytes;
  for (const FiltersGroup& group : groups) {
    group.serialize(&bytes);
    std::uint64_t length = bytes.size();
    if (framing == "be32") {
      for (const int shift : {24, 16, 8, 0}) all += static_cast<char>(length >> shift & 0xff);
    }
    if (framing == "varint") {
      for (; length >= 0x80; length >>= 7) all += static_cast<char>((length & 0x7f) | 0x80);
      all += static_cast<char>(length);
    }
    all += bytes;
  }
  return all;
}

}  // namespace FilterInspectTool
