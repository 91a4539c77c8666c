#pragma once
// A question over a window: what a click will do stands in words before it is done. The window behind takes
// no input meanwhile. "Cancel" has the focus, so that Return alone does nothing; Esc cancels. What is longer
// than the window scrolls, by the arrows too, above the buttons.

#include "UI/Kit/Button.h"
#include "UI/Kit/Labels.h"

#include <QPointer>

#include <functional>
#include <string>
#include <vector>

namespace korvell {

class ScrollArea;

/// A sentence, and what it speaks of.
struct Passage {
  std::string text{};              ///< above the well
  std::vector<std::string> well{}; ///< paths or names, one a line, elided in the middle
  std::string more{};              ///< the well's last line, quieter: "and 1 more"
  std::string note{};              ///< below the well
};

struct Question {
  std::optional<Icon> icon{};
  std::string title;
  std::vector<Passage> passages{};
  std::string action;
  std::string cancel{};   ///< "Cancel" in the language of the moment when empty
  bool permanent = false; ///< the action is a danger button
};

class Dialog : public Painted {
public:
  /// Covers the window and asks. Answered once, then it is gone; also when the window goes, unanswered.
  /// At most one a window: a second question replaces the first, which is answered with no.
  static Dialog& ask(const Theme& theme, Question question, QWidget& window,
                     std::function<void(bool)> answered);
  /// The same in a window that holds nothing else and lies over nothing of ours.
  static Dialog& fill(const Theme& theme, Question question, QWidget& window,
                      std::function<void(bool)> answered);
  /// The open question of that window, or null.
  static Dialog* of(const QWidget& window);

  /// As the buttons do.
  void answer(bool yes);
  Button& cancelButton() const { return *cancel_; }
  Button& actionButton() const { return *action_; }
  /// What it says and its buttons stand in.
  QWidget& box() const { return *box_; }
  /// Of the whole question.
  QSize sizeHint() const override;

  QAccessible::Role role() const override { return QAccessible::Dialog; }
  void addStates(QAccessible::State& state) const override { state.modal = true; }

protected:
  void draw(QPainter& painter) override;
  bool event(QEvent*) override;
  bool eventFilter(QObject*, QEvent*) override;
  bool focusNextPrevChild(bool next) override;
  void keyPressEvent(QKeyEvent*) override;
  void mousePressEvent(QMouseEvent*) override;

private:
  Dialog(const Theme& theme, Question question, QWidget& window, bool fills,
         std::function<void(bool)> answered);
  void build(const Question& question);
  QWidget* buildWords(const Question& question);
  QWidget* buildAnswers(const Question& question);
  int leastWidth() const;
  int heightFor(int width) const;
  void arrange();

  const bool fills_; ///< the window: there is nothing behind it
  std::function<void(bool)> answered_;
  QPointer<QWidget> before_; ///< had the focus
  QWidget* box_ = nullptr;
  ScrollArea* scroll_ = nullptr;
  QWidget* words_ = nullptr;   ///< in what scrolls
  QWidget* answers_ = nullptr; ///< below it
  Button* cancel_ = nullptr;
  Button* action_ = nullptr;
};

} // namespace korvell
