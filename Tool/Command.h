#pragma once
// A command of the tool, described as data: main turns the table of commands into the parser and the help.

#include "Base/Date.h"
#include "Base/Enum.h"
#include "Base/UserFolders.h"
#include "Base/Value.h"
#include "Platform/Host.h"
#include "Tool/Terminal.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace korvell {

/// Exit codes of every command.
enum ExitCode { exitOK = 0, exitFailed = 1, exitUsage = 2 };

struct Context;

/// A value that could stand in an option's place, for who completes words.
struct Suggestion {
  std::string value;
  std::string description = {}; ///< a few words; may be empty
  bool operator==(const Suggestion&) const = default;
};

struct Option {
  enum class Kind {
    flag,       ///< present or not
    text,       ///< one value
    number,     ///< one whole number, at least 0
    list,       ///< any number of values: --kind A --kind B
    positional, ///< an argument by its place
  };
  std::string name; ///< "--limit"; of a positional its place-holder, "PID"
  Kind kind = Kind::flag;
  std::string help;
  /// The only values allowed, whatever their case; empty for any.
  std::vector<std::string> choices = {};
  bool required = false;
  /// The values that there are at this moment, where those can be told at once; null elsewhere.
  std::vector<Suggestion> (*suggest)(Context&) = nullptr;
  bool isPath = false; ///< of a file
};

/// The raw values of an enumeration, for Option::choices.
template <class E>
std::vector<std::string> choicesOf() {
  std::vector<std::string> choices;
  for (const auto& row : allCases<E>()) choices.emplace_back(row.rawValue);
  return choices;
}

/// What the user typed, already checked against the command's options.
class Arguments {
public:
  bool flag(std::string_view name) const { return values_.contains(std::string(name)); }
  std::optional<std::string> text(std::string_view name) const;
  std::optional<std::int64_t> number(std::string_view name) const;
  std::vector<std::string> list(std::string_view name) const;

  void add(const std::string& name, std::string value = {}) { values_[name].push_back(std::move(value)); }

private:
  std::map<std::string, std::vector<std::string>> values_;
};

/// What a command works with.
struct Context {
  Host& host;
  const Clock& clock;
  Environment environment;
  Terminal& out;
  Terminal& err;
  std::FILE* in = nullptr; ///< standard input; null where there is none
  /// How long a running keeper may think before it counts as silent: people wait for what comes then.
  Seconds keeperPatience{0.2};
  std::optional<std::string> failure = {}; ///< the first message of fail()
  /// What standard error is told in where the process itself speaks to a program; empty: as everything.
  std::string_view language = {};
};

struct Command {
  std::string name;
  std::string summary; ///< one line
  std::vector<Option> options;
  int (*run)(Context&, const Arguments&) = nullptr; ///< returns an ExitCode; null when only subcommands run
  std::vector<Command> subcommands = {};
  bool writes = false; ///< to the user's folders: refused while nobody knows where those are
};

/// The same command, marked.
inline Command writing(Command command) {
  command.writes = true;
  return command;
}

/// Every command, in the order of the help.
const std::vector<Command>& allCommands();

/// The first argument with which shells ask for completions; see Completion.h.
inline constexpr std::string_view completeWord = "complete";

/// Parses and runs; the arguments without the program's name. `help COMMAND` is `COMMAND --help`. With --json
/// an object is printed whatever happens: {"error":"…"} where a command prints none.
int runCommandLine(Context& context, std::span<const Command> commands,
                   const std::vector<std::string>& arguments);

/// Whether what is printed is for programs: they are told the same in every language.
bool speaksToPrograms(std::span<const std::string> arguments);
/// Whether that is JSON, whose errors say in English what standard error says.
bool asksForJSON(std::span<const std::string> arguments);

/// The option that most commands have.
inline Option jsonOption() { return {"--json", Option::Kind::flag, "Print one JSON object"}; }

/// One JSON object, on one line into a pipe, as terminalJSON() on a terminal.
void printJSON(Terminal& out, const Value& value);
/// Indented, with escapes for whatever would control the terminal.
std::string terminalJSON(const Value& value);

/// A message on standard error, "korvell: …", and the exit code to return.
int fail(Context& context, std::string_view message, ExitCode code = exitFailed);

/// The same of several lines, the first of which is a sentence; names in it may hold anything.
int failLines(Context& context, std::string_view reason);

} // namespace korvell
