#pragma once
// What the system starts by itself, as its page shows it: leftovers first, the rest by whose they are.

#include "App/ActionRequest.h"
#include "App/Model.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct StartupPage {
  struct Item {
    std::string key; ///< what tells it from all others
    std::string label;
    std::string program; ///< a path, "Runs from inside its app", "–" where the file names none
    bool isPath = false; ///< of a program: what is cut out of it is its middle
    std::string file;    ///< that defines it
    std::string starts;  ///< "starts by itself"; empty when it does not
    std::string state;   ///< "leftover", "loaded"; empty when neither
    /// Only of leftovers.
    std::optional<RemoveStartupItemRequest> remove;
    std::string spoken;
    bool operator==(const Item&) const = default;
  };
  struct Group {
    std::string title;
    std::vector<Item> items;
    bool operator==(const Group&) const = default;
  };

  bool isMeasured = false; ///< false until they were looked for
  std::string lead;
  std::string summary;                         ///< "34 items, 1 leftover"; empty without any
  bool hasItems = false, hasLeftovers = false; ///< whether or not they are shown
  std::vector<Group> groups;
  std::string noMatch; ///< in place of the groups when the filter leaves none

  bool operator==(const StartupPage&) const = default;
};

/// Shown is what has the filter in its name, its program's path or its file's, in any case.
StartupPage startupPage(const Model& model, const std::string& filter = {});

} // namespace korvell
