#include "UI/Sound/SoundRows.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr int rowHeight = 44;
constexpr double pictureSize = 20, nameLeft = 30, nameGap = 8, partGap = 8;
constexpr double sliderRoom = 280, narrowSlider = 170, figureRoom = 52;
constexpr double muteLift = 1.5; // the icon stands beside the track, which the level moves up

std::string muteWords(const SoundPage::Row& row) {
  return localized(row.isMuted ? "Unmute {name}" : "Mute {name}", {{"name", row.name}});
}

} // namespace

void drawSoundPicture(QPainter& painter, const QRectF& box, const Theme& theme, Pictures* pictures,
                      const SoundPage::Row& row) {
  const auto picture =
      pictures && !row.picture.empty()
          ? pictures->find(row.picture, int(box.width()), painter.device()->devicePixelRatioF())
          : QPixmap();
  if (picture.isNull())
    drawMonogram(painter, box, theme, monogramHue(row.key), row.name);
  else
    painter.drawPixmap(snapped(painter, box).toRect(), picture);
}

void showMute(IconButton& button, const SoundPage::Row& row) {
  button.setIcon(row.isMuted ? Icon::mute : Icon::sound, muteWords(row));
  button.setToken(row.isMuted ? Token::text1 : Token::text2);
  button.setEnabled(row.isAdjustable);
}

SoundRow::SoundRow(const Theme& theme, const Handlers& handlers, int most, QWidget* parent)
    : ListRow(theme, parent), handlers_(handlers), mute_(new IconButton(theme, Icon::sound, "", this)),
      slider_(new Slider(theme, "", most, most > 100 ? std::optional(100) : std::nullopt, this)),
      reset_(new Button(theme, Button::Kind::quiet, localized("Reset"), this)) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  mute_->setIconSize(18);
  mute_->onPress([this] { handlers_.mute(row_.key, !row_.isMuted); });
  slider_->onMove([this](int percent) { handlers_.move(row_.key, percent); });
  reset_->setHeight(Button::Height::compact);
  reset_->setToken(Token::text2);
  reset_->onPress([this] { remove(); });
  reset_->hide();
}

void SoundRow::remove() {
  if (row_.isRemembered && handlers_.reset) handlers_.reset(row_.key);
}

void SoundRow::fillMenu(Menu& menu) {
  if (row_.isAdjustable)
    menu.add(row_.isMuted ? Icon::sound : Icon::mute, muteWords(row_),
             [this, app = row_.key, muted = !row_.isMuted] { handlers_.mute(app, muted); });
  if (row_.isRemembered && handlers_.reset)
    menu.add(localized("Reset"), [this, app = row_.key] { handlers_.reset(app); });
}

void SoundRow::setPictures(Pictures* pictures) { pictures_ = pictures; }

QSize SoundRow::sizeHint() const { return {480, theme().scaled(rowHeight)}; }
QSize SoundRow::minimumSizeHint() const { return {320, sizeHint().height()}; }

void SoundRow::themeChanged() {
  ListRow::themeChanged();
  arrange();
}

void SoundRow::show(const SoundPage::Row& row, bool isNarrow) {
  slider_->setLevel(row.level);
  auto unmoved = row_;
  unmoved.level = row.level; // which the slider alone shows
  const bool isSame = unmoved == row && isNarrow == isNarrow_;
  row_ = row;
  if (isSame) return;
  isNarrow_ = isNarrow;
  setName(row.spoken);
  setToolTip(text(row.name));
  const auto named = [&](std::string_view words) { return localized(words, {{"name", row_.name}}); };
  showMute(*mute_, row_);
  slider_->setName(named("Volume of {name}"));
  slider_->setValue(row_.percent);
  slider_->setSilent(row_.isMuted);
  reset_->setName(named("Reset {name}"));
  slider_->setEnabled(row_.isAdjustable);
  reset_->setVisible(row_.isRemembered && handlers_.reset);
  arrange();
  update();
}

void SoundRow::arrange() {
  double end = width() - rowInset;
  const auto put = [&](QWidget& part, double wide, double high, double lift = 0) {
    end -= wide;
    part.setGeometry(fromStart(*this, end, (height() - high) / 2 - lift, wide, high).toRect());
  };
  // Its words end where the text of the page does; without it its room stays, so that sliders stand in line.
  const auto reset = reset_->sizeHint();
  put(*reset_, reset.width(), reset.height());
  end -= theme().scaled(figureRoom) + partGap;
  put(*slider_, isNarrow_ ? narrowSlider : sliderRoom, slider_->sizeHint().height());
  const auto mute = mute_->sizeHint();
  end -= partGap / 2;
  put(*mute_, mute.width(), mute.height(), muteLift);
  update();
}

void SoundRow::draw(QPainter& painter) {
  ListRow::draw(painter);
  painter.setLayoutDirection(layoutDirection());
  const auto picture = fromStart(*this, rowInset, (height() - pictureSize) / 2, pictureSize, pictureSize);
  if (isOutput())
    drawMark(painter, picture, theme(), Icon::sound);
  else
    drawSoundPicture(painter, picture, theme(), pictures_, row_);
  const double mute = isRightToLeft() ? width() - mute_->geometry().right() : mute_->x();
  const double left = rowInset + nameLeft, room = std::max(0.0, mute - partGap - left);
  const auto name = text(row_.name), detail = text(row_.detail);
  const double wide = std::min(room, std::ceil(textWidth(theme(), TextStyle::body, name)));
  drawText(painter, fromStart(*this, left, 0, wide, height()), theme(), TextStyle::body, Token::text1, name);
  constexpr double leastDetail = 24;
  const double rest = room - wide - nameGap;
  if (!detail.isEmpty() && rest >= leastDetail)
    drawText(painter, fromStart(*this, left + wide + nameGap, 0, rest, height()), theme(), TextStyle::small,
             Token::text3, detail);
  const double from =
      width() - rowInset - reset_->sizeHint().width() - partGap / 2 - theme().scaled(figureRoom);
  const auto box = fromStart(*this, from, 0, theme().scaled(figureRoom), height());
  if (row_.isMuted) {
    drawText(painter, box, theme(), TextStyle::small, Token::text3, text(localized("muted")), Qt::AlignRight);
    return;
  }
  const FigureText figure(theme(), TextStyle::strong, {std::to_string(row_.percent), "%"});
  const double line = lineHeight(theme(), TextStyle::strong);
  const double at = isRightToLeft() ? box.left() : box.right() - figure.width();
  figure.draw(painter, {at, baseline(theme(), TextStyle::strong, box.center().y() - line / 2)},
              theme().color(Token::text1), theme().color(Token::text2));
}

} // namespace korvell
