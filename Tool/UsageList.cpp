#include "Tool/UsageList.h"

#include "Base/Text.h"
#include "Tool/Keys.h"

#include <algorithm>
#include <tuple>

namespace korvell {

void UsageList::setApps(std::vector<AppUsage> apps) {
  apps_ = std::move(apps);
  sort();
}

void UsageList::sort() {
  sortByUsage(apps_, key_);
  for (auto& app : apps_)
    if (!searched_.empty() || unfolded_.contains(app.id)) sortByUsage(app.processes, key_);
  rebuildRows();
}

void UsageList::search(const std::string& text) {
  searched_ = lowercased(text);
  selectedName_.clear();
  selected_ = 0;
  sort();
}

void UsageList::addRows(std::size_t app) {
  const auto& [name, processes] = std::tie(apps_[app].name, apps_[app].processes);
  const auto matches = [&](const std::string& text) { return lowercased(text).find(searched_) != text.npos; };
  const bool whole = matches(name), unfolded = unfolded_.contains(apps_[app].id);
  std::vector<Row> inner;
  for (std::size_t i = 0; i < processes.size() && (unfolded || !whole); ++i)
    if (whole || matches(processes[i].name) || std::to_string(processes[i].pid) == searched_)
      inner.push_back({app, i});
  if (!whole && inner.empty()) return;
  rows_.push_back({app, {}});
  rows_.insert(rows_.end(), inner.begin(), inner.end());
}

void UsageList::rebuildRows() {
  rows_.clear();
  found_ = 0;
  for (std::size_t app = 0; app < apps_.size(); ++app) {
    const auto before = rows_.size();
    addRows(app);
    if (rows_.size() > before) ++found_;
  }
  // Until something is chosen the selection stays at the head of the list.
  if (!selectedName_.empty())
    for (std::size_t i = 0; i < rows_.size(); ++i)
      if (nameOf(rows_[i]) == selectedName_) selected_ = int(i);
  selected_ = std::clamp(selected_, 0, std::max(0, int(rows_.size()) - 1));
}

std::string UsageList::nameOf(const Row& row) const {
  const auto& app = apps_[row.app];
  return row.process ? "/" + std::to_string(app.processes[*row.process].pid) : app.id;
}

void UsageList::move(int rows) {
  selected_ = std::clamp(selected_ + rows, 0, std::max(0, int(rows_.size()) - 1));
  if (!rows_.empty()) selectedName_ = nameOf(rows_[std::size_t(selected_)]);
}

void UsageList::setFolded(bool folded) {
  if (rows_.empty()) return;
  const auto& id = apps_[rows_[std::size_t(selected_)].app].id;
  selectedName_ = id;
  folded ? void(unfolded_.erase(id)) : void(unfolded_.insert(id));
  sort();
}

bool UsageList::handleKey(int key) {
  constexpr struct {
    int key;
    UsageKey sorted;
  } sortKeys[] = {{'c', UsageKey::cpu},
                  {'m', UsageKey::memory},
                  {'d', UsageKey::disk},
                  {'n', UsageKey::network},
                  {'e', UsageKey::energy}};
  for (const auto& sortKey : sortKeys)
    if (key == sortKey.key) {
      key_ = sortKey.sorted;
      sort();
      return true;
    }
  const int all = int(rows_.size());
  const struct {
    int key, rows;
  } moves[] = {{Key::up, -1},          {Key::down, 1},    {Key::pageUp, -page_},
               {Key::pageDown, page_}, {Key::home, -all}, {Key::end, all}};
  for (const auto& [moveKey, rows] : moves)
    if (key == moveKey) {
      move(rows);
      return true;
    }
  if (rows_.empty()) return false;
  const bool isUnfolded = unfolded_.contains(apps_[rows_[std::size_t(selected_)].app].id);
  if (key == '\r' || key == '\n' || key == ' ') {
    setFolded(isUnfolded);
  } else if (key == Key::right || key == Key::left) {
    setFolded(key == Key::left);
  } else {
    return false;
  }
  return true;
}

std::vector<std::string> UsageList::lines(const UsageTable& table, int height) {
  constexpr int fewestRows = 3; // the titles go before these do
  std::vector<std::string> lines;
  if (height < 1) return lines;
  const bool titled = height > fewestRows;
  page_ = titled ? height - 1 : height;
  top_ = std::clamp(top_, std::max(0, selected_ - page_ + 1), selected_);
  if (titled) lines.push_back(table.titles("    " + localized("Application")));
  const auto end = std::min(rows_.size(), std::size_t(top_ + page_));
  for (auto i = std::size_t(top_); i < end; ++i) {
    const auto& app = apps_[rows_[i].app];
    const bool selected = int(i) == selected_;
    const std::string cursor = selected ? "› " : "  "; // colour alone is not for every terminal and eye
    if (rows_[i].process)
      lines.push_back(table.line(app.processes[*rows_[i].process], selected, cursor + "  "));
    else
      lines.push_back(table.line(app, selected, cursor + (unfolded_.contains(app.id) ? "− " : "+ ")));
  }
  return lines;
}

} // namespace korvell
