#include "UI/Kit/Choices.h"

#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <QKeyEvent>
#include <QStyle>

#include <algorithm>

namespace korvell {

/// One of the choices. Only the chosen one is a tab stop.
class Choices::Item : public Control {
public:
  Item(Choices& choices, std::string_view words) : Control(choices.theme(), &choices), choices_(choices) {
    setWords(words);
  }

  void setWords(std::string_view words) {
    words_ = text(words);
    setAccessibleName(words_);
    update();
  }

  QAccessible::Role role() const override { return QAccessible::RadioButton; }

  void settle() {
    setFocusPolicy(isChosen() ? Qt::StrongFocus : Qt::ClickFocus);
    update();
  }

protected:
  bool isChosen() const { return &choices_.item(choices_.chosen()) == this; }
  std::size_t index() const {
    auto found = std::find(choices_.items_.begin(), choices_.items_.end(), this);
    return static_cast<std::size_t>(found - choices_.items_.begin());
  }

  void pressed() override { choices_.pick(index(), Qt::MouseFocusReason); }

  void keyPressEvent(QKeyEvent* event) override {
    if (!choices_.key(index(), event->key())) Control::keyPressEvent(event);
  }

  void addStates(QAccessible::State& state) const override {
    state.selectable = true;
    state.selected = isChosen();
    state.checkable = role() == QAccessible::RadioButton;
    state.checked = state.checkable && isChosen();
  }

  QString words_;

private:
  Choices& choices_;
};

Choices::Choices(const Theme& theme, QWidget* parent) : Painted(theme, parent) {}

void Choices::add(Item& item) {
  items_.push_back(&item);
  item.settle();
}

void Choices::choose(std::size_t index) {
  if (index >= items_.size() || index == chosen_) return;
  auto& before = *items_[chosen_];
  chosen_ = index;
  before.settle();
  items_[index]->settle();
  QAccessible::State changed;
  changed.selected = true;
  tellStateChanged(*items_[index], changed);
}

void Choices::takeFocus(Qt::FocusReason reason) { items_[chosen_]->setFocus(reason); }

void Choices::pick(std::size_t index, Qt::FocusReason reason) {
  auto isNew = index != chosen_;
  choose(index);
  items_[index]->setFocus(reason);
  if (auto handler = handler_; handler && isNew) handler(index);
}

bool Choices::key(std::size_t from, int key) {
  auto last = items_.size() - 1;
  auto isMirrored = layoutDirection() == Qt::RightToLeft;
  auto forward = from == last ? 0 : from + 1;
  auto back = from == 0 ? last : from - 1;
  switch (key) {
  case Qt::Key_Right:
    pick(isMirrored ? back : forward, Qt::TabFocusReason);
    return true;
  case Qt::Key_Left:
    pick(isMirrored ? forward : back, Qt::TabFocusReason);
    return true;
  case Qt::Key_Down:
    pick(forward, Qt::TabFocusReason);
    return true;
  case Qt::Key_Up:
    pick(back, Qt::TabFocusReason);
    return true;
  case Qt::Key_Home:
    pick(0, Qt::TabFocusReason);
    return true;
  case Qt::Key_End:
    pick(last, Qt::TabFocusReason);
    return true;
  default:
    return false;
  }
}

// Segments

namespace {

constexpr double segmentPadding = 10;
constexpr int wellPadding = 2;

} // namespace

class Segments::Segment final : public Choices::Item, public Whole {
public:
  using Item::Item;

  /// In the heavier style of the chosen one, so that nothing moves when another one is.
  int naturalWidth() const {
    auto width = textWidth(theme(), TextStyle::smallStrong, words_) + 2 * segmentPadding;
    return std::max<int>(leastHit, qCeil(width));
  }
  QAccessible::Role role() const override { return QAccessible::PageTab; }
  std::optional<std::string> cutText() const override {
    if (naturalWidth() <= width()) return std::nullopt;
    return utf8(words_);
  }

protected:
  QRectF shape() const override { return QRectF(rect()).adjusted(0, wellPadding, 0, -wellPadding); }
  double corner() const override { return 5; }
  void draw(QPainter& painter) override {
    auto style = isChosen() ? TextStyle::smallStrong : TextStyle::small;
    auto ink = !isEnabled() ? Token::text3 : isChosen() || isHovered() ? Token::text1 : Token::text2;
    if (isChosen())
      drawRounded(painter, shape(), corner(), theme().color(Token::raised), theme().color(Token::border));
    drawText(painter, rect(), theme(), style, ink, words_, Qt::AlignHCenter);
  }
};

Segments::Segments(const Theme& theme, std::string_view name, const std::vector<std::string>& words,
                   QWidget* parent)
    : Choices(theme, parent) {
  setName(name);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  for (const auto& each : words) {
    segments_.push_back(new Segment(*this, each));
    add(*segments_.back());
  }
}

void Segments::setHeight(int height) {
  height_ = height;
  updateGeometry();
}

void Segments::setWords(const std::vector<std::string>& words) {
  for (std::size_t i = 0; i < std::min(words.size(), segments_.size()); ++i) segments_[i]->setWords(words[i]);
  themeChanged();
}

QSize Segments::sizeHint() const {
  auto width = 2 * wellPadding;
  for (const auto* segment : segments_) width += segment->naturalWidth();
  return {width, theme().scaled(height_)};
}

void Segments::draw(QPainter& painter) { fillRounded(painter, rect(), 7, theme().color(Token::sunken)); }

void Segments::resizeEvent(QResizeEvent*) { arrange(); }

void Segments::themeChanged() {
  Choices::themeChanged();
  arrange();
}

void Segments::changeEvent(QEvent* event) {
  if (event->type() == QEvent::LayoutDirectionChange) arrange();
  Choices::changeEvent(event);
}

void Segments::arrange() {
  auto x = wellPadding;
  for (auto* segment : segments_) {
    QRect place(x, 0, segment->naturalWidth(), height());
    segment->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
    x += place.width();
  }
}

// Radio tiles

namespace {

constexpr int pictureHeight = 52;
constexpr int tileGap = 12;
constexpr int wordsGap = 8;
constexpr int naturalTile = 120;

} // namespace

class RadioTiles::RadioTile final : public Choices::Item, public Whole {
public:
  RadioTile(Choices& choices, Tile tile) : Item(choices, tile.words), picture_(std::move(tile.picture)) {}

  int wordsWidth() const { return qCeil(textWidth(theme(), TextStyle::smallMedium, words_)); }
  std::optional<std::string> cutText() const override {
    if (wordsWidth() <= width()) return std::nullopt;
    return utf8(words_);
  }

protected:
  QRectF shape() const override { return QRectF(0, 0, width(), pictureHeight); }
  double corner() const override { return 7; }
  void draw(QPainter& painter) override {
    auto ground = isChosen() ? Token::accentWash : isHovered() ? Token::hover : Token::sunken;
    fillRounded(painter, shape(), corner(), theme().color(ground));
    if (isChosen()) drawOutline(painter, shape(), corner(), theme().color(Token::accent), 2);
    painter.save();
    if (picture_) picture_(painter, shape(), theme().color(Token::text1));
    painter.restore();
    QRectF below(0, pictureHeight + wordsGap, width(), lineHeight(theme(), TextStyle::small));
    drawText(painter, below, theme(), isChosen() ? TextStyle::smallMedium : TextStyle::small, Token::text1,
             words_, Qt::AlignHCenter);
  }

private:
  Picture picture_;
};

RadioTiles::RadioTiles(const Theme& theme, std::string_view name, std::vector<Tile> tiles, QWidget* parent)
    : Choices(theme, parent) {
  setName(name);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  for (auto& tile : tiles) {
    tiles_.push_back(new RadioTile(*this, std::move(tile)));
    add(*tiles_.back());
  }
}

void RadioTiles::setWords(const std::vector<std::string>& words) {
  for (std::size_t i = 0; i < std::min(words.size(), tiles_.size()); ++i) tiles_[i]->setWords(words[i]);
  themeChanged();
}

void RadioTiles::updatePictures() {
  for (auto* tile : tiles_) tile->update();
}

QSize RadioTiles::minimumSizeHint() const {
  auto widest = 0;
  for (const auto* tile : tiles_) widest = std::max(widest, tile->wordsWidth());
  auto count = static_cast<int>(tiles_.size());
  auto height = pictureHeight + wordsGap + lineHeight(theme(), TextStyle::small);
  return {count * widest + (count - 1) * tileGap, height};
}

QSize RadioTiles::sizeHint() const {
  auto count = static_cast<int>(tiles_.size());
  return minimumSizeHint().expandedTo({count * naturalTile + (count - 1) * tileGap, 0});
}

void RadioTiles::resizeEvent(QResizeEvent*) { arrange(); }

void RadioTiles::themeChanged() {
  Choices::themeChanged();
  arrange();
}

void RadioTiles::changeEvent(QEvent* event) {
  if (event->type() == QEvent::LayoutDirectionChange) arrange();
  Choices::changeEvent(event);
}

void RadioTiles::arrange() {
  auto count = static_cast<int>(tiles_.size());
  auto spare = width() - (count - 1) * tileGap;
  for (int i = 0; i < count; ++i) {
    // The rounding is spread, so that the last one ends where the row ends.
    auto left = spare * i / count + i * tileGap;
    auto right = spare * (i + 1) / count + i * tileGap;
    QRect place(left, 0, right - left, height());
    tiles_[static_cast<std::size_t>(i)]->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
  }
}

} // namespace korvell
