#pragma once
// The page of what AI coding tools used.

#include "App/Model.h"
#include "Core/AIUsage/AIUsageStore.h"
#include "UI/AIUsage/AIUsagePage.h"
#include "UI/Parts/ListParts.h"

#include <QPointer>

#include <cstdint>

namespace korvell {

class CostTile;
class DayBars;
class DayBarsLegend;
class PlanBox;
class Segments;
class UsageTable;

class AIUsageView final : public ListPage {
public:
  struct Services {
    AIUsageStore& store;
    Model& model; ///< its cycles move the page's now
    const Theme& theme;
    AIPeriod& period; ///< which one was chosen; outlives the page
  };

  AIUsageView(Services services, QWidget* parent);
  ~AIUsageView() override;

  QWidget* control() override;
  DayBars& bars() { return *days_; }
  /// Scans.
  void refresh() override { services_.store.refresh(); }

protected:
  std::vector<ListRow*> rows() const override { return {}; }
  void arrange(bool isNarrow) override;

private:
  void build();
  void buildHead(QBoxLayout& column);
  void buildFoot(QBoxLayout& column);
  std::int64_t minute() const;
  void update();
  void fill();

  const Services services_;
  std::optional<AIUsagePage> shown_;
  std::int64_t shownMinute_ = 0; ///< that of the model's snapshot
  QPointer<Segments> periods_;
  EmptyState* empty_;
  TextLabel *reading_, *problem_;
  QWidget *whole_, *problemBox_, *daysBox_;
  QBoxLayout *head_ = nullptr, *tables_ = nullptr, *foot_ = nullptr;
  CostTile *today_, *period_;
  Hairline *planRule_, *daysRule_, *footRule_;
  PlanBox* plan_;
  TextLabel* daysNote_;
  DayBarsLegend* legend_;
  DayBars* days_;
  TextLabel* noUsage_;
  QWidget* tablesBox_;
  UsageTable *models_, *projects_;
  TextLabel *leftOut_, *explanation_, *source_, *updated_;
  std::vector<Subscription> subscriptions_;
};

} // namespace korvell
