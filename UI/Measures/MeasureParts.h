#pragma once
// The painted parts of a measure's page: its figures, the cores, the volumes, other devices' batteries.

#include "UI/Kit/Painted.h"
#include "UI/Kit/Type.h"
#include "UI/Measures/MeasurePage.h"

#include <vector>

namespace korvell {

/// The figure of the moment, the facts beside it, those of the range at the far side. What does not fit in
/// one row goes into the next one.
class FactsRow : public Painted, public Whole {
public:
  FactsRow(const Theme& theme, QWidget* parent);

  void setPage(const MeasurePage& page);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return {160, sizeHint().height()}; }
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  QAccessible::Role role() const override { return QAccessible::StaticText; }
  std::optional<std::string> cutText() const override;

protected:
  void draw(QPainter& painter) override;
  /// Tells the reason of the one "–" that is pointed at.
  bool event(QEvent*) override;
  void mousePressEvent(QMouseEvent*) override;
  void mouseReleaseEvent(QMouseEvent*) override;

private:
  struct Cell {
    const MeasureFact* fact; ///< null: the figure of the moment
    double from, width;
    int row;
    bool atEnd = false; ///< stands at the far side
  };
  std::string reasons() const;
  QString reasonAt(const QPointF& position) const;
  const std::string& reasonOf(const Cell& cell) const { return cell.fact ? cell.fact->reason : nowReason_; }
  std::vector<Cell> cells(double width) const;
  QRectF boxOf(const Cell& cell) const;
  double widthOf(const MeasureFact& fact) const;
  double nowWidth() const;
  double rowHeight() const;
  void drawNow(QPainter& painter, const QRectF& box) const;
  double infoWidth(const std::string& reason) const;
  void drawInfo(QPainter& painter, const std::string& reason, double from, double to, double middle,
                bool before) const;
  void drawFact(QPainter& painter, const MeasureFact& fact, const QRectF& box, bool atEnd) const;

  std::string title_, lead_, nowReason_;
  Figure now_;
  std::vector<MeasureFact> facts_, range_;
  bool isMeasuring_ = false;
};

/// A bar for each core; from seventeen on a cell, which tells its figure when it is pointed at.
class CoreBars : public Painted {
public:
  static constexpr std::size_t mostBars = 16;
  CoreBars(const Theme& theme, QWidget* parent);

  void setGroups(std::vector<CoreGroup> groups);

  QSize sizeHint() const override { return {264, heightForWidth(264)}; }
  QSize minimumSizeHint() const override { return {160, 24}; }
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  QAccessible::Role role() const override { return QAccessible::Chart; }
  std::string spokenValue() const override;

protected:
  void draw(QPainter& painter) override;
  bool event(QEvent*) override;

private:
  bool isCells() const;
  int cellsInRow(double width) const;
  /// Calls with every group's title and every core's box, from the top; returns the height of all.
  template <class Title, class Core>
  double lay(double width, Title title, Core core) const;
  void drawCore(QPainter& painter, const QRectF& box, int number, double percent) const;

  std::vector<CoreGroup> groups_;
};

class VolumeList : public Painted {
public:
  VolumeList(const Theme& theme, QWidget* parent);

  void setVolumes(std::vector<VolumeRow> volumes);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return {240, sizeHint().height()}; }
  QAccessible::Role role() const override { return QAccessible::List; }
  std::string spokenValue() const override;

protected:
  void draw(QPainter& painter) override;

private:
  std::vector<VolumeRow> volumes_;
};

class DeviceList : public Painted {
public:
  DeviceList(const Theme& theme, QWidget* parent);

  void setDevices(std::vector<DeviceRow> devices);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return {240, sizeHint().height()}; }
  QAccessible::Role role() const override { return QAccessible::List; }
  std::string spokenValue() const override;

protected:
  void draw(QPainter& painter) override;

private:
  std::vector<DeviceRow> devices_;
};

} // namespace korvell
