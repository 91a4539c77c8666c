#include "UI/Kit/Painted.h"

#include "UI/Kit/Text.h"

#include <QPainter>

namespace korvell {

Painted::Painted(const Theme& theme, QWidget* parent) : QWidget(parent), theme_(theme) {
  forgetSpoken(*this);
  themeSubscription_ = theme.observe([this] { themeChanged(); });
}

void Painted::setName(std::string_view name) { setAccessibleName(text(name)); }

void Painted::themeChanged() {
  updateGeometry();
  update();
}

void Painted::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  draw(painter);
}

} // namespace korvell
