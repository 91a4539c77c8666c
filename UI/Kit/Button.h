#pragma once
// Buttons. Texts may grow by two fifths in translation: a button is always as wide as its text.

#include "UI/Kit/Control.h"
#include "UI/Kit/Icon.h"
#include "UI/Kit/Type.h"

#include <functional>

namespace korvell {

class Button : public Control, public Whole {
public:
  enum class Kind {
    primary, ///< accent; at most one a view
    plain,
    quiet, ///< text in accent; a mark says without colour what it does
    danger ///< only for what cannot be undone
  };
  /// What a quiet button's text leads or does: a chevron leads on, the copy icon copies. One that asks first
  /// ends in "…" and has no mark.
  enum class Mark { none, chevron, copy };
  enum class Height { compact = 26, normal = 28, tall = 32 };

  Button(const Theme& theme, Kind kind, std::string_view words, QWidget* parent);

  void setWords(std::string_view words);
  const QString& words() const { return words_; }
  void setKind(Kind kind);
  void setMark(Mark mark);
  /// Before the text; in the text's colour.
  void setIcon(std::optional<Icon> icon);
  void setHeight(Height height);
  /// Another colour for a quiet button's text ("Untick All").
  void setToken(Token token);
  /// Replaces what a press does.
  void onPress(std::function<void()> handler) { handler_ = std::move(handler); }

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::PushButton; }
  std::optional<std::string> cutText() const override;

protected:
  void draw(QPainter& painter) override;
  void pressed() override;
  QRectF shape() const override;

private:
  struct Colors {
    QColor fill, outline, ink; ///< an invalid colour is not painted
  };
  Colors colors() const;
  double contentWidth() const;

  Kind kind_;
  QString words_;
  Mark mark_ = Mark::none;
  std::optional<Icon> icon_;
  Height height_ = Height::normal;
  Token token_ = Token::accent;
  std::function<void()> handler_;
};

/// A square with an icon alone; its name is its tooltip.
class IconButton : public Control {
public:
  IconButton(const Theme& theme, Icon icon, std::string_view name, QWidget* parent);

  void setIcon(Icon icon, std::string_view name);
  void setToken(Token token);
  /// 20 by default; the button stays 28 by 28.
  void setIconSize(int size);
  void onPress(std::function<void()> handler) { handler_ = std::move(handler); }

  QSize sizeHint() const override { return {28, 28}; }
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::PushButton; }

protected:
  void draw(QPainter& painter) override;
  void pressed() override;

private:
  Icon icon_;
  int iconSize_ = 20;
  Token token_ = Token::text2;
  std::function<void()> handler_;
};

} // namespace korvell
