#pragma once
// The command line of a program with windows: addresses, and a few questions that are answered in words
// before anything opens. The toolkit's own options, such as "-platform", are left to it.

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

struct StartArguments {
  std::vector<std::string> addresses; ///< what is no option, and all behind "--"
  bool wantsHelp = false, wantsVersion = false;
  std::optional<std::string> unknown = {}; ///< the first option that is nobody's

  /// Without the program's name.
  static StartArguments of(std::span<const char* const> arguments);
};

/// What the program says instead of starting.
struct StartAnswer {
  std::string text;   ///< lines, localised
  int exitStatus = 0; ///< 2, and then for standard error, where the arguments were wrong
};
/// Nothing where it is to start. `purpose`: a sentence; `operands`: "[URL]...", or empty where it takes none.
std::optional<StartAnswer> startAnswer(const StartArguments& arguments, std::string_view program,
                                       std::string_view version, const std::string& purpose,
                                       std::string_view operands);

} // namespace korvell
