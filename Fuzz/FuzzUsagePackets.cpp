// What a hostile client sends to the helper, and what a hostile helper answers. The first byte cuts the rest
// into packets.

#include "Fuzz/Expect.h"
#include "Helper/Shared/RusageService.h"
#include "Platform/Formats/UsagePackets.h"

#include <algorithm>

using namespace korvell;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  std::span<const std::uint8_t> bytes(data, size);
  if (const auto pids = UsagePackets::parseRequest(bytes)) {
    expect(!pids->empty() && pids->size() <= RusageService::mostProcesses);
    const auto packet = UsagePackets::request(*pids);
    expect(std::equal(packet.begin(), packet.end(), bytes.begin(), bytes.end()));
    const RusageService service([](ProcessID pid) { return RusageSample{.diskRead = std::uint64_t(pid)}; },
                                [] {});
    expect(service.rusage(*pids).size() <= pids->size());
  }
  const auto samples = RusageSample::decode(bytes);
  expect(samples.size() <= bytes.size() / RusageSample::recordSize);
  expect(RusageSample::decode(RusageSample::encode(samples)) == samples);

  if (bytes.empty()) return 0;
  const std::size_t length = bytes[0] + 1u;
  bytes = bytes.subspan(1);
  UsageAnswerReader reader;
  while (!bytes.empty()) {
    const auto packet = bytes.first(std::min(length, bytes.size()));
    bytes = bytes.subspan(packet.size());
    if (reader.take(packet) != UsageAnswerReader::State::incomplete) break;
  }
  expect(reader.records().size() % RusageSample::recordSize == 0);
  return 0;
}
