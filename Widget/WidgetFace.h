#pragma once
// The widget's face in its three sizes: 340 x 376, 340 x 164, 164 x 164, more with larger text. Rounded, on
// whatever lies under it.

#include "UI/Kit/Labels.h"
#include "Widget/WidgetParts.h"

#include <memory>
#include <vector>

namespace korvell {

class WidgetFace : public Painted {
public:
  static constexpr double cornerRadius = 16;

  WidgetFace(const Theme& theme, WidgetPart::Open open, QWidget* parent);

  void setSize(WidgetSize size);
  void show(const WidgetPage& page);
  using QWidget::show;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::Grouping; }

protected:
  void draw(QPainter& painter) override;
  void resizeEvent(QResizeEvent*) override;
  void changeEvent(QEvent*) override;
  void themeChanged() override;

private:
  void build();
  void buildHeader(bool hasDetail);
  void buildTiles();
  void buildApps();
  void buildStopped();
  template <class Part>
  Part& add(const QRectF& box);
  void label(const QRectF& box, TextStyle style, Token token, std::string_view words,
             Qt::Alignment alignment = Qt::AlignLeft, int lines = 1);
  void place();

  WidgetPart::Open open_;
  WidgetSize size_ = WidgetSize::large;
  WidgetPage page_;
  struct Placed {
    std::unique_ptr<QWidget> widget;
    QRectF box; ///< at 100 %, from left to right
  };
  std::vector<Placed> parts_;
};

} // namespace korvell
