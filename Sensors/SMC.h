#pragma once
// Keys of a Mac's System Management Controller, read by name: fan speeds and, on Intel, temperatures. Numbers
// in the exchanged record stand in the host's order, values in the controller's. Keeps nothing but the
// transport; whoever owns it serialises the calls.

#include "Platform/TemperatureSources.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// What a key holds: a four-character type and at most 32 bytes.
struct SMCBytes {
  std::string type;
  std::vector<std::uint8_t> bytes;
  bool operator==(const SMCBytes&) const = default;
};

/// Four bytes with the first in the top one; nothing for a text of another length.
std::optional<std::uint32_t> packedKey(std::string_view key);
std::string unpackedKey(std::uint32_t packed);
/// Nothing for types that are no number, and for fewer bytes than the type needs.
std::optional<double> decodeSMC(std::span<const std::uint8_t> bytes, std::string_view type);

class SMC {
public:
  explicit SMC(std::unique_ptr<ControllerTransport> transport) : transport_(std::move(transport)) {}

  /// Nothing when the controller has no such key, refuses or answers with less than it should.
  std::optional<SMCBytes> bytes(std::string_view key);
  std::optional<double> value(std::string_view key);

private:
  bool call(const ControllerTransport::Record& request, ControllerTransport::Record& reply);

  std::unique_ptr<ControllerTransport> transport_;
};

} // namespace korvell
