// The kit's controls, each in all its states on one sheet.

#include "UI/Gallery/KitSheet.h"
#include "UI/Kit/Banner.h"
#include "UI/Kit/Choices.h"
#include "UI/Kit/Contrast.h"
#include "UI/Kit/Dialog.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/ScoreRing.h"
#include "UI/Kit/Scroll.h"
#include "UI/Kit/Switches.h"
#include "UI/Kit/Text.h"

#include <QApplication>
#include <QBoxLayout>
#include <QFocusEvent>
#include <QGridLayout>
#include <QMouseEvent>

#include <cmath>

namespace korvell {

namespace {

template <class W>
W* hovered(W* widget) {
  QEvent enter(QEvent::HoverEnter); // all that controls look at
  QApplication::sendEvent(widget, &enter);
  return widget;
}

template <class W>
W* held(W* widget) {
  QMouseEvent press(QEvent::MouseButtonPress, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton, Qt::LeftButton,
                    {});
  QApplication::sendEvent(widget, &press);
  return widget;
}

template <class W>
W* disabled(W* widget) {
  widget->setEnabled(false);
  return widget;
}

/// As if each had the keyboard's focus, which only a picture shows.
Made withRings(Made made, const std::vector<QWidget*>& ringed) {
  made->resize(made->sizeHint());
  made->layout()->activate();
  for (auto* each : ringed) {
    QFocusEvent focus(QEvent::FocusIn, Qt::TabFocusReason);
    QApplication::sendEvent(each, &focus);
  }
  return made;
}

Made buttonsView(const Theme& theme) {
  Sheet sheet(theme);
  auto button = [&](Button::Kind kind, std::string_view words) {
    return new Button(theme, kind, words, sheet.parent());
  };
  struct Row {
    Button::Kind kind;
    std::string_view words;
  };
  std::vector<QWidget*> rings;
  for (auto [kind, words] : {Row{Button::Kind::primary, "Free Up Space"},
                             {Button::Kind::plain, "Stop All Idle…"},
                             {Button::Kind::quiet, "Review"},
                             {Button::Kind::danger, "Delete Permanently"}}) {
    auto* ringed = button(kind, words);
    rings.push_back(ringed);
    sheet.row("normal, pointed at, held, with the keyboard's focus, disabled",
              {button(kind, words), hovered(button(kind, words)), held(button(kind, words)), ringed,
               disabled(button(kind, words))});
  }
  auto* chevron = button(Button::Kind::quiet, "Show all");
  chevron->setMark(Button::Mark::chevron);
  auto* copy = button(Button::Kind::quiet, "Copy Command");
  copy->setMark(Button::Mark::copy);
  auto* untick = button(Button::Kind::quiet, "Untick All");
  untick->setToken(Token::text2);
  auto* scan = button(Button::Kind::plain, "Scan Again");
  scan->setIcon(Icon::refresh);
  sheet.row("marks and icons", {chevron, copy, untick, scan});
  auto* compact = button(Button::Kind::plain, "Open Korvell");
  compact->setHeight(Button::Height::compact);
  auto* tall = button(Button::Kind::primary, "Move to Trash");
  tall->setHeight(Button::Height::tall);
  sheet.row("26, 28, 32 high", {compact, button(Button::Kind::plain, "Enable"), tall});
  auto icon = [&](Icon shown, std::string_view name) {
    return new IconButton(theme, shown, name, sheet.parent());
  };
  auto* ringed = icon(Icon::settings, "Settings");
  rings.push_back(ringed);
  sheet.row("icons alone", {icon(Icon::share, "Share"), hovered(icon(Icon::power, "Quit")), ringed,
                            disabled(icon(Icon::dots, "More"))});
  return withRings(sheet.take(), rings);
}

void drawHeart(QPainter& painter, const QRectF& box, const QColor& ink) {
  drawIcon(painter, Icon::heart, QRectF(box.center() - QPointF(10, 10), QSizeF(20, 20)), ink);
}

Made choicesView(const Theme& theme) {
  Sheet sheet(theme);
  auto segments = [&](std::vector<std::string> words) {
    return new Segments(theme, "Range", words, sheet.parent());
  };
  auto* ranges = segments({"Live", "12h", "24h", "7d", "30d"});
  ranges->choose(2);
  auto* small = segments({"CPU", "Memory"});
  small->setHeight(26);
  auto* ringed = segments({"System", "Light", "Dark"});
  sheet.row("segments", {ringed, ranges, small});
  sheet.row("segments with long words, disabled",
            {segments({"Systemeinstellung", "Hintergrundbeleuchtung"}), disabled(segments({"One", "Two"}))});
  sheet.caption("radio tiles");
  auto* tiles = new RadioTiles(theme, "Menu bar",
                               {{"Icon only", drawHeart},
                                {"Health score", drawHeart},
                                {"CPU and memory", drawHeart},
                                {"Mini graphs", drawHeart}},
                               sheet.parent());
  sheet.add(tiles);
  auto toggle = [&](bool on) {
    auto* made = new Toggle(theme, "Open at login", sheet.parent());
    made->setOn(on);
    return made;
  };
  sheet.row("toggles: on, off, pointed at, disabled",
            {toggle(true), toggle(false), hovered(toggle(true)), hovered(toggle(false)),
             disabled(toggle(true)), disabled(toggle(false))});
  auto box = [&](CheckBox::State state, std::string_view words) {
    auto* made = new CheckBox(theme, "npm cache", words, sheet.parent());
    made->setState(state);
    return made;
  };
  using enum CheckBox::State;
  sheet.row("boxes",
            {box(off, ""), box(some, ""), box(on, ""), hovered(box(off, "")), disabled(box(off, "")),
             disabled(box(on, "")), box(on, "With words behind it"), disabled(box(some, "Disabled"))});
  return withRings(sheet.take(),
                   {ringed->findChildren<QWidget*>().first(), tiles->findChildren<QWidget*>().at(1)});
}

Made ringsView(const Theme& theme) {
  Sheet sheet(theme);
  auto ring = [&](ScoreRing::Form form, std::optional<int> score, std::vector<ScoreRing::Share> lost,
                  std::string_view label) {
    auto* made = new ScoreRing(theme, form, sheet.parent());
    made->setName("Health");
    made->setScore(score, std::move(lost));
    made->setLabel(label);
    return made;
  };
  std::vector<ScoreRing::Share> usual{{8, Tone::warning}, {4, Tone::info}, {1, Tone::info}};
  std::vector<ScoreRing::Share> bad{
      {30, Tone::critical}, {20, Tone::critical}, {8, Tone::warning}, {4, Tone::info}};
  auto page = ScoreRing::page;
  auto* pointed = ring(page, 87, usual, "Good");
  pointed->highlight(1);
  sheet.row("usual, one share pointed at, bad",
            {ring(page, 87, usual, "Good"), pointed, ring(page, 38, bad, "Poor")});
  sheet.row("full, none yet, nothing left",
            {ring(page, 100, {}, "Excellent"), ring(page, std::nullopt, {}, "Measuring…"),
             ring(page, 0, {{60, Tone::critical}, {50, Tone::critical}, {40, Tone::warning}}, "Poor")});
  auto panel = ScoreRing::panel;
  std::vector<ScoreRing::Share> many(9, {1, Tone::info});
  sheet.row("in the panel", {ring(panel, 87, usual, ""), ring(panel, 100, {}, ""),
                             ring(panel, std::nullopt, {}, ""), ring(panel, 91, many, "")});
  return sheet.take();
}

std::vector<std::optional<double>> series(double middle, double swing) {
  std::vector<std::optional<double>> values;
  for (int i = 0; i < 60; ++i)
    values.emplace_back(middle + swing * std::sin(i * 0.9) * std::cos(i * 0.37) + (i == 40 ? swing * 2 : 0));
  return values;
}

Made metersView(const Theme& theme) {
  Sheet sheet(theme);
  auto line = [&](Token token, std::vector<std::optional<double>> values) {
    auto* made = new Sparkline(theme, token, sheet.parent());
    made->setFixedSize(112, 40);
    made->setValues(std::move(values), 100);
    return made;
  };
  auto interrupted = series(50, 25);
  for (std::size_t i = 20; i < 30; ++i) interrupted[i] = std::nullopt;
  auto young = series(40, 10);
  young.resize(8);
  sheet.row("measures", {line(Token::cpu, series(24, 8)), line(Token::memory, series(63, 0.3)),
                         line(Token::disk, series(20, 30))});
  sheet.row("measures", {line(Token::network, series(40, 20)), line(Token::gpu, series(6, 2)),
                         line(Token::energy, series(60, 4))});
  sheet.row("a gap, eight values, none",
            {line(Token::cpu, interrupted), line(Token::cpu, young), line(Token::cpu, {})});
  auto bar = [&](Token token, double level, int thickness) {
    auto* made = new Bar(theme, token, sheet.parent());
    made->setName("Level");
    made->setThickness(thickness);
    made->setFixedWidth(120);
    made->setLevel(level);
    return made;
  };
  sheet.row("bars of 4: 0, 1, 60, 100 percent", {bar(Token::memory, 0, 4), bar(Token::memory, 0.01, 4),
                                                 bar(Token::memory, 0.6, 4), bar(Token::memory, 1, 4)});
  sheet.row("bars of 8",
            {bar(Token::cpu, 0.3, 8), bar(Token::warningMark, 0.86, 8), bar(Token::critical, 0.95, 8)});
  return sheet.take();
}

Made bannersView(const Theme& theme) {
  Sheet sheet(theme);
  auto banner = [&](Tone tone, std::string_view sentence, std::string_view detail = {}) {
    auto* made = new Banner(theme, sheet.parent());
    made->say(tone, sentence, detail);
    sheet.add(made);
    return made;
  };
  banner(Tone::warning, "Nothing changed. The files may be in use or protected.");
  banner(Tone::good, "2 servers stopped. 958 MB freed.");
  banner(Tone::info, "2 dev servers are running but idle", "Stopping them frees 958 MB")
      ->offer("Stop All Idle…", [] {});
  banner(Tone::critical,
         "The history cannot be read, so that nothing is recorded until the disk it lies on is there "
         "again and can be written to.")
      ->offer(
          "What would help", [] {}, Button::Kind::quiet);
  return sheet.take();
}

Made questionView(const Theme& theme, Question question) {
  auto window = std::make_unique<Ground>(theme, Token::surface, nullptr);
  auto* column = new QVBoxLayout(window.get());
  column->addWidget(new TextLabel(theme, TextStyle::title, Token::text1, "Free Up Space", window.get()));
  column->addWidget(new Button(theme, Button::Kind::primary, "Move to Trash…", window.get()));
  column->addStretch();
  Dialog::ask(theme, std::move(question), *window, [](bool) {});
  return window;
}

Made dialogView(const Theme& theme) {
  return questionView(
      theme, {.icon = Icon::trash,
              .title = "Move 6.36 GB to the Trash?",
              .passages = {{"Moves to the Trash:",
                            {"~/code/herbarium-2024/node_modules", "~/code/tide-tables/node_modules",
                             "~/code/sketchbook/packages/with/a/deep/path/that/is/too/long/node_modules"},
                            "and 1 more",
                            "You can put them back from the Trash."}},
              .action = "Move to Trash"});
}

Made dangerView(const Theme& theme) {
  return questionView(theme,
                      {.title = "Free 2.31 GB?",
                       .passages = {{.text = "This deletes the cache for good. Its packages are downloaded "
                                             "again when a project needs them."}},
                       .action = "Delete Permanently",
                       .permanent = true});
}

/// More than the window has room for.
Made longView(const Theme& theme) {
  std::string lines = "Moves to the Trash:";
  for (int i = 1; i <= 30; ++i) lines += "\n~/code/project-" + std::to_string(i) + "/node_modules";
  return questionView(theme, {.icon = Icon::trash,
                              .title = "Free 24.1 GB?",
                              .passages = {{.text = lines},
                                           {.text = "Permanently deletes everything in your Trash. This "
                                                    "cannot be undone."}},
                              .action = "Delete Permanently",
                              .permanent = true});
}

/// Names with their stand-ins.
class Monograms final : public Painted {
public:
  Monograms(const Theme& theme, QWidget* parent) : Painted(theme, parent) { setFixedSize(12 * 28, 24); }
  QAccessible::Role role() const override { return QAccessible::Graphic; }

protected:
  void draw(QPainter& painter) override {
    auto x = 0;
    for (const char* name :
         {"Firefox", "Blender", "Terminal", "linux", "Thunderbird", "éditeur", "7zip", "…"}) {
      drawMonogram(painter, QRectF(x, 2, 20, 20), theme(), monogramHue(name), name);
      x += 28;
    }
    for (auto hue : {Token::gray, Token::accent}) {
      drawMonogram(painter, QRectF(x, 2, 20, 20), theme(), hue, "Korvell");
      x += 28;
    }
  }
};

Made piecesView(const Theme& theme) {
  Sheet sheet(theme, Token::bg);
  std::vector<QWidget*> badges;
  auto badge = [&](int count) {
    auto* made = new Badge(theme, sheet.parent());
    made->setCount(count);
    return made;
  };
  sheet.row("badges", {badge(2), badge(14), badge(240)});
  sheet.row("monograms", {new Monograms(theme, sheet.parent())});
  auto* field = new TextField(theme, "Filter", "Filter", sheet.parent());
  field->setSearch();
  auto* filled = new TextField(theme, "Name", "", sheet.parent());
  filled->setText("Firefox");
  sheet.row("fields", {field, filled});
  auto* path = new TextField(theme, "History", "", sheet.parent());
  path->setText("~/.local/share/korvell/history.sqlite");
  path->setSelectableOnly();
  path->setFixedWidth(260);
  sheet.row("text to select", {path});
  sheet.caption("a group of settings");
  auto* plate = new Plate(theme, sheet.parent());
  auto* rows = new QVBoxLayout(plate);
  for (const char* words : {"Open at login", "Send a weekly report on Monday morning"}) {
    if (rows->count()) rows->addWidget(new Hairline(theme, plate));
    auto* row = new QHBoxLayout;
    row->setContentsMargins(4, 4, 4, 4);
    row->addWidget(new TextLabel(theme, TextStyle::body, Token::text1, words, plate), 1);
    row->addWidget(new Toggle(theme, words, plate));
    rows->addLayout(row);
  }
  sheet.add(plate);
  sheet.caption("what scrolls");
  auto* area = new ScrollArea(theme, Token::surface, sheet.parent());
  auto* content = new Ground(theme, Token::surface, nullptr);
  auto* lines = new QVBoxLayout(content);
  for (int i = 0; i < 20; ++i)
    lines->addWidget(new TextLabel(theme, TextStyle::body, Token::text1, "A row of a long list", content));
  area->setContent(*content);
  area->setFixedHeight(120);
  sheet.add(area);
  return sheet.take();
}

Made menuView(const Theme& theme) {
  auto menu = std::make_unique<Menu>(theme, nullptr);
  menu->add("Open panel", [] {});
  menu->add(Icon::heart, "Open Korvell", [] {});
  menu->addRule();
  menu->add(Icon::settings, "Settings…", [] {});
  menu->add("Free Up Space", [] {}).setEnabled(false);
  menu->add(Icon::power, "Quit Korvell", [] {});
  return menu;
}

} // namespace

std::vector<GalleryView> kitViews() {
  QSize own;
  return {
      {"kit-buttons", {own}, buttonsView},
      {"kit-choices", {own}, choicesView},
      {"kit-rings", {own}, ringsView},
      {"kit-meters", {own}, metersView},
      {"kit-banners", {{520, 480}}, bannersView},
      {"kit-dialog", {{720, 560}, {360, 560}}, dialogView},
      {"kit-dialog-danger", {{720, 400}}, dangerView},
      {"kit-dialog-long", {{720, 560}}, longView},
      {"kit-pieces", {{560, 560}}, piecesView},
      {"kit-menu", {own}, menuView},
  };
}

} // namespace korvell
