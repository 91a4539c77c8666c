#include "Platform/Formats/InterfaceList.h"

#include <algorithm>
#include <cstring>

namespace korvell {

namespace {

constexpr std::size_t lengthOffset = 0;
constexpr std::size_t typeOffset = 3;
constexpr std::size_t indexOffset = 12;
constexpr std::size_t receivedOffset = 96;
constexpr std::size_t sentOffset = 104;
constexpr std::size_t neededBytes = 112;         // up to the end of the sent bytes
constexpr std::uint8_t extendedInformation = 18; // RTM_IFINFO2

template <class Integer>
Integer read(std::span<const std::byte> record, std::size_t offset) {
  Integer value;
  std::memcpy(&value, record.data() + offset, sizeof value);
  return value;
}

} // namespace

std::vector<InterfaceCounters> parseInterfaceList(std::span<const std::byte> buffer,
                                                  const InterfaceNames& nameOf) {
  std::vector<InterfaceCounters> result;
  while (buffer.size() >= neededBytes) {
    const auto length = read<std::uint16_t>(buffer, lengthOffset);
    if (length == 0) break;
    if (read<std::uint8_t>(buffer, typeOffset) == extendedInformation) {
      if (auto name = nameOf(read<std::uint16_t>(buffer, indexOffset))) {
        const ByteCounters bytes{.in = read<std::uint64_t>(buffer, receivedOffset),
                                 .out = read<std::uint64_t>(buffer, sentOffset)};
        const auto known = std::find_if(result.begin(), result.end(),
                                        [&](const InterfaceCounters& i) { return i.name == *name; });
        if (known != result.end())
          known->bytes = bytes;
        else
          result.push_back({.name = std::move(*name), .displayName = {}, .bytes = bytes});
      }
    }
    buffer = buffer.subspan(std::min<std::size_t>(length, buffer.size()));
  }
  return result;
}

bool isMacLink(std::string_view interfaceName) {
  return interfaceName.starts_with("en") || interfaceName.starts_with("pdp_ip");
}

} // namespace korvell
