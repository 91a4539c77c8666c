#include "Agents/Secrets.h"

#include <cstdlib>
#include <sodium.h>

namespace korvell::secrets {

static_assert(std::tuple_size_v<Key> == crypto_generichash_KEYBYTES);
static_assert(std::tuple_size_v<Hash> == crypto_generichash_BYTES_MIN);

void fillWithRandomness(std::span<unsigned char> bytes) {
  if (sodium_init() < 0) std::abort();
  randombytes_buf(bytes.data(), bytes.size());
}

Hash keyedHash(const Key& key, std::string_view text) {
  Hash hash;
  crypto_generichash(hash.data(), hash.size(), reinterpret_cast<const unsigned char*>(text.data()),
                     text.size(), key.data(), key.size());
  return hash;
}

bool isEqual(std::string_view a, std::string_view b) {
  return a.size() == b.size() && sodium_memcmp(a.data(), b.data(), a.size()) == 0;
}

void forget(std::span<unsigned char> bytes) { sodium_memzero(bytes.data(), bytes.size()); }

} // namespace korvell::secrets
