#include "Tests/UI/Kit/KitFixture.h"

#include "UI/Kit/ScoreRing.h"

#include <cmath>
#include <numbers>
#include <numeric>

namespace korvell {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;

constexpr double gap = 2.2;

double pixels(double degrees, double radius) { return degrees * std::numbers::pi / 180 * radius; }

/// That arcs follow each other clockwise, a gap apart, and close the circle.
void expectWhole(const RingArcs& arcs, double radius) {
  std::vector<RingArc> all{arcs.score};
  all.insert(all.end(), arcs.lost.begin(), arcs.lost.end());
  std::erase_if(all, [](const RingArc& arc) { return arc.sweep == 0; });
  for (std::size_t i = 0; i < all.size(); ++i) {
    auto next = i + 1 < all.size() ? all[i + 1].from : all[0].from + 360;
    EXPECT_NEAR(pixels(next - all[i].from - all[i].sweep, radius), gap, 0.01) << i;
    EXPECT_GE(pixels(all[i].sweep, radius), 0.99) << i;
  }
}

TEST(RingArcTests, theScoreAndEveryLossTakeTheirPoints) {
  auto arcs = ringArcs(87, {8, 4, 1}, 68);
  expectWhole(arcs, 68);
  EXPECT_NEAR(pixels(arcs.score.from, 68), gap / 2, 1e-6) << "begins at the top";
  auto middle = [](const RingArc& arc) { return (arc.from + arc.sweep / 2) / 3.6; };
  EXPECT_THAT(
      (std::vector{middle(arcs.score), middle(arcs.lost[0]), middle(arcs.lost[1]), middle(arcs.lost[2])}),
      ElementsAre(DoubleNear(43.5, 0.01), DoubleNear(91, 0.01), DoubleNear(97, 0.01),
                  DoubleNear(99.5, 0.01)));
}

TEST(RingArcTests, aFullScoreIsAClosedCircle) {
  EXPECT_EQ(ringArcs(100, {}, 68), (RingArcs{{0, 360}, {}}));
  EXPECT_EQ(ringArcs(100, {3}, 68).lost[0].sweep, 0) << "nothing is left to share";
  EXPECT_EQ(ringArcs(0, {40}, 68), (RingArcs{{0, 0}, {{0, 360}}})) << "so is a single loss of all";
}

TEST(RingArcTests, lossesAboveTheRestShareIt) {
  auto arcs = ringArcs(0, {60, 50, 40}, 68);
  expectWhole(arcs, 68);
  auto points = [](const RingArc& arc) { return pixels(arc.sweep, 68) + gap; };
  EXPECT_EQ(arcs.score.sweep, 0);
  EXPECT_NEAR(points(arcs.lost[0]) / points(arcs.lost[2]), 1.5, 0.01);
  auto some = ringArcs(20, {100, 60}, 68);
  EXPECT_NEAR(some.score.from + some.score.sweep + pixels(1, 1), 72, 2) << "the score keeps its points";
}

TEST(RingArcTests, evenASmallLossIsSeen) {
  for (double radius : {36.0, 68.0}) {
    expectWhole(ringArcs(91, std::vector<double>(9, 1), radius), radius);
    expectWhole(ringArcs(99.9, {0.1}, radius), radius);
    expectWhole(ringArcs(0.5, {99.5}, radius), radius);
  }
}

TEST(RingArcTests, thePointerFindsWhatItIsOn) {
  auto arcs = ringArcs(87, {8, 4, 1}, 68);
  auto at = [&](double points) { return shareAt(arcs, points * 3.6); };
  EXPECT_EQ(at(50), std::nullopt);
  EXPECT_EQ(at(91), 0u);
  EXPECT_EQ(at(97), 1u);
  EXPECT_EQ(at(99.6), 2u);
  EXPECT_EQ(at(86.5), std::nullopt) << "the score's end";
  EXPECT_EQ(shareAt(ringArcs(100, {}, 68), 10), std::nullopt);
}

struct RingTests : KitTests {
  ScoreRing ring{theme, ScoreRing::page, nullptr};
  std::vector<std::optional<std::size_t>> pointed;

  QPointF on(double points) {
    auto angle = points * 3.6 * std::numbers::pi / 180;
    return QPointF(74 + 68 * std::sin(angle), 74 - 68 * std::cos(angle));
  }
  QColor colorAt(double points) { return ring.grab().toImage().pixelColor(on(points).toPoint()); }
  void SetUp() override {
    ring.resize(ring.sizeHint());
    ring.onHover([this](auto share) { pointed.push_back(share); });
  }
};

TEST_F(RingTests, arcsShowHowSeriousTheyAre) {
  ring.setScore(50, {{25, Tone::critical}, {25, Tone::warning}});
  show(ring);
  EXPECT_EQ(colorAt(25), theme.color(Token::accent));
  EXPECT_EQ(colorAt(62), theme.color(Token::critical));
  EXPECT_EQ(colorAt(87), theme.color(Token::warningMark));
  ring.setScore(std::nullopt);
  EXPECT_EQ(colorAt(25), theme.color(Token::sunken));
  EXPECT_EQ(ring.spokenValue(), "");
}

TEST_F(RingTests, thePointerAndItsRowHighlightEachOther) {
  ring.setScore(87, {{8, Tone::warning}, {5, Tone::info}});
  mouse(ring, QEvent::MouseMove, on(91));
  mouse(ring, QEvent::MouseMove, on(92));
  mouse(ring, QEvent::MouseMove, on(97));
  mouse(ring, QEvent::MouseMove, (on(97) + QPointF(74, 74)) / 2); // inside the ring
  EXPECT_THAT(pointed, ElementsAre(0u, 1u, std::nullopt)) << "each share once";

  auto quiet = ring.grab().toImage();
  ring.highlight(1);
  EXPECT_NE(ring.grab().toImage(), quiet);
  EXPECT_EQ(pointed.size(), 3u) << "its row knows already";
  ring.highlight(std::nullopt);
  EXPECT_EQ(ring.grab().toImage(), quiet);
}

TEST_F(RingTests, turnsOnlyWhereMotionIsWanted) {
  auto shownAtOnce = [&](bool isReduced) {
    theme.set({.reducedMotion = isReduced});
    ring.setScore(100);
    show(ring);
    ring.setScore(10, {{90, Tone::critical}});
    return colorAt(50) == theme.color(Token::critical);
  };
  EXPECT_TRUE(shownAtOnce(true));
  EXPECT_FALSE(shownAtOnce(false));
}

} // namespace
} // namespace korvell
