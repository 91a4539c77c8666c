#pragma once
// What a table of bars shows, as plain values: rows with a picture, a name, a level and up to two figures,
// under heads that sort.

#include "UI/Kit/Icon.h"
#include "UI/Kit/Token.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct BarRow {
  std::string key; ///< what it is; the same in the next update
  std::string name;
  std::string count{};               ///< behind the name, quieter: "23"
  std::string identifier{};          ///< the stand-in picture's hue follows from it; empty: it has none
  std::optional<std::string> icon{}; ///< for whoever finds pictures; absent: the stand-in
  std::optional<Icon> mark{};        ///< an icon of ours instead of both
  bool isPart = false;               ///< of the row above: lower, set in, without a picture
  bool unfolds = false, isUnfolded = false;
  bool hasActions = false;
  std::optional<double> level{}; ///< from 0 to 1
  std::string figure{}, second{};
  std::string spoken{}; ///< for screen readers: the whole row in words

  bool operator==(const BarRow&) const = default;
};

struct BarTableData {
  enum class Column { name, figure, second };

  std::string title;                            ///< for screen readers
  std::string nameHead, figureHead, secondHead; ///< without a second head there is no such column
  bool sorts = true;
  Column sorted = Column::figure;
  bool isAscending = false;
  Token token = Token::cpu; ///< of the bars
  std::vector<BarRow> rows;
  std::string reason; ///< why figures are "–", for who points at them; empty where none are

  bool operator==(const BarTableData&) const = default;
};

} // namespace korvell
