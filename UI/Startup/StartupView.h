#pragma once
// The page of the programs that the system starts by itself.

#include "UI/Parts/ListParts.h"
#include "UI/Startup/StartupPage.h"

namespace korvell {

class StartupView final : public ListPage {
public:
  struct Services {
    Model& model;
    const Theme& theme;
    /// Describes what would be done, asks and does it.
    std::function<void(const ActionRequest&)> ask;
    std::function<void(const std::string& path)> showFile; ///< absent where nothing can show one
  };

  StartupView(Services services, QWidget* parent);

  void refresh() override { services_.ask(RescanStartupItemsRequest{}); }

protected:
  std::vector<ListRow*> rows() const override;
  void arrange(bool isNarrow) override;

private:
  class Row;
  void update();
  void showMenu(const StartupPage::Item& item, QPoint where);

  const Services services_;
  std::optional<StartupPage> shown_;
  TextLabel *lead_, *measuring_;
  EmptyState* empty_;
  QVBoxLayout* groupsColumn_;
  std::vector<RowGroup*> groups_;
  bool isNarrow_ = false;
  Subscription cycles_;
};

} // namespace korvell
