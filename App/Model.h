#pragma once
// What a running Korvell publishes: one set of values for views, commands and agents, whether this process
// measures (AppModel) or another one does and tells it (RemoteModel). Main queue only.
//
// The values of one cycle are set as one: whoever observes any of them finds the others of the same cycle,
// its report included. `cycle` is told last.

#include "App/MenuBarState.h"
#include "Base/Published.h"
#include "Core/Health/HealthReport.h"
#include "Core/Loop/Tick.h"

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace korvell {

using LiveSeries = std::map<Metric, std::vector<HistoryPoint>>;

class Model {
public:
  /// How far back the live series reach.
  static constexpr Seconds liveSpan{300};
  static constexpr std::size_t mostAlerts = 100;

  virtual ~Model() = default;
  Model(const Model&) = delete;
  Model& operator=(const Model&) = delete;

  // The results of the slower tasks change only in cycles that ran them.
  Published<SystemSnapshot> snapshot;
  Published<KnownParts> known;                        ///< which figures of the snapshot were read
  Published<std::optional<PrivilegedUse>> privileged; ///< of the snapshot's processes
  Published<std::optional<SensorsSnapshot>> sensors;
  Published<std::vector<PeripheralBattery>> peripherals;
  Published<std::vector<DevProject>> projects;
  Published<std::vector<StartupItem>> startupItems;
  Published<std::vector<HealthAlert>> alerts; ///< newest first, at most mostAlerts
  Published<HealthReport> report;             ///< says something once hasSample is true
  Published<LiveSeries> live;                 ///< one series a metric over the last liveSpan
  Published<Totals> totals;
  Published<std::optional<HistoryProblem>> historyProblem; ///< why nothing is recorded; absent while it is
  Published<std::optional<SidebarItem>> selection;         ///< the section shown in the main window
  Published<bool> hasSample;     ///< false until the second tick: the first has no rates
  Published<std::int64_t> cycle; ///< how many were applied

  MenuBarState menuBar;

protected:
  Model(const Queue& main, const UserDefaults& defaults);
  /// The snapshot's values, at the end of each series.
  void extendLiveSeries(Publication& publication);
  void publishMenuBar();
};

} // namespace korvell
