#pragma once
// What stands around the list of "Free Up Space": the disk as one bar, the picture of a page without rows,
// the sentence about a clean-up.

#include "UI/Kit/Icons.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Painted.h"
#include "UI/Storage/StoragePage.h"

#include <array>
#include <vector>

namespace korvell {

/// What stays, what can be freed and what is free, to scale, with a row of their names and amounts below.
/// What does not fit in that row goes into the next one.
class DiskBar : public Painted, public Whole {
public:
  DiskBar(const Theme& theme, QWidget* parent);

  void setDisk(StorageDisk disk);

  QSize sizeHint() const override { return {560, heightForWidth(560)}; }
  QSize minimumSizeHint() const override { return {200, heightForWidth(200)}; }
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  QAccessible::Role role() const override { return QAccessible::Chart; }
  std::string spokenValue() const override;
  std::optional<std::string> cutText() const override;

protected:
  void draw(QPainter& painter) override;

private:
  struct Look;
  /// Calls with each name's place from the side where reading begins, and its row; returns the count of rows.
  template <class Put>
  int lay(double width, Put put) const;
  double legendWidth(const StorageDisk::Part& part) const;
  void drawPart(QPainter& painter, const QRectF& box, double radius, std::size_t index) const;
  QRectF place(double from, double wide, double top, double height) const;
  std::array<const StorageDisk::Part*, 3> parts() const { return {&disk_.stays, &disk_.freed, &disk_.free}; }

  StorageDisk disk_;
};

/// An icon in a circle, above the words of a page that has nothing else.
class CircledIcon : public Painted {
public:
  static constexpr int size = 90;
  CircledIcon(const Theme& theme, QWidget* parent);

  void setIcon(Icon icon, Token ink);

  QSize sizeHint() const override { return {size, size}; }
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::Graphic; }

protected:
  void draw(QPainter& painter) override;

private:
  Icon icon_ = Icon::storage;
  Token ink_ = Token::text2;
};

/// The last clean-ups, under the name of the whole.
class FreedLog : public Painted {
public:
  FreedLog(const Theme& theme, QWidget* parent);

  void setLog(std::vector<StoragePage::Freed> log);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return {280, sizeHint().height()}; }
  QAccessible::Role role() const override { return QAccessible::List; }
  std::string spokenValue() const override;

protected:
  void draw(QPainter& painter) override;

private:
  std::vector<StoragePage::Freed> log_;
};

/// A line that screen readers are told when it says what an action did.
class OutcomeLabel : public TextLabel {
public:
  using TextLabel::TextLabel;

  void say(const std::string& words, bool isOutcome);
  QAccessible::Role role() const override {
    return isOutcome_ ? QAccessible::Notification : QAccessible::StaticText;
  }

private:
  bool isOutcome_ = false;
};

} // namespace korvell
