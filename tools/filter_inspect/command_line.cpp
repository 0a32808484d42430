#include <filter_inspect/filter_analysis.h>
#include <filter_inspect/filter_names.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <iterator>
#include <type_traits>
#include <utility>

#include "commands.h"
#include "console.h"
#include "table.h"

namespace FilterInspectTool {
namespace {

constexpr int kAnyNumber = -1;

constexpr char kFooter[] =
    "FILE is - for standard input, or a path. Its content is bytes, text or JSON.\n"
    "Exit status 0: fine.\n"
    "Exit status 1: something was found, differs, would be lost, or has no answer.\n"
    "Exit status 2: trouble with the command line, a file or the output.\n"
    "filter-inspect help COMMAND describes a command.\n"
    "filter-inspect(1) describes all of them, and filter-groups(5) the rules.";

std::string didYouMean(const std::string& word, const std::vector<std::string>& candidates,
                       const std::string& command) {
  return FiltersInspect::suggestion(word, {candidates.begin(), candidates.end()}, command);
}

// --- Options that several commands share ---------------------------------------------------------

CLI::Option* declareChoice(CLI::App* to, const std::string& name, std::string* value,
                           std::vector<std::string> choices, const std::string& about) {
  std::string listed;
  for (const std::string& choice : choices) listed += (listed.empty() ? "" : "|") + choice;
  const std::string help =
      "filter-inspect " + (to->get_parent() == nullptr ? "" : to->get_name() + ' ') + "--help";
  const auto check = [choices = std::move(choices), help](const std::string& word) {
    if (std::find(choices.begin(), choices.end(), word) != choices.end()) return std::string();
    return "there is no value '" + word + "'" + didYouMean(word, choices, help);
  };
  return to->add_option(name, *value, about)->check(check)->take_last()->option_text(listed);
}

template <class Number>
Number numberFrom(const char* option, const std::string& word) {
  Number value = 0;
  const char* const last = word.data() + word.size();
  const auto [end, fault] = std::from_chars(word.data(), last, value);
  if (fault == std::errc() && end == last) return value;
  throw CLI::ValidationError(option, "'" + word + "' is no number that it can have");
}

template <class Number>
void declareNumber(CLI::App* to, const char* name, Number* value, const std::string& about) {
  using Plain =
      std::conditional_t<std::is_same_v<Number, std::optional<std::size_t>>, std::size_t, Number>;
  const auto take = [name, value](const std::string& word) {
    *value = numberFrom<Plain>(name, word);
  };
  to->add_option_function<std::string>(name, take, about)->take_last()->option_text("N");
}

template <class Number>
void declareLimit(CLI::App* to, const char* name, Number* value, const std::string& about) {
  declareNumber(to, name, value, about + " (default " + std::to_string(*value) + ")");
}

void declareCommon(CLI::App* app, Options* options) {
  app->set_help_flag("-h,--help", "Show help for filter-inspect or for one command");
  app->set_version_flag("--version", versions,
                        "Print the releases of the program and its libraries");
  app->add_flag("--json", options->json, "Print JSON documents, also for errors");
  app->add_flag("-q,--quiet", options->quiet,
                "Print no results, only trouble; the exit status says the rest");
  app->add_flag("-v,--verbose", options->verbose,
                "Say also how each file was read, how many findings there are, and the time");
  declareChoice(app, "--color", &options->color, {"auto", "always", "never"}, "Colour the lines");
  declareChoice(app, "--framing", &options->framing, {"auto", "none", "be32", "varint"},
                "The length before each group's bytes, or none");
  declareChoice(app, "--from", &options->from, {"auto", "bytes", "text", "json"},
                "The form of the files");
  declareLimit(app, "--max-bytes", &options->max_bytes, "Read no file larger than this");
  declareLimit(app, "--max-findings", &options->max_findings, "Keep at most N findings of a file");
  declareLimit(app, "--max-groups", &options->max_groups, "Read at most N groups of a file");
}

// The user may also give codes as numbers.
template <class Enum>
void declareCode(CLI::App* command, const char* name, std::string* value, const char* about) {
  std::vector<std::string> choices;
  for (const auto& code : FiltersInspect::namesOf<Enum>()) choices.emplace_back(code.second);
  const auto nameOfNumber = [](std::string word) {
    for (const auto& [code, itsName] : FiltersInspect::namesOf<Enum>()) {
      if (word == std::to_string(static_cast<std::uint32_t>(code))) return std::string(itsName);
    }
    return word;
  };
  declareChoice(command, name, value, std::move(choices), about)->transform(nameOfNumber);
}

CLI::Option* declareOrder(
    CLI::App* command, Options* options,
    const char* about = "The rule that the device tries first if two take a packet") {
  std::vector<std::string> choices;
  for (const auto order : FiltersInspect::kAllOrders) choices.emplace_back(nameOf(order));
  return declareChoice(command, "--order", &options->order, std::move(choices), about);
}

void declareFiles(CLI::App* command, Options* options, int atLeast, int atMost) {
  CLI::Option* files =
      command->add_option("FILE", options->files, "A path, or - for standard input");
  files->expected(atLeast, atMost)->option_text(atMost == 1 ? " " : "...");
  if (atLeast > 0) files->required();
}

void declareStageAndType(CLI::App* command, Options* options) {
  declareCode<FiltersCommon::filtersGroupStage_t>(command, "--stage", &options->stage,
                                                  "Use this stage instead of each group's own");
  declareCode<FiltersCommon::filtersGroupType_t>(command, "--type", &options->type,
                                                 "Use this type instead of each group's own");
}

void declareIds(CLI::App* command, const char* name, std::vector<std::uint32_t>* ids,
                const std::string& about) {
  const auto take = [name, ids](const std::vector<std::string>& words) {
    for (const std::string& word : words) ids->push_back(numberFrom<std::uint32_t>(name, word));
  };
  command->add_option_function<std::vector<std::string>>(name, take, about)
      ->allow_extra_args(false)
      ->option_text("ID");
}

void declareSelection(CLI::App* command, Options* options, const std::string& aboutEntries) {
  declareIds(command, "--group", &options->groups,
             "Only groups with this id; may be given several times");
  declareIds(command, "--entry", &options->entries, aboutEntries);
}

void declareWidth(CLI::App* command, Options* options) {
  declareNumber(command, "--width", &options->width,
                "The letters in a line of the table, 0 for any number; without it, as wide as the "
                "terminal");
}

void declareCapture(CLI::App* command, Options* options) {
  command
      ->add_option("--capture", options->capture,
                   "Captured traffic as pcap or pcapng: a path, or - for standard input")
      ->take_last()
      ->option_text("FILE");
  command
      ->add_option("--assume", options->assumed,
                   "What no frame shows of its packet: 'vrf_id=0 destination_cpu=true ...'")
      ->take_last()
      ->option_text("PACKET");
}

void declareCompact(CLI::App* command, Options* options) {
  command->add_flag("--compact", options->compact, "Write JSON on one line without blanks");
}

// --- Options of each command ---------------------------------------------------------------------

void declareShow(CLI::App* command, Options* options) {
  declareFiles(command, options, 1, kAnyNumber);
  declareChoice(command, "--as", &options->as, {"table", "text", "json", "dump"},
                "The form: a table by default, or JSON with --json; dump is the library's own "
                "print");
  declareCompact(command, options);
  declareOrder(command, options, "The order of the table's rows; without it, by id");
  declareWidth(command, options);
  declareSelection(command, options, "Only entries with this id; may be given several times");
}

void declareCheck(CLI::App* command, Options* options) {
  declareFiles(command, options, 1, kAnyNumber);
  declareStageAndType(command, options);
}

void declareConvert(CLI::App* command, Options* options) {
  declareFiles(command, options, 1, 1);
  declareChoice(command, "--to", &options->to, {"text", "json", "bytes"}, "The form to write")
      ->required();
  declareCompact(command, options);
  command->add_option("-o,--output", options->output, "The file to write; - is standard output")
      ->take_last()
      ->option_text("OUT");
}

void declareDiff(CLI::App* command, Options* options) {
  declareFiles(command, options, 2, 2);
  declareOrder(command, options);
  command
      ->add_option("--packets", options->packets,
                   "Only what changes for these packets, as in 'ip_protocol=tcp dst_l4_port=22', "
                   "and whether anything else changes; needs --order")
      ->take_last()
      ->option_text("SET");
  declareCapture(command, options);
  declareSelection(command, options,
                   "Only what is said about entries with this id; the others still take packets");
}

void declarePlan(CLI::App* command, Options* options) {
  declareFiles(command, options, 2, 2);
  command->add_flag("--remove-first", options->remove_first,
                    "Remove entries first: never more entries than the larger group; without it, "
                    "insert first, so that no packet is without its rule");
}

void declareAnalyse(CLI::App* command, Options* options) {
  declareFiles(command, options, 1, kAnyNumber);
  declareOrder(command, options);
  declareSelection(command, options,
                   "Only findings about entries with this id; the others still take packets");
  command->add_flag("--overlaps", options->overlaps,
                    "Also report every pair that shares packets and treats them differently");
  command->add_flag_callback(
      "--no-redundant", [options] { options->redundant = false; },
      "Skip the search for redundant entries, which takes most of the time");
  declareLimit(command, "--max-steps", &options->max_steps,
               "Leave an entry undecided after N steps");
  command
      ->add_option("--svg", options->picture, "Also draw the groups and the findings into a file")
      ->take_last()
      ->option_text("OUT");
  command
      ->add_option("--policy", options->policy,
                   "Count the findings that this policy accepts apart; its order counts")
      ->take_last()
      ->option_text("FILE");
}

void declareExpect(CLI::App* command, Options* options) {
  command->add_option("POLICY", options->policy, "A file with promises, or - for standard input")
      ->option_text(" ")
      ->required();
  declareFiles(command, options, 1, 1);
  declareIds(command, "--group", &options->groups,
             "Only promises about groups with this id; may be given several times");
  declareLimit(command, "--max-steps", &options->max_steps,
               "Leave a promise undecided after N steps for an entry");
  command->add_option("--junit", options->junit, "Also write the verdicts as XML for build servers")
      ->take_last()
      ->option_text("OUT");
}

std::string fieldsOfPackets() {
  std::string fields;
  for (const std::string_view field : fieldNames()) {
    fields.append(fields.empty() ? "Fields of a packet: " : ", ").append(field);
  }
  return fields + '.';
}

void declareTrace(CLI::App* command, Options* options) {
  declareFiles(command, options, 1, 1);
  declareOrder(command, options)->required();
  declareSelection(command, options,
                   "Only the lines of entries with this id; the others still take packets");
  command->add_option("--packet", options->packet, "One packet: 'src_ipv4=192.0.2.7 ttl=none ...'")
      ->take_last()
      ->option_text("PACKET");
  command->add_option("--packets", options->packets, "A file with a packet on each line, or -")
      ->take_last()
      ->option_text("FILE");
  command->footer(fieldsOfPackets());
}

void declareSearch(CLI::App* command, Options* options) {
  declareFiles(command, options, 1, 1);
  declareOrder(command, options)->required();
  command
      ->add_option("--packets", options->packets,
                   "The packets: 'src_ipv4=10.0.0.0/8 ttl=1-9 pcp={1,3} ...'; without it, all")
      ->take_last()
      ->option_text("SET");
  command
      ->add_option("--then", options->then,
                   "Only entries with these actions: permit, or 'permit set_pcp=5'")
      ->take_last()
      ->option_text("ACTIONS");
  command->add_flag("--touching", options->touching,
                    "The entries that match one of the packets, whatever comes before them");
  declareSelection(command, options,
                   "What is left of the entry with this id behind those before it; may be given "
                   "several times");
  declareLimit(command, "--max-steps", &options->max_steps,
               "Leave an entry undecided after N steps");
  command->footer(fieldsOfPackets() +
                  "\n\nExit status 0: there is no such packet or entry; 1: there is one.\n"
                  "Exit status 2: it is not decided, or there was trouble.");
}

void declareHits(CLI::App* command, Options* options) {
  declareFiles(command, options, 1, 1);
  declareOrder(command, options)->required();
  declareCapture(command, options);
  command->get_option("--capture")->required();
  declareSelection(command, options,
                   "Only the rows of entries with this id; the others still take packets");
  declareWidth(command, options);
  command->add_option("--svg", options->picture, "Also draw the groups and their hits into a file")
      ->take_last()
      ->option_text("OUT");
}

void declareCapabilities(CLI::App* command, Options* options) {
  declareFiles(command, options, 0, 1);
  declareStageAndType(command, options);
}

void declareNames(CLI::App* command, Options* options) {
  declareChoice(command, "ENUMERATION", &options->enumeration, enumerationNames(),
                "Print one enumeration only, by its name here or in C++");
}

// A command with its options, its function and its examples. Each line of `examples` has the
// arguments of one example.
struct Command {
  const char* name;
  const char* summary;
  void (*declare)(CLI::App* command, Options* options);
  Run* run;
  const char* examples;
};

constexpr Command kCommands[] = {
    {"show", "Print what a device would hold; losses go to standard error", declareShow, runShow,
     "show edge.txt\n--json show edge.txt\nshow --order=highest-priority --entry=10 capture.bin"},
    {"check", "Report what the bytes lose when they are read, and unusual values", declareCheck,
     runCheck, "check capture.bin\ncheck --stage=ingress --type=4 edge.txt"},
    {"convert", "Write the groups in another form, unless something would be lost", declareConvert,
     runConvert,
     "convert edge.txt --to=bytes -o edge.bin\nconvert capture.bin --to=text -o rules.txt"},
    {"diff", "Compare two files, entry by entry", declareDiff, runDiff,
     "diff edge.txt edge-candidate.txt\n"
     "diff --order=highest-priority edge.txt edge-candidate.txt\n"
     "diff --order=highest-priority --packets=dst_l4_port=22 edge.txt edge-candidate.txt\n"
     "diff --order=highest-priority edge.txt edge-candidate.txt --capture=traffic.pcap"},
    {"plan", "Print the steps that turn the groups of one file into those of another", declarePlan,
     runPlan, "plan edge.txt edge-candidate.txt\nplan --remove-first old.bin new.bin"},
    {"analyse", "Report entries that never take effect, are redundant, tie or overlap",
     declareAnalyse, runAnalyse,
     "analyse --order=highest-priority edge.txt\n"
     "analyse --order=highest-priority --svg=edge.svg edge.txt"},
    {"expect", "Say which promises of a policy the rules keep", declareExpect, runExpect,
     "expect policy.txt edge.txt\nexpect --junit=policy.xml policy.txt edge.txt"},
    {"trace", "Print which entry takes a packet, or each packet of a file", declareTrace, runTrace,
     "trace edge.txt --order=highest-priority --packet=ttl=1\n"
     "trace edge.txt --order=highest-priority --packets=packets.txt"},
    {"search", "Print which entries take the packets of a set, with an example of each",
     declareSearch, runSearch,
     "search edge.txt --order=highest-priority --packets='ip_protocol=tcp dst_l4_port=22'\n"
     "search edge.txt --order=highest-priority --packets=src_ipv4=10.0.0.0/8 --then=permit\n"
     "search edge.txt --order=highest-priority --entry=20"},
    {"hits", "Count the packets of captured traffic that each entry takes", declareHits, runHits,
     "hits edge.txt --order=highest-priority --capture=traffic.pcap\n"
     "hits edge.txt --order=highest-priority --capture=traffic.pcap --svg=hits.svg"},
    {"capabilities", "Print what stages and types admit, or where the entries of a file fit",
     declareCapabilities, runCapabilities, "capabilities --type=6\ncapabilities edge.txt"},
    {"names", "Print codes and their names", declareNames, runNames, "names matches\nnames fields"},
};

// --- Help ----------------------------------------------------------------------------------------

// The column of the help in which descriptions begin.
constexpr std::size_t kAbout = 30;

std::string examplesOf(const Command& command) {
  std::string text = "Examples:";
  for (std::string_view left = command.examples; !left.empty();) {
    const std::size_t end = std::min(left.find('\n'), left.size());
    text.append("\n  filter-inspect ").append(left.substr(0, end));
    left.remove_prefix(std::min(end + 1, left.size()));
  }
  return text;
}

// Breaks long lines of the help: lists of values behind a bar, and other lines at a blank. Does not
// change examples, so that users can copy them.
std::string wrappedHelp(std::string_view help, std::size_t width) {
  std::string text;
  while (!help.empty()) {
    const std::size_t end = std::min(help.find('\n'), help.size());
    std::string line(help.substr(0, end));
    help.remove_prefix(std::min(end + 1, help.size()));
    const bool isAbout = line.size() > kAbout && line[0] == ' ';
    const bool isExample = line.rfind("  filter-inspect ", 0) == 0;
    while (isAbout && width != 0 && line.size() > width && line.find(' ', kAbout) == line.npos) {
      const std::size_t bar = line.rfind('|', width - 1);
      if (bar == line.npos || bar < kAbout) break;
      text.append(line, 0, bar + 1).append(1, '\n');
      line.replace(0, bar + 1, kAbout / 2, ' ');
    }
    text += isExample ? line : wrapped(line, width, isAbout ? kAbout : 0);
    text += '\n';
  }
  return text;
}

// --- Errors of the command line ------------------------------------------------------------------

std::vector<std::string> commandNames() {
  std::vector<std::string> names;
  for (const Command& command : kCommands) names.emplace_back(command.name);
  return names;
}

std::vector<std::string> optionNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    for (const std::string& name : option->get_snames()) names.push_back("-" + name);
  }
  return names;
}

bool isOptionOf(const CLI::App& command, const std::string& option) {
  const std::vector<std::string> names = optionNames(command);
  return std::find(names.begin(), names.end(), option) != names.end();
}

// The first command that has the option, or null if no command has it.
const CLI::App* ownerOf(const CLI::App& app, const std::string& option) {
  for (const Command& command : kCommands) {
    const CLI::App* its = app.get_subcommand(command.name);
    if (isOptionOf(*its, option)) return its;
  }
  return nullptr;
}

// The sentence of the command line library begins with the name of the option or command. An option
// can have too few arguments, but never too many: if it is given twice, the last argument counts.
std::string mismatch(std::string_view told) {
  const std::string name(told.substr(0, told.find(':')));
  if (name[0] == '-') return name + ": a value is missing";
  const bool tooFew = told.find("At least") != told.npos;
  return tooFew ? "one more " + name + " is needed" : name + " is given too often";
}

constexpr char kTooMany[] = "one argument too many: ";

// If one word is missing and another word is unknown, only the unknown word is reported, because
// both may have the same cause.
std::string sentence(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> unknown = app.remaining(true);
  const std::vector<CLI::App*> parsed = app.get_subcommands();
  if (unknown.empty()) {
    const bool lacksCommand = parsed.empty() && error.get_name() == "RequiredError";
    if (lacksCommand) return "a command is missing; filter-inspect --help lists them";
    if (error.get_name() == "ArgumentMismatch") return mismatch(error.what());
    const bool lacksOption = error.get_name() == "RequiredError" && error.what()[0] == '-';
    const std::string help =
        "; filter-inspect help " + parsed.front()->get_name() + " describes it";
    return error.what() + (lacksOption ? help : std::string());
  }
  const std::string& word = unknown.front();
  if (word.size() > 1 && word[0] == '-') {
    std::vector<std::string> names = optionNames(app);
    for (const CLI::App* command : parsed) {
      for (std::string& name : optionNames(*command)) {
        if (std::count(names.begin(), names.end(), name) == 0) names.push_back(std::move(name));
      }
    }
    const std::string option = word.substr(0, word.find('='));
    if (parsed.empty() || !isOptionOf(*parsed.front(), option)) {
      if (const CLI::App* owner = ownerOf(app, option)) {
        return option + " stands behind its command: filter-inspect " + owner->get_name() + ' ' +
               option;
      }
    }
    const std::string its = parsed.empty() ? "" : parsed.front()->get_name() + ' ';
    return "there is no option " + option +
           didYouMean(option, names, "filter-inspect " + its + "--help");
  }
  if (parsed.empty()) return "there is no command " + word + didYouMean(word, commandNames(), "");
  return kTooMany + word;
}

// Says what is wrong with the words behind `help`. Returns an empty text if these words are options
// and at most one command.
std::string faultOfHelp(const CLI::App& app, const CLI::ParseError& error) {
  if (!app.remaining(true).empty()) return sentence(app, error);
  for (const CLI::App* command : app.get_subcommands()) {
    for (const CLI::Option* option : command->get_options()) {
      if (option->get_positional() && option->count() > 0) {
        return kTooMany + option->results().front();
      }
    }
  }
  return "";
}

}  // namespace

Run* readCommandLine(int argc, char** argv, Options* options, Console* console) {
  // If the command line has --json, a document is written even if the command line has a fault.
  options->json = std::find(argv, argv + argc, std::string_view("--json")) != argv + argc;
  CLI::App app("Looks into groups of filter rules: captured bytes, text or JSON.",
               "filter-inspect");
  app.footer(kFooter);
  app.require_subcommand(1);
  declareCommon(&app, options);
  for (const Command& command : kCommands) {
    CLI::App* its = app.add_subcommand(command.name, command.summary);
    its->fallthrough();
    command.declare(its, options);
    const std::string more = its->get_footer();
    its->footer(examplesOf(command) + (more.empty() ? "" : "\n\n" + more));
  }
  const auto findCommand = [&app] {
    const std::vector<CLI::App*> parsed = app.get_subcommands();
    const auto isIt = [&parsed](const Command& command) {
      return !parsed.empty() && parsed.front()->get_name() == command.name;
    };
    const auto* found = std::find_if(std::begin(kCommands), std::end(kCommands), isIt);
    return found == std::end(kCommands) ? nullptr : found;
  };
  // `help COMMAND` is another way to write `COMMAND --help`.
  std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  const bool isHelp = !words.empty() && words[0] == "help";
  if (isHelp) {
    words.erase(words.begin());
    words.emplace_back("--help");
  }
  // Without this check, the command line library would take the next word for the value.
  for (const std::string& word : words) {
    if (word.size() > 3 && word.compare(0, 2, "--") == 0 && word.find('=') + 1 == word.size()) {
      console->trouble(Code::kUsage, "", word.substr(0, word.size() - 1) + ": a value is missing");
      return nullptr;
    }
  }
  const auto refuse = [&](const std::string& fault) {
    const Command* command = findCommand();
    if (command != nullptr) options->command = command->name;
    console->trouble(Code::kUsage, "", fault);
  };
  try {
    std::reverse(words.begin(), words.end());  // the library takes them from the end
    app.parse(words);
    const Command* command = findCommand();
    options->command = command->name;
    return command->run;
  } catch (const CLI::CallForHelp& help) {
    const std::string fault = isHelp ? faultOfHelp(app, help) : "";
    if (!fault.empty()) {
      refuse(fault);
      return nullptr;
    }
    options->quiet = false;
    console->write(wrappedHelp(app.help(), console->width()));
  } catch (const CLI::CallForVersion& version) {
    options->quiet = false;
    console->writeLine(version.what());
  } catch (const CLI::ParseError& error) {
    refuse(sentence(app, error));
  }
  return nullptr;
}

}  // namespace FilterInspectTool
