#include "UI/Settings/SettingsView.h"

#include "Base/Localization.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/PageLayout.h"
#include "UI/Tray/WideForm.h"

#include <QClipboard>
#include <QGuiApplication>

#include <algorithm>
#include <utility>

namespace korvell {

namespace {

constexpr int sidePadding = 24, groupPadding = 16, headGap = 18, headIndent = 2, bottomPadding = 24;
constexpr int bannerGap = 16;
constexpr int fieldMargin = 3; ///< that the toolkit keeps around a field's text

} // namespace

/// A plate whose rows are parted by hairlines.
struct SettingsView::Group {
  const Theme& theme;
  QWidget* head;
  Plate* plate;
  QVBoxLayout* rows;

  Hairline* add(QWidget& row) {
    Hairline* rule = nullptr;
    if (rows->count() > 0) rows->addWidget(rule = new Hairline(theme, plate));
    rows->addWidget(&row);
    return rule;
  }
};

/// The page: the scroll bar takes its lane out of the margin.
class SettingsView::Content : public QWidget {
public:
  explicit Content(const QWidget& view) : view_(view) {}

protected:
  void resizeEvent(QResizeEvent*) override {
    const int lane = std::clamp(view_.width() - width(), 0, sidePadding);
    const int left = isRightToLeft() ? sidePadding - lane : sidePadding;
    layout()->setContentsMargins(left, 0, 2 * sidePadding - lane - left, bottomPadding);
  }

private:
  const QWidget& view_;
};

SettingsView::SettingsView(const Theme& theme, Handlers handlers, QWidget* parent)
    : Ground(theme, Token::bg, parent), theme_(theme), handlers_(std::move(handlers)),
      above_(new QWidget(this)), banner_(new Banner(theme, above_)),
      scroll_(new ScrollArea(theme, Token::bg, this)), content_(new Content(*this)),
      column_(bare<QVBoxLayout>(content_)) {
  auto* whole = bare<QVBoxLayout>(this);
  auto* above = bare<QVBoxLayout>(above_);
  above->setContentsMargins(sidePadding, bannerGap, sidePadding, 0);
  above->addWidget(banner_);
  above_->hide();
  whole->addWidget(above_);
  whole->addWidget(scroll_, 1);
  column_->setContentsMargins(sidePadding, 0, sidePadding, bottomPadding);
  makeMenuBar();
  makeGeneral();
  makeHelper();
  makeTool();
  makeData();
  makeUpdates();
  makeAlerts();
  makeHelp();
  column_->addStretch(1);
  scroll_->setContent(*content_);
}

SettingsView::Group SettingsView::startGroup(std::string_view title) {
  auto* head = new QWidget(content_);
  auto* line = bare<QVBoxLayout>(head);
  line->setContentsMargins(headIndent, headGap, headIndent, 6);
  auto* words = new TextLabel(theme_, TextStyle::head, Token::text1, title, head);
  words->setWrapped();
  line->addWidget(words);
  column_->addWidget(head);
  auto* plate = new Plate(theme_, content_);
  plate->setName(title);
  auto* rows = bare<QVBoxLayout>(plate);
  rows->setContentsMargins(groupPadding, 0, groupPadding, 0);
  column_->addWidget(plate);
  return {theme_, head, plate, rows};
}

void SettingsView::makeMenuBar() {
  auto group = startGroup(localized("Menu bar"));
  labels_.resize(allCases<MenuBarStyle>().size());
  std::vector<RadioTiles::Tile> tiles;
  for (const auto& style : allCases<MenuBarStyle>())
    tiles.push_back({title(style.value),
                     [this, i = tiles.size()](QPainter& painter, const QRectF& box, const QColor& ink) {
                       drawWideForm(painter, box, theme_, labels_[i], ink);
                     }});
  styles_ = new RadioTiles(theme_, localized("Menu bar"), std::move(tiles), group.plate);
  styles_->onChoose([this](std::size_t index) { handlers_.style(MenuBarStyle(index)); });
  group.rows->setContentsMargins(groupPadding, 14, groupPadding, 18);
  group.add(*styles_);
}

/// A row with the cases of an enumeration beside each other.
template <class Choice>
Segments* SettingsView::addChoice(Group& group, const std::string& words,
                                  std::function<void(Choice)> chosen) {
  auto* row = new SettingRow(theme_, words, group.plate);
  std::vector<std::string> choices;
  for (const auto& choice : allCases<Choice>()) choices.push_back(title(choice.value));
  auto* segments = new Segments(theme_, words, choices, row);
  segments->onChoose([chosen = std::move(chosen)](std::size_t index) { chosen(Choice(index)); });
  row->addControl(*segments);
  group.add(*row);
  return segments;
}

void SettingsView::makeGeneral() {
  auto group = startGroup(localized("General"));
  opensAtLogin_ = new SettingSwitch(theme_, group.plate, [this](bool on) { handlers_.opensAtLogin(on); });
  group.add(*opensAtLogin_);
  panelSound_ = new SettingSwitch(theme_, group.plate, [this](bool on) { handlers_.panelSound(on); });
  group.add(*panelSound_);
  appearance_ = addChoice<AppearanceChoice>(
      group, localized("Appearance"), [this](AppearanceChoice choice) { handlers_.appearance(choice); });
  language_ = addChoice<LanguageChoice>(group, localized("Language"),
                                        [this](LanguageChoice choice) { handlers_.language(choice); });
  temperatures_ = addChoice<TemperatureUnit>(group, localized("Temperatures"),
                                             [this](TemperatureUnit unit) { handlers_.temperatures(unit); });
}

void SettingsView::makeHelper() {
  auto group = startGroup(localized("System processes"));
  helper_.head = group.head;
  helper_.plate = group.plate;
  helper_.explanation = new SettingRow(theme_, "", group.plate);
  group.add(*helper_.explanation);
  helper_.state = new SettingRow(theme_, "", group.plate);
  helper_.approval = new Button(theme_, Button::Kind::plain, "", helper_.state);
  helper_.approval->onPress([this] { handlers_.openApproval(); });
  helper_.state->addControl(*helper_.approval);
  helper_.action = new Button(theme_, Button::Kind::plain, "", helper_.state);
  helper_.action->onPress([this] { handlers_.turnHelper(helper_.turnsOn); });
  helper_.state->addControl(*helper_.action);
  helper_.rule = group.add(*helper_.state);
}

void SettingsView::makeTool() {
  auto group = startGroup(localized("Command line & agents"));
  tool_ = new SettingRow(theme_, localized("Command line tool"), group.plate);
  install_ = new Button(theme_, Button::Kind::plain, "", tool_);
  install_->onPress([this] { handlers_.installTool(); });
  tool_->addControl(*install_);
  group.add(*tool_);
  agents_ = new SettingRow(theme_, "", group.plate);
  group.add(*agents_);
  claude_ = addCopied(group, localized("Add to Claude Code"), &SettingsPage::Agents::claudeCommand);
  clients_ = addCopied(group, localized("Other MCP clients"), &SettingsPage::Agents::clientSnippet);
}

SettingRow* SettingsView::addCopied(Group& group, const std::string& title,
                                    std::string SettingsPage::Agents::*words) {
  auto* row = new SettingRow(theme_, title, group.plate);
  auto* copy = new Button(theme_, Button::Kind::quiet, localized("Copy"), row);
  copy->setMark(Button::Mark::copy);
  copy->setName(localized("Copy: {what}", {{"what", title}}));
  copy->onPress([this, words] { QGuiApplication::clipboard()->setText(text(copied_.*words)); });
  row->addControl(*copy);
  group.add(*row);
  return row;
}

void SettingsView::makeData() {
  auto group = startGroup(localized("Data"));
  const auto words = localized("History");
  auto* history = new SettingRow(theme_, words, group.plate);
  history_ = new TextField(theme_, words, "", history);
  history_->setSelectableOnly();
  history_->setTextMargins(-fieldMargin, 0, -fieldMargin, 0);
  // A path runs to the right in every language, and a field goes by its text.
  history_->setAlignment((isRightToLeft() ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter);
  history->addWide(*history_);
  group.add(*history);
  auto* own = new SettingRow(theme_, localized("Korvell itself"), group.plate);
  ownCost_ = new TextLabel(theme_, TextStyle::small, Token::text2, "", own);
  ownCost_->setNeverCut();
  own->addControl(*ownCost_);
  group.add(*own);
}

void SettingsView::makeUpdates() {
  auto group = startGroup(localized("Updates"));
  updates_.automatically =
      new SettingSwitch(theme_, group.plate, [this](bool on) { handlers_.automaticallyChecks(on); });
  group.add(*updates_.automatically);
  updates_.manual = new SettingRow(theme_, localized("Check for updates"), group.plate);
  updates_.check = new Button(theme_, Button::Kind::plain, "", updates_.manual);
  updates_.check->onPress([this] { handlers_.checkForUpdates(); });
  updates_.manual->addControl(*updates_.check);
  updates_.rule = group.add(*updates_.manual);
}

void SettingsView::makeAlerts() {
  auto group = startGroup(localized("Alert me when"));
  for (const auto& kind : allCases<HealthAlert::Kind>()) {
    auto* row = new SettingSwitch(theme_, group.plate,
                                  [this, kind = kind.value](bool on) { handlers_.alerts(kind, on); });
    row->setLow(theme_);
    group.add(*row);
    alerts_.push_back(row);
  }
  auto report = startGroup(localized("Weekly report"));
  weeklyReport_ = new SettingSwitch(theme_, report.plate, [this](bool on) { handlers_.weeklyReport(on); });
  report.add(*weeklyReport_);
}

void SettingsView::makeHelp() {
  if (!handlers_.help) return;
  auto* help = new Button(theme_, Button::Kind::quiet, localized("Help for the settings"), content_);
  help->onPress([this] { handlers_.help(); });
  column_->addSpacing(headGap);
  column_->addWidget(help, 0, Qt::AlignLeading);
}

void SettingsView::show(const SettingsPage& page) {
  showTrouble(page);
  showStyles(page);
  opensAtLogin_->show(page.opensAtLogin);
  panelSound_->show(page.panelSound);
  appearance_->choose(std::size_t(page.appearance));
  language_->choose(std::size_t(page.language));
  temperatures_->choose(std::size_t(page.temperatures));
  showHelper(page.helper);
  tool_->tell(page.tool.note, page.tool.outcome, {});
  setWords(*install_, page.tool.action);
  copied_ = page.agents;
  agents_->tell(page.agents.note, {}, {});
  claude_->tell(page.agents.claudeCommand, {}, {});
  clients_->tell(page.agents.clientSnippet, {}, {});
  if (const auto path = text(page.history); history_->text() != path) {
    history_->setText(path);
    history_->setToolTip(path);
  }
  ownCost_->setWords(page.ownCost);
  showUpdates(page.updates);
  for (std::size_t i = 0; i < std::min(alerts_.size(), page.alerts.size()); ++i)
    alerts_[i]->show(page.alerts[i]);
  weeklyReport_->show(page.weeklyReport);
}

void SettingsView::showUpdates(const SettingsPage::Updates& updates) {
  updates_.automatically->show(updates.automatically);
  setWords(*updates_.check, updates.check);
  updates_.check->setEnabled(updates.canCheck);
  for (QWidget* each : {static_cast<QWidget*>(updates_.manual), static_cast<QWidget*>(updates_.rule)})
    each->setVisible(!updates.check.empty());
}

void SettingsView::showTrouble(const SettingsPage& page) {
  const auto now = page.trouble + page.advice;
  const bool isRefusedAnew = std::exchange(refusals_, page.refusals) != page.refusals;
  if (told_ == now && !isRefusedAnew) return;
  told_ = now;
  if (now.empty()) return static_cast<void>(dismiss());
  above_->show();
  banner_->say(Tone::warning, page.trouble, page.advice);
}

bool SettingsView::dismiss() {
  const bool isShown = above_->isVisibleTo(this);
  banner_->dismiss();
  above_->hide();
  return isShown;
}

void SettingsView::showStyles(const SettingsPage& page) {
  styles_->choose(std::size_t(page.style));
  std::vector<MenuBarLabel> labels;
  for (const auto& style : page.styles) labels.push_back(style.label);
  if (labels == labels_ || labels.size() != labels_.size()) return;
  labels_ = std::move(labels);
  styles_->updatePictures();
}

void SettingsView::showHelper(const SettingsPage::Helper& helper) {
  const bool isKnown = !helper.explanation.empty() || !helper.state.empty();
  helper_.head->setVisible(isKnown);
  helper_.plate->setVisible(isKnown);
  helper_.explanation->tell(helper.explanation, {}, {});
  helper_.explanation->setVisible(!helper.explanation.empty());
  helper_.state->setTitle(helper.state);
  helper_.state->tell({}, {}, helper.trouble);
  helper_.state->setVisible(!helper.state.empty());
  helper_.rule->setVisible(!helper.explanation.empty() && !helper.state.empty());
  helper_.turnsOn = helper.turnsOn;
  for (auto [button, words] :
       {std::pair{helper_.action, &helper.action}, {helper_.approval, &helper.approval}}) {
    setWords(*button, *words);
    button->setVisible(!words->empty());
  }
}

void SettingsView::focusLanguage(Qt::FocusReason reason, int top) {
  language_->takeFocus(reason);
  scroll_->scrollTo(top);
}

int SettingsView::top() const { return scroll_->verticalScrollBar()->value(); }

int SettingsView::wholeHeight(int width) const {
  tellLayouts(*content_);
  const int above = above_->isVisibleTo(this) ? above_->heightForWidth(width) : 0;
  const auto margins = column_->contentsMargins();
  const int lane = 2 * sidePadding - margins.left() - margins.right();
  return above + column_->totalHeightForWidth(width - lane);
}

QSize SettingsView::sizeHint() const {
  const int width = theme_.scaled(naturalWidth);
  return {width, wholeHeight(width)};
}

} // namespace korvell
