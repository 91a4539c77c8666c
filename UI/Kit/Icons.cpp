#include "UI/Kit/Icons.h"

#include "UI/Kit/PathData.h"

#include <QPainter>
#include <QPainterPathStroker>
#include <QPixmap>
#include <QPixmapCache>

#include <array>
#include <vector>

namespace korvell {

namespace {

enum Ink { stroked, filled, dotted, cutOut };

struct Part {
  Icon icon;
  Ink ink;
  std::string_view data;
};

constexpr double grid = 20;
constexpr double widths[] = {1.5, 1.5, 2.2, 1.7}; // by Ink

// Drawn on the grid of 20; parts of one icon in the order of drawing. Filled parts are stroked too.
// clang-format off
constexpr Part parts[] = {
    {Icon::heart, stroked, "M10 16.6C10 16.6 2.9 12.5 2.9 7.6A3.65 3.65 0 0 1 10 6.3A3.65 3.65 0 0 1 17.1 7.6C17.1 12.5 10 16.6 10 16.6Z"},
    {Icon::heartFilled, filled, "M10 16.6C10 16.6 2.9 12.5 2.9 7.6A3.65 3.65 0 0 1 10 6.3A3.65 3.65 0 0 1 17.1 7.6C17.1 12.5 10 16.6 10 16.6Z"},
    {Icon::cpu, stroked, "M7.3 5.5h5.4a1.8 1.8 0 0 1 1.8 1.8v5.4a1.8 1.8 0 0 1-1.8 1.8h-5.4a1.8 1.8 0 0 1-1.8-1.8v-5.4a1.8 1.8 0 0 1 1.8-1.8Z"},
    {Icon::cpu, stroked, "M8.4 8.4h3.2v3.2H8.4ZM8 5.5V3M12 5.5V3M8 17v-2.5M12 17v-2.5M5.5 8H3M5.5 12H3M17 8h-2.5M17 12h-2.5"},
    {Icon::memory, stroked, "M3.8 6h12.4a1 1 0 0 1 1 1v1.4a1.4 1.4 0 0 0 0 2.8v2.3H2.8v-2.3a1.4 1.4 0 0 0 0-2.8V7a1 1 0 0 1 1-1Z"},
    {Icon::memory, stroked, "M7 8.6v2.2M10 8.6v2.2M13 8.6v2.2"},
    {Icon::disk, stroked, "M5.6 4.5h8.8l2.6 6.7v3a1.3 1.3 0 0 1-1.3 1.3H4.3A1.3 1.3 0 0 1 3 14.2v-3Z"},
    {Icon::disk, stroked, "M3 11.2h14M13.6 13.35h0.8"},
    {Icon::network, stroked, "M6.8 15.5v-11M3.6 7.7l3.2-3.2 3.2 3.2M13.2 4.5v11M10 12.3l3.2 3.2 3.2-3.2"},
    {Icon::gpu, stroked, "M4.4 5.2h11.2a1.6 1.6 0 0 1 1.6 1.6v5.4a1.6 1.6 0 0 1-1.6 1.6h-11.2a1.6 1.6 0 0 1-1.6-1.6v-5.4a1.6 1.6 0 0 1 1.6-1.6Z"},
    {Icon::gpu, stroked, "M10.2 9.5a2.2 2.2 0 0 1 4.4 0a2.2 2.2 0 0 1-4.4 0Z"},
    {Icon::gpu, stroked, "M5.8 8.2h2M5.8 10.8h2M5.4 13.8v2.2M9.2 13.8v2.2"},
    {Icon::battery, stroked, "M4.5 6.4h8.8a1.9 1.9 0 0 1 1.9 1.9v3.4a1.9 1.9 0 0 1-1.9 1.9h-8.8a1.9 1.9 0 0 1-1.9-1.9v-3.4a1.9 1.9 0 0 1 1.9-1.9Z"},
    {Icon::battery, stroked, "M17.6 8.9v2.2"},
    {Icon::battery, filled, "M5 8.8h5.2v2.4H5Z"},
    {Icon::storage, stroked, "M16.8 3.2l-5.6 5.6M8.4 8.4l3.2 3.2M8.4 8.4C6.2 8.7 4.2 10.6 3.1 13.3c1.8 0.9 2.7 1.8 3.6 3.6 2.7-1.1 4.6-3.1 4.9-5.3M5.4 14.6l1.7-2"},
    {Icon::ai, stroked, "M8.6 3.6c0.6 4.1 2.1 5.6 6.2 6.2-4.1 0.6-5.6 2.1-6.2 6.2-0.6-4.1-2.1-5.6-6.2-6.2 4.1-0.6 5.6-2.1 6.2-6.2ZM15.6 12.9v4M13.6 14.9h4M15.8 3.2v2.4M14.6 4.4H17"},
    {Icon::servers, stroked, "M4.5 3.8h11a1.5 1.5 0 0 1 1.5 1.5v2.3a1.5 1.5 0 0 1-1.5 1.5h-11a1.5 1.5 0 0 1-1.5-1.5v-2.3a1.5 1.5 0 0 1 1.5-1.5Z"},
    {Icon::servers, stroked, "M4.5 10.9h11a1.5 1.5 0 0 1 1.5 1.5v2.3a1.5 1.5 0 0 1-1.5 1.5h-11a1.5 1.5 0 0 1-1.5-1.5v-2.3a1.5 1.5 0 0 1 1.5-1.5Z"},
    {Icon::servers, stroked, "M6 6.45h0.6M9 6.45h5M6 13.55h0.6M9 13.55h5"},
    {Icon::sound, stroked, "M3.4 8v4h2.7L10 15.4V4.6L6.1 8ZM12.9 7.6a3.4 3.4 0 0 1 0 4.8M15.2 5.2a6.8 6.8 0 0 1 0 9.6"},
    {Icon::sensors, stroked, "M8 11.3V5a2 2 0 0 1 4 0v6.3a3.5 3.5 0 1 1-4 0ZM10 8.2v5"},
    {Icon::sensors, filled, "M9 14.2a1 1 0 0 1 2 0a1 1 0 0 1-2 0Z"},
    {Icon::startup, stroked, "M10 3v6.4M6.3 5.5a6.1 6.1 0 1 0 7.4 0"},
    {Icon::alerts, stroked, "M4.6 13.7c1.2-1.1 1.6-2.5 1.6-4.9a3.8 3.8 0 0 1 7.6 0c0 2.4 0.4 3.8 1.6 4.9ZM8.3 16.2a1.8 1.8 0 0 0 3.4 0"},
    {Icon::settings, stroked, "M3 6.5h6.2M14 6.5h3M3 13.5h3M10.8 13.5H17"},
    {Icon::settings, stroked, "M9.3 6.5a2.3 2.3 0 0 1 4.6 0a2.3 2.3 0 0 1-4.6 0Z"},
    {Icon::settings, stroked, "M6.1 13.5a2.3 2.3 0 0 1 4.6 0a2.3 2.3 0 0 1-4.6 0Z"},
    {Icon::critical, filled, "M7 2.9h6l4.1 4.1v6L13 17.1H7L2.9 13V7Z"},
    {Icon::critical, cutOut, "M10 6.4v4.4M10 13.5v0.01"},
    {Icon::warning, filled, "M10 3.6L17.4 16.2H2.6Z"},
    {Icon::warning, cutOut, "M10 8.3v3.5M10 14v0.01"},
    {Icon::info, stroked, "M3 10a7 7 0 0 1 14 0a7 7 0 0 1-14 0Z"},
    {Icon::info, stroked, "M10 9.3v4.2M10 6.6v0.01"},
    {Icon::help, stroked, "M3 10a7 7 0 0 1 14 0a7 7 0 0 1-14 0Z"},
    {Icon::help, stroked, "M8 8.1a2 2 0 1 1 2.9 1.8c-0.6 0.3-0.9 0.7-0.9 1.4M10 13.5v0.01"},
    {Icon::check, stroked, "M4.5 10.4l3.7 3.7 7.3-8"},
    {Icon::checkCircle, stroked, "M3 10a7 7 0 0 1 14 0a7 7 0 0 1-14 0Z"},
    {Icon::checkCircle, stroked, "M6.9 10.2l2.2 2.2 4.1-4.5"},
    {Icon::clock, stroked, "M3 10a7 7 0 0 1 14 0a7 7 0 0 1-14 0Z"},
    {Icon::clock, stroked, "M10 6v4.3l2.8 1.7"},
    {Icon::moon, stroked, "M15.8 12.2A6.4 6.4 0 0 1 7.8 4.2a6.4 6.4 0 1 0 8 8Z"},
    {Icon::plug, stroked, "M7.5 3v4M12.5 3v4M5.5 7h9v2.5a4.5 4.5 0 0 1-9 0ZM10 14v3"},
    {Icon::hammer, stroked, "M8.6 6.4l3.6-3 4.4 4.4-3 3.6ZM11 8.9l-6.9 6.9M6.9 4.7l1.7 1.7"},
    {Icon::device, stroked, "M7.8 2.8h4.4a1.8 1.8 0 0 1 1.8 1.8v10.8a1.8 1.8 0 0 1-1.8 1.8h-4.4a1.8 1.8 0 0 1-1.8-1.8v-10.8a1.8 1.8 0 0 1 1.8-1.8Z"},
    {Icon::device, stroked, "M9.2 14.8h1.6"},
    {Icon::archive, stroked, "M3 4.2h14v3.4H3ZM4.2 7.6v8.2h11.6V7.6M8.2 10.6h3.6"},
    {Icon::project, stroked, "M3 6a1.4 1.4 0 0 1 1.4-1.4h3.2l1.8 2h6.2A1.4 1.4 0 0 1 17 8v6a1.4 1.4 0 0 1-1.4 1.4H4.4A1.4 1.4 0 0 1 3 14Z"},
    {Icon::project, stroked, "M8.6 9.3L7 11l1.6 1.7M11.4 9.3L13 11l-1.6 1.7"},
    {Icon::box, stroked, "M10 2.9l6.4 3.5v7.2L10 17.1l-6.4-3.5V6.4ZM3.8 6.5L10 10l6.2-3.5M10 10v7"},
    {Icon::container, stroked, "M3.6 9.6h2.8a0.8 0.8 0 0 1 0.8 0.8v2.8a0.8 0.8 0 0 1-0.8 0.8h-2.8a0.8 0.8 0 0 1-0.8-0.8v-2.8a0.8 0.8 0 0 1 0.8-0.8Z"},
    {Icon::container, stroked, "M8.6 9.6h2.8a0.8 0.8 0 0 1 0.8 0.8v2.8a0.8 0.8 0 0 1-0.8 0.8h-2.8a0.8 0.8 0 0 1-0.8-0.8v-2.8a0.8 0.8 0 0 1 0.8-0.8Z"},
    {Icon::container, stroked, "M13.6 9.6h2.8a0.8 0.8 0 0 1 0.8 0.8v2.8a0.8 0.8 0 0 1-0.8 0.8h-2.8a0.8 0.8 0 0 1-0.8-0.8v-2.8a0.8 0.8 0 0 1 0.8-0.8Z"},
    {Icon::container, stroked, "M8.6 4.6h2.8a0.8 0.8 0 0 1 0.8 0.8v2.8a0.8 0.8 0 0 1-0.8 0.8h-2.8a0.8 0.8 0 0 1-0.8-0.8v-2.8a0.8 0.8 0 0 1 0.8-0.8Z"},
    {Icon::apps, stroked, "M4.8 3.4h2.6a1.4 1.4 0 0 1 1.4 1.4v2.6a1.4 1.4 0 0 1-1.4 1.4h-2.6a1.4 1.4 0 0 1-1.4-1.4v-2.6a1.4 1.4 0 0 1 1.4-1.4Z"},
    {Icon::apps, stroked, "M12.6 3.4h2.6a1.4 1.4 0 0 1 1.4 1.4v2.6a1.4 1.4 0 0 1-1.4 1.4h-2.6a1.4 1.4 0 0 1-1.4-1.4v-2.6a1.4 1.4 0 0 1 1.4-1.4Z"},
    {Icon::apps, stroked, "M4.8 11.2h2.6a1.4 1.4 0 0 1 1.4 1.4v2.6a1.4 1.4 0 0 1-1.4 1.4h-2.6a1.4 1.4 0 0 1-1.4-1.4v-2.6a1.4 1.4 0 0 1 1.4-1.4Z"},
    {Icon::apps, stroked, "M12.6 11.2h2.6a1.4 1.4 0 0 1 1.4 1.4v2.6a1.4 1.4 0 0 1-1.4 1.4h-2.6a1.4 1.4 0 0 1-1.4-1.4v-2.6a1.4 1.4 0 0 1 1.4-1.4Z"},
    {Icon::trash, stroked, "M3.8 6h12.4M7.8 6V4.2h4.4V6M5.4 6l0.8 10.4h7.6L14.6 6M8.5 9v4.5M11.5 9v4.5"},
    {Icon::download, stroked, "M10 3.5v8.6M6.3 8.7L10 12.4l3.7-3.7M3.8 15.9h12.4"},
    {Icon::fan, stroked, "M8.6 10a1.4 1.4 0 0 1 2.8 0a1.4 1.4 0 0 1-2.8 0Z"},
    {Icon::fan, stroked, "M10 8.6C8.6 6.4 9 3.6 11.4 3c2.2 2.2 0.8 4.6-0.4 5.8M11.2 10.7c2.6-0.1 4.8 1.6 4.1 4-2.9 0.8-4.3-1.6-4.7-3.2M8.8 10.7c-1.2 2.3-3.8 3.3-5.5 1.5 0.8-2.9 3.6-2.9 5.2-2.5"},
    {Icon::keyboard, stroked, "M4.4 5.4h11.2a1.8 1.8 0 0 1 1.8 1.8v5.6a1.8 1.8 0 0 1-1.8 1.8h-11.2a1.8 1.8 0 0 1-1.8-1.8v-5.6a1.8 1.8 0 0 1 1.8-1.8Z"},
    {Icon::keyboard, stroked, "M5.6 8.4h0.01M8.5 8.4h0.01M11.5 8.4h0.01M14.4 8.4h0.01M7 11.7h6"},
    {Icon::mouse, stroked, "M10 3h0a4 4 0 0 1 4 4v6a4 4 0 0 1-4 4h0a4 4 0 0 1-4-4v-6a4 4 0 0 1 4-4Z"},
    {Icon::mouse, stroked, "M10 6v2.6"},
    {Icon::trackpad, stroked, "M5 4h10a2 2 0 0 1 2 2v8a2 2 0 0 1-2 2h-10a2 2 0 0 1-2-2v-8a2 2 0 0 1 2-2Z"},
    {Icon::trackpad, stroked, "M3 12.4h14M10 12.4V16"},
    {Icon::headphones, stroked, "M3.8 13V10.4a6.2 6.2 0 0 1 12.4 0V13"},
    {Icon::headphones, stroked, "M4.2 11.4h0.8a1.2 1.2 0 0 1 1.2 1.2v2.6a1.2 1.2 0 0 1-1.2 1.2h-0.8a1.2 1.2 0 0 1-1.2-1.2v-2.6a1.2 1.2 0 0 1 1.2-1.2Z"},
    {Icon::headphones, stroked, "M15 11.4h0.8a1.2 1.2 0 0 1 1.2 1.2v2.6a1.2 1.2 0 0 1-1.2 1.2h-0.8a1.2 1.2 0 0 1-1.2-1.2v-2.6a1.2 1.2 0 0 1 1.2-1.2Z"},
    {Icon::mute, stroked, "M3.4 8v4h2.7L10 15.4V4.6L6.1 8ZM13.2 8l4 4M17.2 8l-4 4"},
    {Icon::share, stroked, "M10 12.3V3.4M6.9 6.3L10 3.2l3.1 3.1M6.5 9H4.8v7.6h10.4V9h-1.7"},
    {Icon::power, stroked, "M10 3v6.4M6.3 5.5a6.1 6.1 0 1 0 7.4 0"},
    {Icon::quit, stroked, "M5.6 5.6l8.8 8.8M14.4 5.6l-8.8 8.8"},
    {Icon::search, stroked, "M3.8 9a5.2 5.2 0 0 1 10.4 0a5.2 5.2 0 0 1-10.4 0Z"},
    {Icon::search, stroked, "M12.9 12.9l3.7 3.7"},
    {Icon::folder, stroked, "M3 6a1.4 1.4 0 0 1 1.4-1.4h3.2l1.8 2h6.2A1.4 1.4 0 0 1 17 8v6a1.4 1.4 0 0 1-1.4 1.4H4.4A1.4 1.4 0 0 1 3 14Z"},
    {Icon::open, stroked, "M8.5 4.8H5.6a1.2 1.2 0 0 0-1.2 1.2v8.4a1.2 1.2 0 0 0 1.2 1.2H14a1.2 1.2 0 0 0 1.2-1.2v-2.9M11.3 4.3h4.4v4.4M15.4 4.6L9.8 10.2"},
    {Icon::refresh, stroked, "M15.6 7.6A6.2 6.2 0 1 0 16.2 10.8M16.3 3.8v4h-4"},
    {Icon::pin, stroked, "M7.4 3.4h5.2l-0.5 5.2 2.5 2.6H5.4l2.5-2.6ZM10 11.2v5.4"},
    {Icon::stop, stroked, "M7.2 5.8h5.6a1.4 1.4 0 0 1 1.4 1.4v5.6a1.4 1.4 0 0 1-1.4 1.4h-5.6a1.4 1.4 0 0 1-1.4-1.4v-5.6a1.4 1.4 0 0 1 1.4-1.4Z"},
    {Icon::dots, dotted, "M5 10h0.01M10 10h0.01M15 10h0.01"},
    {Icon::copy, stroked, "M8.8 7h5.8a1.8 1.8 0 0 1 1.8 1.8v5.8a1.8 1.8 0 0 1-1.8 1.8h-5.8a1.8 1.8 0 0 1-1.8-1.8v-5.8a1.8 1.8 0 0 1 1.8-1.8Z"},
    {Icon::copy, stroked, "M13 7V5.4A1.8 1.8 0 0 0 11.2 3.6H5.4A1.8 1.8 0 0 0 3.6 5.4v5.8A1.8 1.8 0 0 0 5.4 13H7"},
    {Icon::chevron, stroked, "M8 5.5l4.5 4.5L8 14.5"},
    {Icon::chevronDown, stroked, "M5.5 8l4.5 4.5L14.5 8"},
    {Icon::up, stroked, "M10 16V4M5.2 8.8L10 4l4.8 4.8"},
    {Icon::down, stroked, "M10 4v12M5.2 11.2L10 16l4.8-4.8"},
};
// clang-format on

constexpr std::size_t iconCount = static_cast<std::size_t>(Icon::down) + 1;

QPen penOf(Ink ink, const QColor& color = Qt::black) {
  return QPen(color, widths[ink], Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

struct Drawing {
  std::vector<std::pair<Ink, QPainterPath>> strokes;
  QPainterPath mark; ///< a filled mark with what is cut out of it: then there are no strokes

  void add(Ink ink, QPainterPath path) {
    if (ink != cutOut) {
      strokes.emplace_back(ink, std::move(path));
      return;
    }
    if (mark.isEmpty()) {
      for (const auto& [filledInk, outline] : strokes)
        mark = mark.united(outline).united(QPainterPathStroker(penOf(filledInk)).createStroke(outline));
      strokes.clear();
    }
    mark = mark.subtracted(QPainterPathStroker(penOf(cutOut)).createStroke(path));
  }
};

/// Read from their data once; painting is the main thread's alone.
const Drawing& drawingOf(Icon icon) {
  static const auto drawings = [] {
    std::array<Drawing, iconCount> all;
    for (const auto& part : parts)
      all[static_cast<std::size_t>(part.icon)].add(part.ink,
                                                   pathFromData(part.data).value_or(QPainterPath()));
    return all;
  }();
  return drawings[static_cast<std::size_t>(icon)];
}

void draw(QPainter& painter, const Drawing& drawing, const QColor& ink) {
  for (const auto& [kind, path] : drawing.strokes) {
    painter.setPen(penOf(kind, ink));
    painter.setBrush(kind == filled ? QBrush(ink) : QBrush(Qt::NoBrush));
    painter.drawPath(path);
  }
  painter.setPen(Qt::NoPen);
  painter.setBrush(ink);
  if (!drawing.mark.isEmpty()) painter.drawPath(drawing.mark);
}

} // namespace

void drawIcon(QPainter& painter, Icon icon, const QRectF& box, const QColor& ink,
              Qt::LayoutDirection direction) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(box.topLeft());
  painter.scale(box.width() / grid, box.height() / grid);
  if (icon == Icon::chevron && direction == Qt::RightToLeft) {
    painter.translate(grid, 0);
    painter.scale(-1, 1);
  }
  draw(painter, drawingOf(icon), ink);
  painter.restore();
}

QIcon iconPicture(Icon icon, int size, const QColor& ink, double deviceRatio) {
  // The toolkit caches what it makes of each picture: the same icon has to be the same one again.
  const auto key = QString("korvell-%1-%2-%3-%4").arg(int(icon)).arg(size).arg(ink.rgba()).arg(deviceRatio);
  QPixmap picture;
  if (!QPixmapCache::find(key, &picture)) {
    picture = QPixmap(QSize(size, size) * deviceRatio);
    picture.setDevicePixelRatio(deviceRatio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawIcon(painter, icon, QRectF(0, 0, size, size), ink);
    painter.end();
    QPixmapCache::insert(key, picture);
  }
  return QIcon(picture);
}

IconLabel::IconLabel(const Theme& theme, Icon icon, int size, Token ink, QWidget* parent)
    : Painted(theme, parent), icon_(icon), size_(size), ink_(ink) {
  setFixedSize(size, size);
}

void IconLabel::setIcon(Icon icon, Token ink) {
  icon_ = icon;
  ink_ = ink;
  update();
}

void IconLabel::draw(QPainter& painter) {
  drawIcon(painter, icon_, rect(), theme().color(ink_), layoutDirection());
}

} // namespace korvell
