#pragma once
// What `watch` shows and which keys it knows, apart from the terminal that it runs on.

#include "App/Model.h"
#include "Tool/AskKeeper.h"
#include "Tool/UsageList.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// One moment of the machine.
struct WatchFigures {
  const SystemSnapshot& snapshot;
  const KnownParts& known;
  const HealthReport& report;
  const LiveSeries& live;
  bool hasSample = false; ///< false while the first cycle is measured
  bool energyIsEstimate = false;
  /// Of one that runs and tells no figures, so that these are this process's own.
  KeeperAnswer keeper{};
  std::optional<SensorsSnapshot> sensors{};
};

/// Holds the list with its selection, the text searched for, and whether the help is open.
class WatchScreen {
public:
  enum class Reply { nothing, redraw, quit };

  void setApps(std::vector<AppUsage> apps) { list_.setApps(std::move(apps)); }
  Reply handleKey(int key);
  /// Exactly `rows` lines of at most `columns` columns, whatever their numbers. On small screens the list
  /// keeps three lines and the rest shows what fits; on large ones graphs take what is left over.
  std::vector<std::string> frame(const Terminal& terminal, const WatchFigures& figures, int columns,
                                 int rows);

private:
  std::optional<Reply> handleSearchKey(int key);
  std::vector<std::string> footer(const Terminal& terminal, int columns, int rows) const;
  std::vector<std::string> body(const Terminal& terminal, const WatchFigures& figures, int columns, int rows,
                                bool withGraphs);

  UsageList list_;
  std::string searched_;
  bool isTyping_ = false; ///< keys belong to the text searched for
  bool showsHelp_ = false;
};

} // namespace korvell
