#pragma once
// The Health page as a widget. Shows what it is given and tells what is pressed.

#include "Base/Queue.h"
#include "UI/Kit/ScoreRing.h"
#include "UI/Kit/Scroll.h"
#include "UI/Overview/HealthPage.h"
#include "UI/Parts/AppRows.h"
#include "UI/Parts/PartViews.h"
#include "UI/Window/Page.h"

class QBoxLayout;
class QGridLayout;

namespace korvell {

class HealthView final : public Page {
public:
  HealthView(const Theme& theme, QWidget* parent);

  std::string title() const override;
  QWidget* control() override { return control_; }

  void show(const HealthPage& page);
  /// Of applications. They outlive the view.
  void setPictures(Pictures& pictures) { apps_->setPictures(&pictures); }
  void onStep(std::function<void(const Step&)> handler) { step_ = std::move(handler); }
  void onOpen(std::function<void(SidebarItem)> handler) { open_ = std::move(handler); }
  /// Without a handler there is no button.
  void onShare(std::function<void()> handler);

protected:
  ScrollArea* scrolled() const override { return scroll_; }
  void resizeEvent(QResizeEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  class TotalRow;
  class AlertRow;
  QWidget* makeTop();
  QWidget* makeLedger();
  QWidget* makeApps();
  QWidget* makeSide();
  QWidget* head(std::string_view words, SidebarItem leadsTo, QWidget* parent);
  void showHead(const HealthPage& page);
  void showTiles(const std::vector<Tile>& tiles);
  void showSide(const HealthPage& page);
  void orderStops();
  void arrange();
  void arrangeLedgerHead(int room);
  void arrangeTiles(int columns, PartForm form);
  FindingView* makeFinding();

  const Theme& theme_;
  std::optional<HealthPage> shown_;
  QWidget* control_;
  TextLabel* updated_;
  IconButton* share_;
  ScrollArea* scroll_;
  QWidget* content_;
  QBoxLayout *rows_ = nullptr, *top_ = nullptr, *bottom_ = nullptr;
  ScoreRing* ring_;
  QWidget* topHolder_ = nullptr;
  TextLabel *loss_ = nullptr, *average_ = nullptr, *reassurance_ = nullptr;
  QBoxLayout* ledger_ = nullptr;
  QGridLayout* tileGrid_ = nullptr;
  std::vector<FindingView*> findings_;
  std::vector<TileView*> tiles_;
  AppHeads* heads_ = nullptr;
  AppRows* apps_ = nullptr;
  QWidget *side_ = nullptr, *alertsHead_ = nullptr;
  QBoxLayout *today_ = nullptr, *alerts_ = nullptr;
  std::vector<TotalRow*> totals_;
  std::vector<AlertRow*> alertRows_;
  TextLabel* noAlerts_ = nullptr;
  int tileColumns_ = 0;
  PartForm form_ = PartForm::page;
  std::function<void(const Step&)> step_;
  std::function<void(SidebarItem)> open_;
};

} // namespace korvell
