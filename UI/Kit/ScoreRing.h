#pragma once
// The score as a ring: what is left of 100 in accent, and behind it every share that was lost, in the colour
// and weight of how serious it is. Before there is a score: the track and "–".

#include "UI/Kit/Painted.h"
#include "UI/Kit/RingArcs.h"
#include "UI/Kit/Tone.h"
#include "UI/Kit/Type.h"

#include <QVariantAnimation>

#include <functional>

namespace korvell {

/// How thick the arc of what was lost is, as a share of the score's.
double weightOf(Tone tone);

class ScoreRing : public Painted {
public:
  struct Share {
    double points;
    Tone tone;

    bool operator==(const Share&) const = default;
  };
  struct Form {
    double diameter; ///< outer
    double weight;   ///< of the score's arc
    double number;   ///< size of the score's digits
  };
  static constexpr Form page{148, 12, 44};
  static constexpr Form panel{79.5, 7.5, 27};

  /// In a narrow page.
  static constexpr Form narrow{118, 10, 36};

  ScoreRing(const Theme& theme, Form form, QWidget* parent);

  void setForm(Form form);

  /// Turns to the new score in a fifth of a second, at once in reduced motion and while hidden.
  void setScore(std::optional<int> score, std::vector<Share> lost = {});
  /// Below the number ("Good"); empty for none.
  void setLabel(std::string_view label);
  /// The sentence for screen readers is the name: "Health 87 of 100, Good. …"; setName().

  /// Told which share the pointer is on, and when it leaves.
  void onHover(std::function<void(std::optional<std::size_t>)> handler) { hovered_ = std::move(handler); }
  /// Shows one share at full weight: its row is pointed at.
  void highlight(std::optional<std::size_t> share);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::ProgressBar; }
  std::string spokenValue() const override;
  std::optional<double> meter() const override;

protected:
  void draw(QPainter& painter) override;
  void mouseMoveEvent(QMouseEvent*) override;
  void leaveEvent(QEvent*) override;

private:
  struct Shown {
    double score = 0;
    std::vector<double> points{};
  };
  double radius() const { return (form_.diameter - form_.weight) / 2; }
  RingArcs arcs() const;
  /// On the way from what was shown before to what is to be shown.
  Shown between(double share) const;
  void drawRing(QPainter& painter) const;
  void drawArc(QPainter& painter, const RingArc& arc, double weight, const QColor& color) const;
  void drawWords(QPainter& painter) const;
  void drawLabel(QPainter& painter, QFont font) const;
  void point(std::optional<std::size_t> share);

  Form form_;
  std::optional<int> score_;
  std::vector<Share> shares_;
  std::string label_;
  Shown before_;
  Shown shown_;
  QVariantAnimation turning_;
  std::optional<std::size_t> pointed_;
  std::optional<std::size_t> highlighted_;
  std::function<void(std::optional<std::size_t>)> hovered_;
};

} // namespace korvell
