#include "Platform/Formats/UsagePackets.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace korvell {

namespace {

constexpr std::uint32_t endMagic = 0x4b72'7665; // in no record: the id's high word would be 0
using End = std::array<std::uint32_t, 2>;

} // namespace

std::vector<std::uint8_t> UsagePackets::request(std::span<const ProcessID> pids) {
  pids = pids.first(std::min(pids.size(), UsagePackets::mostProcesses));
  constexpr ProcessID nobody = 0;
  if (pids.empty()) pids = std::span(&nobody, 1);
  std::vector<std::uint8_t> packet(pids.size_bytes());
  std::memcpy(packet.data(), pids.data(), packet.size());
  return packet;
}

std::optional<std::vector<ProcessID>> UsagePackets::parseRequest(std::span<const std::uint8_t> packet) {
  if (packet.empty() || packet.size() > mostRequestBytes || packet.size() % sizeof(ProcessID) != 0)
    return std::nullopt;
  std::vector<ProcessID> pids(packet.size() / sizeof(ProcessID));
  std::memcpy(pids.data(), packet.data(), packet.size());
  return pids;
}

std::vector<std::uint8_t> UsagePackets::end(std::uint32_t records) {
  const End end{endMagic, records};
  std::vector<std::uint8_t> packet(sizeof end);
  std::memcpy(packet.data(), end.data(), sizeof end);
  return packet;
}

UsageAnswerReader::State UsageAnswerReader::take(std::span<const std::uint8_t> packet) {
  const auto held = records_.size() / UsagePackets::recordSize;
  if (packet.size() == sizeof(End)) {
    End end;
    std::memcpy(end.data(), packet.data(), sizeof end);
    return end[0] == endMagic && end[1] == held ? State::complete : State::malformed;
  }
  const auto records = packet.size() / UsagePackets::recordSize;
  if (records == 0 || packet.size() % UsagePackets::recordSize != 0) return State::malformed;
  if (held + records > UsagePackets::mostProcesses) return State::malformed;
  records_.insert(records_.end(), packet.begin(), packet.end());
  return State::incomplete;
}

} // namespace korvell
