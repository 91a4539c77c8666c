#pragma once
// What the widget is made of: every part opens a section when it is pressed, and moves the widget when it is
// dragged.

#include "UI/Kit/Control.h"
#include "UI/Kit/Icons.h"
#include "Widget/WidgetPage.h"

#include <functional>

namespace korvell {

/// The pointer has left the spot where the button went down.
bool isDrag(const QMouseEvent& event, const std::optional<QPoint>& pressedAt);

class WidgetPart : public Control {
public:
  /// Hears the link; empty for the application as it is.
  using Open = std::function<void(const std::string& link)>;

  WidgetPart(const Theme& theme, Open open, QWidget* parent);

  void setLink(std::string link) { link_ = std::move(link); }
  QAccessible::Role role() const override { return QAccessible::Button; }

protected:
  void pressed() override;
  void mousePressEvent(QMouseEvent*) override;
  void mouseMoveEvent(QMouseEvent*) override;
  /// The ground of a row or tile that is pointed at.
  void drawHover(QPainter& painter, const QRectF& box);

private:
  Open open_;
  std::string link_;
  std::optional<QPoint> pressedAt_; ///< until it became a drag
};

/// The score as a ring: what is left of 100, and a thin rest.
class RingPart : public WidgetPart {
public:
  struct Form {
    double diameter, weight, number;
  };
  RingPart(const Theme& theme, Open open, QWidget* parent);
  void setForm(Form form);
  void setScore(std::optional<int> score);
  /// Under the ring; empty for none.
  void setLabel(std::string_view label, Token token);

protected:
  void draw(QPainter& painter) override;
  double corner() const override { return 14; }

private:
  void drawRing(QPainter& painter) const;

  Form form_{84, 8, 28};
  std::optional<int> score_;
  QString label_;
  Token labelToken_ = Token::text2;
};

/// A finding: a dot or an octagon, its title, and either a chevron or the detail under it.
class FixPart : public WidgetPart {
public:
  FixPart(const Theme& theme, Open open, QWidget* parent);
  void setFix(const WidgetPage::Fix& fix, bool hasDetail);

protected:
  void draw(QPainter& painter) override;

private:
  WidgetPage::Fix fix_;
  bool hasDetail_ = false;
};

/// A measure with its last half hour.
class TilePart : public WidgetPart {
public:
  TilePart(const Theme& theme, Open open, QWidget* parent);
  void setTile(const WidgetPage::Tile& tile);

protected:
  void draw(QPainter& painter) override;
  double corner() const override { return 9; }

private:
  void drawLine(QPainter& painter, double left) const;
  WidgetPage::Tile tile_;
};

class AppPart : public WidgetPart {
public:
  AppPart(const Theme& theme, Open open, QWidget* parent);
  void setApp(const WidgetPage::App& app);

protected:
  void draw(QPainter& painter) override;

private:
  WidgetPage::App app_;
};

/// "Open Korvell" with a chevron.
class OpenPart : public WidgetPart {
public:
  OpenPart(const Theme& theme, Open open, QWidget* parent);
  QSize sizeHint() const override;

protected:
  void draw(QPainter& painter) override;

private:
  QString words_;
};

} // namespace korvell
