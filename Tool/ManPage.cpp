#include "Tool/ManPage.h"

#include "Base/Text.h"
#include "Tool/Wrap.h"

namespace korvell {

namespace {

constexpr int lineWidth = 76;

/// Characters that roff would read as its own.
std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) c == '\\' ? result += "\\e" : result += c;
  return result;
}

/// A word of a macro's line.
std::string argument(std::string_view text) { return "\"" + escaped(text) + "\""; }

/// Sentences, each from a line of its own: so roff knows where they end.
std::string paragraph(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto end = text.find(". ");
    const auto sentence = text.substr(0, end == std::string_view::npos ? end : end + 1);
    for (const auto& line : wrapped(sentence, lineWidth)) {
      if (line.starts_with('.') || line.starts_with('\'')) result += "\\&";
      result += escaped(line) + "\n";
    }
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 2);
  }
  return result;
}

std::string sentence(std::string text) {
  if (!text.ends_with('.')) text += '.';
  return text;
}

std::string choicesText(const Option& option) {
  if (option.choices.empty()) return "";
  std::string text = " One of";
  for (std::size_t i = 0; i < option.choices.size(); ++i)
    text += (i == 0 ? " " : i + 1 == option.choices.size() ? " and " : ", ") + option.choices[i];
  return text + ".";
}

std::string placeholder(const Option& option) {
  if (option.kind == Option::Kind::flag) return "";
  return std::string(" Ar ") + (option.kind == Option::Kind::number ? "N" : option.isPath ? "FILE" : "TEXT");
}

/// "Fl -limit Ar N", or "Ar PID" of a place.
std::string optionMacro(const Option& option) {
  if (option.kind == Option::Kind::positional) return "Ar " + argument(option.name);
  return "Fl " + option.name.substr(1) + placeholder(option);
}

void addOptions(std::string& page, const Command& command) {
  if (command.options.empty()) return;
  page += ".Bl -tag -width Ds\n";
  for (const auto& option : command.options)
    page += ".It " + optionMacro(option) + "\n" + paragraph(sentence(option.help) + choicesText(option));
  page += ".El\n";
}

void addCommand(std::string& page, const Command& command, const std::string& outer) {
  const auto name = outer + command.name;
  std::string heading = ".Ss " + name;
  for (const auto& option : command.options)
    if (option.kind == Option::Kind::positional)
      heading += (option.required ? " Ar " : " Op Ar ") + argument(option.name);
  page += heading + "\n" + paragraph(sentence(command.summary));
  addOptions(page, command);
  for (const auto& subcommand : command.subcommands) addCommand(page, subcommand, name + " ");
}

constexpr std::string_view opening = R"(.Dt KORVELL 1
.Os
.Sh NAME
.Nm korvell
.Nd watch this computer's health
.Sh SYNOPSIS
.Nm
.Ar command
.Op Ar option ...
.Nm
.Cm help
.Op Ar command
.Nm
.Fl -version
.Sh DESCRIPTION
.Nm
measures the machine and every process, attributes processes to the
applications responsible for them, and shows what it finds.
A figure that cannot be read is shown as a dash, never guessed.
.Pp
While a keeper runs (the application, or
.Nm
.Cm run ) ,
the other commands ask it and show what it shows.
Without one they measure by themselves.
Nothing that is measured leaves the machine.
.Pp
Every command takes
.Fl h
and
.Fl -help .
Values of options are taken in any case.
.Sh COMMANDS
)";

constexpr std::string_view closing = R"(.Sh ENVIRONMENT
.Bl -tag -width Ds
.It Ev NO_COLOR
Set to anything: no colours.
They also need a terminal.
.It Ev COLUMNS
The width to print for where there is no terminal.
.It Ev XDG_DATA_HOME , XDG_CONFIG_HOME , XDG_RUNTIME_DIR
Where the data, the settings and the keeper's socket are, except on macOS.
.El
.Sh FILES
.Bl -tag -width Ds
.It Pa ~/.local/share/korvell
The databases; on macOS
.Pa ~/Library/Application Support/Korvell .
.It Pa ~/.config/korvell/settings.json
The settings; on macOS the user defaults of
.Li com.korvell.Korvell .
.El
.Sh EXIT STATUS
0 when it was done, 1 when it failed, 2 for wrong usage.
.Pp
A question that goes to nobody is answered with no:
.Fl -yes
is never implied by the absence of a terminal.
.Sh EXAMPLES
Show how the machine is doing, and why:
.Dl $ korvell status
.Pp
Who kept the processor busy at that time?
.Dl $ korvell history --at 14:32
.Pp
Who listens there, and how to stop it:
.Dl $ korvell port 3000
)";

} // namespace

std::string manPage(std::span<const Command> commands, std::string_view date) {
  std::string page = ".Dd " + std::string(date) + "\n" + std::string(opening);
  for (const auto& command : commands) addCommand(page, command, "");
  return page + std::string(closing);
}

} // namespace korvell
