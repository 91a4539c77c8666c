#pragma once
// The measures that pages share, boxes in the direction of reading, and layouts without margins.

#include <QBoxLayout>
#include <QWidget>

#include <algorithm>

namespace korvell {

inline constexpr int pagePadding = 28, narrowPagePadding = 20, widestPage = 1120;
/// Of the window: below it the sidebar is a rail and the padding smaller.
inline constexpr int railBelow = 860;

inline constexpr int pagePaddingIn(int window) {
  return window < railBelow ? narrowPagePadding : pagePadding;
}
/// From a side of that much room to the text, in a window of that width.
inline constexpr int pageSide(int room, int window) {
  return std::max(pagePaddingIn(window), (room - widestPage) / 2);
}

/// A box given from the side where reading begins.
inline QRectF fromStart(const QWidget& widget, double from, double top, double width, double height) {
  return {widget.isRightToLeft() ? widget.width() - from - width : from, top, width, height};
}

/// A column or a line without margins and gaps.
template <class Layout>
Layout* bare(QWidget* owner) {
  auto* layout = new Layout(owner);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  return layout;
}

} // namespace korvell
