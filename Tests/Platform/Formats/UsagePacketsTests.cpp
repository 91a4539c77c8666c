#include "Platform/Formats/UsagePackets.h"

#include <gtest/gtest.h>
#include <numeric>

using namespace korvell;
using State = UsageAnswerReader::State;

namespace {

std::vector<std::uint8_t> records(std::size_t count) {
  return std::vector<std::uint8_t>(count * UsagePackets::recordSize);
}

} // namespace

TEST(UsagePackets, requests) {
  const std::vector<ProcessID> pids{1, -5, INT32_MAX};
  EXPECT_EQ(UsagePackets::parseRequest(UsagePackets::request(pids)), pids);
  EXPECT_EQ(UsagePackets::parseRequest(UsagePackets::request({})), std::vector<ProcessID>{0})
      << "about nobody";
  std::vector<ProcessID> many(10'000);
  std::iota(many.begin(), many.end(), 1);
  EXPECT_EQ(UsagePackets::parseRequest(UsagePackets::request(many))->size(), 8192u);
  for (const std::size_t size : {0u, 1u, 3u, 5u, 32'767u, 32'772u, 1'000'000u})
    EXPECT_FALSE(UsagePackets::parseRequest(std::vector<std::uint8_t>(size))) << size;
}

TEST(UsagePackets, anAnswerIsPutTogether) {
  UsageAnswerReader reader;
  EXPECT_EQ(reader.take(records(1024)), State::incomplete);
  EXPECT_EQ(reader.take(records(3)), State::incomplete);
  EXPECT_EQ(reader.take(UsagePackets::end(1027)), State::complete);
  EXPECT_EQ(reader.records().size(), 1027u * 56);
  UsageAnswerReader empty;
  EXPECT_EQ(empty.take(UsagePackets::end(0)), State::complete);
}

TEST(UsagePackets, whatIsNoAnswerIsRefused) {
  const auto end = UsagePackets::end(1);
  auto wrongMagic = end;
  wrongMagic[0] ^= 1;
  const std::vector<std::uint8_t> empty, cutShort(55), tooLong(57);
  for (const auto& packet : {empty, cutShort, tooLong, end /* nothing was sent */, wrongMagic, records(8193)})
    EXPECT_EQ(UsageAnswerReader().take(packet), State::malformed) << packet.size();
  UsageAnswerReader flooded;
  for (int i = 0; i < 8; ++i) EXPECT_EQ(flooded.take(records(1024)), State::incomplete);
  EXPECT_EQ(flooded.take(records(1)), State::malformed) << "more than can be asked for";
}
