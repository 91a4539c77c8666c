#include "Helper/Shared/RusageSample.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

std::vector<std::uint8_t> words(std::initializer_list<std::uint64_t> values) {
  std::vector<std::uint8_t> bytes;
  for (auto value : values)
    for (int i = 0; i < 8; ++i) bytes.push_back(std::uint8_t(value >> (8 * i)));
  return bytes;
}

TEST(RusageSampleTests, aRecordIsSevenWordsInTheOrderOfTheFields) {
  const RusageSample sample{
      .footprint = 1, .cpuTime = 2, .diskRead = 3, .diskWritten = 4, .energy = 5, .start = ~0ull};
  EXPECT_EQ(RusageSample::encode({{77, sample}}), words({77, 1, 2, 3, 4, 5, ~0ull}));
}

TEST(RusageSampleTests, whatWasEncodedIsDecodedAndOnlyWholeRecordsCount) {
  RusageSample::Map samples;
  for (std::uint64_t i = 1; i <= 300; ++i) samples[ProcessID(i)] = {i, i * 2, i * 3, i * 4, i * 5, i << 40};
  auto data = RusageSample::encode(samples);
  EXPECT_EQ(RusageSample::decode(data), samples);
  for (const std::size_t length : {120, 112, 111, 56, 55, 0}) {
    data.resize(length);
    EXPECT_EQ(RusageSample::decode(data).size(), length / 56) << length;
  }
}

TEST(RusageSampleTests, oddRecords) {
  const auto twice = RusageSample::decode(words({9, 1, 0, 0, 0, 0, 0, 9, 2, 0, 0, 0, 0, 0}));
  ASSERT_EQ(twice.size(), 1u);
  EXPECT_EQ(twice.at(9).footprint, 2u) << "a later record of the same process wins";
  EXPECT_TRUE(RusageSample::decode(words({0xFFFFFFFF, 0, 0, 0, 0, 0, 0})).contains(-1))
      << "the process id is the low half of its word, signed";
}

} // namespace
} // namespace korvell
