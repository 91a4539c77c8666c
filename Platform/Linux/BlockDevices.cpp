#include "Platform/Linux/BlockDevices.h"

#include "Platform/Formats/LinuxMemory.h"

#include <algorithm>

namespace korvell {

BlockDevices::BlockDevices(const std::string& proc, std::string sys)
    : diskStats_(proc + "/diskstats"), folder_(std::move(sys) + "/block/") {
  findZram();
}

std::map<std::uint64_t, ByteCounters> BlockDevices::counters(FileReader& reader) {
  std::map<std::uint64_t, ByteCounters> result;
  const auto text = diskStats_.read(reader);
  if (!text) return result;
  parseDiskStats(*text, lines_);
  if (!isKnown()) learn();
  for (std::size_t i = 0; i < lines_.size(); ++i)
    if (known_[i].identity) result.emplace(*known_[i].identity, lines_[i].bytes);
  return result;
}

bool BlockDevices::isKnown() const {
  return std::ranges::equal(lines_, known_, [](const BlockDeviceLine& line, const Known& known) {
    return line.minor == known.minor && line.major == known.major && line.name == known.name;
  });
}

void BlockDevices::learn() {
  known_.clear();
  for (const auto& line : lines_) {
    Known known{std::string(line.name), line.major, line.minor, {}};
    if (counts(line.name)) known.identity = blockDeviceIdentity(line);
    known_.push_back(std::move(known));
  }
  findZram();
}

bool BlockDevices::counts(std::string_view name) const {
  if (!mayBeWholeDisk(name)) return false;
  // A partition has no entry of its own there; what has slaves is a layer over disks that are counted.
  std::string folder = folder_ + std::string(name);
  std::ranges::replace(folder.begin() + std::ptrdiff_t(folder_.size()), folder.end(), '/', '!');
  return exists(folder) && folderNames(folder + "/slaves").empty();
}

void BlockDevices::findZram() {
  zramFiles_.clear();
  for (const auto& name : folderNames(folder_))
    if (name.starts_with("zram")) zramFiles_.push_back(folder_ + name + "/mm_stat");
}

std::uint64_t BlockDevices::zramBytes(FileReader& reader) {
  std::uint64_t bytes = 0;
  for (const auto& file : zramFiles_)
    if (const auto text = reader.read(file)) bytes += parseZramUse(*text);
  return bytes;
}

} // namespace korvell
