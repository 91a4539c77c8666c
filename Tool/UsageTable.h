#pragma once
// Applications and processes with their figures as aligned lines: what `top` prints once, `status` shows the
// head of and `watch` repeats.

#include "Core/Machine/UsageOrder.h"
#include "Platform/KnownParts.h"
#include "Tool/Terminal.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// Columns in the order of UsageKey, each as wide whatever the figures, so that a list that is drawn again
/// does not jump. Where there is no room for all of them they go one by one, the last first; the name and the
/// figure that the list is sorted by stay longest.
class UsageTable {
public:
  /// Without energy figures that column is left out; traffic that is not known is "–".
  UsageTable(const Terminal& terminal, int width, UsageKey sortedBy, const KnownParts& known,
             bool energyIsEstimate);

  /// The titles, that of the key that the list is sorted by marked.
  std::string titles(std::string_view first) const;
  std::string line(const AppUsage& app, bool selected = false, std::string_view mark = {}) const;
  std::string line(const ProcessUsage& process, bool selected = false, std::string_view mark = {}) const;

private:
  template <class T>
  std::string line(std::string_view name, const T& used, bool selected) const;

  const Terminal& terminal_;
  UsageKey sortedBy_;
  bool energyIsEstimate_;
  bool hasTraffic_;
  std::vector<UsageKey> shown_; ///< the columns behind the name
  int nameWidth_;
};

} // namespace korvell
