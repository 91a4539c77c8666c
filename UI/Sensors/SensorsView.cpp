#include "UI/Sensors/SensorsView.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/PartViews.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr int rowHeight = 30, leadsBelow = 22;
constexpr double captionHeight = 18, leadGap = 36, leastLead = 72;
constexpr double figureRoom = 84, barRoom = 300, narrowBar = 140, endRoom = 52, endGap = 8, barHeight = 4;

} // namespace

/// The figures that other pages speak of, beside each other.
class SensorsView::Leads final : public Painted, public Whole {
public:
  Leads(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  }

  void show(const std::vector<SensorsPage::Lead>& leads) {
    if (leads == leads_) return;
    leads_ = leads;
    std::string words;
    for (const auto& lead : leads_)
      words += (words.empty() ? "" : ", ") + lead.caption + " " + lead.figure.number + " " + lead.figure.unit;
    setName(words);
    updateGeometry();
    QWidget::update();
  }

  QSize sizeHint() const override {
    double width = 0;
    for (const auto& lead : leads_) width += widthOf(lead) + leadGap;
    const int height = theme().scaled(captionHeight) + lineHeight(theme(), TextStyle::figureMedium);
    return {qCeil(width), height};
  }
  QSize minimumSizeHint() const override { return {80, sizeHint().height()}; }
  QAccessible::Role role() const override { return QAccessible::StaticText; }
  std::optional<std::string> cutText() const override {
    return sizeHint().width() - leadGap > width() ? std::optional(spokenName()) : std::nullopt;
  }

protected:
  void draw(QPainter& painter) override {
    double from = 0;
    for (const auto& lead : leads_) {
      const auto wide = widthOf(lead);
      const auto caption = fromStart(*this, from, 0, wide, theme().scaled(captionHeight));
      drawText(painter, caption, theme(), TextStyle::small, Token::text3, text(lead.caption));
      const FigureText figure(theme(), TextStyle::figureMedium, lead.figure);
      const double left = isRightToLeft() ? caption.right() - figure.width() : caption.left();
      figure.draw(painter, {left, baseline(theme(), TextStyle::figureMedium, caption.bottom())},
                  theme().color(Token::text1), theme().color(Token::text2));
      from += wide + leadGap;
    }
  }

private:
  double widthOf(const SensorsPage::Lead& lead) const {
    return std::max({theme().scaled(1) * leastLead, textWidth(theme(), TextStyle::small, text(lead.caption)),
                     FigureText(theme(), TextStyle::figureMedium, lead.figure).width()});
  }
  std::string spokenName() const { return accessibleName().toStdString(); }

  std::vector<SensorsPage::Lead> leads_;
};

/// A name, a bar with its ends, a figure.
class SensorsView::Row final : public ListRow {
public:
  Row(const Theme& theme, QWidget* parent) : ListRow(theme, parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  }

  void show(const SensorsPage::Row& row, bool isNarrow) {
    if (row == row_ && isNarrow == isNarrow_) return;
    row_ = row;
    isNarrow_ = isNarrow;
    setName(row.spoken);
    setToolTip(text(row.name));
    QWidget::update();
  }

  QSize sizeHint() const override { return {320, theme().scaled(rowHeight)}; }
  QSize minimumSizeHint() const override { return {240, sizeHint().height()}; }

protected:
  void draw(QPainter& painter) override {
    ListRow::draw(painter);
    const double end = width() - rowInset, high = height();
    const double figures = theme().scaled(figureRoom);
    drawFigure(painter, fromStart(*this, end - figures, 0, figures, high));
    const double ends = isNarrow_ ? 0 : theme().scaled(endRoom);
    const double bar = isNarrow_ ? narrowBar : barRoom;
    const double barFrom = end - figures - ends - bar;
    if (row_.level) drawLevel(painter, barFrom, bar, ends);
    drawText(painter, fromStart(*this, rowInset, 0, barFrom - ends - endGap - rowInset, high), theme(),
             TextStyle::body, Token::text1, text(row_.name));
  }

private:
  void drawFigure(QPainter& painter, const QRectF& box) {
    const FigureText figure(theme(), TextStyle::strong, row_.figure);
    const double line = lineHeight(theme(), TextStyle::strong);
    const double left = isRightToLeft() ? box.left() : box.right() - figure.width();
    figure.draw(painter, {left, baseline(theme(), TextStyle::strong, box.center().y() - line / 2)},
                theme().color(Token::text1), theme().color(Token::text2));
  }

  void drawLevel(QPainter& painter, double from, double wide, double ends) {
    const double middle = height() / 2.0;
    drawBar(painter, fromStart(*this, from, middle - barHeight / 2, wide, barHeight), theme(), row_.fill,
            *row_.level, layoutDirection());
    if (ends <= endGap) return;
    const auto tell = [&](const std::string& words, double start, Qt::Alignment side) {
      drawText(painter, fromStart(*this, start, 0, ends - endGap, height()), theme(), TextStyle::caption,
               Token::text3, text(words), side);
    };
    tell(row_.least, from - ends, Qt::AlignRight);
    tell(row_.most, from + wide + endGap, Qt::AlignLeft);
  }

  SensorsPage::Row row_;
  bool isNarrow_ = false;
};

SensorsView::SensorsView(Services services, QWidget* parent)
    : ListPage(services.theme, SidebarItem::sensors, parent), services_(services),
      leads_(new Leads(theme_, content_)),
      measuring_(new TextLabel(theme_, TextStyle::body, Token::text2, localized("Measuring…"), content_)),
      empty_(new EmptyState(
          theme_, Icon::sensors, localized("No sensor can be read here."),
          localized("A virtual machine has none. \"korvell doctor\" tells what was looked for."), content_)),
      groupsColumn_(new QVBoxLayout),
      cycles_(services_.model.cycle.observe([this](std::int64_t) { update(); })) {
  addInset(leads_, *column_, 0, leadsBelow);
  addInset(measuring_, *column_);
  column_->addWidget(empty_, 1);
  groupsColumn_->setSpacing(0);
  column_->addLayout(groupsColumn_);
  column_->addStretch(0);
  update();
}

void SensorsView::arrange(bool isNarrow) {
  if (std::exchange(isNarrow_, isNarrow) == isNarrow) return;
  shown_.reset();
  update();
}

void SensorsView::update() {
  auto page = sensorsPage(services_.model, temperatureUnit(services_.defaults));
  if (shown_ == page) return;
  shown_ = std::move(page);
  say(shown_->summary);
  leads_->show(shown_->leads);
  leads_->setVisible(!shown_->leads.empty());
  measuring_->setVisible(!shown_->isMeasured);
  empty_->setVisible(shown_->isMeasured && shown_->groups.empty());
  fitGroups(groups_, shown_->groups.size(), *groupsColumn_, theme_, content_);
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    const auto& group = shown_->groups[i];
    groups_[i]->setTitle(group.title);
    groups_[i]->fit(group.rows.size(), [this](QWidget* parent) { return new Row(theme_, parent); });
    for (std::size_t j = 0; j < group.rows.size(); ++j)
      static_cast<Row*>(groups_[i]->rows()[j])->show(group.rows[j], isNarrow_);
  }
}

} // namespace korvell
