#pragma once
// What stands still: text, separators, plates, counts, application pictures.

#include "UI/Kit/Icon.h"
#include "UI/Kit/Painted.h"
#include "UI/Kit/Type.h"

#include <QStringList>

namespace korvell {

/// Text in one of the styles, with the style's distance of lines. On one line it elides and tells the whole
/// in a tooltip; wrapped it takes the lines that it needs, at most `maxLines`, the last one elided.
class TextLabel : public Painted, public Whole {
public:
  TextLabel(const Theme& theme, TextStyle style, Token token, std::string_view words, QWidget* parent);

  void setWords(std::string_view words);
  const QString& words() const { return words_; }
  void setToken(Token token);
  void setStyle(TextStyle style);
  /// 0: as many lines as it needs. Without this call a label is one line.
  void setWrapped(int maxLines = 0);
  void setElide(Qt::TextElideMode mode);
  /// Left and right change sides in right-to-left layouts; on the vertical middle.
  void setAlignment(Qt::Alignment horizontal);
  /// Says that it must not be elided either: its least width is all of it.
  void setNeverCut();

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  bool hasHeightForWidth() const override { return wrapped_; }
  int heightForWidth(int width) const override;
  QAccessible::Role role() const override { return QAccessible::StaticText; }
  std::optional<std::string> cutText() const override;

protected:
  void draw(QPainter& painter) override;
  bool event(QEvent*) override;

private:
  /// The lines in that width, the last one elided when there are more than allowed.
  QStringList lines(double width) const;
  bool isElided() const;

  TextStyle style_;
  Token token_;
  QString words_;
  bool wrapped_ = false;
  bool neverCut_ = false;
  int maxLines_ = 1;
  Qt::TextElideMode elide_ = Qt::ElideRight;
  Qt::Alignment alignment_ = Qt::AlignLeft;
};

/// A separator of one logical pixel.
class Hairline : public Painted {
public:
  Hairline(const Theme& theme, QWidget* parent, Qt::Orientation orientation = Qt::Horizontal);
  QSize sizeHint() const override { return {1, 1}; }
  QAccessible::Role role() const override { return QAccessible::Separator; }

protected:
  void draw(QPainter& painter) override;

private:
  Qt::Orientation orientation_;
};

/// A rounded ground for other widgets: a group of settings, a well.
class Plate : public Painted {
public:
  struct Form {
    Token fill = Token::surface;
    std::optional<Token> outline = Token::hairline;
    double radius = 9;
  };
  Plate(const Theme& theme, Form form, QWidget* parent);
  Plate(const Theme& theme, QWidget* parent) : Plate(theme, Form{}, parent) {}
  QAccessible::Role role() const override { return QAccessible::Grouping; }

protected:
  void draw(QPainter& painter) override;

private:
  Form form_;
};

/// A plain rectangle of one token: a page's ground.
class Ground : public Painted {
public:
  Ground(const Theme& theme, Token token, QWidget* parent);
  QAccessible::Role role() const override { return QAccessible::Grouping; }

protected:
  void draw(QPainter& painter) override;

private:
  Token token_;
};

/// A count on the accent: new alerts. Hidden at 0; above 99 "99+".
class Badge : public Painted {
public:
  Badge(const Theme& theme, QWidget* parent);
  void setCount(int count);
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::StaticText; }

protected:
  void draw(QPainter& painter) override;

private:
  int count_ = 0;
};
/// The same for views that paint their rows; returns its width, at the right end of the box (left in
/// right-to-left).
double drawBadge(QPainter& painter, const QRectF& box, const Theme& theme, int count);
double badgeWidth(const Theme& theme, int count);

/// The stand-in for an application without an icon: its first letter on a tint of a palette colour that
/// follows from its identifier.
Token monogramHue(std::string_view identifier);
void drawMonogram(QPainter& painter, const QRectF& box, const Theme& theme, Token hue, std::string_view name);
/// The same place taken by an icon of ours, on a tint of the accent.
void drawMark(QPainter& painter, const QRectF& box, const Theme& theme, Icon icon);
/// The first letter as it is shown; empty for a name without letters or digits.
QString monogramLetter(std::string_view name);

} // namespace korvell
