#include "App/CommandLineTool.h"

#include "Base/Localization.h"
#include "Base/Text.h"
#include "Base/UUID.h"
#include "Base/Value.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace korvell {

namespace fs = std::filesystem;

namespace {

constexpr const char* toolName = "korvell";
constexpr std::string_view marker = "__PATH__";
constexpr const char* tellPATH = "printf '\\n__PATH__%s' \"$PATH\"";
constexpr Seconds patience{5};

struct Profile {
  std::string_view shell; ///< its file name
  const char* file;
  const char* line; ///< what puts the folder in front of the PATH
};
constexpr const char* exportLine = "export PATH=\"$HOME/.local/bin:$PATH\"";
constexpr Profile zsh = {"zsh", "~/.zshrc", exportLine};
constexpr Profile profiles[] = {
    {"bash", "~/.bashrc", exportLine},
    zsh,
    {"fish", "~/.config/fish/config.fish", "fish_add_path ~/.local/bin"},
};
constexpr Profile otherProfile = {"", "~/.profile", exportLine};

Profile profileOf(SystemKind system, const std::string& shell) {
  if (system == SystemKind::macOS) return zsh;
  const auto name = fs::path(shell).filename().string();
  const auto* found = std::ranges::find(profiles, name, &Profile::shell);
  return found == std::end(profiles) ? otherProfile : *found;
}

std::string failed(const std::error_code& error) {
  return localized("Could not install: {reason}", {{"reason", error.message()}});
}

/// Links `link` to `tool`; why it could not be done, otherwise empty. What stands there and is no link stays.
std::string renewLink(const std::string& tool, const std::string& link) {
  std::error_code error;
  const auto there = fs::symlink_status(link, error);
  if (there.type() == fs::file_type::none) return failed(error);
  if (fs::exists(there) && !fs::is_symlink(there))
    return localized("~/.local/bin/korvell already exists and is not a link. Remove it and try again.");
  // Over nothing it is made in place, which fails if somebody else was quicker.
  const auto made = fs::is_symlink(there) ? link + "." + randomUUID() : link;
  if (fs::create_symlink(tool, made, error); error) return failed(error);
  if (made == link) return {};
  fs::rename(made, link, error);
  if (!error) return {};
  std::error_code ignored;
  fs::remove(made, ignored);
  return failed(error);
}

/// What an interactive shell wrote after the marker; a shell that says goodbye does so on a line of its own.
std::string_view pathIn(std::string_view output) {
  const auto start = output.rfind(marker);
  if (start == std::string_view::npos) return {};
  output.remove_prefix(start + marker.size());
  return output.substr(0, output.find('\n'));
}

} // namespace

std::string CommandLineTool::toolPath() const {
  const auto beside = fs::path(services_.program).parent_path();
  const auto contents = beside.parent_path();
  const bool isBundle = beside.filename() == "MacOS" && contents.filename() == "Contents";
  return (isBundle ? contents / "Helpers" / toolName : beside / toolName).string();
}

std::string CommandLineTool::folder() const { return services_.home + "/.local/bin"; }

std::string CommandLineTool::linkPath() const { return folder() + "/" + toolName; }

std::string CommandLineTool::shell() const {
  const char* usual = services_.system == SystemKind::macOS ? "/bin/zsh" : "/bin/sh";
  return services_.environment("SHELL").value_or(usual);
}

CommandLineTool::Linked CommandLineTool::link(const Cancellation& cancellation) const {
  std::error_code error;
  const auto tool = toolPath(), link = linkPath();
  if (services_.program.empty() || !fs::exists(tool, error))
    return {.message = localized("The command line tool is missing from this copy of Korvell.")};
  fs::create_directories(folder(), error);
  if (error) return {.message = failed(error)};
  // A copy that runs from that very folder is its own tool: renewed, the link would lead to itself.
  const bool isThere = fs::equivalent(fs::path(tool).parent_path(), folder(), error);
  if (!isThere)
    if (auto trouble = renewLink(tool, link); !trouble.empty()) return {.message = trouble};
  if (isOnPATH(cancellation))
    return {true, true, localized("Installed. Open a new terminal window and run korvell --help.")};
  const auto profile = profileOf(services_.system, shell());
  return {true, false,
          localized("Installed at ~/.local/bin/korvell, but ~/.local/bin is not on your PATH. Add {line} to "
                    "{profile}.",
                    {{"line", profile.line}, {"profile", profile.file}})};
}

std::string CommandLineTool::claudeCommand() const {
  return "claude mcp add korvell -- " + shellQuoted(toolPath()) + " mcp";
}

std::string CommandLineTool::clientSnippet() const {
  return "{\n  \"mcpServers\": {\n    \"korvell\": {\n      \"command\": " + dumpJSON(toolPath()) +
         ",\n      \"args\": [\"mcp\"]\n    }\n  }\n}";
}

bool CommandLineTool::isOnPATH(const Cancellation& cancellation) const {
  const auto result = services_.run(shell(), {"-ilc", tellPATH}, patience, cancellation);
  if (!result) return false;
  return std::ranges::any_of(split(pathIn(result->output), ':'), [this](std::string_view entry) {
    while (entry.ends_with('/')) entry.remove_suffix(1);
    return entry == folder() || entry == "~/.local/bin";
  });
}

std::string shellQuoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text)
    if (c == '\'')
      quoted += "'\\''";
    else
      quoted += c;
  return quoted + "'";
}

} // namespace korvell
