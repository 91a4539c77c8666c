#include "Platform/Linux/TerminalWindow.h"

#include "Base/Shell.h"

#include <unistd.h>

namespace korvell {

namespace {

struct Terminal {
  const char* name;
  const char* option; ///< before the command; null where it needs none
};

// The first two stand for what the user or the system's administrator chose.
constexpr Terminal terminals[] = {{"xdg-terminal-exec", nullptr},
                                  {"x-terminal-emulator", "-e"},
                                  {"gnome-terminal", "--"},
                                  {"kgx", "--"},
                                  {"konsole", "-e"},
                                  {"xfce4-terminal", "-x"},
                                  {"alacritty", "-e"},
                                  {"foot", nullptr},
                                  {"kitty", nullptr},
                                  {"xterm", "-e"}};

/// Starts a program in a session of its own and does not wait for it.
constexpr const char* detacher = "/usr/bin/setsid";
constexpr Seconds patience{5};

bool isSet(const Environment& environment, std::string_view name) {
  return !environment(name).value_or("").empty();
}

} // namespace

std::optional<TerminalWindow> TerminalWindow::with(const std::vector<std::string>& command,
                                                   const Environment& environment,
                                                   const std::vector<std::string>& folders) {
  if (!isSet(environment, "DISPLAY") && !isSet(environment, "WAYLAND_DISPLAY")) return std::nullopt;
  for (const auto& [name, option] : terminals)
    for (const auto& folder : folders) {
      TerminalWindow window{.program = folder + "/" + name, .arguments = {}};
      if (access(window.program.c_str(), X_OK) != 0) continue;
      if (option) window.arguments.emplace_back(option);
      window.arguments.insert(window.arguments.end(), command.begin(), command.end());
      return window;
    }
  return std::nullopt;
}

void TerminalWindow::open() const {
  std::vector<std::string> detached = {"--fork", program};
  detached.insert(detached.end(), arguments.begin(), arguments.end());
  Shell::run(detacher, detached, patience);
}

} // namespace korvell
