#pragma once
// The page of temperatures and fans.

#include "UI/Parts/ListParts.h"
#include "UI/Sensors/SensorsPage.h"

namespace korvell {

class SensorsView final : public ListPage {
public:
  struct Services {
    Model& model;
    const UserDefaults& defaults; ///< have the unit
    const Theme& theme;
  };

  SensorsView(Services services, QWidget* parent);

protected:
  std::vector<ListRow*> rows() const override { return {}; } // nothing in them takes a key
  void arrange(bool isNarrow) override;

private:
  class Leads;
  class Row;
  void update();

  const Services services_;
  std::optional<SensorsPage> shown_;
  Leads* leads_;
  TextLabel* measuring_;
  EmptyState* empty_;
  QVBoxLayout* groupsColumn_;
  std::vector<RowGroup*> groups_;
  bool isNarrow_ = false;
  Subscription cycles_;
};

} // namespace korvell
