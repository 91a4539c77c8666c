#include "Tests/UI/Kit/KitFixture.h"

#include "UI/Kit/Labels.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

namespace korvell {
namespace {

struct LabelTests : KitTests {
  TextLabel label{theme, TextStyle::small, Token::text1, "Stopping them frees 958 MB and ports 3000, 8000.",
                  nullptr};
};

TEST_F(LabelTests, wrappedTextTakesTheLinesThatItNeeds) {
  EXPECT_EQ(label.heightForWidth(50), 16) << "one line unless told";
  label.setWrapped();
  auto natural = label.sizeHint().width();
  EXPECT_EQ(label.heightForWidth(natural), 16);
  EXPECT_EQ(label.heightForWidth(natural * 6 / 10), 32);
  EXPECT_GT(label.heightForWidth(10), 100) << "even letter by letter";
  label.setWrapped(2);
  EXPECT_EQ(label.heightForWidth(10), 32);
  label.setWords("one\ntwo");
  EXPECT_EQ(label.heightForWidth(natural), 32) << "a line feed is one";
}

TEST_F(LabelTests, whatIsCutIsToldWhereItMustNotBe) {
  label.resize(60, 16);
  EXPECT_EQ(label.cutText(), std::nullopt) << "elided, with the whole as its tooltip";
  label.setNeverCut();
  EXPECT_EQ(label.cutText(), utf8(label.words()));
  EXPECT_EQ(label.minimumSizeHint(), label.sizeHint());
  label.resize(label.sizeHint());
  EXPECT_EQ(label.cutText(), std::nullopt);

  TextLabel wrapped(theme, TextStyle::small, Token::text1, "Some words that wrap", nullptr);
  wrapped.setWrapped();
  wrapped.resize(60, 16);
  EXPECT_EQ(wrapped.cutText(), "Some words that wrap") << "lines that are missing are always wrong";
}

TEST_F(LabelTests, elisionKeepsWhatMatters) {
  auto isElided = [&](double width, Qt::TextElideMode mode) {
    auto result = false;
    painted(400, 20, [&](QPainter& painter) {
      result = drawText(painter, QRectF(0, 0, width, 20), theme, TextStyle::body, Token::text1,
                        "~/code/node_modules", Qt::AlignLeft, mode);
    });
    return result;
  };
  auto natural = textWidth(theme, TextStyle::body, "~/code/node_modules");
  EXPECT_FALSE(isElided(natural, Qt::ElideMiddle));
  EXPECT_TRUE(isElided(natural - 5, Qt::ElideMiddle));
}

TEST_F(LabelTests, sidesFollowTheLayoutAndLettersTheirText) {
  auto drawn = [&](const QString& text, Qt::LayoutDirection direction, Qt::Alignment alignment) {
    return painted(200, 20, [&](QPainter& painter) {
      painter.setLayoutDirection(direction);
      drawText(painter, QRectF(0, 0, 200, 20), theme, TextStyle::body, Token::text1, text, alignment);
    });
  };
  auto path = QString("~/.local/share…");
  EXPECT_EQ(drawn(path, Qt::RightToLeft, Qt::AlignLeft), drawn(path, Qt::LeftToRight, Qt::AlignRight));
  EXPECT_NE(drawn(path, Qt::RightToLeft, Qt::AlignLeft), drawn(path, Qt::LeftToRight, Qt::AlignLeft));
}

TEST_F(LabelTests, badgesCountAndVanish) {
  QWidget window;
  Badge badge(theme, &window);
  show(window);
  EXPECT_FALSE(badge.isVisible());
  badge.setCount(2);
  EXPECT_TRUE(badge.isVisible());
  EXPECT_EQ(badge.sizeHint(), QSize(18, 18)) << "a circle";
  badge.setCount(240);
  EXPECT_EQ(badge.sizeHint().width(), qCeil(badgeWidth(theme, 100))) << "99+";
  badge.setCount(0);
  EXPECT_FALSE(badge.isVisible());
}

TEST_F(LabelTests, monogramsAreTheFirstLetterInAHueThatStays) {
  struct Row {
    const char* name;
    const char* letter;
  };
  for (auto [name, letter] :
       {Row{"firefox", "F"}, {"éditeur", "É"}, {"  (7zip)", "7"}, {"日本", "日"}, {"…", ""}, {"", ""}})
    EXPECT_EQ(utf8(monogramLetter(name)), letter) << name;
  EXPECT_EQ(monogramHue("org.mozilla.firefox"), monogramHue("org.mozilla.firefox"));
  std::map<Token, int> hues;
  for (int i = 0; i < 600; ++i) ++hues[monogramHue("app" + std::to_string(i))];
  EXPECT_EQ(hues.size(), std::size(palette));
  for (auto [hue, count] : hues) EXPECT_GT(count, 50) << static_cast<int>(hue);
}

} // namespace
} // namespace korvell
