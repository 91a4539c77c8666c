#include "UI/Measures/MeasureView.h"

#include "Base/Localization.h"
#include "UI/Kit/Button.h"
#include "UI/Kit/CompositionBar.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Scroll.h"
#include "UI/Kit/Text.h"
#include "UI/Measures/MeasureParts.h"
#include "UI/Measures/RangeControl.h"
#include "UI/Parts/FilterField.h"

#include <QBoxLayout>
#include <QClipboard>
#include <QGuiApplication>

namespace korvell {

namespace {

constexpr int padding = 28, narrowPadding = 20, widest = 1120;
constexpr int narrow = 760;       ///< below it what stands beside the list goes above it
constexpr int narrowWindow = 860; ///< below it the window's padding is smaller
constexpr int sideWidth = 264, sideGap = 44;
constexpr int headGap = 12;
constexpr int inset = BarTable::overhang;

/// Words that are the same ask for no new layout.
template <class W>
void set(W& widget, const std::string& words) {
  if (utf8(widget.words()) != words) widget.setWords(words);
  widget.setVisible(!words.empty());
}

Token tokenOf(Metric metric) { return palette[std::size_t(metric)]; }

/// A long list has its chart lower.
int plotHeight(Metric metric) {
  return metric == Metric::cpu || metric == Metric::gpu ? ChartView::tall : ChartView::low;
}

/// A list's title with what leads on, and the field that filters beside them; below, where the words are too
/// long for one line.
class ListHead final : public QWidget {
public:
  ListHead(QWidget& title, QWidget& button, QWidget& field, QWidget* parent)
      : QWidget(parent), line_(new QBoxLayout(QBoxLayout::LeftToRight, this)), words_(new QHBoxLayout),
        field_(field) {
    line_->setContentsMargins(inset, 0, inset, 0);
    line_->setSpacing(headGap);
    words_->setSpacing(headGap);
    words_->addWidget(&title, 1);
    words_->addWidget(&button);
    line_->addLayout(words_, 1);
    line_->addWidget(&field);
  }

protected:
  bool event(QEvent* event) override {
    if (event->type() == QEvent::LayoutRequest) arrange();
    return QWidget::event(event);
  }
  void resizeEvent(QResizeEvent*) override { arrange(); }

private:
  void arrange() {
    const int wanted = 2 * inset + words_->sizeHint().width() + headGap + field_.minimumWidth();
    line_->setDirection(wanted > width() ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
  }

  QBoxLayout *line_, *words_;
  QWidget& field_;
};

} // namespace

MeasureView::MeasureView(Services services, Metric metric, HistoryRange range)
    : services_(std::move(services)), metric_(metric), control_(new RangeControl(services_.theme, this)),
      scroll_(new ScrollArea(services_.theme, Token::surface, this)),
      content_(new Ground(services_.theme, Token::surface, nullptr)),
      facts_(new FactsRow(services_.theme, content_)),
      absent_(new TextLabel(services_.theme, TextStyle::body, Token::text2, "", content_)),
      composition_(new CompositionBar(services_.theme, tokenOf(metric), content_)),
      chart_(new ChartView(services_.theme, services_.session.zone, content_)),
      finding_(new TextLabel(services_.theme, TextStyle::body, Token::warning, "", content_)),
      battery_(new Button(services_.theme, Button::Kind::quiet, localized("Battery Settings"), content_)),
      rule_(new Hairline(services_.theme, content_)), side_(new QWidget(content_)),
      gap_(new QWidget(content_)), volumesBox_(new QWidget(content_)), devicesBox_(new QWidget(content_)),
      listBox_(new QWidget(content_)), findingBox_(new QWidget(content_)), pinBox_(new QWidget(listBox_)),
      cores_(new CoreBars(services_.theme, side_)), volumes_(new VolumeList(services_.theme, volumesBox_)),
      devices_(new DeviceList(services_.theme, devicesBox_)),
      listTitle_(new TextLabel(services_.theme, TextStyle::head, Token::text1, "", listBox_)),
      note_(new TextLabel(services_.theme, TextStyle::small, Token::text2, "", listBox_)),
      empty_(new TextLabel(services_.theme, TextStyle::body, Token::text2, "", listBox_)),
      pinHint_(new TextLabel(services_.theme, TextStyle::small, Token::text3,
                             localized("The moment is pinned. Arrow keys move it, Esc lets it go."),
                             pinBox_)),
      footnote_(new TextLabel(services_.theme, TextStyle::small, Token::text3, "", listBox_)),
      other_(new Button(services_.theme, Button::Kind::quiet, "", listBox_)),
      helper_(new Button(services_.theme, Button::Kind::quiet, localized("Enable the helper…"), listBox_)),
      filter_(new FilterField(services_.theme, listBox_)), table_(new BarTable(services_.theme, listBox_)),
      session_(services_.session, metric, range, [this, isBuilt = false]() mutable {
        // Told while it is made: there is nothing to be shown yet.
        if (std::exchange(isBuilt, true)) update();
      }) {
  build();
  connectParts();
  orderTabs({control_, facts_, chart_, battery_, volumesBox_, other_, filter_, table_, helper_});
  update();
}

std::string MeasureView::title() const { return session_.page().title; }

QWidget* MeasureView::control() { return control_; }

void MeasureView::find() { filter_->take(); }

void MeasureView::refresh() { session_.refresh(); }

PagePlace MeasureView::place() const {
  auto place = Page::place();
  place.range = std::size_t(session_.range());
  place.moment = session_.pinned();
  return place;
}

void MeasureView::restore(const PagePlace& place) {
  if (place.range < std::size(historySpans)) session_.restore(HistoryRange(place.range), place.moment);
  Page::restore(place);
}

// Building

void MeasureView::build() {
  auto* whole = new QVBoxLayout(this);
  whole->setContentsMargins(0, 0, 0, 0);
  whole->addWidget(scroll_);
  scroll_->setContent(*content_);
  column_ = new QVBoxLayout(content_);
  column_->setSpacing(0);
  // The margin is that of the rows' wash: all else stands further in, but for a chart's crosshair.
  const auto add = [&](QWidget* widget, int before, int left = inset) {
    auto* row = new QHBoxLayout;
    row->setContentsMargins(left, before, inset, 0);
    row->addWidget(widget);
    column_->addLayout(row);
  };
  add(facts_, 10);
  absent_->setWrapped();
  add(absent_, 6);
  add(composition_, 16);
  chart_->setPlotHeight(plotHeight(metric_));
  add(chart_, 8, inset - ChartView::overhang);
  finding_->setWrapped();
  auto* findingRow = new QHBoxLayout(findingBox_);
  findingRow->setContentsMargins(0, 0, 0, 0);
  findingRow->setSpacing(8);
  findingRow->addWidget(new IconLabel(services_.theme, Icon::warning, 16, Token::warningMark, findingBox_));
  findingRow->addWidget(finding_, 1, Qt::AlignVCenter);
  findingRow->addWidget(battery_);
  add(findingBox_, 8);
  add(rule_, 12);
  column_->addSpacing(14);
  buildVolumes(*column_);
  halves_ = new QHBoxLayout;
  halves_->setSpacing(0);
  buildSide(*halves_);
  buildList(*halves_);
  column_->addLayout(halves_);
  column_->addStretch(1);
}

void MeasureView::buildVolumes(QBoxLayout& column) {
  auto* rows = new QVBoxLayout(volumesBox_);
  rows->setContentsMargins(inset, 0, inset, 20);
  rows->setSpacing(0);
  auto* head = new QHBoxLayout;
  head->addWidget(
      new TextLabel(services_.theme, TextStyle::head, Token::text1, localized("Volumes"), volumesBox_), 1);
  if (services_.open) {
    auto* freeUp = new Button(services_.theme, Button::Kind::quiet, localized("Free Up Space"), volumesBox_);
    freeUp->setMark(Button::Mark::chevron);
    freeUp->onPress([this] { services_.open(SidebarItem::storage); });
    head->addWidget(freeUp);
  }
  rows->addLayout(head);
  rows->addWidget(volumes_);
  column.addWidget(volumesBox_);
  auto* devices = new QVBoxLayout(devicesBox_);
  devices->setContentsMargins(inset, 0, inset, 20);
  devices->setSpacing(4);
  devices->addWidget(
      new TextLabel(services_.theme, TextStyle::head, Token::text1, localized("Other devices"), devicesBox_));
  devices->addWidget(devices_);
  column.addWidget(devicesBox_);
}

void MeasureView::buildSide(QBoxLayout& column) {
  auto* rows = new QVBoxLayout(side_);
  rows->setContentsMargins(inset, 5, inset, 20);
  rows->setSpacing(8);
  auto* head = new QHBoxLayout;
  head->addWidget(new TextLabel(services_.theme, TextStyle::head, Token::text1, localized("Cores"), side_),
                  1);
  head->addWidget(new TextLabel(services_.theme, TextStyle::small, Token::text3, localized("now"), side_));
  rows->addLayout(head);
  rows->addWidget(cores_);
  rows->addStretch(1);
  column.addWidget(side_);
  gap_->setFixedWidth(sideGap - 2 * inset);
  column.addWidget(gap_);
}

QWidget* MeasureView::buildHead() {
  auto* head = new ListHead(*listTitle_, *other_, *filter_, listBox_);
  other_->setMark(Button::Mark::chevron);
  head->setMinimumHeight(services_.theme.scaled(28));
  return head;
}

void MeasureView::buildList(QBoxLayout& column) {
  auto* rows = new QVBoxLayout(listBox_);
  rows->setContentsMargins(0, 0, 0, 0);
  rows->setSpacing(0);
  rows->addWidget(buildHead());
  rows->addSpacing(6);
  rows->addWidget(table_);
  // What is hidden takes no room.
  auto* below = new QVBoxLayout;
  below->setContentsMargins(inset, 8, inset, 0);
  below->setSpacing(8);
  auto* pinned = new QHBoxLayout(pinBox_);
  pinned->setContentsMargins(0, 4, 0, 0);
  pinned->setSpacing(6);
  pinned->addWidget(new IconLabel(services_.theme, Icon::pin, 18, Token::text3, pinBox_));
  pinned->addWidget(pinHint_, 1);
  pinHint_->setWrapped();
  below->addWidget(empty_);
  below->addWidget(pinBox_);
  auto* noted = new QHBoxLayout;
  noted->setSpacing(12);
  noted->addWidget(note_, 1, Qt::AlignVCenter);
  noted->addWidget(helper_);
  below->addLayout(noted);
  below->addWidget(footnote_);
  for (auto* label : {empty_, note_, footnote_}) label->setWrapped();
  rows->addLayout(below);
  rows->addStretch(1);
  column.addWidget(listBox_, 1);
}

void MeasureView::connectParts() {
  connect(scroll_->verticalScrollBar(), &QScrollBar::rangeChanged, this, [this] { arrange(); });
  control_->choose(std::size_t(session_.range()));
  control_->onChoose([this](std::size_t range) { setRange(range); });
  chart_->onRange([this](std::size_t range) { setRange(range); });
  chart_->onPin([this](std::optional<Date> bucket) { session_.pin(bucket); });
  chart_->onPoint([this](std::optional<Date> bucket) { session_.point(bucket); });
  battery_->onPress([this] {
    if (services_.openBatterySettings) services_.openBatterySettings();
  });
  other_->onPress([this] { session_.showOtherList(); });
  helper_->onPress([this] { services_.openSettings(); });
  filter_->onFilter([this](std::string words) { session_.filter(std::move(words)); });
  table_->setPictures(services_.pictures);
  table_->onSort([this](BarTableData::Column column) { session_.sort(column); });
  table_->onUnfold([this](const std::string& key) { session_.unfold(key); });
  table_->onQuit(localized("Quit…"), [this](const std::string& key) { ask(key, false); });
  table_->onMenu([this](const std::string& key, QPoint where) { showMenu(key, where); });
  table_->onHover([this](bool over) { session_.settle(over); });
  table_->onReveal([this](QRect row) {
    constexpr int around = 8;
    const auto middle = table_->mapTo(content_, row.center());
    scroll_->ensureVisible(middle.x(), middle.y(), 0, row.height() / 2 + around);
  });
}

void MeasureView::setRange(std::size_t range) {
  if (range >= std::size(historySpans)) return;
  control_->choose(range);
  session_.setRange(HistoryRange(range));
}

// Showing

void MeasureView::resizeEvent(QResizeEvent* event) {
  Page::resizeEvent(event);
  arrange();
}

void MeasureView::arrange() {
  const bool isNarrow = width() < narrow;
  const int around = window()->width() < narrowWindow ? narrowPadding : padding;
  const int side = std::max(around, (width() - widest) / 2);
  // The bar lies in the padding: nothing moves when there is something to scroll.
  const int bar =
      scroll_->verticalScrollBar()->maximum() > 0 ? scroll_->verticalScrollBar()->sizeHint().width() : 0;
  const bool isMirrored = layoutDirection() == Qt::RightToLeft;
  column_->setContentsMargins(side - inset - (isMirrored ? bar : 0), 0, side - inset - (isMirrored ? 0 : bar),
                              padding);
  gap_->setVisible(!isNarrow && !session_.page().cores.empty());
  halves_->setDirection(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
  side_->setMaximumWidth(isNarrow ? QWIDGETSIZE_MAX : services_.theme.scaled(sideWidth) + 2 * inset);
}

void MeasureView::update() {
  const auto& page = session_.page();
  facts_->setPage(page);
  set(*absent_, page.absent);
  const auto& list = session_.list();
  rule_->setVisible(list.isThere || !list.note.empty() || page.volumes || !page.devices.empty());
  composition_->setParts(page.composition);
  composition_->setVisible(!page.composition.empty());
  chart_->setData(session_.chart());
  if (chart_->pinned() != session_.pinned()) chart_->setPinned(session_.pinned());
  if (control_) {
    control_->choose(std::size_t(session_.range()));
    control_->setLoading(session_.isLoading());
  }
  set(*finding_, page.finding);
  battery_->setVisible(page.opensBatterySettings && services_.openBatterySettings);
  findingBox_->setVisible(!page.finding.empty());
  cores_->setGroups(page.cores);
  side_->setVisible(!page.cores.empty());
  arrange();
  if (page.volumes) volumes_->setVolumes(*page.volumes);
  volumesBox_->setVisible(page.volumes.has_value());
  devices_->setDevices(page.devices);
  devicesBox_->setVisible(!page.devices.empty());
  updateList();
}

void MeasureView::updateList() {
  const auto& list = session_.list();
  // A shorter list of a moment that is only pointed at must not scroll the chart away from the pointer.
  const int kept = std::max(listBox_->minimumHeight(), listBox_->height());
  listBox_->setMinimumHeight(session_.pointed() && !session_.pinned() ? kept : 0);
  table_->setData(list.table);
  table_->setVisible(list.isThere && !list.table.rows.empty());
  listTitle_->parentWidget()->setVisible(list.isThere);
  set(*note_, list.note);
  helper_->setVisible(list.helperWouldTell && services_.openSettings);
  set(*empty_, list.isThere ? list.empty : "");
  set(*footnote_, session_.page().footnote);
  set(*listTitle_, list.isThere ? session_.listTitle() : "");
  set(*other_, list.isThere ? session_.otherList() : "");
  filter_->setVisible(list.isThere);
  const bool isPinned = session_.pinned().has_value();
  pinBox_->setVisible(isPinned);
}

void MeasureView::ask(const std::string& key, bool force) {
  if (const auto request = quitRequest(services_.session.model, key, force); request && services_.ask)
    services_.ask(*request);
}

void MeasureView::showMenu(const std::string& key, QPoint where) {
  auto* menu = new Menu(services_.theme, this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  if (quitRequest(services_.session.model, key, false)) {
    menu->add(Icon::quit, localized("Quit…"), [this, key] { ask(key, false); });
    menu->add(Icon::stop, localized("Force Quit…"), [this, key] { ask(key, true); });
    menu->addRule();
  }
  const auto pid = processOf(services_.session.model, key);
  if (pid && services_.explain)
    menu->add(Icon::info, localized("Why Is It Here?"), [this, pid] { services_.explain(*pid); });
  if (pid && services_.showFolder)
    menu->add(Icon::folder, localized("Show Folder in Finder"), [this, pid] { services_.showFolder(*pid); });
  menu->add(Icon::copy, localized("Copy"), [this, key] {
    QGuiApplication::clipboard()->setText(text(copiedText(session_.list().table, key)));
  });
  menu->popup(where);
}

} // namespace korvell
