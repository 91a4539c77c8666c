#pragma once
// The ranges of a chart, in the page's header. While an answer is waited for a line runs under them: only
// then, and only when it takes long enough to be noticed.

#include "UI/Kit/Choices.h"

#include <QTimer>
#include <QVariantAnimation>

namespace korvell {

class RangeControl : public Painted {
public:
  RangeControl(const Theme& theme, QWidget* parent);

  void choose(std::size_t range) { segments_->choose(range); }
  void onChoose(std::function<void(std::size_t)> handler) { segments_->onChoose(std::move(handler)); }
  void setLoading(bool loading);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::Grouping; }

protected:
  void draw(QPainter& painter) override;
  void resizeEvent(QResizeEvent*) override;

private:
  Segments* segments_;
  QTimer patience_;
  QVariantAnimation running_;
  bool isLate_ = false;
};

} // namespace korvell
