#pragma once
// A sentence in place: what an action did, what is wrong, what would help. Hidden until it says something;
// then screen readers are told once. It stays until it is dismissed: by the next action, or by Esc, which
// views hand on.

#include "UI/Kit/Button.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Labels.h"

class QBoxLayout;

namespace korvell {

class Banner : public Painted {
public:
  Banner(const Theme& theme, QWidget* parent);

  /// `detail` stands below in a second line; empty for none. A button of before goes.
  void say(Tone tone, std::string_view sentence, std::string_view detail = {});
  /// One button at the end.
  void offer(std::string_view words, std::function<void()> handler, Button::Kind kind = Button::Kind::plain);
  void dismiss();

  QAccessible::Role role() const override { return QAccessible::Notification; }

protected:
  void draw(QPainter& painter) override;
  bool event(QEvent*) override;

private:
  Tone tone_ = Tone::info;
  QBoxLayout* row_;
  IconLabel* mark_;
  TextLabel* sentence_;
  TextLabel* detail_;
  Button* button_;
};

} // namespace korvell
