#include "Audio/Taps/Limiter.h"
#include "Audio/Taps/TapRender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace korvell {
namespace {

constexpr double rate = 48'000;

/// Renders a constant pair of samples until the ramp has ended, and gives one frame of each stream.
std::vector<std::vector<float>> settled(ChannelPlace place, const std::vector<std::uint32_t>& channels,
                                        double volume = 1, std::size_t switchedOff = 99) {
  constexpr std::uint32_t frames = 4800;
  std::vector<float> in;
  for (std::uint32_t i = 0; i < frames; ++i) in.insert(in.end(), {0.1F, -0.2F});
  std::vector<std::vector<float>> streams;
  for (const auto count : channels) streams.emplace_back(std::size_t{frames} * count, 9.0F);
  std::vector<AudioBlock> outputs;
  for (std::size_t i = 0; i < streams.size(); ++i)
    outputs.push_back({i == switchedOff ? nullptr : streams[i].data(), channels[i]});
  TapRender render(rate, place);
  render.setVolume(volume);
  render.setWriting(true);
  render.render({in.data(), 2}, outputs, frames);
  for (std::size_t i = 0; i < streams.size(); ++i)
    streams[i].erase(streams[i].begin(), streams[i].end() - channels[i]);
  return streams;
}

TEST(GainTests, followsTheServersCurve) {
  const auto decibels = [](double volume) { return 20 * std::log10(gainOf(volume)); };
  EXPECT_NEAR(decibels(0.5), -18.06, 0.01);
  EXPECT_NEAR(decibels(0.75), -7.5, 0.01);
  EXPECT_NEAR(decibels(1), 0, 0.001);
  EXPECT_NEAR(decibels(1.5), 10.57, 0.01);
  EXPECT_EQ(gainOf(0), 0);
}

TEST(LimiterTests, leavesWhatIsQuietAndNeverReachesBeyondFullScale) {
  for (const float quiet : {0.0F, 0.1F, -0.5F, limiterKnee, -limiterKnee}) EXPECT_EQ(limited(quiet), quiet);
  float before = limiterKnee;
  for (float sample = limiterKnee; sample < 4; sample += 0.001F) {
    const float out = limited(sample);
    EXPECT_GE(out, before) << sample;
    EXPECT_LE(out - before, 0.001F + 1e-6F) << sample; // slope 1 at most, so the knee doesn't click either
    EXPECT_LT(out, 1) << sample;
    EXPECT_EQ(limited(-sample), -out);
    before = out;
  }
  EXPECT_LE(limited(std::numeric_limits<float>::infinity()), 1);
  EXPECT_EQ(limited(std::numeric_limits<float>::quiet_NaN()), 0);
}

TEST(TapRenderTests, findsTheChannels) {
  using testing::ElementsAre;
  using testing::FloatEq;
  const auto l = FloatEq(0.1F), r = FloatEq(-0.2F), both = FloatEq(-0.05F), none = FloatEq(0);
  EXPECT_THAT(settled({0, 1}, {2}), ElementsAre(ElementsAre(l, r)));
  EXPECT_THAT(settled({1, 0}, {2}), ElementsAre(ElementsAre(r, l)));
  EXPECT_THAT(settled({2, 3}, {8}), ElementsAre(ElementsAre(none, none, l, r, none, none, none, none)));
  EXPECT_THAT(settled({0, 1}, {1, 1}), ElementsAre(ElementsAre(l), ElementsAre(r)));
  EXPECT_THAT(settled({2, 3}, {2, 2}), ElementsAre(ElementsAre(none, none), ElementsAre(l, r)));
  EXPECT_THAT(settled({0, 0}, {1}), ElementsAre(ElementsAre(both)));
  EXPECT_THAT(settled({0, 1}, {1}), ElementsAre(ElementsAre(both))); // has fewer than it says
  EXPECT_THAT(settled({0, 1}, {2, 2}, 1, 1), ElementsAre(ElementsAre(l, r), ElementsAre(9, 9)));
  EXPECT_THAT(settled({0, 1}, {2}, 0), ElementsAre(ElementsAre(none, none)));
  EXPECT_THAT(settled({0, 1}, {2}, 0.5), ElementsAre(ElementsAre(FloatEq(0.0125F), FloatEq(-0.025F))));
}

TEST(TapRenderTests, noChangeClicks) {
  std::mt19937 random(20);
  std::uniform_real_distribution<double> volume(0, 1.5);
  std::uniform_int_distribution<std::uint32_t> length(1, 700);
  TapRender render(rate, {});
  const float step = RampedGain(rate).step();
  float before = 0, loudest = 0;
  for (int change = 0; change < 500; ++change) {
    const auto frames = length(random);
    std::vector<float> in(std::size_t{frames} * 2, 0.4F), out(in.size());
    const AudioBlock outputs[] = {{out.data(), 2}};
    render.setVolume(volume(random));
    render.setWriting(frames % 5 != 0);
    render.render({in.data(), 2}, outputs, frames);
    for (std::size_t i = 0; i < out.size(); i += 2) {
      ASSERT_LE(std::abs(out[i] - before), step * 0.4F + 1e-6F);
      before = out[i];
      loudest = std::max(loudest, before);
    }
  }
  EXPECT_GT(loudest, 0.8F); // it did get loud
  EXPECT_FLOAT_EQ(render.takePeak(), loudest);
  EXPECT_EQ(render.takePeak(), 0);
}

TEST(TapRenderTests, tellsSoundFromSilence) {
  TapRender render(rate, {});
  std::vector<float> in(200, 0.0F), out(200);
  const AudioBlock outputs[] = {{out.data(), 2}};
  render.render({in.data(), 2}, outputs, 100);
  EXPECT_EQ(render.frames(), 100);
  EXPECT_EQ(render.lastSound(), 0);
  in[81] = 1e-6F;
  render.render({in.data(), 2}, outputs, 100);
  EXPECT_EQ(render.lastSound(), 141);
  render.render({}, outputs, 100); // the tap's stream is switched off: nothing came
  EXPECT_EQ(render.frames(), 200);
}

} // namespace
} // namespace korvell
