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

PanelSounds::PanelSounds(const Theme& theme, PanelSound::Handlers handlers, QWidget* parent)
    : QWidget(parent), theme_(theme), handlers_(std::move(handlers)), column_(bare<QVBoxLayout>(this)) {
  column_->addSpacing(12);
  auto* head = new QHBoxLayout;
  head->setContentsMargins(rowOutset, 0, rowOutset, 4);
  head->addWidget(new TextLabel(theme_, TextStyle::head, Token::text1, title(SidebarItem::sound), this));
  column_->addLayout(head);
  hide();
}

bool PanelSounds::isInUse() const {
  const auto* focused = window()->focusWidget();
  return underMouse() || (focused && focused->hasFocus() && isAncestorOf(focused));
}

PanelSound* PanelSounds::rowOf(const std::string& app) {
  if (const auto known = std::ranges::find(rows_, app, &PanelSound::key); known != rows_.end()) return *known;
  auto* row = new PanelSound(theme_, handlers_, this);
  row->setPictures(pictures_);
  return row;
}

void PanelSounds::show(std::vector<SoundPage::Row> rows) {
  std::vector<std::string> before;
  for (const auto* row : rows_) before.push_back(row->key());
  if (isInUse()) keepOrder(rows, before);
  std::vector<PanelSound*> shown;
  for (const auto& row : rows) {
    shown.push_back(rowOf(row.key));
    shown.back()->show(row);
  }
  if (shown != rows_) {
    for (auto* row : std::exchange(rows_, shown))
      if (!std::ranges::count(shown, row)) {
        row->hide();
        row->deleteLater();
      }
    for (auto* row : shown) {
      column_->addWidget(row);
      row->QWidget::show();
    }
  }
  setVisible(!rows.empty());
}

void PanelSounds::setPictures(Pictures& pictures) {
  pictures_ = &pictures;
  for (auto* row : rows_) row->setPictures(pictures_);
  arrivals_ = pictures.observe([this] { update(); });
}

} // namespace korvell
