#pragma once
// Files of groups with keys and values, "[Group]" and "Key=value": desktop entries and systemd units. Also
// how each of the two writes a command line.

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvell {

class KeyFile {
public:
  /// Comments begin with "#". Never fails: a line that is neither group, comment nor assignment is skipped.
  static KeyFile parseDesktopEntry(std::string_view text);
  /// Comments also begin with ";"; a line that ends in a backslash goes on in the next one.
  static KeyFile parseUnit(std::string_view text);

  /// The last assignment to a key, as it stands (escapes included), without surrounding space.
  std::optional<std::string_view> last(std::string_view group, std::string_view key) const;
  /// Every assignment in order. In units an empty one takes back those before it.
  std::vector<std::string_view> all(std::string_view group, std::string_view key) const;

private:
  struct Assignment {
    std::string group, key, value;
  };
  void readLine(std::string_view line, std::string& group);
  std::vector<Assignment> assignments_;
};

/// Of a desktop entry's Exec: the arguments, unquoted and unescaped (a backslash also outside of quotes),
/// "%%" as "%"; other field codes stay. Nothing when quotes don't match or there is no program.
std::optional<std::vector<std::string>> desktopEntryArguments(std::string_view exec);

/// The program of that line; of "env A=b program" the program. Nothing when options of env hide which it is.
std::optional<std::string> desktopEntryProgram(std::string_view exec);

/// Of a unit's ExecStart, without the prefixes ("@", "-", ":", "+", "!", "|") of the program: its path or
/// name, unquoted and unescaped, specifiers ("%h") left as they stand. Nothing when there is none.
std::optional<std::string> unitProgram(std::string_view execStart);

/// A text as part of a unit's name: everything but ASCII letters, digits, ":", "_" and "." becomes \xNN.
std::string unitNameEscaped(std::string_view text);

/// The folders of drop-ins that are meant for a unit by its name, the most particular first:
/// "a-b.service.d", "a-.service.d"; of an instance also those of its template.
std::vector<std::string> dropInNames(std::string_view unit);
/// The folder of those for every unit of its type: "service.d".
std::string dropInNameOfType(std::string_view unit);

/// The service that systemd makes of an autostart entry, by the entry's file name.
std::string autostartUnitName(std::string_view desktopFileName);

} // namespace korvell
