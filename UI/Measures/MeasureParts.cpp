#include "UI/Measures/MeasureParts.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/SpokenFigure.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

constexpr double columnGap = 28, leastColumn = 58, leastNow = 68, leadGap = 6, toneSize = 17, toneGap = 4;
constexpr double infoSize = 14, infoGap = 4;
constexpr double captionHeight = 18, factHeight = 20, rowGap = 10;
constexpr double coreRow = 24, coreBar = 8, coreNumber = 24, corePercent = 44, groupTitle = 22, groupGap = 8;
constexpr double cell = 20, cellGap = 4;
constexpr int cellSteps = 5;
constexpr double volumeRow = 46, deviceRow = 30;

/// Laid out from left to right and mirrored as a whole.
QRectF mirrored(const QWidget& widget, const QRectF& box) {
  if (widget.layoutDirection() != Qt::RightToLeft) return box;
  return {widget.width() - box.right(), box.top(), box.width(), box.height()};
}

std::string spokenFact(const std::string& caption, const Figure& figure) {
  return caption.empty() ? textOf(figure) : caption + " " + textOf(figure);
}

} // namespace

// The figures

FactsRow::FactsRow(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
  QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
}

void FactsRow::setPage(const MeasurePage& page) {
  if (page.lead == lead_ && page.now == now_ && page.facts == facts_ && page.range == range_ &&
      page.nowReason == nowReason_)
    return;
  const int before = heightForWidth(width());
  title_ = page.title;
  lead_ = page.lead;
  now_ = page.now;
  nowReason_ = page.nowReason;
  isMeasuring_ = page.isMeasuring;
  facts_ = page.facts;
  range_ = page.range;
  auto words = spokenFact(lead_, now_) + (nowReason_.empty() ? "" : ", " + nowReason_);
  for (const auto* facts : {&facts_, &range_})
    for (const auto& fact : *facts)
      words += ", " + spokenFact(fact.caption, fact.figure) + (fact.reason.empty() ? "" : ", " + fact.reason);
  setName(words);
  if (heightForWidth(width()) != before) updateGeometry();
  update();
  const auto unread = reasons();
  setReason(unread);
  setFocusPolicy(unread.empty() ? Qt::NoFocus : Qt::TabFocus);
}

double FactsRow::rowHeight() const { return theme().scaled(captionHeight + factHeight + 2); }

double FactsRow::nowWidth() const {
  const double lead = lead_.empty() ? 0 : textWidth(theme(), TextStyle::sub, text(lead_)) + leadGap;
  return std::max(leastNow,
                  lead + FigureText(theme(), TextStyle::figureLarge, now_).width() + infoWidth(nowReason_));
}

/// Beside a "–" that will stay one stands that there is a reason.
double FactsRow::infoWidth(const std::string& reason) const {
  return reason.empty() || isMeasuring_ ? 0 : infoGap + infoSize;
}

void FactsRow::drawInfo(QPainter& painter, const std::string& reason, double from, double to, double middle,
                        bool before) const {
  if (infoWidth(reason) == 0) return;
  const double left = before ? from - infoGap - infoSize : to + infoGap;
  drawIcon(painter, Icon::info, QRectF(left, middle - infoSize / 2, infoSize, infoSize),
           theme().color(Token::text3));
}

double FactsRow::widthOf(const MeasureFact& fact) const {
  const double mark = fact.tone ? toneSize + toneGap : 0;
  return std::ceil(
      std::max({leastColumn, textWidth(theme(), TextStyle::small, text(fact.caption)),
                mark + FigureText(theme(), TextStyle::sub, fact.figure).width() + infoWidth(fact.reason)}));
}

std::vector<FactsRow::Cell> FactsRow::cells(double width) const {
  std::vector<Cell> placed{{nullptr, 0, nowWidth(), 0}};
  double from = nowWidth() + columnGap;
  int row = 0;
  const auto put = [&](const MeasureFact& fact) {
    const auto wide = widthOf(fact);
    if (from > 0 && from + wide > width) {
      from = 0;
      ++row;
    }
    placed.push_back({&fact, from, wide, row});
    from += wide + columnGap;
  };
  for (const auto& fact : facts_) put(fact);
  double atEnd = 0;
  for (const auto& fact : range_) atEnd += widthOf(fact) + columnGap;
  if (from + atEnd - columnGap > width) {
    from = 0; // together in a row of their own
    ++row;
    for (const auto& fact : range_) put(fact);
    return placed;
  }
  double end = width;
  for (auto fact = range_.rbegin(); fact != range_.rend(); ++fact) {
    placed.push_back({&*fact, end - widthOf(*fact), widthOf(*fact), row, true});
    end -= widthOf(*fact) + columnGap;
  }
  return placed;
}

int FactsRow::heightForWidth(int width) const {
  int last = 0;
  for (const auto& each : cells(width)) last = std::max(last, each.row);
  return qCeil((last + 1) * rowHeight() + last * rowGap);
}

QSize FactsRow::sizeHint() const { return {480, heightForWidth(std::max(width(), 480))}; }

std::optional<std::string> FactsRow::cutText() const {
  for (const auto& each : cells(width()))
    if (each.from + each.width > width() + 0.5)
      return each.fact ? spokenFact(each.fact->caption, each.fact->figure) : spokenFact(lead_, now_);
  return std::nullopt;
}

void FactsRow::draw(QPainter& painter) {
  for (const auto& each : cells(width())) {
    if (each.fact)
      drawFact(painter, *each.fact, boxOf(each), each.atEnd);
    else
      drawNow(painter, boxOf(each));
  }
}

QRectF FactsRow::boxOf(const Cell& cell) const {
  return mirrored(*this, QRectF(cell.from, cell.row * (rowHeight() + rowGap), cell.width, rowHeight()));
}

/// Each reason once, after the names of all that it is of.
std::string FactsRow::reasons() const {
  std::vector<std::pair<std::string, std::string>> lines;
  const auto add = [&](const std::string& name, const std::string& reason) {
    if (reason.empty()) return;
    const auto same = std::ranges::find(lines, reason, &std::pair<std::string, std::string>::second);
    if (same == lines.end())
      lines.emplace_back(name, reason);
    else
      same->first += ", " + name;
  };
  add(lead_.empty() ? title_ : lead_, nowReason_);
  for (const auto* facts : {&facts_, &range_})
    for (const auto& fact : *facts) add(fact.caption, fact.reason);
  std::string all;
  for (const auto& [names, reason] : lines) all += (all.empty() ? "" : "\n") + names + ": " + reason;
  return all;
}

QString FactsRow::reasonAt(const QPointF& position) const {
  for (const auto& each : cells(width()))
    if (boxOf(each).contains(position)) return text(reasonOf(each));
  return {};
}

bool FactsRow::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return Painted::event(event);
  const auto& help = static_cast<QHelpEvent&>(*event);
  // Hides it where there is none.
  QToolTip::showText(help.globalPos(), reasonAt(QPointF(help.pos())), this);
  return true;
}

void FactsRow::mousePressEvent(QMouseEvent* event) {
  event->setAccepted(!reasonAt(event->position()).isEmpty());
}

/// A finger points at nothing before it presses.
void FactsRow::mouseReleaseEvent(QMouseEvent* event) {
  const auto words = reasonAt(event->position());
  if (words.isEmpty()) return event->ignore();
  showTip([words] { return words; }, event->globalPosition().toPoint());
}

void FactsRow::drawNow(QPainter& painter, const QRectF& box) const {
  const FigureText figure(theme(), TextStyle::figureLarge, now_);
  // On the baseline of the facts beside it.
  const auto base = baseline(theme(), TextStyle::sub, box.bottom() - lineHeight(theme(), TextStyle::sub));
  const auto lead = text(lead_);
  const double leadWidth = lead.isEmpty() ? 0 : textWidth(theme(), TextStyle::sub, lead) + leadGap;
  const double whole = leadWidth + figure.width();
  double left = isRightToLeft() ? box.right() - whole : box.left();
  if (!lead.isEmpty()) {
    const auto at = isRightToLeft() ? box.right() - leadWidth + leadGap : left;
    painter.setFont(fontOf(theme(), TextStyle::sub));
    painter.setPen(theme().color(Token::text3));
    painter.drawText(QPointF(at, base), lead);
    if (!isRightToLeft()) left += leadWidth;
  }
  figure.draw(painter, QPointF(left, base), theme().color(Token::text1), theme().color(Token::text2));
  const double middle = box.bottom() - lineHeight(theme(), TextStyle::sub) / 2.0;
  drawInfo(painter, nowReason_, left, left + figure.width(), middle, isRightToLeft());
}

void FactsRow::drawFact(QPainter& painter, const MeasureFact& fact, const QRectF& box, bool atEnd) const {
  const QRectF caption(box.left(), box.top(), box.width(), theme().scaled(captionHeight));
  drawText(painter, caption, theme(), TextStyle::small, Token::text3, text(fact.caption),
           atEnd ? Qt::AlignRight : Qt::AlignLeft);
  const FigureText figure(theme(), TextStyle::sub, fact.figure);
  const double line = lineHeight(theme(), TextStyle::sub);
  const double mark = fact.tone ? toneSize + toneGap : 0;
  const bool toRight = atEnd != isRightToLeft();
  double left = toRight ? box.right() - mark - figure.width() : box.left();
  if (fact.tone) {
    const auto& look = lookOf(*fact.tone);
    const double at = isRightToLeft() ? left + figure.width() + toneGap : left;
    drawIcon(painter, look.icon, QRectF(at, box.bottom() - line / 2 - toneSize / 2, toneSize, toneSize),
             theme().color(look.mark));
    if (!isRightToLeft()) left += mark;
  }
  figure.draw(painter, QPointF(left, baseline(theme(), TextStyle::sub, box.bottom() - line)),
              theme().color(Token::text1), theme().color(Token::text2));
  drawInfo(painter, fact.reason, left, left + figure.width(), box.bottom() - line / 2, toRight);
}

// Cores

CoreBars::CoreBars(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
  QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
  setName(localized("Cores"));
}

void CoreBars::setGroups(std::vector<CoreGroup> groups) {
  if (groups == groups_) return;
  const int before = heightForWidth(width());
  groups_ = std::move(groups);
  if (heightForWidth(width()) != before) updateGeometry();
  update();
}

bool CoreBars::isCells() const {
  std::size_t count = 0;
  for (const auto& group : groups_) count += group.percent.size();
  return count > mostBars;
}

int CoreBars::cellsInRow(double width) const {
  return std::max(1, int((width + cellGap) / theme().scaled(cell + cellGap)));
}

template <class Title, class Core>
double CoreBars::lay(double width, Title title, Core core) const {
  double top = 0;
  for (const auto& group : groups_) {
    if (!group.title.empty()) {
      if (top > 0) top += groupGap;
      title(group.title, QRectF(0, top, width, theme().scaled(groupTitle)));
      top += theme().scaled(groupTitle);
    }
    const int perRow = isCells() ? cellsInRow(width) : 1;
    const double high = theme().scaled(isCells() ? cell + cellGap : coreRow);
    for (int i = 0; i < int(group.percent.size()); ++i) {
      const double wide = isCells() ? theme().scaled(cell) : width;
      const double left = isCells() ? (i % perRow) * double(theme().scaled(cell + cellGap)) : 0;
      const int line = i / perRow;
      core(group.first + i, group.percent[std::size_t(i)],
           QRectF(left, top + line * high, wide, isCells() ? wide : high));
    }
    const int lines = (int(group.percent.size()) + perRow - 1) / perRow;
    top += lines * high;
  }
  return top;
}

int CoreBars::heightForWidth(int width) const {
  return qCeil(lay(
      width, [](const auto&, const QRectF&) {}, [](int, double, const QRectF&) {}));
}

std::string CoreBars::spokenValue() const {
  std::string words;
  for (const auto& group : groups_)
    for (std::size_t i = 0; i < group.percent.size(); ++i)
      words += (words.empty() ? "" : ", ") +
               localized("core {n} {percent}", {{"n", std::to_string(group.first + int(i))},
                                                {"percent", spokenFigure(Unit::percent, group.percent[i])}});
  return words;
}

void CoreBars::draw(QPainter& painter) {
  lay(
      width(),
      [&](const std::string& words, const QRectF& box) {
        drawText(painter, box, theme(), TextStyle::caption, Token::text3, text(words));
      },
      [&](int number, double percent, const QRectF& box) { drawCore(painter, box, number, percent); });
}

void CoreBars::drawCore(QPainter& painter, const QRectF& box, int number, double percent) const {
  if (isCells()) {
    const double step = std::round(std::clamp(percent / 100, 0.0, 1.0) * cellSteps) / cellSteps;
    return fillRounded(painter, mirrored(*this, box), 4, theme().mixed(Token::cpu, step, Token::sunken));
  }
  const auto small = fontOf(theme(), TextStyle::small);
  painter.setPen(theme().color(Token::text2));
  const auto side = isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft;
  drawFigures(painter, mirrored(*this, QRectF(box.left(), box.top(), coreNumber, box.height())), side, small,
              QString::number(number));
  const QRectF bar(box.left() + coreNumber, box.center().y() - coreBar / 2,
                   box.width() - coreNumber - theme().scaled(corePercent), coreBar);
  drawBar(painter, mirrored(*this, bar), theme(), Token::cpu, percent / 100, layoutDirection());
  painter.setPen(theme().color(Token::text1));
  const auto end = isRightToLeft() ? Qt::AlignLeft : Qt::AlignRight;
  drawFigures(painter, mirrored(*this, box), end, small, text(Format::percent(percent)));
}

bool CoreBars::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip || !isCells()) return Painted::event(event);
  const auto& help = static_cast<QHelpEvent&>(*event);
  QString words;
  lay(
      width(), [](const auto&, const QRectF&) {},
      [&](int number, double percent, const QRectF& box) {
        if (mirrored(*this, box).contains(QPointF(help.pos())))
          words = text(localized("Core {n}: {percent}",
                                 {{"n", std::to_string(number)}, {"percent", Format::percent(percent)}}));
      });
  QToolTip::showText(help.globalPos(), words, this); // hides it where there are none
  return true;
}

// Volumes

VolumeList::VolumeList(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setName(localized("Volumes"));
}

void VolumeList::setVolumes(std::vector<VolumeRow> volumes) {
  if (volumes == volumes_) return;
  const bool isAnotherSize = volumes.size() != volumes_.size();
  volumes_ = std::move(volumes);
  if (isAnotherSize) updateGeometry();
  update();
}

QSize VolumeList::sizeHint() const {
  return {480, theme().scaled(volumeRow) * std::max(1, int(volumes_.size()))};
}

std::string VolumeList::spokenValue() const {
  std::string words;
  for (const auto& volume : volumes_) words += (words.empty() ? "" : "; ") + volume.spoken;
  return words;
}

void VolumeList::draw(QPainter& painter) {
  if (volumes_.empty())
    drawText(painter, rect(), theme(), TextStyle::small, Token::text2,
             text(localized("No volume can be read here.")));
  double top = 0;
  for (const auto& volume : volumes_) {
    const double line = lineHeight(theme(), TextStyle::strong);
    const QRectF row(0, top + 8, width(), line);
    top += theme().scaled(volumeRow);
    const auto free = text(volume.free);
    const auto small = fontOf(theme(), TextStyle::small);
    const double freeWidth = figureWidth(small, free);
    painter.setPen(theme().color(volume.tone ? lookOf(*volume.tone).text : Token::text2));
    drawFigures(painter, mirrored(*this, QRectF(row.right() - freeWidth, row.top(), freeWidth, line)),
                Qt::AlignLeft, small, free);
    double end = row.right() - freeWidth - 8;
    if (volume.tone) {
      const auto& look = lookOf(*volume.tone);
      drawIcon(painter, look.icon, mirrored(*this, QRectF(end - 16, row.center().y() - 8, 16, 16)),
               theme().color(look.mark));
      end -= 24;
    }
    const auto name = text(volume.name);
    const double nameWidth = std::min(textWidth(theme(), TextStyle::strong, name), std::max(40.0, end - 8));
    drawText(painter, mirrored(*this, QRectF(0, row.top(), nameWidth, line)), theme(), TextStyle::strong,
             Token::text1, name);
    const double from = nameWidth + 8;
    if (end - from > 24)
      drawText(painter, mirrored(*this, QRectF(from, row.top(), end - from, line)), theme(), TextStyle::small,
               Token::text3, text(volume.mount), Qt::AlignLeft, Qt::ElideMiddle);
    const auto token =
        volume.tone ? lookOf(*volume.tone).mark : Token::text3; // the disk's own looks like a warning
    drawBar(painter, QRectF(0, row.bottom() + 6, width(), 8), theme(), token, volume.used, layoutDirection());
  }
}

// Devices

DeviceList::DeviceList(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setName(localized("Other devices"));
}

void DeviceList::setDevices(std::vector<DeviceRow> devices) {
  if (devices == devices_) return;
  const bool isAnotherSize = devices.size() != devices_.size();
  devices_ = std::move(devices);
  if (isAnotherSize) updateGeometry();
  update();
}

QSize DeviceList::sizeHint() const { return {480, theme().scaled(deviceRow) * int(devices_.size())}; }

std::string DeviceList::spokenValue() const {
  std::string words;
  for (const auto& device : devices_)
    words += (words.empty() ? "" : ", ") + device.name + " " + spokenFigure(Unit::percent, device.percent);
  return words;
}

void DeviceList::draw(QPainter& painter) {
  constexpr double iconSize = 18, barWidth = 148, percentWidth = 52;
  double top = 0;
  for (const auto& device : devices_) {
    const QRectF row(0, top, width(), theme().scaled(deviceRow));
    top += row.height();
    drawIcon(painter, device.icon,
             mirrored(*this, QRectF(0, row.center().y() - iconSize / 2, iconSize, iconSize)),
             theme().color(Token::text2));
    const double bar = row.right() - percentWidth - barWidth;
    drawText(painter, mirrored(*this, QRectF(iconSize + 10, row.top(), bar - iconSize - 26, row.height())),
             theme(), TextStyle::body, Token::text1, text(device.name));
    drawBar(painter, mirrored(*this, QRectF(bar, row.center().y() - 2.5, barWidth, 5)), theme(),
            Token::energy, device.percent / 100.0, layoutDirection());
    painter.setPen(theme().color(Token::text1));
    drawFigures(painter, mirrored(*this, row), isRightToLeft() ? Qt::AlignLeft : Qt::AlignRight,
                fontOf(theme(), TextStyle::body), text(Format::percent(device.percent)));
  }
}

} // namespace korvell
