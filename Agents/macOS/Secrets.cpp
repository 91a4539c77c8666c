#define __STDC_WANT_LIB_EXT1__ 1 // for memset_s, whichever header comes first

#include "Agents/Secrets.h"

#include <CommonCrypto/CommonDigest.h>
#include <CommonCrypto/CommonHMAC.h>

#include <algorithm>
#include <cstdlib>
#include <string.h>

namespace korvell::secrets {

void fillWithRandomness(std::span<unsigned char> bytes) { arc4random_buf(bytes.data(), bytes.size()); }

Hash keyedHash(const Key& key, std::string_view text) {
  std::array<unsigned char, CC_SHA256_DIGEST_LENGTH> whole;
  CCHmac(kCCHmacAlgSHA256, key.data(), key.size(), text.data(), text.size(), whole.data());
  Hash hash;
  std::copy_n(whole.begin(), hash.size(), hash.begin());
  return hash;
}

bool isEqual(std::string_view a, std::string_view b) {
  return a.size() == b.size() && timingsafe_bcmp(a.data(), b.data(), a.size()) == 0;
}

void forget(std::span<unsigned char> bytes) { memset_s(bytes.data(), bytes.size(), 0, bytes.size()); }

} // namespace korvell::secrets
