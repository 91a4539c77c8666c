#include "Helper/Shared/RusageSample.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

std::vector<std::uint8_t> words(std::initializer_list<std::uint64_t> values, std::size_t extraBytes = 0) {
  std::vector<std::uint8_t> bytes;
  for (auto value : values)
    for (int i = 0; i < 8; ++i) bytes.push_back(std::uint8_t(value >> (8 * i)));
  bytes.resize(bytes.size() + extraBytes, 0xAA);
  return bytes;
}

TEST(RusageSampleTests, aRecordIsSevenWordsInTheOrderOfTheFields) {
  const RusageSample sample{
      .footprint = 1, .cpuTime = 2, .diskRead = 3, .diskWritten = 4, .energy = 5, .start = ~0ull};
  EXPECT_EQ(RusageSample::encode({{77, sample}}), words({77, 1, 2, 3, 4, 5, ~0ull}));
}

TEST(RusageSampleTests, whatWasEncodedIsDecoded) {
  RusageSample::Map samples;
  for (std::uint64_t i = 1; i <= 300; ++i) samples[ProcessID(i)] = {i, i * 2, i * 3, i * 4, i * 5, i << 40};
  EXPECT_EQ(RusageSample::decode(RusageSample::encode(samples)), samples);
}

TEST(RusageSampleTests, onlyWholeRecordsCount) {
  struct Row {
    std::size_t length;
    std::size_t records;
  };
  for (const auto& [length, records] : {Row{0, 0}, {55, 0}, {56, 1}, {111, 1}, {112, 2}, {120, 2}}) {
    auto data = words({1, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0});
    data.resize(length);
    EXPECT_EQ(RusageSample::decode(data).size(), records) << length;
  }
}

TEST(RusageSampleTests, aLaterRecordOfTheSameProcessWins) {
  const auto samples = RusageSample::decode(words({9, 1, 0, 0, 0, 0, 0, 9, 2, 0, 0, 0, 0, 0}, 7));
  ASSERT_EQ(samples.size(), 1u);
  EXPECT_EQ(samples.at(9).footprint, 2u);
}

TEST(RusageSampleTests, theProcessIDIsTheLowHalfOfItsWordAsASignedNumber) {
  EXPECT_TRUE(RusageSample::decode(words({0xFFFFFFFFull, 0, 0, 0, 0, 0, 0})).contains(-1));
}

} // namespace
} // namespace korvell
