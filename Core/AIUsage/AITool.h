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

// Where the tools keep their session logs.
inline std::string claudeRoot(const std::string& home) { return home + "/.claude/projects"; }
inline std::string codexRoot(const std::string& home) { return home + "/.codex/sessions"; }

} // namespace korvell
