#include "UI/Kit/Dialog.h"

#include "Base/Localization.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Scroll.h"
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
constexpr int edge = 12; ///< the box's rounded corners, which nothing that scrolls may cover

/// Lines of paths or names on a ground of their own.
QWidget* makeWell(const Theme& theme, const Passage& passage, QWidget* parent) {
  auto* well = new Plate(theme, {Token::bg, std::nullopt, 7}, parent);
  auto* lines = new QVBoxLayout(well);
  lines->setContentsMargins(12, 8, 12, 8);
  lines->setSpacing(4);
  for (const auto& each : passage.well) {
    auto* line = new TextLabel(theme, TextStyle::body, Token::text1, each, well);
    line->setElide(Qt::ElideMiddle);
    lines->addWidget(line);
  }
  if (!passage.more.empty())
    lines->addWidget(new TextLabel(theme, TextStyle::body, Token::text2, passage.more, well));
  return well;
}

QString spokenText(const Question& question) {
  QStringList pieces;
  auto add = [&](const std::string& piece) {
    if (!piece.empty()) pieces << text(piece);
  };
  for (const auto& passage : question.passages) {
    add(passage.text);
    for (const auto& line : passage.well) add(line);
    add(passage.more);
    add(passage.note);
  }
  return pieces.join(' ');
}

std::optional<QAbstractSlider::SliderAction> scrollOf(int key) {
  constexpr std::pair<Qt::Key, QAbstractSlider::SliderAction> actions[] = {
      {Qt::Key_Up, QAbstractSlider::SliderSingleStepSub},
      {Qt::Key_Down, QAbstractSlider::SliderSingleStepAdd},
      {Qt::Key_PageUp, QAbstractSlider::SliderPageStepSub},
      {Qt::Key_PageDown, QAbstractSlider::SliderPageStepAdd}};
  for (const auto& [each, action] : actions)
    if (each == key) return action;
  return std::nullopt;
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
  words_->installEventFilter(this);
  arrange();
  raise();
  show();
  // As if by Tab, also when the window comes to the front only later: what Return would press has to be seen.
  cancel_->setFocus(Qt::TabFocusReason);
  if (!FocusRing::isShown(*cancel_)) FocusRing::show(*cancel_, 6, theme);
}

void Dialog::build(const Question& question) {
  const Plate::Form boxed{Token::raised, Token::hairline, edge}, plain{Token::raised, std::nullopt, 0};
  box_ = new Plate(theme(), fills_ ? plain : boxed, this);
  auto* whole = new QVBoxLayout(box_);
  whole->setContentsMargins(1, edge, 1, 0);
  whole->setSpacing(0);
  scroll_ = new ScrollArea(theme(), Token::raised, box_);
  words_ = buildWords(question);
  scroll_->setContent(*words_);
  scroll_->setMinimumHeight(1); // the buttons come first
  answers_ = buildAnswers(question);
  whole->addWidget(scroll_, 1);
  whole->addWidget(new Hairline(theme(), box_));
  whole->addWidget(answers_);
}

QWidget* Dialog::buildWords(const Question& question) {
  auto* all = new QWidget(box_);
  auto* top = new QHBoxLayout(all);
  top->setContentsMargins(padding - 1, padding - 3 - edge, padding - 1, padding - 2);
  top->setSpacing(iconGap);
  if (question.icon) {
    auto ink = question.permanent ? Token::critical : Token::accent;
    top->addWidget(new IconLabel(theme(), *question.icon, iconSize, ink, all), 0, Qt::AlignTop);
  }
  auto* words = new QVBoxLayout;
  words->setSpacing(10);
  auto addText = [&](const std::string& piece, TextStyle style) {
    if (piece.empty()) return;
    auto* label = new TextLabel(theme(), style, Token::text1, piece, all);
    label->setWrapped();
    words->addWidget(label);
  };
  words->addSpacing(2);
  addText(question.title, TextStyle::sub);
  words->addSpacing(2);
  for (const auto& passage : question.passages) {
    if (&passage != &question.passages.front()) words->addSpacing(8);
    addText(passage.text, TextStyle::body);
    if (!passage.well.empty()) words->addWidget(makeWell(theme(), passage, all));
    addText(passage.note, TextStyle::body);
  }
  top->addLayout(words, 1);
  return all;
}

QWidget* Dialog::buildAnswers(const Question& question) {
  auto* all = new QWidget(box_);
  all->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  cancel_ = new Button(theme(), Button::Kind::plain,
                       question.cancel.empty() ? localized("Cancel") : question.cancel, all);
  action_ = new Button(theme(), question.permanent ? Button::Kind::danger : Button::Kind::primary,
                       question.action, all);
  cancel_->onPress([this] { answer(false); });
  action_->onPress([this] { answer(true); });
  auto* buttons = new QHBoxLayout(all);
  buttons->setContentsMargins(padding - 1, 16, padding - 1, 16);
  buttons->setSpacing(12);
  buttons->addStretch();
  for (auto* button : {cancel_, action_}) {
    button->setHeight(Button::Height::tall);
    buttons->addWidget(button);
  }
  return all;
}

int Dialog::leastWidth() const {
  return std::max(words_->minimumSizeHint().width(), answers_->minimumSizeHint().width()) + 2;
}

/// Of all that it says, which scrolls where the window is lower.
int Dialog::heightFor(int width) const {
  return edge + words_->heightForWidth(width - 2) + 1 + answers_->sizeHint().height();
}

void Dialog::arrange() {
  setGeometry(parentWidget()->rect());
  if (fills_) return box_->setGeometry(rect());
  auto width = std::min(theme().scaled(boxWidth), this->width() - 2 * windowMargin);
  // What two long words need is given, as far as the window goes.
  width = std::max(width, std::min(leastWidth(), this->width()));
  const auto whole = heightFor(width), height = std::min(whole, this->height());
  // Left to itself a bar that was needed once stays: beside it the words need more room than there is.
  scroll_->setVerticalScrollBarPolicy(whole > height ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
  // A little above the middle, where eyes are.
  auto top = std::max(0, (this->height() - height) * 45 / 100);
  box_->setGeometry((this->width() - width) / 2, top, width, height);
}

QSize Dialog::sizeHint() const {
  const int width = std::max(theme().scaled(boxWidth), leastWidth());
  return {width, heightFor(width)};
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

bool Dialog::eventFilter(QObject* object, QEvent* event) {
  // Of what scrolls the box learns nothing by itself.
  if (event->type() == (object == words_ ? QEvent::LayoutRequest : QEvent::Resize)) arrange();
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
  default: // nothing reaches the window behind
    if (const auto action = scrollOf(event->key())) scroll_->verticalScrollBar()->triggerAction(*action);
  }
  event->accept();
}

void Dialog::mousePressEvent(QMouseEvent* event) { event->accept(); }

} // namespace korvell
