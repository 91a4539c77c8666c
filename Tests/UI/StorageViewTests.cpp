#include "UI/Storage/StorageView.h"

#include "App/ActionTexts.h"
#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/UI/Kit/KitFixture.h"
#include "UI/Kit/Button.h"
#include "UI/Storage/CleanupQuestion.h"
#include "UI/Storage/StorageParts.h"

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum StorageKind;
using State = StoragePage::State;

struct StorageViewTests : KitTests {
  struct StillModel final : Model {
    StillModel(const Queue& main, const UserDefaults& defaults) : Model(main, defaults) {}
  };

  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  std::unique_ptr<Queue> slow = time.makeQueue("Korvell.storage");
  FakeUserDefaults defaults;
  FakeTimeZone zone;
  StillModel model{*main, defaults};
  StorageScanner scanner{
      {.measure = [](StorageKind, const Cancellation&) { return std::nullopt; }}, defaults, *main, *slow};
  std::vector<ActionRequest> asked;
  std::vector<std::string> revealed;
  std::unique_ptr<StorageView> view;

  void open(bool reveals = true) {
    StorageView::Services services{.scanner = scanner,
                                   .model = model,
                                   .zone = zone,
                                   .defaults = defaults,
                                   .home = "/home/u",
                                   .theme = theme,
                                   .ask = [this](const ActionRequest& request) { asked.push_back(request); }};
    if (reveals) services.reveal = [this](const std::string& path) { revealed.push_back(path); };
    view = std::make_unique<StorageView>(std::move(services));
    view->resize(884, 700);
    show(*view);
  }
  static StorageCategory found(StorageKind kind, int count) {
    std::vector<StorageItem> items;
    for (int i = 0; i < count; ++i) {
      const auto path = "/home/u/" + std::string(rawValue(kind)) + std::to_string(i);
      items.push_back({.id = path, .kind = kind, .title = "it", .bytes = 100 - i, .urls = {path}});
    }
    return *category(kind, items);
  }
  void publish(std::vector<StorageCategory> categories) {
    scanner.result.set(StorageScanResult{std::move(categories), Date{}});
    QApplication::processEvents();
  }
  QWidget& row(std::size_t index) { return *view->list().rows().at(index); }
  std::size_t focused() {
    const auto rows = view->list().rows();
    return std::size_t(std::ranges::find(rows, view->focusWidget()) - rows.begin());
  }
  static QAccessible::State stateOf(QWidget& row) {
    return QAccessible::queryAccessibleInterface(&row)->state();
  }
};

TEST_F(StorageViewTests, theKeyboardMovesTicksAndUnfolds) {
  open();
  publish({found(npm, 2), found(pip, 1)});
  row(0).setFocus(Qt::TabFocusReason);
  key(*view, Qt::Key_Space);
  EXPECT_EQ(scanner.selection->size(), 2u);
  EXPECT_TRUE(stateOf(row(0)).checked);
  EXPECT_TRUE(stateOf(row(0)).collapsed);

  key(*view, Qt::Key_Left);
  EXPECT_EQ(view->list().rows().size(), 2u) << "there is nothing to fold";
  key(*view, Qt::Key_Right);
  ASSERT_EQ(view->list().rows().size(), 4u);
  key(*view, Qt::Key_Down);
  key(*view, Qt::Key_Down);
  EXPECT_EQ(focused(), 2u);
  key(*view, Qt::Key_Space);
  key(*view, Qt::Key_Space, {}, true);
  EXPECT_THAT(*scanner.selection, ElementsAre("/home/u/npm0")) << "a held key ticks once";
  EXPECT_TRUE(stateOf(row(0)).checkStateMixed);
  key(*view, Qt::Key_Left);
  EXPECT_EQ(focused(), 0u);
  EXPECT_EQ(view->list().rows().size(), 2u);
  key(*view, Qt::Key_End);
  EXPECT_EQ(focused(), 1u);
  key(*view, Qt::Key_Tab);
  key(*view, Qt::Key_Tab);
  EXPECT_EQ(view->focusWidget(), &view->action()) << "the list is one tab stop, the footer follows";

  view->setLayoutDirection(Qt::RightToLeft);
  row(0).setFocus(Qt::TabFocusReason);
  key(*view, Qt::Key_Left);
  EXPECT_EQ(view->list().rows().size(), 4u) << "mirrored with the layout";
}

TEST_F(StorageViewTests, theButtonAsksForWhatIsTickedAndNothingElse) {
  open();
  publish({found(npm, 2), found(pip, 1)});
  EXPECT_FALSE(view->action().press());
  mouse(row(1), QEvent::MouseButtonPress, {StorageList::overhang + 8.0, row(1).height() / 2.0});
  EXPECT_TRUE(view->action().press());
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(asked[0], ActionRequest(CleanStorageRequest{{"/home/u/pip0"}, Date{}}));
  EXPECT_THAT(*scanner.selection, ElementsAre("/home/u/pip0")) << "nothing is done before it is confirmed";

  scanner.working.set({pip});
  EXPECT_TRUE(stateOf(row(1)).disabled);
  EXPECT_TRUE(stateOf(row(1)).busy);
  row(1).setFocus(Qt::TabFocusReason);
  key(*view, Qt::Key_Space);
  EXPECT_THAT(*scanner.selection, ElementsAre("/home/u/pip0"));
  EXPECT_FALSE(view->action().press());
  EXPECT_EQ(asked.size(), 1u);
}

TEST_F(StorageViewTests, theDiskFollowsTheMeasurements) {
  open();
  publish({found(npm, 1)});
  EXPECT_FALSE(view->page().disk);
  for (const std::int64_t free : {300, 200}) {
    SystemSnapshot snapshot;
    snapshot.disk.volumes = {{"Home", "/home", 1000, free}};
    model.snapshot.set(snapshot);
    model.cycle.set(*model.cycle + 1);
    ASSERT_TRUE(view->page().disk);
    EXPECT_EQ(view->page().disk->free.bytes, double(free));
  }
}

TEST_F(StorageViewTests, theFocusStaysWithItsRowAndGoesOnWhenThatIsGone) {
  open();
  publish({found(npm, 1), found(pip, 1), found(cargo, 1)});
  auto* const last = &row(2);
  row(2).setFocus(Qt::TabFocusReason);
  publish({found(pip, 1), found(cargo, 1)});
  EXPECT_EQ(&row(1), last);
  EXPECT_EQ(focused(), 1u);
  publish({found(pip, 1)});
  EXPECT_EQ(focused(), 0u);
  publish({});
  EXPECT_EQ(view->page().state, State::empty);
  publish({found(go, 1)});
  EXPECT_EQ(view->list().rows().size(), 1u);
}

TEST_F(StorageViewTests, anItemIsShownInTheFileManagerWhereThereIsOne) {
  for (const bool reveals : {true, false}) {
    open(reveals);
    publish({found(npm, 2)});
    row(0).setFocus(Qt::TabFocusReason);
    key(*view, Qt::Key_Return);
    key(*view, Qt::Key_Down);
    key(*view, Qt::Key_Return);
    EXPECT_THAT(revealed, ElementsAre("/home/u/npm0"));
    const QPointF atItsEnd{row(2).width() - StorageList::overhang - 8.0, row(2).height() / 2.0};
    mouse(row(2), QEvent::MouseButtonPress, atItsEnd);
    EXPECT_EQ(scanner.selection->size(), reveals ? 0u : 1u) << "the folder does not tick";
    revealed.resize(1);
  }
}

TEST_F(StorageViewTests, aScanBeginsAndEndsByItsButtonsAndEscTakesTheOutcomeAway) {
  open();
  EXPECT_TRUE(view->scanButton().press());
  EXPECT_EQ(view->page().state, State::scanning);
  view->refresh();
  EXPECT_TRUE(view->cancelButton().press());
  time.run();
  EXPECT_EQ(view->page().state, State::unscanned);

  publish({found(npm, 1)});
  scanner.feedback.set("Freed 5.00 GB.");
  auto outcomes = all<OutcomeLabel>(*view);
  ASSERT_EQ(outcomes.size(), 1u);
  EXPECT_EQ(outcomes[0]->role(), QAccessible::Notification);
  EXPECT_EQ(outcomes[0]->words(), "Freed 5.00 GB.");
  row(0).setFocus(Qt::TabFocusReason);
  key(*view, Qt::Key_Escape);
  EXPECT_EQ(outcomes[0]->role(), QAccessible::StaticText);
  EXPECT_FALSE(scanner.feedback->has_value());
}

TEST_F(StorageViewTests, theQuestionIsTheMessageWordForWordWithThePathsInAWell) {
  const auto ask = [](const StorageScanResult& result) {
    std::vector<std::string> ids;
    for (const auto& category : result.categories)
      for (const auto& item : category.items) ids.push_back(item.id);
    return describeCleanup(PendingCleanup::of(result, ids, "/home/u"), {});
  };
  const auto said = [](const Question& question) {
    std::string all;
    for (const auto& passage : question.passages) {
      if (!all.empty()) all += "\n\n";
      all += passage.text;
      for (const auto& line : passage.well) all += "\n" + line;
      for (const auto* line : {&passage.more, &passage.note})
        if (!line->empty()) all += "\n" + *line;
    }
    return all;
  };
  for (const int count : {1, 4, 5, 12}) {
    const auto description = ask({{found(npm, count)}, Date{}});
    const auto question = cleanupQuestion(description);
    EXPECT_EQ(said(question), description.message);
    ASSERT_EQ(question.passages.size(), 1u);
    EXPECT_EQ(question.passages[0].well.size(), std::size_t(std::min(count, 4)));
    EXPECT_EQ(question.passages[0].more.empty(), count <= 4) << count;
    EXPECT_FALSE(question.permanent);
  }
  auto emptied = found(trash, 1);
  emptied.action = StorageAction::emptyTrash();
  auto odd = found(npm, 1);
  odd.items[0].urls = {"/home/u/two\nlines"};
  for (const auto& [categories, wells] :
       {std::pair{std::vector{found(npm, 2), found(pip, 1)}, 2},
        std::pair{std::vector{found(npm, 5), emptied}, 1}, std::pair{std::vector{odd}, 0}}) {
    const auto description = ask({categories, Date{}});
    const auto question = cleanupQuestion(description);
    EXPECT_EQ(said(question), description.message);
    EXPECT_EQ(std::ranges::count_if(question.passages, [](const auto& one) { return !one.well.empty(); }),
              wells);
    EXPECT_EQ(question.permanent, description.isPermanent);
  }
}

} // namespace
} // namespace korvell
