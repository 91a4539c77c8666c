#include "Tests/UI/Kit/KitFixture.h"

#include "UI/Kit/Icons.h"
#include "UI/Kit/PathData.h"

namespace korvell {
namespace {

constexpr int scale = 8;

struct IconTests : KitTests {
  static QImage icon(Icon icon, Qt::LayoutDirection direction = Qt::LeftToRight) {
    return painted(22 * scale, 22 * scale, [&](QPainter& painter) {
      drawIcon(painter, icon, QRectF(scale, scale, 20 * scale, 20 * scale), Qt::black, direction);
    });
  }
  static bool isInk(const QImage& image, double x, double y) {
    return image.pixelColor(int((x + 1) * scale), int((y + 1) * scale)).lightness() < 128;
  }
};

TEST_F(IconTests, everyIconIsDrawnInsideItsGrid) {
  std::vector<QImage> drawn;
  for (int i = 0; i <= static_cast<int>(Icon::down); ++i) {
    auto image = icon(static_cast<Icon>(i));
    auto ink = 0;
    auto outside = 0;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x) {
        if (image.pixelColor(x, y).lightness() > 128) continue;
        ++ink;
        outside += x < scale || y < scale || x >= 21 * scale || y >= 21 * scale;
      }
    EXPECT_GT(ink, 2 * scale * scale) << i;
    EXPECT_EQ(outside, 0) << i;
    for (std::size_t other = 0; other < drawn.size(); ++other) {
      auto isPair = i == static_cast<int>(Icon::power) && other == static_cast<std::size_t>(Icon::startup);
      EXPECT_EQ(drawn[other] == image, isPair) << other << " and " << i;
    }
    drawn.push_back(std::move(image));
  }
}

TEST_F(IconTests, theGroundShowsThroughWhatIsCutOut) {
  for (auto mark : {Icon::warning, Icon::critical}) {
    auto image = icon(mark);
    EXPECT_FALSE(isInk(image, 10, 9));
    EXPECT_TRUE(isInk(image, 8, mark == Icon::warning ? 13 : 10));
  }
  EXPECT_TRUE(isInk(icon(Icon::heartFilled), 10, 10));
  EXPECT_FALSE(isInk(icon(Icon::heart), 10, 10));
}

TEST_F(IconTests, onlyWhatLeadsOnIsMirrored) {
  for (auto [shown, isMirrored] :
       {std::pair{Icon::chevron, true}, {Icon::share, false}, {Icon::sound, false}})
    EXPECT_EQ(icon(shown) != icon(shown, Qt::RightToLeft), isMirrored);
  auto mirrored = icon(Icon::chevron, Qt::RightToLeft);
  EXPECT_TRUE(isInk(mirrored, 7.5, 10));
  EXPECT_FALSE(isInk(mirrored, 12.5, 10));
}

TEST(PathDataTests, readsWhatDrawingsWrite) {
  auto box = [](std::string_view data) { return pathFromData(data).value().boundingRect(); };
  EXPECT_EQ(box("M2 3H8V9L2 9Z"), QRectF(2, 3, 6, 6));
  EXPECT_EQ(box("m2,3h6v6l-6 0z"), QRectF(2, 3, 6, 6));
  EXPECT_EQ(box("M0 0 4 0 4 5"), QRectF(0, 0, 4, 5)) << "points after the first are lines";
  EXPECT_EQ(pathFromData("M0 0c0 2 .4 4-1 5"), pathFromData("M0 0C0 2 .4 4 -1 5"));
  EXPECT_EQ(pathFromData("M0 0C1 1 2 1 3 0S5-1 6 0"), pathFromData("M0 0C1 1 2 1 3 0C4-1 5-1 6 0"))
      << "the control is reflected";
  EXPECT_EQ(pathFromData("M1 1L3 0S5-1 6 0"), pathFromData("M1 1L3 0C3 0 5-1 6 0")) << "where there is one";
}

TEST(PathDataTests, arcsTakeTheTurnThatTheyAreTold) {
  // From (10, 0) to (0, 10) round the origin or round (10, 10), the short way or the long one.
  struct Row {
    const char* data;
    QRectF box;
  };
  for (auto [data, box] : {Row{"M10 0A10 10 0 0 1 0 10", {0, 0, 10, 10}},
                           {"M10 0A10 10 0 0 0 0 10", {0, 0, 10, 10}},
                           {"M10 0A10 10 0 1 0 0 10", {-10, -10, 20, 20}},
                           {"M10 0A10 10 0 1 1 0 10", {0, 0, 20, 20}},
                           {"M0 0a1 1 0 0 1 8 0", {0, -4, 8, 4}}}) { // radii that do not reach are widened
    auto found = pathFromData(data).value().boundingRect();
    EXPECT_NEAR(found.left(), box.left(), 0.01) << data;
    EXPECT_NEAR(found.top(), box.top(), 0.01) << data;
    EXPECT_NEAR(found.width(), box.width(), 0.01) << data;
    EXPECT_NEAR(found.height(), box.height(), 0.01) << data;
  }
  auto inner = pathFromData("M10 0A10 10 0 0 0 0 10").value();
  EXPECT_LT(inner.pointAtPercent(0.5).x(), 5) << "bends towards the origin";
}

TEST(PathDataTests, refusesWhatItCannotRead) {
  for (const char* data :
       {"2 3", "M2", "M2 3L4", "M2 3C1 1 2 2", "M0 0A1 1 0 0 1 5", "M0 0Q1 1 2 2", "M0 0Z4", "Mx y"})
    EXPECT_EQ(pathFromData(data), std::nullopt) << data;
}

} // namespace
} // namespace korvell
