#pragma once
// What travels over the usage helper's local sequenced-packet socket on Linux, all words in native byte
// order.
//
// A request is one packet of 32-bit process ids, at most 8,192 of them. A question about nobody, to find out
// whether the helper is there, is one id 0: an empty packet could not be told from the end of the connection.
// The answer is any number of packets of at most 1,024 whole records of 56 bytes (57,344 bytes, below a
// socket's default buffer), then one end packet of 8 bytes: the magic number and how many records were sent.
// What a record holds is defined by RusageSample.

#include "Platform/ProcessTable.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace korvell {

struct UsagePackets {
  static constexpr std::size_t mostProcesses = 8192;
  static constexpr std::size_t recordSize = 56;
  static constexpr std::size_t mostRequestBytes = mostProcesses * sizeof(ProcessID);
  static constexpr std::size_t recordsPerPacket = 1024;
  static constexpr std::size_t mostAnswerPacket = recordsPerPacket * recordSize;

  static std::vector<std::uint8_t> request(std::span<const ProcessID> pids);
  /// Nothing when the packet is no request: empty, too long, or no whole number of ids.
  static std::optional<std::vector<ProcessID>> parseRequest(std::span<const std::uint8_t> packet);

  static std::vector<std::uint8_t> end(std::uint32_t records);
};

/// Puts an answer together from its packets.
class UsageAnswerReader {
public:
  enum class State {
    incomplete,
    complete,
    malformed, ///< a packet that is neither whole records nor an end that fits; or more than was asked for
  };
  State take(std::span<const std::uint8_t> packet);
  /// The records so far.
  std::vector<std::uint8_t>& records() { return records_; }

private:
  std::vector<std::uint8_t> records_;
};

} // namespace korvell
