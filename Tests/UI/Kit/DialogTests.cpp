#include "Tests/UI/Kit/KitFixture.h"

#include "UI/Kit/Dialog.h"
#include "UI/Kit/Focus.h"

#include <QScrollBar>
#include <QShortcut>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct DialogTests : KitTests {
  QWidget window;
  Button behind{theme, Button::Kind::primary, "Move to Trash…", &window};
  std::vector<bool> answers;

  void SetUp() override {
    window.resize(720, 560);
    behind.move(20, 20);
    show(window);
    behind.setFocus();
  }
  Dialog& ask(Question question = {.title = "Move 6.36 GB to the Trash?", .action = "Move to Trash"}) {
    auto& dialog =
        Dialog::ask(theme, std::move(question), window, [this](bool yes) { answers.push_back(yes); });
    QApplication::processEvents();
    return dialog;
  }
};

TEST_F(DialogTests, returnAloneDoesNothing) {
  auto& dialog = ask();
  EXPECT_EQ(window.focusWidget(), &dialog.cancelButton());
  EXPECT_TRUE(FocusRing::isShown(dialog.cancelButton()));
  key(window, Qt::Key_Return);
  EXPECT_THAT(answers, ElementsAre(false));
  EXPECT_EQ(Dialog::of(window), nullptr);
  EXPECT_EQ(window.focusWidget(), &behind) << "where it was before";
}

TEST_F(DialogTests, escapeCancelsAndTabStaysInside) {
  auto& dialog = ask();
  for (auto* expected : {&dialog.actionButton(), &dialog.cancelButton(), &dialog.actionButton()}) {
    key(window, Qt::Key_Tab);
    EXPECT_EQ(window.focusWidget(), expected);
  }
  key(window, Qt::Key_Left);
  EXPECT_EQ(window.focusWidget(), &dialog.cancelButton());
  key(window, Qt::Key_Escape);
  key(window, Qt::Key_Escape);
  EXPECT_THAT(answers, ElementsAre(false)) << "once";
}

TEST_F(DialogTests, theActionIsAnsweredWithYes) {
  click(ask().actionButton());
  EXPECT_THAT(answers, ElementsAre(true));
}

TEST_F(DialogTests, theWindowBehindTakesNoInput) {
  ask();
  EXPECT_NE(window.childAt(behind.geometry().center()), &behind);
  QKeyEvent shortcut(QEvent::ShortcutOverride, Qt::Key_1, Qt::ControlModifier);
  shortcut.ignore();
  QApplication::sendEvent(window.focusWidget(), &shortcut);
  EXPECT_TRUE(shortcut.isAccepted()) << "the window's shortcuts wait";
  window.resize(600, 400);
  QApplication::processEvents();
  EXPECT_EQ(Dialog::of(window)->geometry(), window.rect());
}

TEST_F(DialogTests, aSecondQuestionRefusesTheFirst) {
  ask();
  auto& second = ask({.title = "Quit Firefox?", .action = "Quit"});
  EXPECT_THAT(answers, ElementsAre(false));
  EXPECT_EQ(Dialog::of(window), &second);
}

TEST_F(DialogTests, aloneItFillsAWindowOfItsSize) {
  QWidget alone;
  auto& dialog = Dialog::fill(
      theme, {.title = "Quit Firefox?", .passages = {{.well = {"4711 firefox"}}}, .action = "Quit"}, alone,
      [this](bool yes) { answers.push_back(yes); });
  alone.resize(dialog.sizeHint());
  show(alone);
  EXPECT_EQ(dialog.geometry(), alone.rect());
  EXPECT_TRUE(dialog.rect().contains(dialog.actionButton().geometry()));
  EXPECT_TRUE(dialog.cancelButton().hasFocus());
  key(alone, Qt::Key_Return);
  EXPECT_THAT(answers, ElementsAre(false));
}

TEST_F(DialogTests, aWindowThatGoesLeavesItUnanswered) {
  {
    QWidget brief;
    show(brief);
    Dialog::ask(theme, {.title = "Quit Firefox?", .action = "Quit"}, brief,
                [this](bool yes) { answers.push_back(yes); });
  }
  EXPECT_THAT(answers, IsEmpty());
}

TEST_F(DialogTests, longWordsMakeItHigherAndPathsAreElidedInTheMiddle) {
  auto heightOf = [&](Question question) {
    auto& dialog = ask(std::move(question));
    auto* box = &dialog.box();
    EXPECT_LE(box->width(), 460);
    EXPECT_TRUE(dialog.rect().contains(box->geometry()));
    for (auto* label : all<TextLabel>(*box)) EXPECT_EQ(label->cutText(), std::nullopt);
    return box->height();
  };
  std::string sentence = "It launches a program which no longer exists. ";
  auto low = heightOf({.title = "Remove?", .passages = {{sentence}}, .action = "Move to Trash"});
  auto high = heightOf(
      {.title = "Remove?", .passages = {{sentence + sentence + sentence}}, .action = "Move to Trash"});
  EXPECT_GT(high, low);
  window.resize(360, 500);
  heightOf({.title = "Remove this?",
            .passages = {{.well = {std::string(200, 'x')}}},
            .action = "Endgültig löschen",
            .permanent = true});
}

TEST_F(DialogTests, whatHasRoomDoesNotScroll) {
  const std::string path = "~/code/project/node_modules",
                    long_ = "Permanently deletes every stopped container, "
                            "networks no container uses, dangling images and "
                            "unused build cache. Tagged images are kept.";
  auto& dialog = ask(
      {.icon = Icon::trash,
       .title = "Free 13.4 GB?",
       .passages = {{"Moves to the Trash:", {path, path, path, path}, "and 1 more", "They can be put back."},
                    {long_},
                    {long_}},
       .action = "Delete Permanently",
       .permanent = true});
  window.resize(720, 300);
  QApplication::processEvents();
  window.resize(720, 560);
  QApplication::processEvents();
  for (auto* label : all<TextLabel>(dialog.box())) {
    EXPECT_EQ(label->visibleRegion().boundingRect(), label->rect()) << label->words().toStdString();
    EXPECT_EQ(label->cutText(), std::nullopt);
  }
  for (auto* bar : all<QScrollBar>(dialog.box())) EXPECT_FALSE(bar->isVisible());
}

TEST_F(DialogTests, whatIsHigherThanTheWindowScrollsAboveTheButtons) {
  std::string lines;
  for (int i = 0; i < 60; ++i) lines += "~/.cache/some-package\n";
  auto& dialog = ask({.title = "Free 20 GB?",
                      .passages = {{lines}, {"This cannot be undone."}},
                      .action = "Delete Permanently",
                      .permanent = true});
  const auto inBox = [&](const QWidget& part) {
    return QRect(part.mapTo(&dialog, QPoint()), part.size()).intersected(dialog.box().geometry());
  };
  EXPECT_TRUE(dialog.rect().contains(dialog.box().geometry()));
  for (auto* button : {&dialog.cancelButton(), &dialog.actionButton()}) {
    EXPECT_EQ(inBox(*button).size(), button->size());
    EXPECT_FALSE(button->visibleRegion().isEmpty());
  }
  auto* last = all<TextLabel>(dialog.box()).back();
  EXPECT_EQ(last->cutText(), std::nullopt);
  EXPECT_TRUE(last->visibleRegion().isEmpty()) << "it is further down";
  for (int i = 0; i < 5; ++i) key(window, Qt::Key_PageDown);
  EXPECT_EQ(last->visibleRegion().boundingRect(), last->rect());
}

} // namespace
} // namespace korvell
