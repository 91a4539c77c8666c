#pragma once
// Writes the widget's document while a widget is placed, at most once a minute, and asks for the widgets to
// be made anew when what they show at a glance has changed, at most every quarter of an hour: a reload costs
// the system's budget, a write wakes the widget.
//
// Lives on the main queue; the document is built and written on "Korvell.widgets". Who has placed a widget is
// asked every half hour, and at once where the system shows that one came or went. What can't be written is
// let go: the widget keeps the document that it has. Ends before the history.

#include "Base/Lifeline.h"
#include "Base/Queue.h"
#include "Core/Health/HealthReport.h"
#include "Core/History/HistoryStore.h"
#include "Platform/WidgetCenter.h"
#include "Shared/WidgetSnapshot.h"

#include <cstdint>
#include <memory>
#include <string>

namespace korvell {

class WidgetPublisher {
public:
  static constexpr const char* queueLabel = "Korvell.widgets";

  struct Seams {
    WidgetCenter& center; ///< outlives the publisher
    QueueFactory makeQueue;
    std::string path;        ///< of the document
    std::string systemGroup; ///< the name of the group that is no application
  };

  WidgetPublisher(Queue& main, Seams seams);

  /// After every cycle that has a report.
  void publish(const HealthReport& report, const SystemSnapshot& snapshot, HistoryStore& history);

private:
  void checkConfigurations(Date now);
  bool isReloadNeeded(const HealthReport& report, Date now);

  Queue& main_;
  const Seams seams_;
  Date lastWrite_ = Date::distantPast();
  Date lastReload_ = Date::distantPast();
  std::string lastReloadedContent_;
  bool hasWidgets_ = false;
  Date lastConfigurationCheck_ = Date::distantPast();
  std::uint64_t checkedStamp_ = 0; ///< the centre's at the last check
  Lifeline<WidgetPublisher> life_{*this};
  std::unique_ptr<Queue> queue_; ///< last, so that it ends first
};

} // namespace korvell
