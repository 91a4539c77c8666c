#include "Agents/Seal.h"

#include <cstdlib>
#include <sodium.h>

namespace korvell {

namespace {

constexpr std::size_t sealBytes = 16, labelBytes = 9;
static_assert(sealBytes >= crypto_generichash_BYTES_MIN);

std::string letters(const unsigned char* bytes, std::size_t count) {
  constexpr int variant = sodium_base64_VARIANT_URLSAFE_NO_PADDING;
  std::string text(sodium_base64_encoded_len(count, variant), '\0');
  sodium_bin2base64(text.data(), text.size(), bytes, count, variant);
  text.resize(text.find('\0'));
  return text;
}

void start() {
  if (sodium_init() < 0) std::abort();
}

} // namespace

Seal::Seal() {
  start();
  static_assert(sizeof key_ == crypto_generichash_KEYBYTES);
  crypto_generichash_keygen(key_.data());
}

Seal::~Seal() { sodium_memzero(key_.data(), key_.size()); }

std::string Seal::of(std::initializer_list<std::string_view> parts) const {
  crypto_generichash_state state;
  crypto_generichash_init(&state, key_.data(), key_.size(), sealBytes);
  for (const auto part : parts) {
    const auto length = std::to_string(part.size()) + ":";
    crypto_generichash_update(&state, reinterpret_cast<const unsigned char*>(length.data()), length.size());
    crypto_generichash_update(&state, reinterpret_cast<const unsigned char*>(part.data()), part.size());
  }
  unsigned char seal[sealBytes];
  crypto_generichash_final(&state, seal, sizeof seal);
  return letters(seal, sizeof seal);
}

bool Seal::isGenuine(std::string_view seal, std::initializer_list<std::string_view> parts) const {
  const auto own = of(parts);
  return seal.size() == own.size() && sodium_memcmp(seal.data(), own.data(), own.size()) == 0;
}

std::string randomLabel() {
  start();
  unsigned char bytes[labelBytes];
  randombytes_buf(bytes, sizeof bytes);
  return letters(bytes, sizeof bytes);
}

} // namespace korvell
