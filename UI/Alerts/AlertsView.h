#pragma once
// The page of the alerts, with the switches of what Korvell alerts about and the last weekly report beside
// them. What is shown while the window is the active one counts as seen.

#include "App/ActionRequest.h"
#include "UI/Alerts/AlertsPage.h"
#include "UI/Parts/KeptColumn.h"

class QBoxLayout;

namespace korvell {

class AlertSettings;

class AlertsView final : public ListPage {
public:
  struct Services {
    Model& model;
    const Theme& theme;
    const TimeZone& zone;
    const UserDefaults& defaults;
    std::set<SidebarItem> sections; ///< those that have a page
    /// Switches what is told to be switched.
    std::function<void(const ActionRequest&)> ask;
    std::function<void(SidebarItem)> open;
    /// Opens a measure's page with that moment pinned.
    std::function<void(SidebarItem, Date)> showMoment;
    std::function<void()> see; ///< the user sees all that the model holds
  };

  AlertsView(Services services, QWidget* parent);

protected:
  std::vector<ListRow*> rows() const override { return days_->rows(); }
  void arrange(bool isNarrow) override;
  void showEvent(QShowEvent* event) override;
  void changeEvent(QEvent* event) override;

private:
  class Row;
  void update();
  void fill();
  void see();
  void follow(const AlertsPage::Lead& lead);

  const Services services_;
  std::set<std::string> fresh_; ///< new when the page began to show them
  std::optional<AlertsPage> shown_;
  QBoxLayout* halves_;
  QWidget* list_;
  EmptyState* empty_;
  KeptColumn* days_;
  Hairline* rule_;
  AlertSettings* settings_;
  Subscription cycles_;
};

} // namespace korvell
