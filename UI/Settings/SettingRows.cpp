#include "UI/Settings/SettingRows.h"

#include "UI/Kit/Icons.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/ListParts.h"

namespace korvell {

namespace {

constexpr int rowHeight = 47, rowPadding = 9, lowRowHeight = 39, lowRowPadding = 6;
constexpr int textPadding = 3, lineGap = 2, controlGap = 16;
constexpr int markSize = 14, markGap = 6;

TextLabel* makeLabel(const Theme& theme, TextStyle style, Token token, QWidget* parent) {
  auto* label = new TextLabel(theme, style, token, "", parent);
  label->setWrapped();
  return label;
}

void put(TextLabel& label, std::string_view words) {
  label.setWords(words);
  label.setVisible(!words.empty());
}

} // namespace

SettingRow::SettingRow(const Theme& theme, std::string_view title, QWidget* parent)
    : QWidget(parent), line_(bare<QHBoxLayout>(this)),
      title_(makeLabel(theme, TextStyle::body, Token::text1, this)), more_(new QWidget(this)),
      detail_(makeLabel(theme, TextStyle::small, Token::text2, more_)),
      outcome_(makeLabel(theme, TextStyle::small, Token::text1, more_)), warning_(new QWidget(more_)),
      trouble_(makeLabel(theme, TextStyle::small, Token::warning, warning_)) {
  auto* warning = bare<QHBoxLayout>(warning_);
  warning->setSpacing(markGap);
  auto* mark = new IconLabel(theme, lookOf(Tone::warning).icon, markSize, Token::warningMark, warning_);
  warning->addWidget(mark, 0, Qt::AlignTop);
  warning->addWidget(trouble_, 1);
  auto* more = bare<QVBoxLayout>(more_);
  more->setSpacing(lineGap);
  for (QWidget* each : {static_cast<QWidget*>(detail_), static_cast<QWidget*>(outcome_), warning_})
    more->addWidget(each);
  auto* words = new QVBoxLayout;
  words->setSpacing(0);
  words->setContentsMargins(0, textPadding, 0, textPadding);
  words->addStretch(1);
  words->addWidget(title_);
  words->addWidget(more_);
  words->addStretch(1);
  line_->setContentsMargins(0, rowPadding, 0, rowPadding); // a control needs less room than text
  line_->setSpacing(controlGap);
  line_->addLayout(words, 1);
  setMinimumHeight(theme.scaled(rowHeight));
  setTitle(title);
  tell({}, {}, {});
}

void SettingRow::addControl(QWidget& control) {
  line_->addWidget(&control, 0, Qt::AlignVCenter | Qt::AlignTrailing);
}

void SettingRow::setLow(const Theme& theme) {
  line_->setContentsMargins(0, lowRowPadding, 0, lowRowPadding);
  setMinimumHeight(theme.scaled(lowRowHeight));
}

void SettingRow::addWide(QWidget& control) { line_->addWidget(&control, 2); }

void SettingRow::setTitle(std::string_view title) { put(*title_, title); }

void SettingRow::tell(std::string_view detail, std::string_view outcome, std::string_view trouble) {
  put(*detail_, detail);
  put(*outcome_, outcome);
  put(*trouble_, trouble);
  warning_->setVisible(!trouble.empty());
  more_->setVisible(!detail.empty() || !outcome.empty() || !trouble.empty());
  more_->layout()->setContentsMargins(0, title_->words().isEmpty() ? 0 : lineGap, 0, 0);
}

void SettingRow::setQuiet(bool isQuiet) { title_->setToken(isQuiet ? Token::text3 : Token::text1); }

SettingSwitch::SettingSwitch(const Theme& theme, QWidget* parent, std::function<void(bool)> handler)
    : SettingRow(theme, "", parent), toggle_(new Toggle(theme, "", this)) {
  addControl(*toggle_);
  toggle_->onToggle(std::move(handler));
}

void SettingSwitch::show(const SettingsPage::Switch& state) {
  toggle_->setOn(state.isOn); // also when the user has moved it and nothing came of that
  if (shown_ == state) return;
  shown_ = state;
  setTitle(state.title);
  tell(state.detail, {}, state.trouble);
  setQuiet(!state.canChange);
  toggle_->setName(state.title);
  toggle_->setEnabled(state.canChange);
}

void tellLayouts(QWidget& widget) {
  const auto inside = widget.findChildren<QWidget*>();
  for (auto each = inside.crbegin(); each != inside.crend(); ++each)
    if (auto* layout = (*each)->layout()) layout->activate();
  if (auto* layout = widget.layout()) layout->activate();
}

void setWords(Button& button, const std::string& words) {
  if (button.words() != text(words)) button.setWords(words);
}

} // namespace korvell
