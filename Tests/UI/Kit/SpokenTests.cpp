#include "Tests/UI/Kit/KitFixture.h"

#include "UI/Kit/Banner.h"
#include "UI/Kit/BarTable.h"
#include "UI/Kit/Choices.h"
#include "UI/Kit/Dialog.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/ScoreRing.h"
#include "UI/Kit/Scroll.h"
#include "UI/Kit/Switches.h"
#include "UI/Kit/Text.h"

#include <QBoxLayout>

namespace korvell {
namespace {

struct SpokenTests : KitTests {
  QWidget window;

  static QAccessibleInterface& of(QWidget& widget) { return *QAccessible::queryAccessibleInterface(&widget); }
  static std::string nameOf(QWidget& widget) { return utf8(of(widget).text(QAccessible::Name)); }
};

TEST_F(SpokenTests, everyControlSaysWhatItIs) {
  Segments segments(theme, "Range", {"12h", "24h"}, &window);
  RadioTiles tiles(theme, "Menu bar", {{"Icon only", {}}}, &window);
  FigureLabel figure(theme, TextStyle::sub, &window);
  figure.setFigure({"3.5", "MB/s"});
  struct Row {
    QWidget* widget;
    QAccessible::Role role;
    std::string name;
  };
  Row rows[] = {
      {new Button(theme, Button::Kind::quiet, "Review", &window), QAccessible::PushButton, "Review"},
      {new IconButton(theme, Icon::share, "Share", &window), QAccessible::PushButton, "Share"},
      {new Toggle(theme, "Open at login", &window), QAccessible::CheckBox, "Open at login"},
      {new CheckBox(theme, "", "Untick me", &window), QAccessible::CheckBox, "Untick me"},
      {&segments, QAccessible::PageTabList, "Range"},
      {segments.findChildren<QWidget*>().first(), QAccessible::PageTab, "12h"},
      {&tiles, QAccessible::Grouping, "Menu bar"},
      {tiles.findChildren<QWidget*>().first(), QAccessible::RadioButton, "Icon only"},
      {&figure, QAccessible::StaticText, "3.5 MB/s"},
      {new TextLabel(theme, TextStyle::body, Token::text1, "Nothing to fix", &window),
       QAccessible::StaticText, "Nothing to fix"}};
  for (const auto& row : rows) {
    EXPECT_EQ(of(*row.widget).role(), row.role) << row.name;
    EXPECT_EQ(nameOf(*row.widget), row.name);
  }
}

TEST_F(SpokenTests, paintedRowsAreChildren) {
  BarTable table(theme, &window);
  table.setData({.title = "Applications",
                 .rows = {{.key = "a", .name = "Firefox", .spoken = "Firefox, 23 processes"},
                          {.key = "b", .name = "Blender", .spoken = "Blender, 1 process"}}});
  table.resize(600, 200);
  auto& list = of(table);
  auto* second = list.child(1);
  ASSERT_TRUE(second);
  EXPECT_EQ(list.child(1), second);
  EXPECT_EQ(second->role(), QAccessible::ListItem);
  EXPECT_EQ(utf8(second->text(QAccessible::Name)), "Blender, 1 process");
  EXPECT_EQ(second->parent(), &list);
  EXPECT_EQ(list.indexOfChild(second), 1);
  EXPECT_EQ(list.childAt(second->rect().center().x(), second->rect().center().y()), second);
  EXPECT_EQ(list.child(2)->role(), QAccessible::ColumnHeader);
  EXPECT_EQ(list.indexOfChild(list.child(2)), 2);
  table.setData({.title = "Applications", .rows = {{.key = "b", .spoken = "Blender, 2 processes"}}});
  EXPECT_FALSE(second->isValid());
  EXPECT_EQ(utf8(list.child(0)->text(QAccessible::Name)), "Blender, 2 processes");
}

TEST_F(SpokenTests, aScrollBarThatHasGoneIsNotThere) {
  ScrollArea area(theme, Token::surface, &window);
  auto& content = *new QWidget;
  content.setMinimumHeight(900);
  area.setContent(content);
  window.resize(200, 200);
  area.resize(200, 200);
  show(window);
  auto& told = of(area);
  const int before = told.childCount();
  EXPECT_TRUE(told.child(before - 1));
  content.setMinimumHeight(10);
  QApplication::processEvents();
  EXPECT_FALSE(told.child(before)) << "what a screen reader asks for that had counted before";
  EXPECT_FALSE(told.child(-1));
}

TEST_F(SpokenTests, statesFollow) {
  Toggle toggle(theme, "Open at login", &window);
  CheckBox box(theme, "npm cache", "", &window);
  Segments segments(theme, "Range", {"12h", "24h"}, &window);
  auto* second = segments.findChildren<QWidget*>().at(1);
  EXPECT_FALSE(of(toggle).state().checked || of(*second).state().selected);
  toggle.setOn(true);
  box.setState(CheckBox::State::some);
  segments.choose(1);
  EXPECT_TRUE(of(toggle).state().checkable && of(toggle).state().checked);
  EXPECT_TRUE(of(box).state().checkStateMixed && !of(box).state().checked);
  EXPECT_TRUE(of(*second).state().selected);
  toggle.setEnabled(false);
  EXPECT_TRUE(of(toggle).state().disabled);
}

TEST_F(SpokenTests, metersHaveValuesAndNothingIsNoValue) {
  ScoreRing ring(theme, ScoreRing::page, &window);
  EXPECT_EQ(of(ring).valueInterface(), nullptr);
  ring.setScore(87, {{13, Tone::info}});
  ASSERT_TRUE(of(ring).valueInterface());
  EXPECT_EQ(of(ring).valueInterface()->currentValue(), 87.0);
  EXPECT_EQ(of(ring).valueInterface()->maximumValue(), 100.0);
  EXPECT_EQ(of(ring).text(QAccessible::Value), "87");
  Bar bar(theme, Token::cpu, &window);
  bar.setLevel(0.25);
  EXPECT_EQ(of(bar).valueInterface()->currentValue(), 25.0);
}

TEST_F(SpokenTests, controlsAreFocusedAndPressedWithoutAMouse) {
  Button review(theme, Button::Kind::plain, "Review", &window);
  auto presses = 0;
  review.onPress([&] { ++presses; });
  show(window);
  auto& actions = *of(review).actionInterface();
  EXPECT_TRUE(actions.actionNames().contains(QAccessibleActionInterface::pressAction()));
  actions.doAction(QAccessibleActionInterface::pressAction());
  actions.doAction(QAccessibleActionInterface::setFocusAction());
  EXPECT_EQ(presses, 1);
  EXPECT_TRUE(review.hasFocus());
  review.setEnabled(false);
  EXPECT_FALSE(actions.actionNames().contains(QAccessibleActionInterface::pressAction()));
}

TEST_F(SpokenTests, aBannerIsANotificationThatNamesAllItSays) {
  Banner banner(theme, &window);
  show(window);
  EXPECT_FALSE(banner.isVisible());
  EXPECT_EQ(of(banner).role(), QAccessible::Notification);
  banner.say(Tone::good, "2 servers stopped.");
  EXPECT_TRUE(banner.isVisible());
  EXPECT_EQ(nameOf(banner), "2 servers stopped.");
  banner.say(Tone::warning, "Nothing changed.", "The files may be in use.");
  EXPECT_EQ(nameOf(banner), "Nothing changed. The files may be in use.");
  banner.dismiss();
  EXPECT_FALSE(banner.isVisible());
}

TEST_F(SpokenTests, aBannerIsAsHighAsItsWords) {
  auto* column = new QVBoxLayout(&window);
  auto* banner = new Banner(theme, &window);
  column->addWidget(banner);
  column->addWidget(new TextLabel(theme, TextStyle::body, Token::text1, "Below", &window));
  window.resize(360, 500);
  banner->say(Tone::good, "2 servers stopped.");
  show(window);
  EXPECT_EQ(banner->height(), 18 + 28);
  banner->say(Tone::warning,
              "A sentence of which it is known that it takes more than one line in this width.");
  for (int i = 0; i < 2; ++i) QApplication::processEvents(); // its own layout, then its parent's
  EXPECT_EQ(banner->height(), 2 * 18 + 28);
  for (auto* label : all<TextLabel>(*banner)) EXPECT_TRUE(label->isHidden() || !label->cutText());
}

TEST_F(SpokenTests, aBannersButtonGoesWithWhatItOffered) {
  Banner banner(theme, &window);
  banner.say(Tone::info, "2 dev servers are running but idle");
  banner.offer("Stop All Idle…", [] {});
  auto* button = dynamic_cast<Button*>(banner.findChildren<QWidget*>().last());
  ASSERT_TRUE(button);
  EXPECT_FALSE(button->isHidden());
  banner.say(Tone::good, "Stopped.");
  EXPECT_TRUE(button->isHidden());
}

TEST_F(SpokenTests, aQuestionIsReadWhole) {
  show(window);
  auto& dialog = Dialog::ask(theme,
                             {.title = "Move 2 GB to the Trash?",
                              .passages = {{"Moves to the Trash:", {"~/a", "~/b"}, "and 1 more"}},
                              .action = "Move to Trash"},
                             window, {});
  EXPECT_EQ(of(dialog).role(), QAccessible::Dialog);
  EXPECT_TRUE(of(dialog).state().modal);
  EXPECT_EQ(nameOf(dialog), "Move 2 GB to the Trash?");
  EXPECT_EQ(of(dialog).text(QAccessible::Description), "Moves to the Trash: ~/a ~/b and 1 more");
}

} // namespace
} // namespace korvell
