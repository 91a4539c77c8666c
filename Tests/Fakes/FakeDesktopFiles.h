#pragma once
// Desktop entries in memory.

#include "Platform/DesktopFiles.h"

#include <map>
#include <string>
#include <vector>

namespace korvell {

struct FakeDesktopFiles final : DesktopFiles {
  std::vector<DesktopFile> files;
  std::map<std::string, std::string> programs; ///< as named, to where it really is
  std::uint64_t version = 1;

  std::uint64_t stamp() override { return version; }
  std::vector<DesktopFile> read() override { return files; }
  std::optional<std::string> realProgram(const std::string& program) override {
    const auto found = programs.find(program);
    return found == programs.end() ? std::nullopt : std::optional(found->second);
  }
  void add(const std::string& id, const std::string& keys) {
    files.push_back(
        {id, "/usr/share/applications/" + id + ".desktop", "[Desktop Entry]\nType=Application\n" + keys});
    ++version;
  }
};

} // namespace korvell
