#include "Helper/Shared/RusageSample.h"

#include <array>
#include <cstring>

namespace korvell {

namespace {
using Words = std::array<std::uint64_t, 7>;
static_assert(sizeof(Words) == RusageSample::recordSize);
} // namespace

std::vector<std::uint8_t> RusageSample::encode(const Map& samples) {
  std::vector<std::uint8_t> data(samples.size() * recordSize);
  auto* to = data.data();
  for (const auto& [pid, s] : samples) {
    const Words words{static_cast<std::uint32_t>(pid),
                      s.footprint,
                      s.cpuTime,
                      s.diskRead,
                      s.diskWritten,
                      s.energy,
                      s.start};
    std::memcpy(to, words.data(), recordSize);
    to += recordSize;
  }
  return data;
}

RusageSample::Map RusageSample::decode(std::span<const std::uint8_t> data) {
  Map samples;
  samples.reserve(data.size() / recordSize);
  for (; data.size() >= recordSize; data = data.subspan(recordSize)) {
    Words w;
    std::memcpy(w.data(), data.data(), recordSize);
    samples[static_cast<ProcessID>(static_cast<std::uint32_t>(w[0]))] = {.footprint = w[1],
                                                                         .cpuTime = w[2],
                                                                         .diskRead = w[3],
                                                                         .diskWritten = w[4],
                                                                         .energy = w[5],
                                                                         .start = w[6]};
  }
  return samples;
}

} // namespace korvell
