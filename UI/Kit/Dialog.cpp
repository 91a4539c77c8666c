#include "UI/Kit/Dialog.h"

#include "Base/Localization.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>

#include <algorithm>
#include <utility>

namespace korvell {

namespace {

constexpr int boxWidth = 460;
constexpr int windowMargin = 16;
constexpr int padding = 24;
constexpr int iconSize = 24;
constexpr int iconGap = 14;

/// Lines of paths or names on a ground of their own.
QWidget* makeWell(const Theme& theme, const Question& question, QWidget* parent) {
  auto* well = new Plate(theme, {Token::bg, std::nullopt, 7}, parent);
  auto* lines = new QVBoxLayout(well);
  lines->setContentsMargins(12, 8, 12, 8);
  lines->setSpacing(4);
  for (const auto& each : question.well) {
    auto* line = new TextLabel(theme, TextStyle::body, Token::text1, each, well);
    line->setElide(Qt::ElideMiddle);
    lines->addWidget(line);
  }
  if (!question.more.empty())
    lines->addWidget(new TextLabel(theme, TextStyle::body, Token::text2, question.more, well));
  return well;
}

QString spokenText(const Question& question) {
  QStringList pieces;
  auto add = [&](const std::string& piece) {
    if (!piece.empty()) pieces << text(piece);
  };
  add(question.text);
  for (const auto& line : question.well) add(line);
  add(question.more);
  add(question.note);
  return pieces.join(' ');
}

} // namespace

Dialog& Dialog::ask(const Theme& theme, Question question, QWidget& window,
                    std::function<void(bool)> answered) {
  if (auto* open = of(window)) open->answer(false);
  return *new Dialog(theme, std::move(question), window, false, std::move(answered));
}

Dialog& Dialog::fill(const Theme& theme, Question question, QWidget& window,
                     std::function<void(bool)> answered) {
  return *new Dialog(theme, std::move(question), window, true, std::move(answered));
}

Dialog* Dialog::of(const QWidget& window) {
  for (auto* child : window.children())
    if (auto* dialog = dynamic_cast<Dialog*>(child); dialog && dialog->answered_) return dialog;
  return nullptr;
}

Dialog::Dialog(const Theme& theme, Question question, QWidget& window, bool fills,
               std::function<void(bool)> answered)
    : Painted(theme, &window), fills_(fills), answered_(std::move(answered)), before_(window.focusWidget()) {
  if (!answered_) answered_ = [](bool) {};
  setName(question.title);
  setAccessibleDescription(spokenText(question));
  build(question);
  window.installEventFilter(this);
  arrange();
  raise();
  show();
  // As if by Tab, also when the window comes to the front only later: what Return would press has to be seen.
  cancel_->setFocus(Qt::TabFocusReason);
  if (!FocusRing::isShown(*cancel_)) FocusRing::show(*cancel_, 6, theme);
}

void Dialog::build(const Question& question) {
  const Plate::Form boxed{Token::raised, Token::hairline, 12}, plain{Token::raised, std::nullopt, 0};
  box_ = new Plate(theme(), fills_ ? plain : boxed, this);
  auto* whole = new QVBoxLayout(box_);
  whole->setContentsMargins(0, 0, 0, 0);
  whole->setSpacing(0);

  auto* top = new QHBoxLayout;
  top->setContentsMargins(padding, padding - 3, padding, padding - 2);
  top->setSpacing(iconGap);
  if (question.icon) {
    auto ink = question.permanent ? Token::critical : Token::accent;
    top->addWidget(new IconLabel(theme(), *question.icon, iconSize, ink, box_), 0, Qt::AlignTop);
  }
  auto* words = new QVBoxLayout;
  words->setSpacing(10);
  auto addText = [&](const std::string& piece, TextStyle style) {
    if (piece.empty()) return;
    auto* label = new TextLabel(theme(), style, Token::text1, piece, box_);
    label->setWrapped();
    words->addWidget(label);
  };
  words->addSpacing(2);
  addText(question.title, TextStyle::sub);
  words->addSpacing(2);
  addText(question.text, TextStyle::body);
  if (!question.well.empty()) words->addWidget(makeWell(theme(), question, box_));
  addText(question.note, TextStyle::body);
  top->addLayout(words, 1);

  cancel_ = new Button(theme(), Button::Kind::plain,
                       question.cancel.empty() ? localized("Cancel") : question.cancel, box_);
  action_ = new Button(theme(), question.permanent ? Button::Kind::danger : Button::Kind::primary,
                       question.action, box_);
  cancel_->onPress([this] { answer(false); });
  action_->onPress([this] { answer(true); });
  auto* buttons = new QHBoxLayout;
  buttons->setContentsMargins(padding, 16, padding, 16);
  buttons->setSpacing(12);
  buttons->addStretch();
  for (auto* button : {cancel_, action_}) {
    button->setHeight(Button::Height::tall);
    buttons->addWidget(button);
  }
  whole->addLayout(top);
  whole->addWidget(new Hairline(theme(), box_));
  whole->addLayout(buttons);
}

void Dialog::arrange() {
  setGeometry(parentWidget()->rect());
  if (fills_) return box_->setGeometry(rect());
  auto width = std::min(theme().scaled(boxWidth), this->width() - 2 * windowMargin);
  // What two long words need is given, as far as the window goes.
  width = std::max(width, std::min(box_->minimumSizeHint().width(), this->width()));
  auto height = std::min(box_->heightForWidth(width), this->height());
  // A little above the middle, where eyes are.
  auto top = std::max(0, (this->height() - height) * 45 / 100);
  box_->setGeometry((this->width() - width) / 2, top, width, height);
}

QSize Dialog::sizeHint() const {
  const int width = std::max(theme().scaled(boxWidth), box_->minimumSizeHint().width());
  return {width, box_->heightForWidth(width)};
}

void Dialog::answer(bool yes) {
  auto answered = std::exchange(answered_, nullptr);
  if (!answered) return;
  hide();
  if (before_) before_->setFocus(Qt::OtherFocusReason);
  deleteLater();
  answered(yes);
}

void Dialog::draw(QPainter& painter) {
  if (fills_) return;
  auto scrim = theme().isDark() ? QColor(0, 0, 0) : colorOf(Token::text1, Appearance::light);
  scrim.setAlphaF(theme().isDark() ? 0.55F : 0.28F);
  painter.fillRect(rect(), scrim);
}

bool Dialog::event(QEvent* event) {
  // The window's own shortcuts wait until the question is answered.
  if (event->type() == QEvent::ShortcutOverride) {
    event->accept();
    return true;
  }
  if (event->type() == QEvent::LayoutRequest) arrange();
  return Painted::event(event);
}

bool Dialog::eventFilter(QObject*, QEvent* event) {
  if (event->type() == QEvent::Resize) arrange();
  return false;
}

bool Dialog::focusNextPrevChild(bool) {
  (cancel_->hasFocus() ? action_ : cancel_)->setFocus(Qt::TabFocusReason);
  return true;
}

void Dialog::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
  case Qt::Key_Escape:
    answer(false);
    break;
  case Qt::Key_Left:
  case Qt::Key_Right:
    focusNextPrevChild(true);
    break;
  default:
    break; // nothing reaches the window behind
  }
  event->accept();
}

void Dialog::mousePressEvent(QMouseEvent* event) { event->accept(); }

} // namespace korvell
