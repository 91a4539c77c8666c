// The only file that knows the command-line library: it turns the table of commands into its parser.

#include "Tool/Command.h"

#include "App/SettingsCheck.h"
#include "Base/Localization.h"
#include "Base/Result.h"
#include "Base/Text.h"
#include "Tool/Completion.h"
#include "Tool/NearestWord.h"
#include "Tool/Version.h"
#include "Tool/Wrap.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <list>
#include <memory>
#include <sstream>
#include <utility>

namespace korvell {

std::optional<std::string> Arguments::text(std::string_view name) const {
  const auto found = values_.find(std::string(name));
  if (found == values_.end()) return std::nullopt;
  return found->second.back();
}

std::optional<std::int64_t> Arguments::number(std::string_view name) const {
  const auto value = text(name);
  return value ? parseInteger<std::int64_t>(*value) : std::nullopt;
}

std::vector<std::string> Arguments::list(std::string_view name) const {
  const auto found = values_.find(std::string(name));
  return found == values_.end() ? std::vector<std::string>() : found->second;
}

// JSON leaves DEL, C1 controls and marks of direction in texts as they are, and terminals obey them.
std::string terminalJSON(const Value& value) {
  const auto json = dumpJSON(value, JSONStyle::indented);
  std::string result;
  for (const auto line : splitLines(json)) {
    std::string plain;
    for (const char c : line) c == '\x7f' ? plain += "\\u007f" : plain += c;
    result += escapedControls(plain) + "\n";
  }
  return result;
}

void printJSON(Terminal& out, const Value& value) {
  // JSON is UTF-8 whatever the locale.
  out.writeRaw(out.isTerminal() ? terminalJSON(value) : dumpJSON(value) + "\n");
}

int fail(Context& context, std::string_view message, ExitCode code) {
  if (!context.failure) context.failure = message;
  context.err.line("korvell: " + std::string(message));
  return code;
}

int failLines(Context& context, std::string_view reason) {
  std::string text;
  for (const auto line : split(reason, '\n')) text += (text.empty() ? "" : "\n") + escapedControls(line);
  return fail(context, text);
}

namespace {

constexpr int widestHelp = 100;

/// The library's help, its texts broken where the terminal ends.
class WrappedHelp final : public CLI::Formatter {
public:
  explicit WrappedHelp(int columns) : columns_(columns) {
    column_width(textColumn);
    label("Usage", localized("Usage"));
    label("OPTIONS", localized("OPTIONS"));
    label("SUBCOMMAND", localized("SUBCOMMAND"));
    label("SUBCOMMANDS", localized("SUBCOMMANDS"));
    label("Positionals", localized("Positionals"));
    label("REQUIRED", localized("REQUIRED"));
  }

  std::string make_description(const CLI::App* app) const override {
    return lines(app->get_description(), columns_) + "\n";
  }
  std::string make_subcommand(const CLI::App* command) const override {
    std::ostringstream line;
    CLI::detail::format_help(line, command->get_name(), behindNames(command->get_description()), textColumn);
    return line.str();
  }
  /// The library pads by bytes, and "(nötig)" has one more than it has columns.
  std::string make_option(const CLI::Option* option, bool isPositional) const override {
    auto line = "  " + make_option_name(option, isPositional) + make_option_opts(option);
    const std::string indent(textColumn, ' ');
    const int width = displayWidth(line);
    line += width < textColumn ? indent.substr(std::size_t(width)) : "\n" + indent;
    for (const char c : behindNames(option->get_description()))
      line += c == '\n' ? c + indent : std::string(1, c);
    return line + "\n";
  }

private:
  static constexpr int textColumn = 26, narrowest = 20;

  static std::string lines(const std::string& text, int columns) {
    std::string result;
    for (const auto& line : wrapped(text, columns)) result += (result.empty() ? "" : "\n") + line;
    return result;
  }
  std::string behindNames(const std::string& text) const {
    return lines(text, std::max(narrowest, columns_ - textColumn));
  }

  int columns_;
};

/// One command's parser together with where its values arrive.
struct Bound {
  const Command* command = nullptr;
  CLI::App* parser = nullptr;
  std::list<std::pair<const Option*, CLI::Option*>> options;
};

std::string helpOf(const Option& option) {
  auto help = localized(option.help);
  std::string_view before = ": ";
  for (const auto& choice : option.choices) {
    help.append(before).append(choice);
    before = ", ";
  }
  return help;
}

void addOption(Bound& bound, const Option& option) {
  CLI::Option* added = nullptr;
  const auto help = helpOf(option); // const: else the library takes it for the place of the value
  const auto placeholder = option.kind == Option::Kind::number ? "N" : "TEXT";
  switch (option.kind) {
  case Option::Kind::flag:
    added = bound.parser->add_flag(option.name, help);
    break;
  case Option::Kind::text:
  case Option::Kind::number:
    added = bound.parser->add_option(option.name, help)->expected(1)->type_name(placeholder);
    break;
  case Option::Kind::list:
    added = bound.parser->add_option(option.name, help)
                ->expected(1)
                ->type_name(placeholder)
                ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    break;
  case Option::Kind::positional:
    added = bound.parser->add_option(option.name, help)->expected(1)->type_name("");
    break;
  }
  if (option.kind == Option::Kind::number)
    added->check([](const std::string& value) {
      const auto number = parseInteger<std::int64_t>(value);
      return number && *number >= 0 ? std::string()
                                    : localized("not a number from 0 on: {value}", {{"value", value}});
    });
  added->required(option.required);
  bound.options.emplace_back(&option, added);
}

void bind(std::list<Bound>& all, CLI::App& parent, const Command& command) {
  auto& bound = all.emplace_back();
  bound.command = &command;
  bound.parser =
      parent.add_subcommand(command.name, localized(command.summary))->group(localized("Subcommands"));
  bound.parser->set_help_flag("-h,--help", localized("Print this help and exit"));
  for (const auto& option : command.options) addOption(bound, option);
  for (const auto& subcommand : command.subcommands) bind(all, *bound.parser, subcommand);
  if (!command.run) bound.parser->require_subcommand(1);
}

std::string asked(const std::string& word) { return localized("Did you mean {word}?", {{"word", word}}); }

/// The values of an option as its choices spell them; a message when one is none of them.
Result<std::vector<std::string>> chosen(const Option& option, std::vector<std::string> values) {
  for (auto& value : values) {
    if (option.choices.empty()) break;
    const auto same = std::ranges::find(option.choices, lowercased(value), lowercased);
    if (same != option.choices.end()) {
      value = *same;
      continue;
    }
    std::string all;
    for (const auto& choice : option.choices) all += (all.empty() ? "" : ", ") + choice;
    auto message = localized("{option}: {value} is none of {choices}.",
                             {{"option", option.name}, {"value", escapedControls(value)}, {"choices", all}});
    if (const auto nearest = nearestWord(value, option.choices)) message += " " + asked(*nearest);
    return Failure{message};
  }
  return values;
}

Outcome addValues(Arguments& arguments, const Option& option, const CLI::Option& parsed) {
  if (parsed.count() == 0) return success();
  if (option.kind == Option::Kind::flag) {
    arguments.add(option.name);
    return success();
  }
  const auto values = chosen(option, parsed.results());
  if (!values) return Failure{values.reason()};
  for (const auto& value : *values) arguments.add(option.name, value);
  return success();
}

/// What stands before a subcommand's name counts for the subcommand, where it has such an option; where it
/// has none, that is a mistake.
Outcome addOuterArguments(Arguments& arguments, const Bound& inner, const std::list<Bound>& all) {
  const auto outer = std::ranges::find(all, inner.parser->get_parent(), &Bound::parser);
  if (outer == all.end()) return success();
  for (const auto& [option, parsed] : outer->options) {
    if (parsed->count() == 0) continue;
    const auto same =
        std::ranges::find(inner.options, option->name, [](const auto& own) { return own.first->name; });
    if (same == inner.options.end())
      return Failure{localized("Not expected here: {words}.", {{"words", option->name}})};
    if (same->second->count() > 0) continue;
    if (auto added = addValues(arguments, *option, *parsed); !added) return added;
  }
  return success();
}

Outcome addArguments(Arguments& arguments, const Bound& bound, const std::list<Bound>& all) {
  for (const auto& [option, parsed] : bound.options)
    if (auto added = addValues(arguments, *option, *parsed); !added) return added;
  return addOuterArguments(arguments, bound, all);
}

/// The innermost command that was named; the whole without one.
const CLI::App& innermost(const CLI::App& app, const std::list<Bound>& all) {
  const auto named = std::find_if(all.rbegin(), all.rend(), [](const auto& b) { return b.parser->parsed(); });
  return named == all.rend() ? app : *named->parser;
}

std::string pathOf(const CLI::App& command) {
  const auto* parent = command.get_parent();
  return (parent ? pathOf(*parent) + " " : "") + command.get_name();
}

/// What could have stood in the place of a word.
std::vector<std::string> expectedAt(const CLI::App& command, bool isOption) {
  std::vector<std::string> words;
  if (isOption)
    for (const auto* option : command.get_options())
      for (const auto& name : option->get_lnames()) words.push_back("--" + name);
  else
    for (const auto* sub : command.get_subcommands({})) words.push_back(sub->get_name());
  return words;
}

std::string unexpected(const CLI::App& command, const std::vector<std::string>& remaining) {
  std::string words;
  for (const auto& word : remaining) words += (words.empty() ? "" : " ") + escapedControls(word);
  const auto message = localized("Not expected here: {words}.", {{"words", words}});
  const auto first = remaining.front().substr(0, remaining.front().find('='));
  const auto nearest = nearestWord(first, expectedAt(command, first.starts_with('-')));
  return nearest ? message + " " + asked(*nearest) : message;
}

/// The library's sentences are English: those that its users meet are said here.
std::string sentenceOf(const CLI::ParseError& error) {
  const std::string_view sentence = error.what(), required = " is required",
                         missing = ": 1 required "; // "TEXT missing", "N missing"
  const auto nameBefore = [&](std::string_view rest) {
    return std::string(sentence.substr(0, sentence.find(rest)));
  };
  if (sentence.ends_with(" subcommand is required")) return localized("A subcommand is required.");
  if (sentence.ends_with(required)) return localized("{name} is required.", {{"name", nameBefore(required)}});
  if (sentence.ends_with(" missing") && sentence.find(missing) != sentence.npos)
    return localized("{name}: the value is missing.", {{"name", nameBefore(missing)}});
  return std::string(sentence);
}

constexpr const char* helpWord = "help";

/// `help COMMAND` asks for what `COMMAND --help` prints.
std::vector<std::string> withoutHelpWord(std::vector<std::string> arguments) {
  if (arguments.empty() || arguments.front() != helpWord) return arguments;
  arguments.erase(arguments.begin());
  arguments.emplace_back("--help");
  return arguments;
}

class Parser {
public:
  Parser(Context& context, std::span<const Command> commands) : context_(context) {
    app_.option_defaults()->group(localized("Options")); // of the subcommands too
    app_.set_help_flag("-h,--help", localized("Print this help and exit"));
    app_.set_version_flag("--version", std::string("korvell ") + version,
                          localized("Print the version and exit"));
    app_.formatter(std::make_shared<WrappedHelp>(std::min(context.out.columns(), widestHelp)));
    app_.require_subcommand(0, 1);
    for (const auto& command : commands) bind(all_, app_, command);
    auto* help = app_.add_subcommand(helpWord, localized("Print the help of a command"));
    help->group(localized("Subcommands"))->set_help_flag("-h,--help", localized("Print this help and exit"));
    help->add_option("COMMAND", std::as_const(commandHelp_))->type_name("");
  }

  int run(const std::vector<std::string>& arguments) {
    {
      const InLanguage people(context_.language);
      if (const auto ended = understood(arguments)) return *ended;
    }
    return bound_->command->run(context_, values_);
  }

private:
  /// Finds the command and its values, or what the process ends with.
  std::optional<int> understood(const std::vector<std::string>& arguments) {
    constexpr bool withSubcommands = true;
    try {
      std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
      app_.parse(reversed);
    } catch (const CLI::CallForHelp&) {
      // The library complains of no word that is left over when help was asked for.
      if (const auto strange = app_.remaining(withSubcommands); !strange.empty())
        return wrongUsage(unexpected(innermost(app_, all_), strange));
      if (const auto flag = flagWithValue(arguments)) return wrongUsage(*flag);
      context_.out.write(app_.help()); // of the innermost command
      return exitOK;
    } catch (const CLI::CallForVersion&) {
      if (const auto flag = flagWithValue(arguments)) return wrongUsage(*flag);
      context_.out.line(std::string("korvell ") + version);
      return exitOK;
    } catch (const CLI::ExtrasError&) {
      // The library's own text lists them backwards.
      return wrongUsage(unexpected(innermost(app_, all_), app_.remaining(withSubcommands)));
    } catch (const CLI::ParseError& error) {
      // A word that stands where a subcommand should tells more than that one is missing.
      if (const auto strange = app_.remaining(withSubcommands); !strange.empty())
        return wrongUsage(unexpected(innermost(app_, all_), strange));
      return wrongUsage(escapedControls(sentenceOf(error)));
    }
    if (const auto flag = flagWithValue(arguments)) return wrongUsage(*flag);
    return found();
  }

  int wrongUsage(std::string_view message) {
    fail(context_, message);
    context_.err.line(
        localized("Run {command} --help for what it can do.", {{"command", pathOf(innermost(app_, all_))}}));
    return exitUsage;
  }

  /// The kind of an option, no positional, of the commands that were named.
  std::optional<Option::Kind> kindOf(std::string_view name) const {
    if (!name.starts_with("--")) return std::nullopt;
    if (name == "--help" || name == "--version") return Option::Kind::flag;
    for (const auto& bound : all_)
      if (bound.parser->parsed())
        for (const auto& option : bound.command->options)
          if (option.name == name) return option.kind;
    return std::nullopt;
  }

  /// The library would take "--yes=no" for "--yes".
  std::optional<std::string> flagWithValue(const std::vector<std::string>& arguments) const {
    bool isValue = false; // of the option before it
    for (const std::string_view word : arguments) {
      if (std::exchange(isValue, false)) continue;
      if (word == "--") break;
      const auto name = word.substr(0, word.find('='));
      const auto kind = kindOf(name);
      if (kind && *kind != Option::Kind::flag) isValue = name == word;
      if (kind == Option::Kind::flag && name != word)
        return localized("{option} takes no value.", {{"option", std::string(name)}});
    }
    return std::nullopt;
  }

  std::optional<int> found() {
    // Of a command and its subcommand the innermost one runs.
    for (auto bound = all_.rbegin(); bound != all_.rend(); ++bound) {
      if (!bound->parser->parsed() || !bound->command->run) continue;
      if (const auto added = addArguments(values_, *bound, all_); !added) return wrongUsage(added.reason());
      if (bound->command->writes && !context_.host.folders.hasHome())
        return fail(context_,
                    localized("Nobody knows your home folder: HOME names none, and neither does the "
                              "password database. Nothing was changed."));
      if (context_.host.defaults)
        for (const auto& trouble : settingsTroubles(*context_.host.defaults))
          context_.err.line("korvell: " + escapedControls(trouble.text));
      bound_ = &*bound;
      return std::nullopt;
    }
    context_.out.write(app_.help());
    return exitOK;
  }

  Context& context_;
  CLI::App app_{
      localized("Korvell watches this computer's health. Nothing that it measures leaves the machine."),
      "korvell"};
  const std::string commandHelp_ = localized("Its name, and that of its part");
  std::list<Bound> all_;
  const Bound* bound_ = nullptr; ///< what runs, with its values
  Arguments values_;
};

} // namespace

/// A wrong "--json=1" too: whoever writes it reads JSON.
bool asksForJSON(std::span<const std::string> arguments) {
  return std::ranges::any_of(
      arguments, [](std::string_view word) { return word.substr(0, word.find('=')) == "--json"; });
}

bool speaksToPrograms(std::span<const std::string> arguments) {
  static constexpr std::string_view commands[] = {"bar", "mcp", "metrics", completeWord};
  const auto has = [&](std::string_view word) {
    return std::ranges::find(arguments, word) != arguments.end();
  };
  if (asksForJSON(arguments)) return true;
  return !arguments.empty() && std::ranges::find(commands, arguments[0]) != std::end(commands) &&
         !has("--help") && !has("-h");
}

int runCommandLine(Context& context, std::span<const Command> commands,
                   const std::vector<std::string>& arguments) {
  // Whatever stands behind it is what somebody has typed so far and no argument of ours.
  if (!arguments.empty() && arguments.front() == completeWord)
    return printCompletions(context, commands, std::span(arguments).subspan(1));
  const int status = Parser(context, commands).run(withoutHelpWord(arguments));
  if (asksForJSON(arguments) && status != exitOK && !context.out.isUsed())
    printJSON(context.out, Value::object({{"error", context.failure.value_or(localized("not done"))}}));
  return status;
}

} // namespace korvell
