#include "Tests/UI/Kit/KitFixture.h"

#include "UI/Kit/Button.h"
#include "UI/Kit/Choices.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Switches.h"

#include <QBoxLayout>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct ControlTests : KitTests {
  QWidget window;
  QVBoxLayout* column = new QVBoxLayout(&window);
  int presses = 0;

  template <class W, class... Arguments>
  W& add(Arguments&&... arguments) {
    auto* made = new W(theme, std::forward<Arguments>(arguments)..., &window);
    column->addWidget(made);
    return *made;
  }
  Button& button() {
    auto& made = add<Button>(Button::Kind::plain, "Review");
    made.onPress([this] { ++presses; });
    return made;
  }
};

TEST_F(ControlTests, aButtonIsPressedByMouseAndKeyboardAlike) {
  auto& review = button();
  show(window);
  click(review);
  EXPECT_EQ(presses, 1);
  review.setFocus();
  for (auto each : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) key(window, each);
  EXPECT_EQ(presses, 4);
  EXPECT_TRUE(review.press());
  EXPECT_EQ(presses, 5);
}

TEST_F(ControlTests, whatWasNotMeantPressesNothing) {
  auto& review = button();
  show(window);
  mouse(review, QEvent::MouseButtonPress, {5, 5});
  mouse(review, QEvent::MouseMove, {-30, 5});
  mouse(review, QEvent::MouseButtonRelease, {-30, 5});
  click(review, Qt::RightButton);
  mouse(review, QEvent::MouseButtonRelease, {5, 5});
  review.setFocus();
  key(window, Qt::Key_Return, Qt::ControlModifier);
  key(window, Qt::Key_Space, {}, true);
  review.setEnabled(false);
  click(review);
  EXPECT_FALSE(review.press());
  EXPECT_EQ(presses, 0);
}

TEST_F(ControlTests, aPressMayTakeItsButtonAway) {
  auto* review = &button();
  review->onPress([&] { delete std::exchange(review, nullptr); });
  show(window);
  review->press();
  EXPECT_EQ(review, nullptr);
}

TEST_F(ControlTests, onlyTheKeyboardsFocusHasARing) {
  auto& first = button();
  auto& second = button();
  show(window);
  second.setFocus(Qt::MouseFocusReason);
  EXPECT_FALSE(FocusRing::isShown(second));
  first.setFocus(Qt::OtherFocusReason);
  EXPECT_FALSE(FocusRing::isShown(first));
  key(window, Qt::Key_Tab);
  EXPECT_TRUE(FocusRing::isShown(second));
  auto* ring = window.findChildren<QWidget*>().last();
  EXPECT_EQ(ring->geometry(), second.geometry().adjusted(-4, -4, 4, 4));
  second.move(second.pos() + QPoint(10, 3));
  EXPECT_EQ(ring->geometry(), second.geometry().adjusted(-4, -4, 4, 4)) << "goes where its control goes";
  click(second);
  EXPECT_EQ(presses, 1) << "it is no obstacle";
  key(window, Qt::Key_Backtab, Qt::ShiftModifier);
  EXPECT_TRUE(FocusRing::isShown(first));
  EXPECT_FALSE(FocusRing::isShown(second));
}

TEST_F(ControlTests, aRingIsNeverCutOffAndEndsWithItsControl) {
  auto* review = &button();
  auto& ranges = add<Segments>("Range", std::vector<std::string>{"12h", "24h"});
  show(window);
  auto* segment = ranges.findChildren<QWidget*>().first();
  segment->setFocus(Qt::TabFocusReason);
  auto rings = all<FocusRing>(window);
  ASSERT_EQ(rings.size(), 1u);
  EXPECT_EQ(rings[0]->parentWidget(), &window) << "the segments themselves are too narrow for it";
  EXPECT_TRUE(window.rect().contains(rings[0]->geometry()));
  auto before = rings[0]->pos();
  ranges.move(ranges.pos() + QPoint(0, 7));
  EXPECT_EQ(rings[0]->pos(), before + QPoint(0, 7));
  auto* plain = new QWidget(&window);
  review->setFocus(Qt::TabFocusReason);
  EXPECT_EQ(all<FocusRing>(window).size(), 1u);
  for (QWidget* ringed : {static_cast<QWidget*>(review), plain}) {
    FocusRing::show(*ringed, 6, theme);
    delete ringed;
    EXPECT_TRUE(all<FocusRing>(window).empty());
  }
}

TEST_F(ControlTests, nothingIsTooSmallToHit) {
  std::vector<QWidget*> all{&button(), &add<IconButton>(Icon::share, "Share"), &add<Toggle>("Open at login"),
                            &add<CheckBox>("npm cache", ""),
                            &add<Segments>("Range", std::vector<std::string>{"a", "b"})};
  static_cast<Segments*>(all.back())->setHeight(26);
  show(window);
  for (auto* widget : KitTests::all<Control>(window)) all.push_back(widget);
  for (auto* widget : all) {
    EXPECT_GE(widget->width(), 24) << widget->accessibleName().toStdString();
    EXPECT_GE(widget->height(), 24) << widget->accessibleName().toStdString();
  }
  EXPECT_GT(all.size(), 6u) << "the segments among them";
}

TEST_F(ControlTests, buttonsGrowWithTheirWords) {
  auto& review = button();
  review.setWords("Überprüfen und bereinigen");
  review.setMark(Button::Mark::chevron);
  show(window);
  EXPECT_EQ(review.cutText(), std::nullopt);
  review.resize(60, 28);
  EXPECT_EQ(review.cutText(), "Überprüfen und bereinigen");
}

struct ChoiceTests : ControlTests {
  Segments& ranges = add<Segments>("Range", std::vector<std::string>{"Live", "12h", "24h"});
  std::vector<std::size_t> chosen;

  void SetUp() override {
    ranges.onChoose([this](std::size_t index) { chosen.push_back(index); });
    show(window);
  }
  QWidget& segment(std::size_t index) { return *ranges.findChildren<QWidget*>().at(qsizetype(index)); }
};

TEST_F(ChoiceTests, arrowsMoveTheChoiceAndGoRound) {
  segment(0).setFocus(Qt::TabFocusReason);
  for (auto each :
       {Qt::Key_Right, Qt::Key_Down, Qt::Key_Right, Qt::Key_Left, Qt::Key_Home, Qt::Key_Home, Qt::Key_End})
    key(window, each);
  EXPECT_THAT(chosen, ElementsAre(1u, 2u, 0u, 2u, 0u, 2u)) << "the second Home changes nothing";
  EXPECT_EQ(window.focusWidget(), &segment(2));
  EXPECT_TRUE(FocusRing::isShown(segment(2)));
}

TEST_F(ChoiceTests, arrowsFollowTheEyeInBothDirections) {
  window.setLayoutDirection(Qt::RightToLeft);
  QApplication::processEvents();
  EXPECT_GT(segment(0).x(), segment(2).x());
  segment(0).setFocus(Qt::TabFocusReason);
  for (auto each : {Qt::Key_Left, Qt::Key_Left, Qt::Key_Right}) key(window, each);
  EXPECT_THAT(chosen, ElementsAre(1u, 2u, 1u));
}

TEST_F(ChoiceTests, theWholeIsOneTabStop) {
  auto& after = button();
  QApplication::processEvents(); // the layout shows it
  ranges.choose(1);
  EXPECT_THAT(chosen, IsEmpty()) << "the program's choice is not told";
  segment(1).setFocus(Qt::TabFocusReason);
  key(window, Qt::Key_Tab);
  EXPECT_EQ(window.focusWidget(), &after);
  key(window, Qt::Key_Backtab, Qt::ShiftModifier);
  EXPECT_EQ(window.focusWidget(), &segment(1));
}

TEST_F(ChoiceTests, aClickChoosesAndWordsNeverMoveTheirNeighbours) {
  auto before = segment(2).geometry();
  click(segment(1));
  EXPECT_THAT(chosen, ElementsAre(1u));
  EXPECT_EQ(segment(2).geometry(), before);
}

TEST_F(ControlTests, radioTilesShareTheWidth) {
  std::vector<RadioTiles::Tile> tiles(3);
  for (auto& tile : tiles) tile.words = "Icon only";
  auto& row = add<RadioTiles>("Menu bar", std::move(tiles));
  window.resize(423, 200);
  show(window);
  auto items = row.findChildren<QWidget*>();
  ASSERT_EQ(items.size(), 3);
  EXPECT_EQ(items[2]->geometry().right(), row.width() - 1);
  EXPECT_EQ(items[1]->x() - items[0]->geometry().right() - 1, 12);
  items[0]->setFocus();
  key(window, Qt::Key_Right);
  EXPECT_EQ(row.chosen(), 1u);
}

TEST_F(ControlTests, togglesAndBoxesTellWhatTheUserDid) {
  auto& toggle = add<Toggle>("Open at login");
  auto& box = add<CheckBox>("npm cache", "");
  std::vector<bool> told;
  toggle.onToggle([&](bool on) { told.push_back(on); });
  box.onToggle([&](bool on) { told.push_back(on); });
  show(window);
  toggle.setOn(true);
  EXPECT_THAT(told, IsEmpty());
  click(toggle);
  EXPECT_FALSE(toggle.isOn());
  box.setState(CheckBox::State::some);
  click(box);
  EXPECT_EQ(box.state(), CheckBox::State::on) << "some becomes all";
  click(box);
  EXPECT_THAT(told, ElementsAre(false, true, false));
}

TEST_F(ControlTests, aToggleMirrorsItsKnob) {
  auto& toggle = add<Toggle>("Open at login");
  toggle.setOn(true);
  show(window);
  auto isKnob = [&](int x) {
    return toggle.grab().toImage().pixelColor(x, 12) == theme.color(Token::accentInk);
  };
  EXPECT_TRUE(isKnob(23) && !isKnob(9));
  window.setLayoutDirection(Qt::RightToLeft);
  EXPECT_TRUE(isKnob(9) && !isKnob(23));
}

} // namespace
} // namespace korvell
