#include "Tests/UI/Kit/KitFixture.h"
#include "UI/Gallery/RecordedMachine.h"
#include "UI/Kit/Button.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Text.h"
#include "UI/Measures/MeasureView.h"

#include <QContextMenuEvent>
#include <QTimer>

namespace korvell {
namespace {

using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;

struct MeasureViewTests : KitTests {
  RecordedMachine machine{RecordedMachine::Past::none};
  std::vector<std::string> told;
  std::unique_ptr<MeasureView> view;

  MeasureViewTests() { machine.measure(); }

  void open(Metric metric) {
    view = std::make_unique<MeasureView>(
        MeasureView::Services{
            .session = {machine.model, machine.queries, machine.directions, machine.zone, machine.defaults},
            .theme = theme,
            .ask = [](const ActionRequest&) {},
            .openSettings = [this] { told.emplace_back("settings"); },
            .showFolder = [this](ProcessID pid) { told.push_back("folder " + std::to_string(pid)); }},
        metric);
    view->resize(900, 700);
    show(*view);
    machine.settle();
  }
  std::vector<std::string> texts() const {
    std::vector<std::string> found;
    for (const auto* label : all<TextLabel>(*view))
      if (label->isVisible()) found.push_back(utf8(label->words()));
    return found;
  }
};

TEST_F(MeasureViewTests, pointingInTheChartChangesTheListWithoutMovingThePage) {
  open(Metric::memory);
  const int height = view->table().parentWidget()->height();
  auto& chart = view->chart();
  chart.setFocus();
  key(*view, Qt::Key_Home);
  auto* rest = chart.findChild<QTimer*>();
  QTimerEvent over(rest->timerId());
  QApplication::sendEvent(rest, &over);
  machine.settle();
  QApplication::processEvents();
  EXPECT_THAT(texts(), IsSupersetOf({"Top apps, 15:37", "No app was recorded in this time."}));
  EXPECT_EQ(view->table().parentWidget()->height(), height);
  EXPECT_THAT(texts(), Not(Contains("The moment is pinned. Arrow keys move it, Esc lets it go.")));
  key(*view, Qt::Key_Return);
  machine.settle();
  EXPECT_THAT(texts(),
              IsSupersetOf({"Top apps, 15:37", "The moment is pinned. Arrow keys move it, Esc lets it go."}));
  EXPECT_TRUE(all<TextField>(*view).front()->isVisible()) << "what filters is in view";
  key(*view, Qt::Key_Escape);
  EXPECT_THAT(texts(), Contains("Applications"));
}

TEST_F(MeasureViewTests, anApplicationsMenuAndTheHelpersButtonLeadOn) {
  machine.model.privileged.set(PrivilegedUse{.told = 0, .hidden = 3});
  open(Metric::disk);
  for (auto* button : all<Button>(*view))
    if (button->isVisible() && utf8(button->words()) == "Enable the helper…") button->press();
  auto& table = view->table();
  QContextMenuEvent event(QContextMenuEvent::Mouse, {100, 40}, table.mapToGlobal(QPoint(100, 40)));
  QApplication::sendEvent(&table, &event);
  for (auto* menu : all<Menu>(*view))
    for (auto* action : menu->actions())
      if (action->text().contains("Folder")) action->trigger();
  const auto row = table.data().rows.front().key;
  EXPECT_THAT(told, testing::ElementsAre(
                        "settings", "folder " + std::to_string(processOf(machine.model, row).value_or(-1))));
}

} // namespace
} // namespace korvell
