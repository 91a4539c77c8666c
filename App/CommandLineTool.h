#pragma once
// The command line tool that comes with the application: linked into the user's PATH, and told to agents.

#include "Base/Cancellation.h"
#include "Base/Shell.h"
#include "Base/UserFolders.h"
#include "Platform/Host.h"

#include <optional>
#include <string>
#include <string_view>

namespace korvell {

class CommandLineTool {
public:
  struct Services {
    SystemKind system = SystemKind::linuxDesktop;
    std::string program; ///< the running program's path; empty when unknown
    std::string home;
    Environment environment;
    CommandRunner run;
  };

  explicit CommandLineTool(Services services) : services_(std::move(services)) {}

  /// Where the tool is: in the application's bundle, or beside the running program where that is in none.
  std::string toolPath() const;
  /// "~/.local/bin/korvell", with the home folder written out.
  std::string linkPath() const;
  struct Linked {
    bool isLinked = false;
    std::optional<bool> isOnPATH; ///< absent when it was not linked
    std::string message;          ///< the outcome in a sentence, or two
  };
  /// Makes the link, or renews it: there is one at every moment then. What stands there and is no link is not
  /// touched. Blocks while the user's shell starts, for five seconds at most.
  Linked link(const Cancellation& cancellation = {}) const;
  /// The same; its message.
  std::string install(const Cancellation& cancellation = {}) const { return link(cancellation).message; }
  /// What adds the tool to Claude Code, for a shell.
  std::string claudeCommand() const;
  /// What adds it to other agents' programs: their configuration in JSON, of several lines.
  std::string clientSnippet() const;

private:
  bool isOnPATH(const Cancellation& cancellation) const;
  std::string shell() const;
  std::string folder() const;

  Services services_;
};

/// For a POSIX shell: in single quotes, whatever the text holds.
std::string shellQuoted(std::string_view text);

} // namespace korvell
