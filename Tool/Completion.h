#pragma once
// What could stand where somebody who types a command has come to, from the commands' own definitions: the
// shells' scripts ask `korvell complete WORD…` with the words so far, the last one being typed and perhaps
// empty, and get a line for each candidate: the value, a tab, a few words about it. The only line ":files"
// asks the shell for the names of files.
//
// The scripts know nothing of the commands, so that those of an older installation complete a newer tool.

#include "Tool/Command.h"

#include <span>
#include <string>
#include <vector>

namespace korvell {

inline constexpr const char* fileNames = ":files";

struct Completions {
  std::vector<Suggestion> candidates; ///< of all beginnings: the shell compares
  bool areFiles = false;              ///< the shell is to complete names of files
};

/// Never empty `words`: the last one is the one that is typed.
Completions completions(Context& context, std::span<const Command> commands,
                        std::span<const std::string> words);

int printCompletions(Context& context, std::span<const Command> commands, std::span<const std::string> words);

enum class CompletedShell { bash, zsh, fish };

template <>
struct EnumTable<CompletedShell> {
  using enum CompletedShell;
  static constexpr EnumCase<CompletedShell> cases[] = {
      {bash, "bash", "bash"}, {zsh, "zsh", "zsh"}, {fish, "fish", "fish"}};
};

/// What the shell reads to complete the tool's words.
std::string_view completionScript(CompletedShell shell);

} // namespace korvell
