#include "Platform/Formats/TrashInfo.h"

#include <fmt/format.h>

namespace korvell {
namespace {

/// As in a URL, slashes kept.
std::string percentEncoded(std::string_view bytes) {
  constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.~/";
  std::string result;
  for (const char byte : bytes) {
    if (plain.find(byte) != std::string_view::npos)
      result += byte;
    else
      result += fmt::format("%{:02X}", static_cast<unsigned char>(byte));
  }
  return result;
}

} // namespace

std::string trashInfo(std::string_view path, const LocalTime& deleted) {
  return fmt::format("[Trash Info]\nPath={}\nDeletionDate={:04}-{:02}-{:02}T{:02}:{:02}:{:02}\n",
                     percentEncoded(path), deleted.year, deleted.month, deleted.day, deleted.hour,
                     deleted.minute, deleted.second);
}

std::string trashName(std::string_view name, int attempt) {
  const std::string ending = attempt > 1 ? fmt::format(".{}", attempt) : std::string();
  std::size_t room = 255 - trashInfoSuffix.size() - ending.size();
  if (name.size() > room) {
    while (room > 0 && (static_cast<unsigned char>(name[room]) & 0xC0) == 0x80) --room;
    name = name.substr(0, room);
  }
  return std::string(name) + ending;
}

} // namespace korvell
