#pragma once
// The main window's sidebar: the sections in their groups, each with its figure of the moment.

#include "App/Model.h"
#include "App/TemperatureUnit.h"
#include "UI/Kit/Icon.h"
#include "UI/Kit/Tone.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace korvell {

struct Sidebar {
  struct Row {
    SidebarItem section = SidebarItem::overview;
    Icon icon = Icon::heart;
    std::string title;
    std::string value;        ///< at the right; empty without one
    std::optional<Tone> tone; ///< its mark before the value
    int badge = 0;            ///< a count on the accent instead of the value; 0 for none
    std::string name;         ///< for screen readers: title and value

    bool operator==(const Row&) const = default;
  };
  struct Group {
    std::string title; ///< empty for the first
    std::vector<Row> rows;
    bool operator==(const Group&) const = default;
  };

  std::vector<Group> groups;
  SidebarItem selected = SidebarItem::overview;

  bool operator==(const Sidebar&) const = default;
};

/// What the sidebar shows beside the model's figures.
struct SidebarFacts {
  std::set<SidebarItem> sections;          ///< those that have a page
  std::optional<std::int64_t> reclaimable; ///< bytes that the last scan found
  std::optional<double> aiCostToday;       ///< dollars
  int newAlerts = 0;
  TemperatureUnit temperatures = TemperatureUnit::celsius;
};

Sidebar sidebar(const Model& model, SidebarItem selected, const SidebarFacts& facts);

} // namespace korvell
