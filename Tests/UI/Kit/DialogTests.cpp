#include "Tests/UI/Kit/KitFixture.h"

#include "UI/Kit/Dialog.h"
#include "UI/Kit/Focus.h"

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
  auto& dialog = Dialog::fill(theme, {.title = "Quit Firefox?", .well = {"4711 firefox"}, .action = "Quit"},
                              alone, [this](bool yes) { answers.push_back(yes); });
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
    auto* box = dialog.cancelButton().parentWidget();
    EXPECT_LE(box->width(), 460);
    EXPECT_TRUE(dialog.rect().contains(box->geometry()));
    for (auto* label : all<TextLabel>(*box)) EXPECT_EQ(label->cutText(), std::nullopt);
    return box->height();
  };
  std::string sentence = "It launches a program which no longer exists. ";
  auto low = heightOf({.title = "Remove?", .text = sentence, .action = "Move to Trash"});
  auto high =
      heightOf({.title = "Remove?", .text = sentence + sentence + sentence, .action = "Move to Trash"});
  EXPECT_GT(high, low);
  window.resize(360, 500);
  heightOf({.title = "Remove this?",
            .well = {std::string(200, 'x')},
            .action = "Endgültig löschen",
            .permanent = true});
}

} // namespace
} // namespace korvell
