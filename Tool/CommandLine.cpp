// The only file that knows the command-line library: it turns the table of commands into its parser.

#include "Tool/Command.h"

#include "Base/Localization.h"
#include "Base/Text.h"
#include "Tool/Version.h"
#include "Tool/Wrap.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <list>
#include <memory>
#include <sstream>

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
  context.err.line("korvell: " + std::string(message));
  return code;
}

namespace {

constexpr int widestHelp = 100;

/// The library's help, its texts broken where the terminal ends.
class WrappedHelp final : public CLI::Formatter {
public:
  explicit WrappedHelp(int columns) : columns_(columns) { column_width(textColumn); }

  std::string make_description(const CLI::App* app) const override {
    return lines(app->get_description(), columns_) + "\n";
  }
  std::string make_subcommand(const CLI::App* command) const override {
    std::ostringstream line;
    CLI::detail::format_help(line, command->get_name(), behindNames(command->get_description()), textColumn);
    return line.str();
  }
  std::string make_option_desc(const CLI::Option* option) const override {
    return behindNames(option->get_description());
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
      return number && *number >= 0 ? std::string() : localized("not a whole number: ") + value;
    });
  if (!option.choices.empty()) added->check(CLI::IsMember(option.choices).description(""));
  added->required(option.required);
  bound.options.emplace_back(&option, added);
}

void bind(std::list<Bound>& all, CLI::App& parent, const Command& command) {
  auto& bound = all.emplace_back();
  bound.command = &command;
  bound.parser = parent.add_subcommand(command.name, localized(command.summary));
  bound.parser->set_help_flag("-h,--help", localized("Print this help and exit"));
  for (const auto& option : command.options) addOption(bound, option);
  for (const auto& subcommand : command.subcommands) bind(all, *bound.parser, subcommand);
  if (!command.run) bound.parser->require_subcommand(1);
}

void addValues(Arguments& arguments, const Option& option, const CLI::Option& parsed) {
  if (parsed.count() == 0) return;
  if (option.kind == Option::Kind::flag)
    arguments.add(option.name);
  else
    for (const auto& value : parsed.results()) arguments.add(option.name, value);
}

Arguments argumentsOf(const Bound& bound) {
  Arguments arguments;
  for (const auto& [option, parsed] : bound.options) addValues(arguments, *option, *parsed);
  return arguments;
}

/// What stands before a subcommand's name counts for the subcommand, where it has such an option; otherwise
/// the name of the option that it does not have.
std::optional<std::string> addOuterArguments(Arguments& arguments, const Bound& inner,
                                             const std::list<Bound>& all) {
  const auto outer = std::ranges::find(all, inner.parser->get_parent(), &Bound::parser);
  if (outer == all.end()) return std::nullopt;
  for (const auto& [option, parsed] : outer->options) {
    if (parsed->count() == 0) continue;
    const auto same =
        std::ranges::find(inner.options, option->name, [](const auto& own) { return own.first->name; });
    if (same == inner.options.end()) return option->name;
    if (same->second->count() == 0) addValues(arguments, *option, *parsed);
  }
  return std::nullopt;
}

std::string unexpected(const CLI::App& app) {
  constexpr bool withSubcommands = true;
  std::string words;
  for (const auto& word : app.remaining(withSubcommands)) words += " " + escapedControls(word);
  return localized("Not expected here:") + words;
}

int wrongUsage(Context& context, std::string_view message) {
  fail(context, message);
  context.err.line(localized("Run korvell --help for what it can do."));
  return exitUsage;
}

} // namespace

int runCommandLine(Context& context, std::span<const Command> commands,
                   const std::vector<std::string>& arguments) {
  CLI::App app(
      localized("Korvell watches this computer's health. Nothing that it measures leaves the machine."),
      "korvell");
  app.set_help_flag("-h,--help", localized("Print this help and exit"));
  app.set_version_flag("--version", std::string("korvell ") + version,
                       localized("Print the version and exit"));
  app.formatter(std::make_shared<WrappedHelp>(std::min(context.out.columns(), widestHelp)));
  app.require_subcommand(0, 1);
  std::list<Bound> all;
  for (const auto& command : commands) bind(all, app, command);

  try {
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    app.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    context.out.write(app.help()); // of the innermost command
    return exitOK;
  } catch (const CLI::CallForVersion&) {
    context.out.line(std::string("korvell ") + version);
    return exitOK;
  } catch (const CLI::ExtrasError&) {
    return wrongUsage(context, unexpected(app)); // the library's own text lists them backwards
  } catch (const CLI::ParseError& error) {
    return wrongUsage(context, error.what());
  }

  // Of a command and its subcommand the innermost one runs.
  for (auto bound = all.rbegin(); bound != all.rend(); ++bound) {
    if (!bound->parser->parsed() || !bound->command->run) continue;
    auto values = argumentsOf(*bound);
    if (const auto stray = addOuterArguments(values, *bound, all))
      return wrongUsage(context, localized("Not expected here:") + " " + *stray);
    return bound->command->run(context, values);
  }
  context.out.write(app.help());
  return exitOK;
}

} // namespace korvell
