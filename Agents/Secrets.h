#pragma once
// What a seal is made of, from the system's own library or a kept one. From any thread.

#include <array>
#include <span>
#include <string_view>

namespace korvell::secrets {

using Key = std::array<unsigned char, 32>;
using Hash = std::array<unsigned char, 16>;

/// Ends the program where the system has no randomness to give.
void fillWithRandomness(std::span<unsigned char> bytes);
/// Who has not the key can't tell the hash of any text.
Hash keyedHash(const Key& key, std::string_view text);
/// In a time that depends on the lengths alone.
bool isEqual(std::string_view a, std::string_view b);
/// Overwritten, also where nobody reads it again.
void forget(std::span<unsigned char> bytes);

} // namespace korvell::secrets
