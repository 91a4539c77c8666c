#pragma once
// A measure's page while it is open: what the user chose on it (range, pinned moment, order, filter, unfolded
// rows), what the history answered, and the values to show, made anew after every cycle. Main queue only.
//
// A range that was chosen, or a moment, shows when its answer is whole; until then everything stays as it
// was. What was asked of the past is asked again whenever the history may have gained a minute.

#include "App/HistoryQueries.h"
#include "Base/Lifeline.h"
#include "UI/Measures/AppList.h"
#include "UI/Measures/MeasureChart.h"
#include "UI/Measures/MeasurePage.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

class MeasureSession {
public:
  /// All of it outlives the session.
  struct Services {
    Model& model;
    HistoryQueries& queries;
    const LiveDirections& directions;
    const TimeZone& zone;
    const UserDefaults& defaults; ///< have the log of clean-ups and the unit of temperatures
    AppListFacts facts{};
    using Examined = std::function<void(const std::vector<SourceReport>&)>;
    /// Examines where the figures come from, for the reasons of those that are not known; answers later, on
    /// the main queue. Absent where nobody can.
    std::function<void(Examined)> examine{};
  };
  /// Which applications the list shows.
  enum class Listed { now, range, moment };

  /// `changed` is told after every change of what the functions below return.
  MeasureSession(Services services, Metric metric, HistoryRange range, std::function<void()> changed);
  MeasureSession(const MeasureSession&) = delete;
  MeasureSession& operator=(const MeasureSession&) = delete;

  Metric metric() const { return metric_; }
  const MeasurePage& page() const { return page_; }
  const ChartData& chart() const { return chart_; }
  const AppList& list() const { return list_; }
  /// "Applications", "Top apps, 24 hours", "Top apps, 14:10 – 14:15"
  std::string listTitle() const;
  /// Which other list is a click away; empty for none. "Show all 24 hours"
  std::string otherList() const;
  Listed listed() const;
  HistoryRange range() const { return range_; }
  bool isLoading() const { return asked_ > answered_; }
  std::optional<Date> pinned() const { return pinned_; }
  std::optional<Date> pointed() const { return pointed_; }

  void setRange(HistoryRange range);
  /// The bucket of the chart that a moment lies in; nothing lets go.
  void pin(std::optional<Date> moment);
  /// Lists who it was for as long as the moment is pointed at; a pinned one stays.
  void point(std::optional<Date> moment);
  /// A moment of the past, in the smallest range that has it: the chart shows it when it is whole.
  void show(Date moment);
  /// The range with that moment pinned, if one was; when the chart is whole.
  void restore(HistoryRange range, std::optional<Date> pinned);
  void showOtherList();
  void sort(BarTableData::Column column);
  void filter(std::string text);
  void unfold(const std::string& key);
  /// While true no row changes its place.
  void settle(bool settled);
  /// Asks the history again.
  void refresh();

private:
  /// Whose applications are asked for: those of a stretch of time, or of a whole range.
  struct Past {
    HistoryRange range = HistoryRange::live;
    std::optional<Date> begin{}; ///< nothing: all of the range
    Seconds length{0};
    bool operator==(const Past&) const = default;
  };
  struct Answer {
    Past of;
    PastApps apps;
  };

  void tick();
  void askRange();
  void askAverage();
  Past stretch(Date stop) const;
  std::optional<Past> wantedPast() const;
  void askApps();
  void askReasons();
  void letGo();
  void keepOrder();
  void makeList();
  void rebuild();

  Services services_;
  const Metric metric_;
  std::function<void()> changed_;
  HistoryRange range_;
  std::optional<RangeHistory> history_;           ///< nothing: the chart is live
  std::vector<FreedEntry> cleanUps_;              ///< as they were when the chart was begun
  std::optional<Date> pinned_, pointed_, wanted_; ///< wanted: to be pinned when the range is there
  AppListChoices choices_;
  bool isSettled_ = false, wantsRange_ = false;
  std::optional<Past> askedPast_;
  std::optional<Answer> past_;      ///< nothing: the list is of now
  std::optional<Past> listedPast_;  ///< of the list as it was made
  std::vector<KnownPart> examined_; ///< the unknown parts when their sources were examined
  std::optional<double> tenMinutes_;
  std::uint64_t asked_ = 0, answered_ = 0, askedApps_ = 0;
  Date askedAt_ = Date::distantPast(), averageAt_ = Date::distantPast(), appsAt_ = Date::distantPast();
  MeasurePage page_;
  ChartData chart_;
  AppList list_;
  Subscription cycles_;
  Lifeline<MeasureSession> life_{*this};
};

} // namespace korvell
