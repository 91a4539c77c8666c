#pragma once
// The page of the programs that the system starts by itself.

#include "UI/Parts/FilterField.h"
#include "UI/Parts/KeptColumn.h"
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

  void find() override { filter_->take(); }
  void refresh() override { services_.ask(RescanStartupItemsRequest{}); }

protected:
  std::vector<ListRow*> rows() const override { return list_->rows(); }
  void arrange(bool isNarrow) override;

private:
  class Row;
  void update();
  void fill();
  void fillMenu(Menu& menu, const StartupPage::Item& item);

  const Services services_;
  std::optional<StartupPage> shown_;
  std::string filtered_; ///< what the filter says
  TextLabel *lead_, *measuring_, *noMatch_;
  FilterField* filter_;
  EmptyState* empty_;
  QBoxLayout* head_;
  KeptColumn* list_;
  bool isNarrow_ = false;
  Subscription cycles_;
};

} // namespace korvell
