#include "Tests/UI/Kit/KitFixture.h"

#include "UI/Kit/FigureText.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Paint.h"

#include <QFontMetricsF>

namespace korvell {
namespace {

using testing::AllOf;
using testing::Ge;
using testing::Le;
using testing::Pair;

struct FigureTests : KitTests {
  QFont body = fontOf(theme, TextStyle::body);

  QImage figures(const QString& text, Qt::LayoutDirection direction = Qt::LeftToRight) {
    return painted(160, 40, [&](QPainter& painter) {
      painter.setLayoutDirection(direction);
      drawFigures(painter, QPointF(10, 30), fontOf(theme, TextStyle::figureMedium), text);
    });
  }
  /// The first and last column with ink.
  static std::pair<int, int> inked(const QImage& image, QRgb ground = qRgb(255, 255, 255)) {
    std::pair found{image.width(), -1};
    for (int x = 0; x < image.width(); ++x)
      for (int y = 0; y < image.height(); ++y)
        if (image.pixel(x, y) != ground) {
          found.first = std::min(found.first, x);
          found.second = x;
        }
    return found;
  }
};

TEST_F(FigureTests, everyDigitTakesTheSameWidth) {
  auto width = figureWidth(body, "0");
  for (int digit = 1; digit <= 9; ++digit)
    EXPECT_EQ(figureWidth(body, QString::number(digit)), width) << digit;
  EXPECT_DOUBLE_EQ(figureWidth(body, "111.11"), figureWidth(body, "888.88"));
  double widest = 0;
  for (int digit = 0; digit <= 9; ++digit)
    widest = std::max(widest, QFontMetricsF(body).horizontalAdvance(QString::number(digit)));
  EXPECT_DOUBLE_EQ(figureWidth(body, "11"), 2 * widest);
  EXPECT_DOUBLE_EQ(figureWidth(body, "−"), QFontMetricsF(body).horizontalAdvance(QString(u'−')));
}

TEST_F(FigureTests, digitsStandInTheMiddleOfTheirCells) {
  auto cell = figureWidth(fontOf(theme, TextStyle::figureMedium), "0");
  auto [left, right] = inked(figures("1"));
  EXPECT_NEAR((left + right + 1) / 2.0, 10 + cell / 2, 1.5);
  auto behind = [&](const QString& text) { return inked(figures(text)).second; };
  EXPECT_EQ(behind("18"), behind("88")) << "what follows a changing digit stands still";
}

TEST_F(FigureTests, digitsAndUnitsNeverMirror) {
  EXPECT_EQ(figures("−12.5 %"), figures("−12.5 %", Qt::RightToLeft));
}

TEST_F(FigureTests, unitsStandASmallStepBehindTheirNumber) {
  auto number = FigureText(theme, TextStyle::figureMedium, {"24", ""}).width();
  auto unit = [&](TextStyle style, const char* words) { return figureWidth(fontOf(theme, style), words); };
  EXPECT_DOUBLE_EQ(FigureText(theme, TextStyle::figureMedium, {"24", "%"}).width(),
                   number + unit(TextStyle::strong, "%"));
  EXPECT_DOUBLE_EQ(FigureText(theme, TextStyle::figureMedium, {"24", "GB"}).width(),
                   number + 0.13 * 20 + unit(TextStyle::strong, "GB"));
}

TEST_F(FigureTests, labelsAskForTheirWholeWidthAndSayWhenTheyDoNotGetIt) {
  FigureLabel label(theme, TextStyle::figureMedium, nullptr);
  label.setFigure({"1.8", "MB/s"});
  auto plain = label.sizeHint().width();
  label.setLead("↓");
  EXPECT_GT(label.sizeHint().width(), plain);
  label.resize(label.sizeHint());
  EXPECT_EQ(label.cutText(), std::nullopt);
  label.resize(label.width() - 2, label.height());
  EXPECT_EQ(label.cutText(), "1.8 MB/s");
}

TEST_F(FigureTests, hairlinesAndBoxesFillWholeDevicePixels) {
  for (double ratio : {1.0, 1.25, 1.5, 1.75, 2.0}) {
    auto image = painted(60, 60, [&](QPainter& painter) {
      painter.scale(ratio, ratio);
      drawHairline(painter, {3.3, 7.6}, 20, Qt::black);
      fillBox(painter, QRectF(5.4, 12.7, 9.9, 6.2), Qt::black);
    });
    auto grey = 0;
    auto black = 0;
    for (int y = 0; y < 60; ++y)
      for (int x = 0; x < 60; ++x) {
        black += image.pixel(x, y) == qRgb(0, 0, 0);
        grey += image.pixel(x, y) != qRgb(0, 0, 0) && image.pixel(x, y) != qRgb(255, 255, 255);
      }
    EXPECT_EQ(grey, 0) << ratio;
    EXPECT_GT(black, 20 * ratio) << ratio;
  }
}

TEST_F(FigureTests, sparklinesGrowFromTheRightAndBreakWhereNothingWasMeasured) {
  auto line = [&](std::vector<std::optional<double>> values,
                  Qt::LayoutDirection direction = Qt::LeftToRight) {
    return painted(118, 40, [&](QPainter& painter) {
      painter.setLayoutDirection(direction);
      drawSparkline(painter, QRectF(0, 0, 118, 40), theme, Token::cpu, values, 100);
    });
  };
  std::vector<std::optional<double>> few(10, 50);
  auto [left, right] = inked(line(few));
  EXPECT_NEAR(left, 118 - 2.5 - 9 * 115.0 / 59, 3);
  EXPECT_EQ(right, 117);
  EXPECT_EQ(line(few), line(few, Qt::RightToLeft)) << "time runs to the right everywhere";

  std::vector<std::optional<double>> broken(60, 50);
  for (std::size_t i = 20; i < 40; ++i) broken[i] = std::nullopt;
  auto image = line(broken);
  for (int y = 0; y < 40; ++y) EXPECT_EQ(image.pixel(58, y), qRgb(255, 255, 255)) << "never bridged";
  EXPECT_EQ(inked(line({})).second, -1);
  EXPECT_EQ(inked(line({std::nullopt})).second, -1);
  std::vector<std::optional<double>> above(60, 900);
  EXPECT_EQ(inked(line(above)).first, 0) << "cut at the scale's top, inside the box";
}

TEST_F(FigureTests, barsGrowFromWhereReadingBegins) {
  auto filled = [&](double level, Qt::LayoutDirection direction) {
    auto image = painted(100, 4, [&](QPainter& painter) {
      drawBar(painter, QRectF(0, 0, 100, 4), theme, Token::critical, level, direction);
    });
    std::pair found{100, -1};
    for (int x = 0; x < 100; ++x)
      if (image.pixelColor(x, 2) == theme.color(Token::critical)) found = {std::min(found.first, x), x};
    return found;
  };
  // Ends are round: their outermost pixels are mixed.
  EXPECT_THAT(filled(0.6, Qt::LeftToRight), Pair(Le(1), AllOf(Ge(57), Le(59))));
  EXPECT_THAT(filled(0.6, Qt::RightToLeft), Pair(AllOf(Ge(40), Le(42)), Ge(98)));
  EXPECT_EQ(filled(0, Qt::LeftToRight).second, -1);
  EXPECT_THAT(filled(7, Qt::LeftToRight), Pair(Le(1), Ge(98)));
}

} // namespace
} // namespace korvell
