#include "UI/Kit/Native.h"

#include "UI/Kit/Focus.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Text.h"
#include "UI/Kit/Type.h"

#include <QApplication>
#include <QKeyEvent>
#include <QToolTip>

namespace korvell {

namespace {

constexpr int iconSize = 16;

QString menuSheet(const Theme& theme) {
  auto name = [&](Token token) { return theme.color(token).name(); };
  return QString(
             "QMenu { background: %1; color: %2; border: 1px solid %3; border-radius: 8px; padding: 4px; }"
             "QMenu::item { padding: 5px 24px 5px 10px; border-radius: 5px; }"
             "QMenu::item:selected { background: %4; }"
             "QMenu::item:disabled { color: %5; }"
             "QMenu::icon { padding-left: 8px; }"
             "QMenu::separator { height: 1px; background: %6; margin: 4px 10px; }")
      .arg(name(Token::raised), name(Token::text1), name(Token::edge), name(Token::accentWash),
           name(Token::text3), name(Token::hairline));
}

QString fieldSheet(const Theme& theme, bool isBare) {
  auto name = [&](Token token) { return theme.color(token).name(); };
  auto colors =
      QString("color: %1; selection-background-color: %2; selection-color: %3;")
          .arg(name(isBare ? Token::text2 : Token::text1), name(Token::accent), name(Token::accentInk));
  if (isBare) return "QLineEdit { background: transparent; border: none; padding: 0; " + colors + " }";
  return QString("QLineEdit { background: %1; border: 1px solid %2; border-radius: 6px; padding: 0 7px; %3 }"
                 "QLineEdit:focus { border-color: %4; }"
                 "QLineEdit:disabled { color: %5; }")
      .arg(name(Token::raised), name(Token::border), colors, name(Token::accent), name(Token::text3));
}

} // namespace

Menu::Menu(const Theme& theme, QWidget* parent) : QMenu(parent), theme_(theme) {
  setAttribute(Qt::WA_TranslucentBackground); // outside its round corners
  setWindowFlag(Qt::FramelessWindowHint);
  setWindowFlag(Qt::NoDropShadowWindowHint);
}

QAction& Menu::add(std::string_view words, std::function<void()> handler) {
  auto* action = addAction(text(words));
  connect(action, &QAction::triggered, this, [handler = std::move(handler)] { handler(); });
  return *action;
}

QAction& Menu::add(Icon icon, std::string_view words, std::function<void()> handler) {
  auto& action = add(words, std::move(handler));
  icons_.emplace_back(&action, icon);
  return action;
}

void Menu::showEvent(QShowEvent* event) {
  setFont(fontOf(theme_, TextStyle::body));
  setStyleSheet(menuSheet(theme_));
  for (auto [action, icon] : icons_)
    action->setIcon(iconPicture(icon, iconSize, theme_.color(Token::text2), devicePixelRatioF()));
  QMenu::showEvent(event);
}

TextField::TextField(const Theme& theme, std::string_view name, std::string_view hint, QWidget* parent)
    : QLineEdit(parent), theme_(theme) {
  setAccessibleName(korvell::text(name));
  setPlaceholderText(korvell::text(hint));
  wear();
  themeSubscription_ = theme.observe([this] { wear(); });
}

void TextField::setSearch() {
  search_ = addAction(QIcon(), QLineEdit::LeadingPosition);
  search_->setText(accessibleName()); // the toolkit makes a button of it, which a screen reader comes to
  connect(search_, &QAction::triggered, this, [this] { setFocus(Qt::MouseFocusReason); });
  wear();
}

void TextField::setSelectableOnly() {
  setReadOnly(true);
  wear();
}

void TextField::onChange(std::function<void(std::string)> handler) {
  connect(this, &QLineEdit::textChanged, this,
          [handler = std::move(handler)](const QString& now) { handler(utf8(now)); });
}

void TextField::wear() {
  setFont(fontOf(theme_, isReadOnly() ? TextStyle::small : TextStyle::body));
  setStyleSheet(fieldSheet(theme_, isReadOnly()));
  auto colors = palette();
  colors.setColor(QPalette::PlaceholderText, theme_.color(Token::text3));
  setPalette(colors);
  setMinimumHeight(theme_.scaled(isReadOnly() ? 24 : 28));
  if (search_)
    search_->setIcon(iconPicture(Icon::search, iconSize, theme_.color(Token::text3), devicePixelRatioF()));
}

void TextField::keyPressEvent(QKeyEvent* event) {
  if (search_ && event->key() == Qt::Key_Escape && !QLineEdit::text().isEmpty())
    clear();
  else
    QLineEdit::keyPressEvent(event);
}

void TextField::focusInEvent(QFocusEvent* event) {
  if (isKeyboard(event->reason())) FocusRing::show(*this, 6, theme_);
  QLineEdit::focusInEvent(event);
}

void TextField::focusOutEvent(QFocusEvent* event) {
  if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
    FocusRing::hide(*this);
  QLineEdit::focusOutEvent(event);
}

void setTooltipLook(const Theme& theme) {
  auto colors = QToolTip::palette();
  for (auto role : {QPalette::ToolTipBase, QPalette::Window})
    colors.setColor(role, theme.color(Token::raised));
  for (auto role : {QPalette::ToolTipText, QPalette::WindowText})
    colors.setColor(role, theme.color(Token::text1));
  QToolTip::setPalette(colors);
  QToolTip::setFont(fontOf(theme, TextStyle::small));
}

void setFrameLook(const Theme& theme) {
  QPalette colors(theme.color(Token::raised), theme.color(Token::bg)); // the others follow from these
  colors.setColor(QPalette::WindowText, theme.color(Token::text1));
  colors.setColor(QPalette::Disabled, QPalette::WindowText, theme.color(Token::text3));
  QApplication::setPalette(colors);
}

} // namespace korvell
