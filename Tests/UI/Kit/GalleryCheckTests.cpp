#include "UI/Gallery/Check.h"

#include "Tests/UI/Kit/KitFixture.h"
#include "UI/Kit/Button.h"
#include "UI/Kit/Dialog.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Scroll.h"
#include "UI/Kit/Switches.h"

#include <QBoxLayout>

namespace korvell {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

struct GalleryCheckTests : KitTests {
  QWidget window;

  GalleryCheckTests() { window.resize(300, 200); }
  Button& button(std::string_view words) {
    auto* made = new Button(theme, Button::Kind::plain, words, &window);
    made->resize(made->sizeHint());
    return *made;
  }
  std::vector<std::string> problems() {
    show(window);
    return problemsOf(window);
  }
};

TEST_F(GalleryCheckTests, aSoundViewHasNone) {
  button("Review");
  button("Free Up Space").move(0, 40);
  EXPECT_THAT(problems(), IsEmpty());
}

TEST_F(GalleryCheckTests, controlsWithoutANameAreFound) {
  new Toggle(theme, "", &window);
  auto* silent = new QWidget(&window);
  silent->setFocusPolicy(Qt::StrongFocus);
  silent->setGeometry(0, 60, 30, 30);
  EXPECT_THAT(problems(), ElementsAre(StartsWith("without a name"), StartsWith("without a name")));
}

TEST_F(GalleryCheckTests, whatCannotBeSeenOrHitIsFound) {
  auto& small = button("Review");
  small.setMinimumSize(0, 0);
  small.resize(100, 20);
  auto* flat = new QWidget(&window);
  flat->setGeometry(0, 80, 40, 0);
  EXPECT_THAT(problems(), ElementsAre(StartsWith("too small to hit"), StartsWith("squeezed"),
                                      StartsWith("without a size")));
}

TEST_F(GalleryCheckTests, cutTextsAreFoundWhereverTheyAreCut) {
  FigureLabel narrow(theme, TextStyle::figureMedium, &window);
  narrow.setFigure({"1024", "MB/s"});
  narrow.setGeometry(0, 40, 40, 24);
  auto& outside = button("Review");
  outside.move(260, 100);
  EXPECT_THAT(problems(), ElementsAre(AllOf(StartsWith("cut off"), HasSubstr("1024 MB/s")),
                                      AllOf(StartsWith("cut off"), HasSubstr("Review"))));
}

TEST_F(GalleryCheckTests, whatScrollsMayBeLarger) {
  auto* area = new ScrollArea(theme, Token::surface, &window);
  auto* content = new QWidget;
  auto* column = new QVBoxLayout(content);
  for (int i = 0; i < 12; ++i) column->addWidget(new Button(theme, Button::Kind::plain, "Review", content));
  area->setContent(*content);
  area->setGeometry(0, 0, 300, 150);
  EXPECT_THAT(problems(), IsEmpty());
}

TEST_F(GalleryCheckTests, controlsThatTabSkipsAreFound) {
  struct Trap final : Button {
    using Button::Button;
    bool focusNextPrevChild(bool) override { return true; }
  };
  Trap trap(theme, Button::Kind::plain, "Trap", &window);
  auto& beyond = button("Beyond");
  beyond.move(0, 40);
  show(window);
  trap.setFocus();
  EXPECT_THAT(problemsOf(window), ElementsAre(AllOf(StartsWith("not reached by Tab"), HasSubstr("Beyond"))));
}

TEST_F(GalleryCheckTests, aQuestionHoldsTheFocusByRight) {
  button("Behind");
  show(window);
  Dialog::ask(theme, {.title = "Quit?", .action = "Quit"}, window, {});
  EXPECT_THAT(problems(), IsEmpty());
}

} // namespace
} // namespace korvell
