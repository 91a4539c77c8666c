#include "UI/Panel/PanelSound.h"

#include "Base/Localization.h"
#include "UI/Kit/Figure.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/ListParts.h"
#include "UI/Parts/PartViews.h"
#include "UI/Sound/SoundRows.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr double pictureSize = 20, nameGap = 10, valueRoom = 52, muteGap = 4;

} // namespace

PanelSound::PanelSound(const Theme& theme, const Handlers& handlers, QWidget* parent)
    : Control(theme, parent), handlers_(handlers), mute_(new IconButton(theme, Icon::sound, "", this)) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  mute_->setIconSize(18);
  mute_->onPress([this] { handlers_.mute(row_.key, !row_.isMuted); });
}

void PanelSound::show(const SoundPage::Row& row) {
  if (row == row_) return;
  row_ = row;
  setName(row.spoken);
  setToolTip(text(row.name));
  showMute(*mute_, row);
  update();
}

void PanelSound::setPictures(Pictures* pictures) {
  pictures_ = pictures;
  update();
}

void PanelSound::resizeEvent(QResizeEvent*) {
  const auto size = mute_->sizeHint();
  constexpr double beyond = 4; // its icon ends where the text of the panel does
  mute_->setGeometry(fromStart(*this, width() - rowOutset + beyond - size.width(),
                               (height() - size.height()) / 2.0, size.width(), size.height())
                         .toRect());
}

void PanelSound::draw(QPainter& painter) {
  if (isHovered()) fillRounded(painter, rect(), corner(), theme().color(Token::hover));
  painter.setLayoutDirection(layoutDirection());
  const auto picture = fromStart(*this, rowOutset, (height() - pictureSize) / 2, pictureSize, pictureSize);
  drawSoundPicture(painter, picture, theme(), pictures_, row_);
  const double room = theme().scaled(valueRoom);
  const double value = width() - rowOutset - mute_->sizeHint().width() - muteGap - room;
  const double left = rowOutset + pictureSize + nameGap;
  drawText(painter, fromStart(*this, left, 0, std::max(0.0, value - nameGap - left), height()), theme(),
           TextStyle::body, Token::text1, text(row_.name));
  const auto box = fromStart(*this, value, 0, room, height());
  if (row_.isMuted)
    drawText(painter, box, theme(), TextStyle::small, Token::text3, text(localized("muted")), Qt::AlignRight);
  else
    drawText(painter, box, theme(), TextStyle::body, Token::text2,
             text(textOf(Figure{std::to_string(row_.percent), "%"})), Qt::AlignRight);
}

} // namespace korvell
