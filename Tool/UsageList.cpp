#include "Tool/UsageList.h"

#include "Tool/Screen.h"

#include <algorithm>

namespace korvell {

void UsageList::setApps(std::vector<AppUsage> apps) {
  apps_ = std::move(apps);
  energy_ = korvell::showsEnergy(apps_);
  sort();
}

void UsageList::sort() {
  sortByUsage(apps_, key_);
  for (auto& app : apps_)
    if (unfolded_.contains(app.id)) sortByUsage(app.processes, key_);
  rebuildRows();
}

void UsageList::rebuildRows() {
  rows_.clear();
  for (std::size_t app = 0; app < apps_.size(); ++app) {
    rows_.push_back({app, {}});
    if (!unfolded_.contains(apps_[app].id)) continue;
    for (std::size_t process = 0; process < apps_[app].processes.size(); ++process)
      rows_.push_back({app, process});
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
  } moves[] = {{Screen::up, -1},          {Screen::down, 1},    {Screen::pageUp, -page_},
               {Screen::pageDown, page_}, {Screen::home, -all}, {Screen::end, all}};
  for (const auto& [moveKey, rows] : moves)
    if (key == moveKey) {
      move(rows);
      return true;
    }
  if (rows_.empty()) return false;
  const bool isUnfolded = unfolded_.contains(apps_[rows_[std::size_t(selected_)].app].id);
  if (key == '\r' || key == '\n' || key == ' ') {
    setFolded(isUnfolded);
  } else if (key == Screen::right || key == Screen::left) {
    setFolded(key == Screen::left);
  } else {
    return false;
  }
  return true;
}

std::vector<std::string> UsageList::lines(const UsageTable& table, int height) {
  std::vector<std::string> lines;
  if (height < 2) return lines;
  page_ = height - 1;
  top_ = std::clamp(top_, std::max(0, selected_ - page_ + 1), selected_);
  lines.push_back(table.titles("    " + localized("Application"), key_));
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
