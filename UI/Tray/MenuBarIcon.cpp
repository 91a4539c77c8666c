#include "UI/Tray/MenuBarIcon.h"

#include "UI/Tray/WideForm.h"

#include <cmath>

namespace korvell {

namespace {

/// In points. The toolkit takes the highest picture that leaves four points of the bar, which is 22 or more.
constexpr int height = 18;

} // namespace

QIcon menuBarIcon(const MenuBarLabel& label, const Theme& theme) {
  const int width = int(std::ceil(wideFormWidth(theme, label)));
  QIcon icon;
  for (const int scale : {1, 2}) {
    QImage image(width * scale, height * scale, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.scale(scale, scale);
    drawWideForm(painter, QRectF(0, 0, width, height), theme, label, Qt::black);
    painter.end();
    icon.addPixmap(QPixmap::fromImage(image));
  }
  icon.setIsMask(true);
  return icon;
}

} // namespace korvell
