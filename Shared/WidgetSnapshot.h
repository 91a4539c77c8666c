#pragma once
// The document that the application writes and the widget shows: one JSON object, whose members bear the
// fields' names. Its date is a number of seconds since 2001-01-01 00:00 UTC. docs/widget.md describes it.
//
// The texts are English; those of another language stand beside them in "in", and a reader shows the ones of
// its own language.
//
// A reader takes members that it does not know for those of a later version and leaves them alone; a
// document that lacks a member or has one of another type is refused as a whole.

#include "Base/Date.h"
#include "Base/Record.h"
#include "Base/UserFolders.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace korvell {

struct WidgetSnapshot {
  /// One of the report's first three findings.
  struct Fix {
    std::string title, detail;
    bool critical = false;
    std::string page; ///< the section that it opens

    bool operator==(const Fix&) const = default;
    static constexpr auto fields() {
      return std::tuple{Field{"title", &Fix::title}, Field{"detail", &Fix::detail},
                        Field{"critical", &Fix::critical}, Field{"page", &Fix::page}};
    }
  };
  /// One measure with its last half hour.
  struct Tile {
    std::string page;                 ///< the section: "cpu", "memory", "disk", "network"
    std::string value, detail;        ///< the figure shown large, and the words beside it
    std::vector<double> points{};     ///< one a recorded minute, the oldest first
    std::optional<double> maxValue{}; ///< the top of the chart's scale; absent: the chart finds its own

    bool operator==(const Tile&) const = default;
    static constexpr auto fields() {
      return std::tuple{Field{"page", &Tile::page}, Field{"value", &Tile::value},
                        Field{"detail", &Tile::detail}, Field{"points", &Tile::points},
                        Field{"maxValue", &Tile::maxValue}};
    }
  };
  struct TopApp {
    std::string name;
    std::optional<std::string> bundlePath{};
    std::string memory;  ///< as people read it
    double fraction = 0; ///< 0 to 1, of the heaviest one's memory

    bool operator==(const TopApp&) const = default;
    static constexpr auto fields() {
      return std::tuple{Field{"name", &TopApp::name}, Field{"bundlePath", &TopApp::bundlePath},
                        Field{"memory", &TopApp::memory}, Field{"fraction", &TopApp::fraction}};
    }
  };

  Date date; ///< when it was made
  int score = 0;
  std::string label;
  std::vector<Fix> fixes{};
  std::vector<Tile> tiles{};
  std::vector<TopApp> apps{}; ///< the heaviest first
  /// The same in other languages than English, by their codes: of these the texts alone are written.
  std::map<std::string, WidgetSnapshot, std::less<>> others{};

  bool operator==(const WidgetSnapshot&) const = default;

  Value value() const;
  /// The same as text, one line.
  std::string encoded() const;
  /// In the language in effect, as far as it is told in it. Nothing for a text that is no such document.
  static std::optional<WidgetSnapshot> decoded(std::string_view text);
};

namespace WidgetShared {

/// Larger files are not read.
inline constexpr std::size_t mostBytes = 256 << 10;

/// Where the document is.
std::string snapshotURL(const UserFolders& folders);
/// The same where a widget's home folder is not the user's: both sides ask the password database, and the
/// process's own home stands in for an entry that is not there.
std::string sandboxedSnapshotURL(const std::optional<std::string>& passwordHome, const UserFolders& folders);
/// The document as it lies there; nothing when it can't be read or is none.
std::optional<WidgetSnapshot> read(const std::string& path);

} // namespace WidgetShared

} // namespace korvell
