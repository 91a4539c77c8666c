#include "Tests/Fakes/TemporaryFolder.h"
#include "Tests/UI/Kit/KitFixture.h"
#include "UI/Gallery/Check.h"
#include "UI/Gallery/MadeUp.h"
#include "UI/Kit/Scroll.h"
#include "UI/Kit/Text.h"
#include "UI/Overview/HealthView.h"
#include "UI/Panel/PanelView.h"
#include "UI/Share/CardFile.h"
#include "UI/Share/ShareCardPainter.h"
#include "UI/Window/SidebarView.h"

#include <QScrollBar>

#include <algorithm>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

HealthPage page(const MadeUpModel& model) {
  return healthPage(model, {.zone = model.zone, .hasBatterySettings = true});
}

struct ViewTests : KitTests {
  std::vector<SidebarItem> opened;
  std::vector<Step> steps;
  std::vector<UsageKey> sorted;

  std::unique_ptr<HealthView> health(const HealthPage& content, QSize size) {
    auto view = std::make_unique<HealthView>(theme, nullptr);
    view->onOpen([this](SidebarItem item) { opened.push_back(item); });
    view->onStep([this](const Step& step) { steps.push_back(step); });
    view->resize(size);
    view->show(content);
    KitTests::show(*view);
    return view;
  }

  std::unique_ptr<PanelView> panel(const PanelPage& content) {
    auto view = std::make_unique<PanelView>(
        theme,
        PanelView::Handlers{.step = [this](const Step& step) { steps.push_back(step); },
                            .open = [this](SidebarItem item) { opened.push_back(item); },
                            .sortBy = [this](UsageKey key) { sorted.push_back(key); },
                            .openKorvell = [] {},
                            .openSettings = [] {},
                            .quit = [] {}},
        nullptr);
    view->show(content);
    view->resize(view->sizeHint());
    KitTests::show(*view);
    return view;
  }

  static Button& button(const QWidget& view, const char* words) {
    auto buttons = all<Button>(view);
    return **std::ranges::find_if(buttons, [&](Button* each) { return each->words() == words; });
  }
};

TEST_F(ViewTests, thePanelAsksForAllThatItNeeds) {
  for (const auto* detail :
       {"50.0 GB free on System disk.", "Nothing.", "It compresses and swaps heavily, so all is slow."}) {
    const auto model = usualMachine();
    model->report.set(
        madeUpReport({madeUpInsight(Insight::Severity::warning, 8, "Disk space is getting low", detail)}));
    const auto view = panel(panelPage(*model, UsageKey::memory, {}, true));
    EXPECT_EQ(all<ScrollArea>(*view).front()->verticalScrollBar()->maximum(), 0) << detail;
  }
}

TEST_F(ViewTests, aNewCycleKeepsWhatIsThere) {
  const auto model = usualMachine();
  const auto view = health(page(*model), {884, 700});
  const auto rows = all<AppRowView>(*view);
  const auto tiles = all<TileView>(*view);
  ASSERT_THAT(rows, SizeIs(7));
  rows[2]->setFocus(Qt::TabFocusReason);
  model->change(model->snapshot, [](SystemSnapshot& s) {
    std::ranges::reverse(s.apps);
    s.cpu.total = 99;
  });
  view->show(page(*model));
  EXPECT_EQ(all<AppRowView>(*view), rows);
  EXPECT_EQ(all<TileView>(*view), tiles);
  EXPECT_TRUE(rows[2]->hasFocus());
  EXPECT_EQ(tiles[0]->accessibleName().toStdString().substr(0, 15), "CPU, 99 percent");

  model->report.set(madeUpReport({}));
  model->change(model->snapshot, [](SystemSnapshot& s) { s.apps.resize(1); });
  view->show(page(*model));
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_THAT(all<FindingView>(*view), IsEmpty());
  ASSERT_THAT(all<AppRowView>(*view), SizeIs(1));
  EXPECT_EQ(all<AppRowView>(*view)[0]->focusPolicy(), Qt::StrongFocus) << "Tab still comes to the list";
}

TEST_F(ViewTests, theFirstFixIsThePrimaryOne) {
  const auto model = troubledMachine();
  model->change(model->report, [](HealthReport& report) {
    std::swap(report.insights[0], report.insights[2]); // one without a fix comes first
  });
  const auto view = health(page(*model), {884, 700});
  const auto shown = view->grab().toImage();
  const auto colorIn = [&](const Button& each) {
    const auto at = each.mapTo(view.get(), QPoint(4, each.height() / 2));
    return QColor(shown.pixel(at * shown.devicePixelRatio()));
  };
  EXPECT_EQ(colorIn(button(*view, "Free Up Space")), theme.color(Token::accent));
  EXPECT_NE(colorIn(button(*view, "Battery Settings")), theme.color(Token::accent));
  click(button(*view, "Battery Settings"));
  EXPECT_THAT(steps, ElementsAre(Step{"Battery Settings", OpenBatterySettings{}}));
}

TEST_F(ViewTests, arrowsMoveAmongApplications) {
  const auto view = health(page(*usualMachine()), {884, 700});
  const auto rows = all<AppRowView>(*view);
  rows[0]->setFocus(Qt::TabFocusReason);
  const auto after = [&](int pressed) {
    key(*view, pressed);
    return std::ranges::find_if(rows, [](auto* row) { return row->hasFocus(); }) - rows.begin();
  };
  EXPECT_EQ(after(Qt::Key_Up), 0);
  EXPECT_EQ(after(Qt::Key_Down), 1);
  EXPECT_EQ(after(Qt::Key_End), 6);
  EXPECT_EQ(after(Qt::Key_Down), 6);
  EXPECT_EQ(std::ranges::count(rows, Qt::StrongFocus, [](auto* row) { return row->focusPolicy(); }), 1)
      << "one tab stop";
  key(*view, Qt::Key_Return);
  EXPECT_THAT(opened, ElementsAre(SidebarItem::cpu));
}

TEST_F(ViewTests, sideColumnsMoveBelowInANarrowPage) {
  const auto view = health(page(*usualMachine()), {884, 700});
  const auto top = [&](const char* words) {
    for (auto* label : all<TextLabel>(*view))
      if (label->words() == words) return label->mapTo(view.get(), QPoint()).y();
    return -1;
  };
  EXPECT_LT(std::abs(top("Today") - top("Top applications")), 4);
  view->resize(663, 700);
  QApplication::processEvents();
  EXPECT_GT(top("Today"), top("Top applications") + 200);
  view->resize(1300, 700);
  QApplication::processEvents();
  const auto tiles = all<TileView>(*view);
  EXPECT_TRUE(std::ranges::all_of(tiles, [&](auto* tile) { return tile->y() == tiles[0]->y(); }))
      << "six in a row";
}

TEST_F(ViewTests, aScrollBarTakesNoRoomFromThePage) {
  const auto right = [&](int height) {
    const auto view = health(page(*usualMachine()), {663, height});
    QApplication::processEvents();
    const auto& tile = *all<TileView>(*view)[2];
    return tile.mapTo(view.get(), tile.rect().topRight()).x();
  };
  EXPECT_EQ(right(1400), right(400));
}

TEST_F(ViewTests, thePanelAsksForTheHeightOfWhatItShows) {
  const auto usual = panel(panelPage(*usualMachine(), UsageKey::memory, 84, true));
  EXPECT_EQ(usual->sizeHint(), QSize(360, 672));
  const auto& tile = *all<TileView>(*usual)[1];
  EXPECT_EQ(tile.mapTo(usual.get(), tile.rect().topRight()).x(), 360 - 16 - 1);
  EXPECT_THAT(problemsOf(*usual), IsEmpty());
  const auto model = troubledMachine();
  usual->show(panelPage(*model, UsageKey::memory, 84, true));
  EXPECT_GT(usual->sizeHint().height(), 672) << "at once, before anything is laid out";
  usual->show(panelPage(*healthyMachine(), UsageKey::memory, 84, true));
  EXPECT_LT(usual->sizeHint().height(), 600);
}

TEST_F(ViewTests, thePanelShowsThreeFindingsAndLeadsToTheRest) {
  const auto view = panel(panelPage(*troubledMachine(), UsageKey::memory, {}, true));
  EXPECT_THAT(all<FindingView>(*view), SizeIs(3));
  click(button(*view, "5 more"));
  EXPECT_THAT(opened, ElementsAre(SidebarItem::overview));
  auto* sorting = all<Segments>(*view)[0];
  EXPECT_EQ(sorting->chosen(), 1u);
  sorting->findChildren<QWidget*>()[1]->setFocus();
  key(*view, Qt::Key_Left);
  EXPECT_THAT(sorted, ElementsAre(UsageKey::cpu));
}

TEST_F(ViewTests, theSidebarIsOneTabStopThatArrowsMoveIn) {
  const auto model = usualMachine();
  SidebarFacts facts{.sections = {SidebarItem::overview, SidebarItem::cpu, SidebarItem::memory}};
  SidebarView view(theme, nullptr);
  view.onOpen([&](SidebarItem item) {
    opened.push_back(item);
    view.show(sidebar(*model, item, facts));
  });
  view.show(sidebar(*model, SidebarItem::cpu, facts));
  view.resize(view.width(), 300);
  KitTests::show(view);
  view.takeFocus(Qt::TabFocusReason);
  for (int pressed : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_Up, Qt::Key_Up}) key(view, pressed);
  EXPECT_THAT(opened, ElementsAre(SidebarItem::memory, SidebarItem::cpu, SidebarItem::overview));
  EXPECT_THAT(problemsOf(view), IsEmpty());
  view.setRail(true);
  EXPECT_EQ(view.width(), 56);
  EXPECT_EQ(all<Control>(view).back()->toolTip().isEmpty(), false) << "a rail names its icons in tooltips";
}

TEST_F(ViewTests, aLowSidebarKeepsItsRowsApart) {
  const auto model = usualMachine();
  SidebarFacts facts;
  for (const auto& item : allCases<SidebarItem>()) facts.sections.insert(item.value);
  for (const double scale : {1.0, 1.4}) {
    theme.set({.reducedMotion = true, .textScale = scale});
    SidebarView view(theme, nullptr);
    view.show(sidebar(*model, SidebarItem::cpu, facts));
    view.resize(view.width(), 560);
    KitTests::show(view);
    auto rows = all<Control>(view);
    std::ranges::sort(rows, {}, [](auto* row) { return row->y(); });
    for (std::size_t i = 1; i < rows.size(); ++i)
      EXPECT_LE(rows[i - 1]->geometry().bottom(), rows[i]->geometry().top()) << scale << " " << i;
  }
}

TEST_F(ViewTests, aCardIsSavedBesideTheOneOfBefore) {
  const auto model = usualMachine();
  const auto card = shareCard(*model, model->zone);
  ASSERT_TRUE(card);
  const auto picture = shareCardPicture(*card, theme);
  const TemporaryFolder folder;
  const auto first = saveNewPicture(picture, folder / "Downloads", card->fileName);
  const auto second = saveNewPicture(picture, folder / "Downloads", card->fileName);
  ASSERT_TRUE(first && second);
  EXPECT_EQ(*first, folder / "Downloads/Korvell health 2026-11-15.png");
  EXPECT_EQ(*second, folder / "Downloads/Korvell health 2026-11-15 2.png");
  EXPECT_EQ(QImage(text(*second)).size(), QSize(1200, 630)) << "also where text is larger";
  EXPECT_FALSE(saveNewPicture(picture, folder / "Downloads/Korvell health 2026-11-15.png", "card"));
}

} // namespace
} // namespace korvell
