#pragma once
// The page of the development servers.

#include "UI/Parts/KeptColumn.h"
#include "UI/Servers/ServerRows.h"
#include "UI/Servers/ServersPage.h"

namespace korvell {

class ServersView final : public ListPage {
public:
  struct Services {
    Model& model;
    const Theme& theme;
    std::string home; ///< the user's folder, shown as "~"
    /// Describes what would be done, asks and does it.
    std::function<void(const ActionRequest&)> ask;
    std::function<void(const std::string& address)> openAddress;
    std::function<void(const std::string& path)> showFolder; ///< absent where nothing can show one
  };

  ServersView(Services services, QWidget* parent);

protected:
  std::vector<ListRow*> rows() const override;

private:
  void build();
  void update();
  void fill();

  const Services services_;
  const ServerRow::Handlers handlers_;
  std::optional<ServersPage> shown_;
  Notice* notice_;
  TextLabel* measuring_;
  EmptyState* empty_;
  QWidget* list_;
  ServerHeads* heads_;
  KeptColumn* servers_;
  Subscription cycles_;
};

} // namespace korvell
