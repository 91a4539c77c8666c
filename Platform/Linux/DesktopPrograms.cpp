#include "Platform/Linux/DesktopPrograms.h"

#include "Base/Shell.h"

#include <algorithm>
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

struct PowerPage {
  const char* desktop; ///< in XDG_CURRENT_DESKTOP
  const char* name;
  const char* argument; ///< null where it needs none
};

constexpr PowerPage powerPages[] = {{"GNOME", "gnome-control-center", "power"},
                                    {"Unity", "gnome-control-center", "power"},
                                    {"KDE", "systemsettings", "powerdevilprofilesconfig"},
                                    {"KDE", "systemsettings5", "powerdevilprofilesconfig"},
                                    {"XFCE", "xfce4-power-manager-settings", nullptr},
                                    {"MATE", "mate-power-preferences", nullptr},
                                    {"X-Cinnamon", "cinnamon-settings", "power"}};

/// Starts a program in a session of its own and does not wait for it.
constexpr const char* detacher = "/usr/bin/setsid";
constexpr Seconds patience{5};

bool isSet(const Environment& environment, std::string_view name) {
  return !environment(name).value_or("").empty();
}

std::optional<DesktopProgram> installed(const char* name, const std::vector<std::string>& folders) {
  for (const auto& folder : folders)
    if (const auto path = folder + "/" + name; access(path.c_str(), X_OK) == 0)
      return DesktopProgram{.program = path, .arguments = {}};
  return std::nullopt;
}

/// One of the names between colons.
bool isListed(std::string_view list, std::string_view name) {
  for (;;) {
    const auto end = std::min(list.find(':'), list.size());
    if (list.substr(0, end) == name) return true;
    if (end == list.size()) return false;
    list.remove_prefix(end + 1);
  }
}

} // namespace

std::optional<DesktopProgram> terminalWindow(const std::vector<std::string>& command,
                                             const Environment& environment,
                                             const std::vector<std::string>& folders) {
  if (!isSet(environment, "DISPLAY") && !isSet(environment, "WAYLAND_DISPLAY")) return std::nullopt;
  for (const auto& [name, option] : terminals)
    if (auto window = installed(name, folders)) {
      if (option) window->arguments.emplace_back(option);
      window->arguments.insert(window->arguments.end(), command.begin(), command.end());
      return window;
    }
  return std::nullopt;
}

std::optional<DesktopProgram> powerSettings(const Environment& environment,
                                            const std::vector<std::string>& folders) {
  const auto desktop = environment("XDG_CURRENT_DESKTOP").value_or("");
  for (const auto& page : powerPages)
    if (isListed(desktop, page.desktop))
      if (auto program = installed(page.name, folders)) {
        if (page.argument) program->arguments.emplace_back(page.argument);
        return program;
      }
  return std::nullopt;
}

void DesktopProgram::open() const {
  std::vector<std::string> detached = {"--fork", program};
  detached.insert(detached.end(), arguments.begin(), arguments.end());
  Shell::run(detacher, detached, patience);
}

} // namespace korvell
