#include "Base/UUID.h"

#include <array>
#include <cstdint>
#include <fmt/format.h>
#include <random>

namespace korvell {

std::string randomUUID() {
  std::random_device device;
  std::array<std::uint32_t, 4> words{};
  for (auto& word : words) word = device();
  words[1] = (words[1] & 0xffff0fff) | 0x00004000; // version 4
  words[2] = (words[2] & 0x3fffffff) | 0x80000000; // the variant of RFC 4122
  return fmt::format("{:08x}-{:04x}-{:04x}-{:04x}-{:04x}{:08x}", words[0], words[1] >> 16, words[1] & 0xffff,
                     words[2] >> 16, words[2] & 0xffff, words[3]);
}

} // namespace korvell
