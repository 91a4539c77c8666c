#pragma once
// The list of applications that `watch` shows: sorted, scrolled, its applications unfolded into their
// processes. Remembers the selection by what it is, so that it stays there when the order changes.

#include "Core/Machine/UsageOrder.h"
#include "Tool/UsageTable.h"

#include <set>
#include <string>
#include <vector>

namespace korvell {

class UsageList {
public:
  void setApps(std::vector<AppUsage> apps);
  /// True when the key meant something here: c m d n e sort, arrows move, Enter and Space fold and unfold.
  bool handleKey(int key);
  /// At most `height` lines, the titles first.
  std::vector<std::string> lines(const UsageTable& table, int height);
  UsageKey sortedBy() const { return key_; }
  /// Shows only the applications whose name holds this text, whatever the case, and of others the processes
  /// whose name or id does. Empty for all.
  void search(const std::string& text);
  std::size_t found() const { return found_; } ///< applications shown
  std::size_t count() const { return apps_.size(); }

private:
  /// One line: an application, or one of its processes.
  struct Row {
    std::size_t app = 0;
    std::optional<std::size_t> process;
  };

  void sort();
  void rebuildRows();
  void addRows(std::size_t app);
  std::string nameOf(const Row& row) const; ///< identifies it from one snapshot to the next
  void move(int rows);
  void setFolded(bool folded);

  std::vector<AppUsage> apps_;
  std::vector<Row> rows_;
  std::set<std::string> unfolded_; ///< ids of applications
  std::string searched_;           ///< in lower case
  std::size_t found_ = 0;
  std::string selectedName_;
  int selected_ = 0;
  int top_ = 0;  ///< first row shown
  int page_ = 1; ///< rows that were shown last
  UsageKey key_ = UsageKey::cpu;
};

} // namespace korvell
