#include "Sensors/SMC.h"

#include <cstring>

namespace korvell {

namespace {

using Record = ControllerTransport::Record;

// Places in the record; everything else in a request is zero.
constexpr std::size_t keyAt = 0, sizeAt = 28, typeAt = 32, resultAt = 40, commandAt = 42, bytesAt = 48;
constexpr std::uint8_t getKeyInformation = 9, readBytes = 5;
constexpr std::size_t mostBytes = 32;

void put(Record& record, std::size_t at, std::uint32_t value) {
  std::memcpy(record.data() + at, &value, sizeof value);
}
std::uint32_t word(const Record& record, std::size_t at) {
  std::uint32_t value = 0;
  std::memcpy(&value, record.data() + at, sizeof value);
  return value;
}

std::uint32_t bigEndian(std::span<const std::uint8_t> bytes) {
  std::uint32_t value = 0;
  for (const auto byte : bytes) value = value << 8 | byte;
  return value;
}

struct NumberType {
  std::string_view name;
  std::size_t size;
  double (*decode)(std::span<const std::uint8_t>);
};
constexpr NumberType numberTypes[] = {
    {"flt ", 4,
     [](std::span<const std::uint8_t> bytes) {
       float value = 0;
       std::memcpy(&value, bytes.data(), sizeof value);
       return double(value);
     }},
    {"fpe2", 2, [](std::span<const std::uint8_t> bytes) { return bigEndian(bytes) * 0.25; }},
    {"sp78", 2, [](std::span<const std::uint8_t> bytes) { return std::int16_t(bigEndian(bytes)) / 256.0; }},
    {"ui8 ", 1, [](std::span<const std::uint8_t> bytes) { return double(bigEndian(bytes)); }},
    {"ui16", 2, [](std::span<const std::uint8_t> bytes) { return double(bigEndian(bytes)); }},
    {"ui32", 4, [](std::span<const std::uint8_t> bytes) { return double(bigEndian(bytes)); }},
};

} // namespace

std::optional<std::uint32_t> packedKey(std::string_view key) {
  if (key.size() != 4) return std::nullopt;
  std::uint32_t packed = 0;
  for (const char c : key) packed = packed << 8 | std::uint8_t(c);
  return packed;
}

std::string unpackedKey(std::uint32_t packed) {
  std::string key;
  for (int shift = 24; shift >= 0; shift -= 8) key += char(packed >> shift & 0xff);
  return key;
}

std::optional<double> decodeSMC(std::span<const std::uint8_t> bytes, std::string_view type) {
  for (const auto& row : numberTypes)
    if (row.name == type && bytes.size() >= row.size) return row.decode(bytes.first(row.size));
  return std::nullopt;
}

bool SMC::call(const Record& request, Record& reply) {
  reply = {};
  const auto came = transport_->exchange(request, reply);
  return came && *came > resultAt && reply[resultAt] == 0;
}

std::optional<SMCBytes> SMC::bytes(std::string_view key) {
  const auto packed = packedKey(key);
  if (!packed) return std::nullopt;
  Record request{}, reply{};
  put(request, keyAt, *packed);
  request[commandAt] = getKeyInformation;
  if (!call(request, reply)) return std::nullopt;

  const auto size = word(reply, sizeAt), type = word(reply, typeAt);
  if (size == 0 || size > mostBytes) return std::nullopt;
  put(request, sizeAt, size);
  put(request, typeAt, type);
  request[commandAt] = readBytes;
  if (!call(request, reply)) return std::nullopt;
  const auto* first = reply.data() + bytesAt;
  return SMCBytes{unpackedKey(type), {first, first + size}};
}

std::optional<double> SMC::value(std::string_view key) {
  const auto told = bytes(key);
  return told ? decodeSMC(told->bytes, told->type) : std::nullopt;
}

} // namespace korvell
