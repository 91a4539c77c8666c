#pragma once
// What Korvell alerts about, and the weekly report: the switches and the last report.

#include "UI/Alerts/AlertsPage.h"
#include "UI/Parts/ListParts.h"

namespace korvell {

class Toggle;

class AlertSettings final : public QWidget {
public:
  struct Handlers {
    std::function<void(HealthAlert::Kind, bool)> alerts;
    std::function<void(bool)> report;
  };
  AlertSettings(const Theme& theme, const Handlers& handlers, QWidget* parent);

  void show(const AlertsPage& page);

private:
  void addHead(std::string_view words);
  Toggle* addSwitch(std::string_view words, bool isLast);

  const Theme& theme_;
  const Handlers handlers_;
  QVBoxLayout* column_;
  std::vector<Toggle*> switches_;
  Toggle* sends_;
  Plate* report_;
  TextLabel *reportTitle_, *reportBody_, *reportTime_, *hint_;
};

} // namespace korvell
