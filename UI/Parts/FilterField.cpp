#include "UI/Parts/FilterField.h"

#include "Base/Localization.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/PageLayout.h"

#include <QEvent>
#include <QKeySequence>

namespace korvell {

namespace {

constexpr int usualWidth = 200, keysGap = 8;

} // namespace

FilterField::FilterField(const Theme& theme, QWidget* parent)
    : TextField(theme, localized("Filter"), localized("Filter"), parent),
      keys_(new TextLabel(theme, TextStyle::small, Token::text3,
                          utf8(QKeySequence(QKeySequence::Find).toString(QKeySequence::NativeText)), this)) {
  setSearch();
  auto* line = bare<QHBoxLayout>(this);
  line->setContentsMargins(keysGap, 0, keysGap, 0);
  line->addWidget(keys_, 0, Qt::AlignRight | Qt::AlignVCenter);
  keys_->setAttribute(Qt::WA_TransparentForMouseEvents);
  setFixedWidth(theme.scaled(usualWidth));
  mirror();
}

/// The toolkit goes by the words' direction: in a window of the other one they would lie over the keys.
void FilterField::mirror() {
  setAlignment(Qt::AlignAbsolute | Qt::AlignVCenter | (isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft));
}

void FilterField::changeEvent(QEvent* event) {
  if (event->type() == QEvent::LayoutDirectionChange) mirror();
  TextField::changeEvent(event);
}

void FilterField::take() {
  if (isVisible()) setFocus(Qt::ShortcutFocusReason);
}

void FilterField::onFilter(std::function<void(std::string)> handler) {
  onChange([this, handler = std::move(handler)](std::string words) {
    keys_->setVisible(words.empty());
    handler(std::move(words));
  });
}

} // namespace korvell
