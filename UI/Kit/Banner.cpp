#include "UI/Kit/Banner.h"

#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <QBoxLayout>
#include <QEvent>

namespace korvell {

namespace {

constexpr double radius = 8;
constexpr int markSize = 18;

} // namespace

Banner::Banner(const Theme& theme, QWidget* parent)
    : Painted(theme, parent), row_(new QHBoxLayout(this)),
      mark_(new IconLabel(theme, lookOf(tone_).icon, markSize, lookOf(tone_).mark, this)),
      sentence_(new TextLabel(theme, TextStyle::body, Token::text1, {}, this)),
      detail_(new TextLabel(theme, TextStyle::small, Token::text2, {}, this)),
      button_(new Button(theme, Button::Kind::plain, {}, this)) {
  sentence_->setWrapped();
  detail_->setWrapped();
  auto* words = new QVBoxLayout;
  words->setSpacing(0);
  words->addWidget(sentence_);
  words->addWidget(detail_);
  row_->setContentsMargins(16, 14, 16, 14);
  row_->setSpacing(12);
  row_->addWidget(mark_, 0, Qt::AlignTop);
  row_->addLayout(words, 1);
  row_->addWidget(button_, 0, Qt::AlignVCenter);
  QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
  button_->hide();
  hide();
}

void Banner::say(Tone tone, std::string_view sentence, std::string_view detail) {
  tone_ = tone;
  mark_->setTone(tone);
  sentence_->setStyle(detail.empty() ? TextStyle::body : TextStyle::strong);
  sentence_->setWords(sentence);
  detail_->setWords(detail);
  detail_->setVisible(!detail.empty());
  button_->hide();
  setName(detail.empty() ? std::string(sentence) : std::string(sentence) + " " + std::string(detail));
  update();
  if (!isVisible()) return show(); // which tells
  QAccessibleEvent shown(this, QAccessible::ObjectShow);
  QAccessible::updateAccessibility(&shown);
}

void Banner::offer(std::string_view words, std::function<void()> handler, Button::Kind kind) {
  button_->setKind(kind);
  button_->setWords(words);
  button_->onPress(std::move(handler));
  button_->show();
}

bool Banner::event(QEvent* event) {
  auto handled = Painted::event(event);
  // As high as its words in this width: room to spare belongs to what stands below.
  if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest)
    setMaximumHeight(row_->heightForWidth(width()));
  return handled;
}

void Banner::dismiss() { hide(); }

void Banner::draw(QPainter& painter) {
  auto wash = theme().color(lookOf(tone_).wash);
  if (theme().look().highContrast)
    drawRounded(painter, rect(), radius, wash, theme().color(Token::border));
  else
    fillRounded(painter, rect(), radius, wash);
}

} // namespace korvell
