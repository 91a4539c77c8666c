#include "UI/Shell/MainWindow.h"

#include "Tests/App/AppFixture.h"
#include "Tests/UI/Kit/KitFixture.h"
#include "UI/Kit/Banner.h"
#include "UI/Kit/Button.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Text.h"
#include "UI/Shell/AppMenu.h"
#include "Words/Languages.h"

#include <QBoxLayout>
#include <QMenu>
#include <QShortcut>

namespace korvell {
namespace {

using testing::ElementsAre;

/// A page with one button in each of its parts, or in the middle alone.
class SectionPage final : public Page {
public:
  SectionPage(const Theme& theme, SidebarItem item, int& top) : item_(item), top_(top) {
    auto* rows = new QVBoxLayout(this);
    rows->addWidget(new Button(theme, Button::Kind::plain, "Content", this));
    if (item != SidebarItem::storage) return;
    footer_ = new QWidget(this);
    (new QVBoxLayout(footer_))->addWidget(new Button(theme, Button::Kind::plain, "Footer", footer_));
    rows->addWidget(footer_);
    control_ = new Button(theme, Button::Kind::plain, "Control", this);
  }
  std::string title() const override { return korvell::title(item_); }
  QWidget* control() override { return control_; }
  QWidget* footer() override { return footer_; }
  PagePlace place() const override { return {.top = top_, .range = 0, .moment = {}}; }
  void restore(const PagePlace& place) override { top_ = place.top; }

private:
  const SidebarItem item_;
  int& top_;
  QWidget *control_ = nullptr, *footer_ = nullptr;
};

struct MainWindowTests : AppFixture {
  Theme theme{{.reducedMotion = true}};
  int top = 0; ///< how far the page is scrolled
  MainWindow window{
      {.model = *model,
       .defaults = defaults,
       .theme = theme,
       .facts =
           [] {
             return SidebarFacts{
                 .sections = {SidebarItem::overview, SidebarItem::memory, SidebarItem::storage}};
           },
       .makePage =
           [this](SidebarItem item, QWidget&, Banner&) {
             top = 0;
             return std::make_unique<SectionPage>(theme, item, top);
           },
       .keepFrame = [this](Value frame) { (void)defaults.set(MainWindow::frameKey, std::move(frame)); },
       .openSettings = [] {},
       .quit = [] {},
       .closed = [] {}}};

  ~MainWindowTests() override { setLocalization({}); }

  QWidget& open(SidebarItem item = SidebarItem::overview) {
    window.show(item);
    window.widget()->activateWindow();
    settle();
    return *window.widget();
  }
  static void settle() {
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  template <class W>
  std::vector<std::string> names() {
    std::vector<std::string> found;
    for (const auto* each : KitTests::all<W>(*window.widget()))
      if (each->isVisible()) found.push_back(utf8(each->accessibleName()));
    return found;
  }
  std::string title() { return utf8(KitTests::all<TextLabel>(*window.widget()).front()->words()); }
};

TEST_F(MainWindowTests, f6GoesRoundItsParts) {
  auto& shown = open(SidebarItem::storage);
  const auto stops = [&](int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) {
      for (auto* each : shown.findChildren<QShortcut*>())
        if (each->key() == QKeySequence("F6")) Q_EMIT each->activated();
      names.push_back(utf8(shown.focusWidget()->accessibleName()));
    }
    return names;
  };
  EXPECT_THAT(stops(5), ElementsAre("Control", "Content", "Footer", "Free Up Space", "Control"));
  open(SidebarItem::memory);
  EXPECT_EQ(utf8(shown.focusWidget()->accessibleName()), "Memory") << "the control that had it has gone";
  EXPECT_THAT(stops(3), ElementsAre("Content", "Memory", "Content"));
}

TEST_F(MainWindowTests, aMenuBarShowsNoKeysButItsOwn) {
  std::vector<QKeySequence> keys{QKeySequence("Ctrl+M")}; // the desktop's own, wherever there is a menu bar
  for (const auto* each : open().findChildren<QShortcut*>()) keys.push_back(each->key());
  AppMenu menu({.sections = {SidebarItem::overview, SidebarItem::memory, SidebarItem::storage},
                .open = [](SidebarItem) {},
                .openSettings = [] {},
                .quit = [] {},
                .openHelp = {}});
  for (const auto* head : menu.bar().actions())
    for (const auto* entry : head->menu()->actions())
      EXPECT_THAT(keys, testing::Contains(entry->shortcut())) << utf8(entry->text());
}

TEST_F(MainWindowTests, aNoticeStandsOverEveryPageUntilItIsClosed) {
  window.tell([] { return MainWindow::Notice("No tray", "Ask for one"); });
  open();
  open(SidebarItem::memory);
  EXPECT_THAT(names<Banner>(), ElementsAre("No tray Ask for one"));
  window.close();
  EXPECT_THAT((open(), names<Banner>()), ElementsAre("No tray Ask for one")) << "in the next window too";
  KitTests::key(*window.widget(), Qt::Key_Escape);
  EXPECT_THAT(names<Banner>(), ElementsAre());
  window.close();
  EXPECT_THAT((open(), names<Banner>()), ElementsAre());

  window.tell([] { return MainWindow::Notice("No tray", ""); });
  for (auto* each : KitTests::all<Button>(*window.widget()))
    if (each->words() == "Close") each->press();
  EXPECT_THAT(names<Banner>(), ElementsAre());
  window.tell([] { return MainWindow::Notice("No tray", ""); });
  window.untell();
  EXPECT_THAT(names<Banner>(), ElementsAre()) << "a tray has come";
}

TEST_F(MainWindowTests, itsFrameComesBack) {
  const QRect wanted(20, 30, 740, 600);
  for (const bool byUser : {true, false}) {
    open().setGeometry(wanted);
    settle();
    if (byUser)
      window.widget()->close();
    else
      window.close();
    settle();
    ASSERT_EQ(window.widget(), nullptr);
    EXPECT_EQ(open().geometry(), wanted);
  }
  const QRect later(24, 40, 720, 560);
  open().setGeometry(later);
  window.widget()->showMaximized();
  settle();
  window.close();
  EXPECT_EQ(open().geometry(), later) << "as it was before it filled the screen";
  window.close();
  (void)defaults.set(MainWindow::frameKey, *parseJSON(R"({"x":9000,"y":0,"width":740,"height":600})"));
  EXPECT_TRUE(open().screen()->geometry().contains(window.widget()->geometry().center()))
      << "the screen that it stood on is gone";
  window.close();
  (void)defaults.set(MainWindow::frameKey,
                     *parseJSON(R"({"x":2147483000,"y":4294967296,"width":2147483647,"height":600})"));
  EXPECT_TRUE(open().screen()->geometry().contains(window.widget()->geometry().center()))
      << "no such desktop, nor a number for its edge";
}

TEST_F(MainWindowTests, anotherLanguageKeepsThePageAndItsPlace) {
  setLanguages(languages("en"));
  window.tell([] { return MainWindow::Notice(localized("Trash"), ""); });
  open(SidebarItem::memory);
  top = 120;
  KitTests::all<Button>(*window.widget()).back()->setFocus();
  ASSERT_TRUE(speakLanguage("de"));
  window.speakAnew();
  settle();
  EXPECT_EQ(title(), "Speicher");
  EXPECT_EQ(top, 120);
  EXPECT_THAT(names<Banner>(), ElementsAre("Papierkorb"));
  const auto rows = names<Control>();
  for (const auto* name : {"Zustand", "Speicher", "Aufräumen", "Einstellungen"})
    EXPECT_NE(std::ranges::find_if(rows, [&](auto& each) { return each.starts_with(name); }), rows.end())
        << name;
  EXPECT_EQ(*model->selection, SidebarItem::memory);
}

} // namespace
} // namespace korvell
