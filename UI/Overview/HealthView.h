#pragma once
// The Health page as a widget. Shows what it is given and tells what is pressed.

#include "UI/Kit/ScoreRing.h"
#include "UI/Kit/Scroll.h"
#include "UI/Overview/HealthPage.h"
#include "UI/Parts/PartViews.h"
#include "UI/Window/Page.h"

class QBoxLayout;
class QGridLayout;

namespace korvell {

class HealthView final : public Page {
public:
  HealthView(const Theme& theme, QWidget* parent);

  std::string title() const override;
  QWidget* control() override { return updated_; }

  void show(const HealthPage& page);
  void onStep(std::function<void(const Step&)> handler) { step_ = std::move(handler); }
  void onOpen(std::function<void(SidebarItem)> handler) { open_ = std::move(handler); }

protected:
  void resizeEvent(QResizeEvent* event) override;

private:
  struct AlertRow;
  QWidget* makeLedger();
  QWidget* makeApps();
  QWidget* makeSide();
  QWidget* head(std::string_view words, SidebarItem leadsTo, QWidget* parent);
  void showHead(const HealthPage& page);
  void showToday(const std::vector<HealthPage::Total>& totals);
  void showAlerts(const std::vector<HealthPage::Alert>& alerts);
  void arrange(int width);
  FindingView* makeFinding();

  const Theme& theme_;
  std::optional<HealthPage> shown_;
  TextLabel* updated_;
  ScrollArea* scroll_;
  QWidget* content_;
  QBoxLayout *rows_ = nullptr, *top_ = nullptr, *bottom_ = nullptr;
  ScoreRing* ring_;
  TextLabel *loss_ = nullptr, *average_ = nullptr, *reassurance_ = nullptr;
  QBoxLayout* ledger_ = nullptr;
  QGridLayout* tileGrid_ = nullptr;
  std::vector<FindingView*> findings_;
  std::vector<Hairline*> rules_;
  std::vector<TileView*> tiles_;
  AppHeads* heads_ = nullptr;
  QBoxLayout* apps_ = nullptr;
  std::vector<AppRowView*> appRows_;
  QWidget* side_ = nullptr;
  QBoxLayout *today_ = nullptr, *alerts_ = nullptr;
  std::vector<QWidget*> todayRows_, alertRows_;
  int tileColumns_ = 0;
  std::function<void(const Step&)> step_;
  std::function<void(SidebarItem)> open_;
};

} // namespace korvell
