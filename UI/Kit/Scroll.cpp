#include "UI/Kit/Scroll.h"

namespace korvell {

namespace {

QString sheet(const Theme& theme, Token ground) {
  auto name = [&](Token token) { return theme.color(token).name(); };
  return QString("QScrollBar { background: %1; border: none; margin: 0; }"
                 "QScrollBar:vertical { width: 12px; }"
                 "QScrollBar:horizontal { height: 12px; }"
                 "QScrollBar::handle { background: %2; border-radius: 3px; margin: 3px; }"
                 "QScrollBar::handle:vertical { min-height: 36px; }"
                 "QScrollBar::handle:horizontal { min-width: 36px; }"
                 "QScrollBar::handle:hover, QScrollBar::handle:pressed { background: %3; }"
                 "QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }"
                 "QScrollBar::add-page, QScrollBar::sub-page { background: none; }")
      .arg(name(ground), name(Token::edge), name(Token::border));
}

} // namespace

void dressScrollBar(QScrollBar& bar, const Theme& theme, Token ground) {
  bar.setStyleSheet(sheet(theme, ground));
}

ScrollArea::ScrollArea(const Theme& theme, Token ground, QWidget* parent)
    : QScrollArea(parent), theme_(theme), ground_(ground) {
  setFrameShape(QFrame::NoFrame);
  setWidgetResizable(true);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFocusPolicy(Qt::NoFocus);
  dress();
  connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, [this] {
    if (wanted_) scrollTo(*wanted_);
  });
  connect(verticalScrollBar(), &QScrollBar::actionTriggered, this, [this] { wanted_.reset(); });
  themeSubscription_ = theme.observe([this] { dress(); });
}

void ScrollArea::setContent(QWidget& content) {
  content.setAutoFillBackground(false);
  setWidget(&content);
}

void ScrollArea::scrollTo(int top) {
  wanted_ = top;
  verticalScrollBar()->setValue(top);
  if (verticalScrollBar()->maximum() >= top) wanted_.reset();
}

void ScrollArea::dress() {
  dressScrollBar(*verticalScrollBar(), theme_, ground_);
  auto colors = viewport()->palette();
  colors.setColor(QPalette::Window, theme_.color(ground_));
  viewport()->setPalette(colors);
  viewport()->setAutoFillBackground(true);
}

} // namespace korvell
