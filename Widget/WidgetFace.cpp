#include "Widget/WidgetFace.h"

#include "Base/Localization.h"
#include "UI/Kit/Paint.h"

#include <QStyle>

namespace korvell {

namespace {

QSizeF plainSize(WidgetSize size) {
  switch (size) {
  case WidgetSize::large:
    return {340, 376};
  case WidgetSize::medium:
    return {340, 164};
  case WidgetSize::small:
    break;
  }
  return {164, 164};
}

} // namespace

WidgetFace::WidgetFace(const Theme& theme, WidgetPart::Open open, QWidget* parent)
    : Painted(theme, parent), open_(std::move(open)) {
  setName("Korvell");
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  build();
}

void WidgetFace::setSize(WidgetSize size) {
  if (size == size_) return;
  size_ = size;
  build();
}

void WidgetFace::show(const WidgetPage& page) {
  if (page == page_) return;
  page_ = page;
  build();
}

QSize WidgetFace::sizeHint() const {
  const auto size = plainSize(size_);
  return {theme().scaled(size.width()), theme().scaled(size.height())};
}

void WidgetFace::draw(QPainter& painter) {
  drawRounded(painter, rect(), cornerRadius, theme().color(Token::surface), theme().color(Token::hairline));
}

void WidgetFace::resizeEvent(QResizeEvent*) { place(); }

void WidgetFace::changeEvent(QEvent* event) {
  if (event->type() == QEvent::LayoutDirectionChange) place();
  Painted::changeEvent(event);
}

void WidgetFace::themeChanged() {
  Painted::themeChanged();
  place();
}

template <class Part>
Part& WidgetFace::add(const QRectF& box) {
  auto part = std::make_unique<Part>(theme(), open_, this);
  auto& made = *part;
  parts_.push_back({std::move(part), box});
  return made;
}

void WidgetFace::label(const QRectF& box, TextStyle style, Token token, std::string_view words,
                       Qt::Alignment alignment, int lines) {
  auto label = std::make_unique<TextLabel>(theme(), style, token, words, this);
  label->setAlignment(alignment);
  label->setAttribute(Qt::WA_TransparentForMouseEvents);
  if (lines > 1) label->setWrapped(lines);
  parts_.push_back({std::move(label), box});
}

// A new document comes once a minute at most: the parts are made anew rather than brought up to date. Who has
// the keyboard's focus keeps it by its place.
void WidgetFace::build() {
  std::optional<std::size_t> focused;
  for (std::size_t i = 0; i < parts_.size(); ++i)
    if (parts_[i].widget->hasFocus()) focused = i;
  parts_.clear();
  if (page_.state == WidgetPage::State::stopped) {
    buildStopped();
  } else if (size_ == WidgetSize::small) {
    auto& ring = add<RingPart>({1, 1, 162, 162});
    ring.setForm({110, 10, 40});
    ring.setScore(page_.score);
    ring.setLabel(page_.asOf.empty() ? page_.label : page_.asOf,
                  page_.asOf.empty() ? Token::text2 : Token::warning);
    ring.setName(page_.asOf.empty() ? page_.spoken : page_.spoken + " " + page_.asOf);
    ring.setLink(page_.overviewLink);
  } else {
    buildHeader(size_ == WidgetSize::medium);
    if (size_ == WidgetSize::large) {
      buildTiles();
      buildApps();
    }
  }
  place();
  for (const auto& part : parts_) part.widget->setVisible(true);
  if (focused && *focused < parts_.size()) parts_[*focused].widget->setFocus(Qt::OtherFocusReason);
  updateGeometry();
  update();
}

void WidgetFace::buildHeader(bool hasDetail) {
  const bool medium = size_ == WidgetSize::medium;
  auto& ring = add<RingPart>(medium ? QRectF(12, 24, 116, 116) : QRectF(14, 14, 96, 96));
  ring.setForm(medium ? RingPart::Form{105, 9, 36} : RingPart::Form{84, 8, 28});
  ring.setScore(page_.score);
  ring.setName(page_.spoken);
  ring.setLink(page_.overviewLink);
  const double left = medium ? 144 : 118, right = medium ? 322 : 326;
  const double top = medium ? 25 : 20;
  label({left, top, page_.asOf.empty() ? right - left : 100, 20}, TextStyle::sub, Token::text1, page_.label);
  if (!page_.asOf.empty())
    label({left + 104, top + 3, right - left - 106, 14}, TextStyle::caption, Token::warning, page_.asOf,
          Qt::AlignRight);
  const double pitch = hasDetail ? 33 : 24, height = hasDetail ? 32 : 24;
  double row = hasDetail ? 52 : 43;
  for (const auto& fix : page_.fixes) {
    add<FixPart>({left - 2, row, right + 2 - (left - 2), height}).setFix(fix, hasDetail);
    row += pitch;
  }
  if (page_.fixes.empty() && page_.state == WidgetPage::State::shown) {
    auto tick = std::make_unique<IconLabel>(theme(), Icon::checkCircle, 16, Token::good, this);
    tick->setAttribute(Qt::WA_TransparentForMouseEvents);
    parts_.push_back({std::move(tick), {left, row + 4, 16, 16}});
    label({left + 22, row + 4, right - left - 22, 16}, TextStyle::small, Token::text1,
          localized("Nothing to fix"));
  }
}

void WidgetFace::buildTiles() {
  for (std::size_t i = 0; i < page_.tiles.size(); ++i)
    add<TilePart>({i % 2 == 0 ? 16.0 : 174.0, i < 2 ? 128.0 : 194.0, 150, 58}).setTile(page_.tiles[i]);
}

void WidgetFace::buildApps() {
  if (page_.apps.empty()) return;
  label({16, 269, 308, 16}, TextStyle::smallMedium, Token::text2, localized("Top apps by memory"));
  double row = 289.5;
  for (const auto& app : page_.apps) {
    auto& part = add<AppPart>({12, row, 316, 25});
    part.setApp(app);
    part.setLink(page_.memoryLink);
    row += 25;
  }
}

void WidgetFace::buildStopped() {
  const auto size = plainSize(size_);
  const double top = (size.height() - 124) / 2 + 4;
  auto clock = std::make_unique<IconLabel>(theme(), Icon::clock, 20, Token::warningMark, this);
  clock->setAttribute(Qt::WA_TransparentForMouseEvents);
  parts_.push_back({std::move(clock), {size.width() / 2 - 10, top + 14, 20, 20}});
  const double inset = 12, wide = size.width() - 2 * inset;
  label({inset, top + 46, wide, 18}, TextStyle::strong, Token::text1, page_.asOf, Qt::AlignHCenter);
  const bool narrow = size_ == WidgetSize::small;
  label({narrow ? 30 : inset, top + 68, narrow ? size.width() - 60 : wide, 32}, TextStyle::small,
        Token::text2, localized("Korvell is not running."), Qt::AlignHCenter, 2);
  auto& open = add<OpenPart>({});
  const auto scale = theme().look().textScale;
  const QSizeF wanted = QSizeF(open.sizeHint()) / scale;
  parts_.back().box = {(size.width() - wanted.width()) / 2, top + (narrow ? 102 : 94), wanted.width(), 26};
}

void WidgetFace::place() {
  const auto scale = theme().look().textScale;
  for (const auto& [widget, box] : parts_) {
    const QRect scaled = QRectF(box.topLeft() * scale, box.size() * scale).toRect();
    widget->setGeometry(QStyle::visualRect(layoutDirection(), rect(), scaled));
  }
}

} // namespace korvell
