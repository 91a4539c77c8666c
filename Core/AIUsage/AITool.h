#pragma once
// The tools whose logs are read.

#include "Base/Enum.h"

namespace korvell {

enum class AITool { claude, codex };

template <>
struct EnumTable<AITool> {
  /// The raw values are stored in the database and shown.
  static constexpr EnumCase<AITool> cases[] = {{AITool::claude, "Claude Code", "Claude Code"},
                                               {AITool::codex, "Codex", "Codex"}};
};

/// Where a tool keeps its session logs, below the home folder.
constexpr std::string_view logFolder(AITool tool) {
  return tool == AITool::claude ? "/.claude/projects" : "/.codex/sessions";
}

} // namespace korvell
