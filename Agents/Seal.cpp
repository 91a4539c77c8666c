#include "Agents/Seal.h"

#include <fmt/format.h>

namespace korvell {

namespace {

constexpr std::size_t labelBytes = 9;

std::string hex(std::span<const unsigned char> bytes) {
  std::string text;
  for (const unsigned char byte : bytes) text += fmt::format("{:02x}", byte);
  return text;
}

} // namespace

Seal::Seal() { secrets::fillWithRandomness(key_); }

Seal::~Seal() { secrets::forget(key_); }

std::string Seal::of(std::initializer_list<std::string_view> parts) const {
  std::string text; // every part behind its length: where one ends counts
  for (const auto part : parts) text += fmt::format("{}:{}", part.size(), part);
  return hex(secrets::keyedHash(key_, text));
}

bool Seal::isGenuine(std::string_view seal, std::initializer_list<std::string_view> parts) const {
  return secrets::isEqual(seal, of(parts));
}

std::string randomLabel() {
  std::array<unsigned char, labelBytes> bytes;
  secrets::fillWithRandomness(bytes);
  return hex(bytes);
}

} // namespace korvell
