#pragma once
// The page of a measure: its figures, the chart, what it is made of, the applications. One class for all six,
// driven by the session's values.

#include "UI/Kit/BarTable.h"
#include "UI/Kit/ChartView.h"
#include "UI/Measures/MeasureSession.h"
#include "UI/Window/Page.h"

#include <QPointer>

#include <functional>

class QBoxLayout;
class QGridLayout;

namespace korvell {

class Button;
class CompositionBar;
class CoreBars;
class DeviceList;
class FactsRow;
class FilterField;
class Ground;
class Hairline;
class RangeControl;
class ScrollArea;
class TextLabel;
class VolumeList;

class MeasureView : public Page {
public:
  struct Services {
    MeasureSession::Services session;
    const Theme& theme;
    /// Describes what would be done, asks and does it.
    std::function<void(const ActionRequest&)> ask;
    std::function<void(SidebarItem)> open;
    /// Tells why a process counts to its application; absent where nobody knows.
    std::function<void(ProcessID)> explain{};
    std::function<void()> openBatterySettings; ///< absent where the desktop has none
    /// Where the helper is turned on; absent where there is none.
    std::function<void()> openSettings{};
    /// Shows where the program of a process lies; absent where nobody knows.
    std::function<void(ProcessID)> showFolder{};
    Pictures* pictures = nullptr; ///< of applications
  };

  MeasureView(Services services, Metric metric, HistoryRange range = HistoryRange::live);

  std::string title() const override;
  QWidget* control() override;
  void find() override;
  void refresh() override;
  PagePlace place() const override;
  void restore(const PagePlace& place) override;

  MeasureSession& session() { return session_; }
  BarTable& table() { return *table_; }
  ChartView& chart() { return *chart_; }

protected:
  ScrollArea* scrolled() const override { return scroll_; }
  void resizeEvent(QResizeEvent*) override;

private:
  void build();
  QWidget* buildHead();
  void buildList(QBoxLayout& column);
  void buildSide(QBoxLayout& column);
  void buildVolumes(QBoxLayout& column);
  void connectParts();
  void arrange();
  void update();
  void updateList();
  void showMenu(const std::string& key, QPoint where);
  void ask(const std::string& key, bool force);
  void setRange(std::size_t range);

  Services services_;
  const Metric metric_;
  QPointer<RangeControl> control_;
  ScrollArea* scroll_;
  Ground* content_;
  QBoxLayout* column_ = nullptr;
  QBoxLayout* halves_ = nullptr; ///< the cores and the list: side by side where there is room
  FactsRow* facts_;
  TextLabel* absent_;
  CompositionBar* composition_;
  ChartView* chart_;
  TextLabel* finding_;
  Button* battery_;
  QWidget* rule_; ///< above what stands below the chart
  QWidget *side_, *gap_, *volumesBox_, *devicesBox_, *listBox_, *findingBox_, *pinBox_;
  CoreBars* cores_;
  VolumeList* volumes_;
  DeviceList* devices_;
  TextLabel *listTitle_, *note_, *empty_, *pinHint_, *footnote_;
  Button *other_, *helper_;
  FilterField* filter_;
  BarTable* table_;
  MeasureSession session_; ///< last: it tells while it is made, and the parts are there by then
};

} // namespace korvell
