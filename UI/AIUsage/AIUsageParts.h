#pragma once
// The painted parts of the page of AI usage: a cost, a limit of a plan, a table of what used how much.

#include "UI/AIUsage/AIUsagePage.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icon.h"
#include "UI/Kit/Labels.h"

class QVBoxLayout;

namespace korvell {

class CostTile : public QWidget {
public:
  CostTile(const Theme& theme, QWidget* parent);
  void show(const AIUsagePage::Tile& tile);

private:
  TextLabel *caption_, *note_;
  FigureLabel* figure_;
};

/// A plan's limits, a line each under its title.
class PlanBox : public QWidget {
public:
  PlanBox(const Theme& theme, QWidget* parent);
  void show(const AIUsagePage::Plan& plan);

private:
  class Line;
  const Theme& theme_;
  TextLabel *title_, *read_, *sentence_;
  QVBoxLayout* lines_;
  std::vector<Line*> shown_;
};

class UsageTable : public QWidget {
public:
  /// The icon stands before each row; none for absent.
  UsageTable(const Theme& theme, std::string_view title, std::optional<Icon> icon, QWidget* parent);
  void show(const std::vector<AIUsagePage::Row>& rows);

private:
  class Head;
  class Row;
  const Theme& theme_;
  const std::optional<Icon> icon_;
  QVBoxLayout* column_;
  std::vector<Row*> rows_;
};

} // namespace korvell
