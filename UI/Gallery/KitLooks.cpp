// What the kit's controls are made of: type, colours, icons, figures.

#include "UI/Gallery/KitSheet.h"
#include "UI/Kit/Contrast.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <QGridLayout>

namespace korvell {

namespace {

Made typeView(const Theme& theme) {
  Sheet sheet(theme);
  struct Sample {
    TextStyle style;
    std::string_view words;
  };
  for (auto [style, words] : {Sample{TextStyle::display, "87"},
                              {TextStyle::figureLarge, "34.5 figure large"},
                              {TextStyle::figureMedium, "9.84 figure medium"},
                              {TextStyle::title, "Title, such as Free Up Space"},
                              {TextStyle::sub, "Sub, the title of a dialog"},
                              {TextStyle::head, "Head, above a list"},
                              {TextStyle::strong, "Strong, the name of a finding"},
                              {TextStyle::body, "Body, what most text is set in"},
                              {TextStyle::small, "Small, details below a name"},
                              {TextStyle::smallMedium, "Small, a tile's name"},
                              {TextStyle::smallStrong, "Small, the chosen segment"},
                              {TextStyle::caption, "Caption, axes and column heads"}})
    sheet.add(new TextLabel(theme, style, Token::text1, words, sheet.parent()));
  for (auto token : {Token::text2, Token::text3, Token::accent, Token::good, Token::warning, Token::critical})
    sheet.add(new TextLabel(theme, TextStyle::body, token, nameOf(token), sheet.parent()));
  auto* wrapped =
      new TextLabel(theme, TextStyle::small, Token::text2,
                    "A text that does not fit on one line goes on in the next one, at the distance of "
                    "its style, and takes the height that it needs.",
                    sheet.parent());
  wrapped->setWrapped();
  sheet.add(wrapped);
  auto* clamped =
      new TextLabel(theme, TextStyle::small, Token::text2,
                    "They point to programs that no longer exist, usually from apps you uninstalled, "
                    "and this sentence is longer than the two lines that it may take at most here.",
                    sheet.parent());
  clamped->setWrapped(2);
  sheet.add(clamped);
  auto* path = new TextLabel(theme, TextStyle::body, Token::text1,
                             "~/code/a-project-with-a-long-name/packages/another-long-name/node_modules",
                             sheet.parent());
  path->setElide(Qt::ElideMiddle);
  sheet.add(path);
  return sheet.take();
}

/// A square of one token and its name.
class Swatch final : public Painted {
public:
  Swatch(const Theme& theme, Token token, QWidget* parent) : Painted(theme, parent), token_(token) {
    setFixedSize(150, 30);
  }
  QAccessible::Role role() const override { return QAccessible::Graphic; }

protected:
  void draw(QPainter& painter) override {
    drawRounded(painter, QRectF(0, 3, 36, 24), 4, theme().color(token_), theme().color(Token::hairline));
    drawText(painter, QRectF(44, 0, 106, 30), theme(), TextStyle::small, Token::text1, text(nameOf(token_)));
  }

private:
  Token token_;
};

Made colorsView(const Theme& theme) {
  Sheet sheet(theme);
  auto* grid = new QGridLayout;
  for (std::size_t i = 0; i < tokenCount; ++i)
    grid->addWidget(new Swatch(theme, static_cast<Token>(i), sheet.parent()), int(i) / 4, int(i) % 4);
  sheet.add(grid);
  return sheet.take();
}

Made iconsView(const Theme& theme) {
  Sheet sheet(theme);
  auto* grid = new QGridLayout;
  grid->setSpacing(12);
  for (int i = 0; i <= static_cast<int>(Icon::down); ++i) {
    auto icon = static_cast<Icon>(i);
    auto row = i / 18 * 3;
    grid->addWidget(new IconLabel(theme, icon, 20, Token::text1, sheet.parent()), row, i % 18,
                    Qt::AlignCenter);
    grid->addWidget(new IconLabel(theme, icon, 16, Token::text2, sheet.parent()), row + 1, i % 18,
                    Qt::AlignCenter);
    grid->addWidget(new IconLabel(theme, icon, 40, Token::text1, sheet.parent()), row + 2, i % 18,
                    Qt::AlignCenter);
  }
  sheet.add(grid);
  for (auto tone : {Tone::good, Tone::info, Tone::warning, Tone::critical}) {
    auto* plate = new Plate(theme, {lookOf(tone).wash, std::nullopt, 8}, sheet.parent());
    auto* row = new QHBoxLayout(plate);
    for (int size : {16, 18, 20, 32})
      row->addWidget(new IconLabel(theme, lookOf(tone).icon, size, lookOf(tone).mark, plate));
    row->addWidget(new TextLabel(theme, TextStyle::head, lookOf(tone).text, "−8", plate), 1);
    sheet.add(plate);
  }
  return sheet.take();
}

Made figuresView(const Theme& theme) {
  Sheet sheet(theme);
  for (auto style : {TextStyle::display, TextStyle::figureLarge, TextStyle::figureMedium, TextStyle::sub}) {
    auto figure = [&](Figure figure) {
      auto* label = new FigureLabel(theme, style, sheet.parent());
      label->setFigure(std::move(figure));
      return label;
    };
    auto* led = figure({"1.8", "MB/s"});
    led->setLead("↓");
    sheet.row("figures", {figure({"24", "%"}), figure({"9.84", "GB"}), led, figure({"–", ""})});
  }
  sheet.caption("digits of one width: the columns stand");
  for (const char* number : {"111.11", "444.44", "808.17", "–"}) {
    auto* label = new FigureLabel(theme, TextStyle::figureMedium, sheet.parent());
    label->setFigure({number, ""});
    label->setAlignment(Qt::AlignRight);
    label->setFixedWidth(120);
    sheet.add(label);
  }
  return sheet.take();
}

} // namespace

std::vector<GalleryView> kitLooks() {
  QSize own;
  return {{"kit-type", {{460, 1000}}, typeView},
          {"kit-colors", {own}, colorsView},
          {"kit-icons", {own}, iconsView},
          {"kit-figures", {own}, figuresView}};
}

} // namespace korvell
