#include "UI/Alerts/AlertsView.h"

#include "Base/Localization.h"
#include "Core/Health/SeenAlerts.h"
#include "Core/Health/WeeklyReport.h"
#include "UI/Alerts/AlertSettings.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/PartViews.h"

#include <QClipboard>
#include <QEvent>
#include <QGuiApplication>

#include <algorithm>

namespace korvell {

namespace {

constexpr int sideWidth = 284, wideSide = 320, wideFrom = 1000, sideGap = 22;
constexpr int iconSize = 18, textLeft = 34, leastText = 60, natural = 480, usualHeight = 62;

} // namespace

class AlertsView::Row final : public ListRow {
public:
  using Handler = std::function<void(const AlertsPage::Lead&)>;

  Row(const Theme& theme, Handler follow, QWidget* parent)
      : ListRow(theme, parent), follow_(std::move(follow)),
        icon_(new IconLabel(theme, Icon::alerts, iconSize, Token::text2, this)),
        title_(new TextLabel(theme, TextStyle::strong, Token::text1, "", this)),
        detail_(new TextLabel(theme, TextStyle::small, Token::text2, "", this)),
        time_(new FigureLabel(theme, TextStyle::small, this)),
        button_(new Button(theme, Button::Kind::quiet, "", this)) {
    title_->setWrapped();
    detail_->setWrapped();
    time_->setTokens(Token::text3, Token::text3);
    button_->setHeight(Button::Height::compact);
    button_->setMark(Button::Mark::chevron);
    button_->onPress([this] {
      if (const auto lead = alert_.lead) follow_(*lead);
    });
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setRuled(true);
  }

  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override {
    if (!measured_ || measured_->first != width) measured_ = {width, places(width).height};
    return measured_->second;
  }
  QSize sizeHint() const override { return {natural, theme().scaled(usualHeight)}; }
  QSize minimumSizeHint() const override { return {leastText + textLeft, theme().scaled(usualHeight)}; }

  void show(const AlertsPage::Alert& alert) {
    if (alert == alert_) return;
    alert_ = alert;
    setName(alert.spoken);
    icon_->setIcon(alert.icon, Token::text2);
    title_->setWords(alert.title);
    detail_->setWords(alert.detail);
    time_->setFigure({alert.time, {}});
    button_->setVisible(alert.lead.has_value());
    if (alert.lead) button_->setWords(alert.lead->words);
    measured_.reset();
    updateGeometry();
    if (isVisible()) arrange();
    Painted::update();
  }

  Control* action() const override { return button_; }
  void fillMenu(Menu& menu) override {
    if (alert_.lead)
      menu.add(Icon::chevron, alert_.lead->words, [this, lead = *alert_.lead] { follow_(lead); });
    menu.add(Icon::copy, localized("Copy"), [words = alert_.title + "\n" + alert_.detail] {
      QGuiApplication::clipboard()->setText(text(words));
    });
  }

protected:
  void resizeEvent(QResizeEvent*) override { arrange(); }
  void themeChanged() override {
    measured_.reset();
    ListRow::themeChanged();
    arrange();
  }

  void draw(QPainter& painter) override {
    ListRow::draw(painter);
    if (!alert_.isNew) return;
    constexpr double middle = 7, radius = 3;
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme().color(Token::accent));
    painter.drawEllipse(fromStart(*this, middle - radius, icon_->geometry().center().y() + 0.5 - radius,
                                  2 * radius, 2 * radius));
  }

private:
  struct Places {
    QRectF icon, title, time, detail, button;
    int height;
  };
  /// By hand: a hundred rows of nested layouts would take longer than the rest of the page.
  Places places(int width) const {
    constexpr int above = 12, below = 5, gap = 1, timeGap = 16, buttonGap = 12;
    constexpr int beyond = 6;                       // a quiet button's words end where the text does
    constexpr int detailAbove = 2, detailBelow = 6; // its first line stands beside the button's words
    const int left = rowInset + textLeft, end = width - rowInset;
    const auto time = time_->sizeHint();
    const auto button = button_->sizeHint();
    const int titleRoom = std::max(leastText, end - left - timeGap - time.width());
    const int title = title_->heightForWidth(titleRoom);
    const int taken = alert_.lead ? button.width() - beyond + buttonGap : 0;
    const int detailRoom = std::max(leastText, end - left - taken);
    const int detail = detail_->heightForWidth(detailRoom);
    const int second = above + title + gap;
    const int lower = std::max(detailAbove + detail + detailBelow, button.height());
    return {fromStart(*this, rowInset, above, iconSize, iconSize),
            fromStart(*this, left, above, titleRoom, title),
            fromStart(*this, end - time.width(), above, time.width(), time.height()),
            fromStart(*this, left, second + detailAbove, detailRoom, detail),
            fromStart(*this, end + beyond - button.width(), second, button.width(), button.height()),
            second + lower + below};
  }

  void arrange() {
    const auto at = places(width());
    icon_->setGeometry(at.icon.toRect());
    title_->setGeometry(at.title.toRect());
    time_->setGeometry(at.time.toRect());
    detail_->setGeometry(at.detail.toRect());
    button_->setGeometry(at.button.toRect());
  }

  const Handler follow_;
  AlertsPage::Alert alert_;
  mutable std::optional<std::pair<int, int>> measured_; ///< the last width asked for, and its height
  IconLabel* icon_;
  TextLabel *title_, *detail_;
  FigureLabel* time_;
  Button* button_;
};

AlertsView::AlertsView(Services services, QWidget* parent)
    : ListPage(services.theme, SidebarItem::alerts, parent), services_(std::move(services)),
      halves_(new QBoxLayout(QBoxLayout::LeftToRight)), list_(new QWidget(content_)),
      empty_(new EmptyState(
          theme_, Icon::alerts, localized("No alerts."),
          localized("An alert means that something stayed bad for minutes. A short peak raises none."),
          list_)),
      days_(new KeptColumn(list_)), rule_(new Hairline(theme_, content_, Qt::Vertical)),
      settings_(new AlertSettings(
          theme_,
          {.alerts = [this](HealthAlert::Kind kind,
                            bool isOn) { services_.ask(SwitchAlertsRequest{.kind = kind, .enabled = isOn}); },
           .report =
               [this](bool isOn) {
                 services_.ask(
                     ChangeSettingRequest{.key = std::string(WeeklyReport::enabledKey), .value = isOn});
               }},
          content_)),
      cycles_(services_.model.cycle.observe([this](std::int64_t) { update(); })) {
  column_->addLayout(halves_, 1);
  halves_->setSpacing(0);
  auto* list = bare<QVBoxLayout>(list_);
  list->addWidget(days_);
  list->addWidget(empty_, 1);
  list->addStretch(0);
  halves_->addWidget(list_, 1);
  halves_->addSpacing(sideGap - rowInset);
  halves_->addWidget(rule_);
  halves_->addSpacing(sideGap - 1);
  halves_->addWidget(settings_);
  halves_->addSpacing(rowInset);
  update();
}

void AlertsView::arrange(bool isNarrow) {
  halves_->setDirection(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
  rule_->setVisible(!isNarrow);
  const int wide = theme_.scaled(width() - 2 * 28 > wideFrom ? wideSide : sideWidth);
  settings_->setMinimumWidth(isNarrow ? 0 : wide);
  settings_->setMaximumWidth(isNarrow ? QWIDGETSIZE_MAX : wide);
  settings_->setContentsMargins(isNarrow ? rowInset : 0, 0, isNarrow ? rowInset : 0, 0);
}

void AlertsView::showEvent(QShowEvent* event) {
  ListPage::showEvent(event);
  see();
}

void AlertsView::changeEvent(QEvent* event) {
  ListPage::changeEvent(event);
  if (event->type() == QEvent::ActivationChange) see();
}

void AlertsView::see() {
  if (!isVisible() || !isActiveWindow() || fresh_.empty()) return;
  const auto now = services_.model.snapshot->date;
  if (newAlerts(*services_.model.alerts, services_.defaults, now) == 0) return;
  services_.see();
}

void AlertsView::update() {
  fresh_.merge(newAlertIDs(services_.model, services_.defaults));
  auto page = alertsPage(services_.model, {services_.zone, services_.defaults, services_.sections, fresh_});
  // A switch that could not be stored springs back, also when the page is what it was.
  settings_->show(page);
  if (shown_ != page) {
    shown_ = std::move(page);
    say(shown_->summary);
    empty_->setVisible(shown_->days.empty());
    if (days_->refill([this] { fill(); })) orderTabs({days_, settings_});
  }
  see();
}

void AlertsView::fill() {
  for (const auto& day : shown_->days) {
    const bool isFirst = &day == &shown_->days.front();
    days_
        ->put("day " + day.title, isFirst ? 0 : GroupHead::gap,
              [this](QWidget* parent) { return new GroupHead(theme_, parent); })
        .setTitle(day.title);
    for (const auto& alert : day.alerts)
      days_
          ->put("alert " + alert.id, 0,
                [this](QWidget* parent) {
                  return new Row(
                      theme_, [this](const AlertsPage::Lead& lead) { follow(lead); }, parent);
                })
          .show(alert);
  }
}

void AlertsView::follow(const AlertsPage::Lead& lead) {
  if (lead.moment)
    services_.showMoment(lead.section, *lead.moment);
  else
    services_.open(lead.section);
}

} // namespace korvell
