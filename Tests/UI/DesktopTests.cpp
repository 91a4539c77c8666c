// Where the desktop is not a row of windows: links that it hands to the running application, a menu bar that
// all windows share, and the item in it.

#include "App/AppDelegate.h"
#include "Base/Localization.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/UI/Kit/KitFixture.h"
#include "UI/Kit/Text.h"
#include "UI/Shell/AppMenu.h"
#include "UI/Shell/LinkEvents.h"
#include "UI/Tray/MenuBarIcon.h"
#include "Words/Languages.h"

#include <QFileOpenEvent>
#include <QMenu>
#include <QUrl>

namespace korvell {
namespace {

using testing::Contains;
using testing::ElementsAre;

TEST(LinkEventTests, aLinkOpensItsSectionAndNothingElseDoes) {
  FakeUserDefaults defaults;
  std::vector<std::optional<SidebarItem>> shown;
  const AppDelegate delegate(defaults, [&](std::optional<SidebarItem> item) { shown.push_back(item); });
  auto links = std::make_unique<LinkEvents>([&](const auto& urls) { delegate.applicationOpen(urls); });
  const auto open = [&](const QUrl& url) {
    QFileOpenEvent event(url);
    QCoreApplication::sendEvent(qApp, &event);
  };
  for (const auto* link : {"korvell://page/memory", "korvell://page/%2e%2e/storage?from=mail#x"})
    open(QUrl(link));
  EXPECT_THAT(shown, ElementsAre(SidebarItem::memory, SidebarItem::storage));
  for (const auto* other : {"korvell://clean/all", "korvell://page@evil/memory", "korvell://page:80/memory",
                            "file:///etc/passwd", "javascript:alert(1)", "", "korvell:page/memory"})
    open(QUrl(other));
  open(QUrl::fromLocalFile("/korvell://page/memory"));
  open(QUrl("korvell://elsewhere/" + QString(100'000, 'a')));
  EXPECT_EQ(shown.size(), 2u);
  QObject other;
  QFileOpenEvent event(QUrl("korvell://page/cpu"));
  QCoreApplication::sendEvent(&other, &event);
  links.reset();
  open(QUrl("korvell://page/cpu"));
  EXPECT_EQ(shown.size(), 2u) << "it listens to the application alone, and no longer than it is there";
}

struct AppMenuTests : KitTests {
  std::vector<std::string> done;
  AppMenu menu{{.sections = {SidebarItem::overview, SidebarItem::cpu, SidebarItem::memory, SidebarItem::disk,
                             SidebarItem::network, SidebarItem::gpu, SidebarItem::energy,
                             SidebarItem::storage, SidebarItem::devServers, SidebarItem::alerts},
                .open = [this](SidebarItem item) { done.push_back(std::string(rawValue(item))); },
                .openSettings = [this] { done.push_back("settings"); },
                .quit = [this] { done.push_back("quit"); },
                .openHelp = {}}};

  ~AppMenuTests() override { setLocalization({}); }

  QList<QAction*> entries() {
    QList<QAction*> all;
    for (auto* head : menu.bar().actions()) all += head->menu()->actions();
    return all;
  }
  QAction* entry(const char* keys) {
    for (auto* each : entries())
      if (each->shortcut() == QKeySequence(keys)) return each;
    ADD_FAILURE() << keys;
    return entries().front();
  }
};

TEST_F(AppMenuTests, sectionsSettingsAndTheEndAreChosenThere) {
  for (const auto* keys : {"Ctrl+1", "Ctrl+9", "Ctrl+,", "Ctrl+Q"}) entry(keys)->trigger();
  EXPECT_THAT(done, ElementsAre("overview", "devServers", "settings", "quit"));
  EXPECT_EQ(entry("Ctrl+,")->menuRole(), QAction::PreferencesRole);
  EXPECT_EQ(entry("Ctrl+Q")->menuRole(), QAction::QuitRole);
  entries()[9]->trigger();
  EXPECT_EQ(done.back(), "alerts") << "the tenth is there without a key";
  EXPECT_TRUE(entries()[9]->shortcut().isEmpty());
}

TEST_F(AppMenuTests, windowCommandsGoToTheOneInUse) {
  QWidget first, second, panel(nullptr, Qt::Tool);
  for (auto* each : {&first, &second}) show(*each);
  entry("Ctrl+M")->trigger();
  EXPECT_TRUE(second.isMinimized());
  EXPECT_FALSE(first.isMinimized());
  show(panel);
  entry("Ctrl+M")->trigger();
  EXPECT_FALSE(panel.isMinimized()) << "it has no place to go to";
  entry("Ctrl+W")->trigger();
  EXPECT_FALSE(panel.isVisible());
  EXPECT_TRUE(first.isVisible());
}

TEST_F(AppMenuTests, itSpeaksTheLanguageInEffect) {
  setLanguages(languages("en"));
  ASSERT_TRUE(speakLanguage("de"));
  menu.speakAnew();
  std::vector<std::string> words;
  for (const auto* each : menu.bar().actions() + entries()) words.push_back(utf8(each->text()));
  for (const auto* word : {"Fenster", "Speicher", "Einstellungen…", "Schließen"})
    EXPECT_THAT(words, Contains(word));
}

struct MenuBarIconTests : KitTests {
  /// The picture for a screen of ordinary density, or of twice that.
  QImage picture(const MenuBarFigures& figures, MenuBarStyle style, int scale = 1) {
    const auto icon = menuBarIcon(MenuBarLabel::make(figures, style), theme);
    EXPECT_TRUE(icon.isMask()) << "the bar has to tint it";
    for (const auto& size : icon.availableSizes())
      if (size.height() == 18 * scale) return icon.pixmap(size, 1).toImage();
    ADD_FAILURE() << "no picture " << scale << " times as high as a bar shows";
    return {};
  }
};

TEST_F(MenuBarIconTests, itIsBlackAlone) {
  for (const auto& style : EnumTable<MenuBarStyle>::cases) {
    const auto image =
        picture({.score = 87, .cpu = 24, .memory = 63, .cpuHistory = {24, 90}}, style.value, 2);
    int inked = 0;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x) {
        const auto pixel = image.pixelColor(x, y);
        inked += pixel.alpha() > 128;
        if (pixel.alpha() > 0) {
          ASSERT_EQ(pixel.rgb() & 0xFFFFFF, 0u) << style.rawValue << " at " << x << ", " << y;
        }
      }
    EXPECT_GT(inked, 60) << style.rawValue;
  }
}

TEST_F(MenuBarIconTests, figuresOfAsManyDigitsTakeTheSameRoom) {
  const auto width = [&](int score, MenuBarStyle style, int scale = 1) {
    return picture({.score = score, .cpu = score, .memory = score, .cpuHistory = {}}, style, scale).width();
  };
  for (const auto style : {MenuBarStyle::score, MenuBarStyle::cpuAndMemory}) {
    EXPECT_EQ(width(11, style), width(84, style)) << "or its neighbours would move";
    EXPECT_GT(width(100, style), width(84, style));
    EXPECT_EQ(width(84, style, 2), 2 * width(84, style));
  }
  EXPECT_EQ(width(50, MenuBarStyle::graphs), 38);
}

} // namespace
} // namespace korvell
