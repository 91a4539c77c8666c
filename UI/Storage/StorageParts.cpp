#include "UI/Storage/StorageParts.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <QPainterPath>

#include <algorithm>

namespace korvell {

namespace {

constexpr double barHeight = 16, gap = 2, corner = 4;
constexpr double chip = 9, chipCorner = 2.5, chipGap = 6, amountGap = 7, nameGap = 24;
constexpr double legendFrom = barHeight + 9;
constexpr double leastShown = 3; ///< of a part that is more than nothing

} // namespace

DiskBar::DiskBar(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
  setName(localized("The disk"));
  QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
}

void DiskBar::setDisk(StorageDisk disk) {
  if (disk == disk_) return;
  disk_ = std::move(disk);
  updateGeometry();
  update();
}

double DiskBar::legendWidth(const StorageDisk::Part& part) const {
  return chip + chipGap + textWidth(theme(), TextStyle::small, text(part.name)) + amountGap +
         figureWidth(fontOf(theme(), TextStyle::smallMedium), text(part.size));
}

template <class Put>
int DiskBar::lay(double width, Put put) const {
  double at = 0;
  int row = 0;
  const auto next = [&](double wide) {
    if (at > 0 && at + wide > width) {
      at = 0;
      ++row;
    }
  };
  for (std::size_t i = 0; i < parts().size(); ++i) {
    const auto wide = legendWidth(*parts()[i]);
    next(wide);
    put(int(i), at, wide, row);
    at += wide + nameGap;
  }
  const auto wide = textWidth(theme(), TextStyle::small, text(disk_.outlook));
  next(wide);
  // At the far end where it shares a row.
  put(-1, at > 0 ? width - wide : 0, wide, row);
  return row + 1;
}

int DiskBar::heightForWidth(int width) const {
  const auto rows = lay(width, [](int, double, double, int) {});
  return qCeil(legendFrom + rows * lineHeight(theme(), TextStyle::small));
}

std::string DiskBar::spokenValue() const {
  std::string words;
  for (const auto* part : parts()) words += part->name + " " + part->size + ", ";
  return words + disk_.outlook;
}

std::optional<std::string> DiskBar::cutText() const {
  std::optional<std::string> cut;
  lay(width(), [&](int index, double from, double wide, int) {
    if (from < 0 || from + wide > width() + 0.5)
      cut = index < 0 ? disk_.outlook : parts()[std::size_t(index)]->name;
  });
  return cut;
}

QRectF DiskBar::place(double from, double wide, double top, double height) const {
  return {isRightToLeft() ? width() - from - wide : from, top, wide, height};
}

void DiskBar::drawPart(QPainter& painter, const QRectF& box, double radius, std::size_t index) const {
  if (index == 2)
    drawRounded(painter, box, radius, theme().color(Token::surface), theme().color(Token::border));
  else
    fillRounded(painter, box, radius, theme().color(index == 0 ? Token::axis : Token::accent));
}

void DiskBar::draw(QPainter& painter) {
  double sum = 0;
  for (const auto* part : parts()) sum += part->bytes;
  if (sum <= 0) return;
  const double line = lineHeight(theme(), TextStyle::small);
  const auto shown = std::ranges::count_if(parts(), [](const auto* part) { return part->bytes > 0; });
  const double room = width() - gap * double(shown - 1);
  double at = 0;
  for (std::size_t i = 0; i < parts().size(); ++i) {
    if (parts()[i]->bytes <= 0) continue;
    const auto wide = std::max(leastShown, parts()[i]->bytes / sum * room);
    drawPart(painter, snapped(painter, place(at, std::min(wide, width() - at), 0, barHeight)), corner, i);
    at += wide + gap;
  }
  lay(width(), [&](int index, double from, double wide, int row) {
    const double top = legendFrom + row * line;
    if (index < 0)
      return void(drawText(painter, place(from, wide, top, line), theme(), TextStyle::small, Token::text2,
                           text(disk_.outlook)));
    const auto& part = *parts()[std::size_t(index)];
    drawPart(painter, place(from, chip, top + (line - chip) / 2, chip), chipCorner, std::size_t(index));
    const auto name = text(part.name), size = text(part.size);
    const auto font = fontOf(theme(), TextStyle::smallMedium);
    const auto amount = figureWidth(font, size);
    drawText(painter, place(from + chip + chipGap, wide - chip - chipGap - amountGap - amount, top, line),
             theme(), TextStyle::small, Token::text2, name);
    painter.setPen(theme().color(Token::text1));
    drawFigures(painter, place(from + wide - amount, amount, top, line), Qt::AlignLeft, font, size);
  });
}

CircledIcon::CircledIcon(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void CircledIcon::setIcon(Icon icon, Token ink) {
  icon_ = icon;
  ink_ = ink;
  update();
}

void CircledIcon::draw(QPainter& painter) {
  constexpr double iconSize = 26;
  drawOutline(painter, rect(), size / 2.0, theme().color(Token::hairline), 1.5);
  const QRectF box((width() - iconSize) / 2, (height() - iconSize) / 2, iconSize, iconSize);
  drawIcon(painter, icon_, box, theme().color(ink_), layoutDirection());
}

namespace {

constexpr double logHead = 40, logRow = 26, sizeEnd = 28;

} // namespace

FreedLog::FreedLog(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
  setName(localized("Freed with Korvell"));
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void FreedLog::setLog(std::vector<StoragePage::Freed> log) {
  if (log == log_) return;
  log_ = std::move(log);
  updateGeometry();
  update();
}

QSize FreedLog::sizeHint() const {
  return {480, theme().scaled(logHead) + int(log_.size()) * theme().scaled(logRow)};
}

std::string FreedLog::spokenValue() const {
  std::string words;
  for (const auto& entry : log_) words += (words.empty() ? "" : "; ") + entry.when + ", " + entry.size;
  return words;
}

void FreedLog::draw(QPainter& painter) {
  const double head = theme().scaled(logHead), high = theme().scaled(logRow);
  const double line = lineHeight(theme(), TextStyle::head);
  drawText(painter, QRectF(0, head - line - 5, width(), line), theme(), TextStyle::head, Token::text1,
           text(localized("Freed with Korvell")));
  drawHairline(painter, QPointF(0, head - 1), width(), theme().color(Token::hairline));
  const auto font = fontOf(theme(), TextStyle::small);
  double top = head;
  for (const auto& entry : log_) {
    const QRectF box(0, top, width(), high);
    drawText(painter, box, theme(), TextStyle::small, Token::text2, text(entry.when));
    painter.setPen(theme().color(Token::text2));
    const auto size = text(entry.size);
    const auto wide = figureWidth(font, size), from = width() - sizeEnd - wide;
    drawFigures(painter, QRectF(isRightToLeft() ? width() - from - wide : from, top, wide, high),
                Qt::AlignLeft, font, size);
    top += high;
  }
}

void OutcomeLabel::say(const std::string& words, bool isOutcome) {
  const bool isNews = isOutcome && (!isOutcome_ || text(words) != this->words());
  isOutcome_ = isOutcome;
  setWords(words);
  if (!isNews || !isVisible()) return;
  QAccessibleEvent shown(this, QAccessible::ObjectShow);
  QAccessible::updateAccessibility(&shown);
}

} // namespace korvell
