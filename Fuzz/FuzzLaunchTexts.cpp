// Any bytes as launch files, and as what foreign programs and the kernel of macOS tell.

#include "Core/Startup/LaunchFileRules.h"
#include "Fuzz/Expect.h"
#include "Platform/Formats/InterfaceList.h"
#include "Platform/Formats/KeyFile.h"
#include "Platform/Formats/LaunchJobs.h"
#include "Platform/Formats/ListeningPorts.h"
#include "Platform/Formats/ProcessTraffic.h"

#include <algorithm>

using namespace korvell;

namespace {

/// A world in which nothing exists but a shell.
class BareWorld final : public LaunchItems {
public:
  std::vector<LaunchFile> files() override { return {}; }
  LoadedJobs loadedJobs() override { return {}; }
  bool isMissing(const std::string& path) override { return path != "/usr/bin/sh"; }
  const ProgramPlaces& places() const override { return places_; }
  Outcome stop(const LaunchJob&) override { return success(); }
  void removed(const LaunchJob&) override {}

private:
  ProgramPlaces places_{.folders = {"/usr/bin"}, .flatpakRoots = {"/var/lib/flatpak"}};
};

void launchFiles(std::string_view text) {
  BareWorld items;
  for (const auto format :
       {LaunchFormat::propertyList, LaunchFormat::desktopEntry, LaunchFormat::systemdService}) {
    const LaunchFile file{LaunchScope::user, format, "/launch/a.plist", std::string(text)};
    const auto item = readLaunchFile(file, items);
    if (!item) continue;
    expect(!item->label.empty() && item->plistPath == file.path);
    expect(!item->program || !item->program->empty());
    if (isProgramMissing(item->program, items)) expect(item->program.has_value());
  }
}

void commandLines(std::string_view text) {
  if (const auto arguments = desktopEntryArguments(text)) expect(!arguments->front().empty());
  if (const auto program = unitProgram(text)) expect(!program->empty());
  for (const char c : unitNameEscaped(text)) expect(c != '/' && c != ' ' && c != '\0');
}

void listings(std::string_view text) {
  for (const auto& label : parseLaunchJobs(text)) expect(!label.empty());
  parseProcessTraffic(text);
  for (const auto& [pid, ports] : parseListeningPorts(text)) {
    expect(std::is_sorted(ports.begin(), ports.end()) && !ports.empty());
    expect(std::adjacent_find(ports.begin(), ports.end()) == ports.end());
  }
}

void interfaces(std::string_view bytes) {
  const std::vector<std::byte> exact(reinterpret_cast<const std::byte*>(bytes.data()),
                                     reinterpret_cast<const std::byte*>(bytes.data()) + bytes.size());
  const auto list = parseInterfaceList(exact, [](unsigned index) -> std::optional<std::string> {
    if (index % 3 == 0) return std::nullopt;
    return "en" + std::to_string(index % 8);
  });
  expect(list.size() <= 8);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  launchFiles(text);
  commandLines(text);
  listings(text);
  interfaces(text);
  return 0;
}
