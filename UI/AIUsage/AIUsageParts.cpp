#include "UI/AIUsage/AIUsageParts.h"

#include "Base/Localization.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/ListParts.h"
#include "UI/Parts/PartViews.h"

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

constexpr double lineRow = 25, tableHead = 30, tableRow = 31;
constexpr double nameWidth = 84, barWidth = 118, barHeight = 7, barGap = 10, markAt = 0.8;
constexpr double toneSize = 15, percentWidth = 40, percentGap = 14;
constexpr double tokensWidth = 76, costWidth = 84, columnGap = 4, iconSize = 16, iconRoom = 24, detailGap = 7;

} // namespace

// Costs

CostTile::CostTile(const Theme& theme, QWidget* parent)
    : QWidget(parent), caption_(new TextLabel(theme, TextStyle::small, Token::text3, "", this)),
      note_(new TextLabel(theme, TextStyle::small, Token::text3, "", this)),
      figure_(new FigureLabel(theme, TextStyle::figureLarge, this)) {
  auto* rows = bare<QVBoxLayout>(this);
  rows->addWidget(caption_);
  rows->addSpacing(2);
  rows->addWidget(figure_);
  rows->addSpacing(3);
  rows->addWidget(note_);
  rows->addStretch(1);
}

void CostTile::show(const AIUsagePage::Tile& tile) {
  caption_->setWords(tile.caption);
  figure_->setFigure({tile.figure, {}});
  // Why there is no figure stands in the place of what it would be about.
  note_->setWords(tile.reason.empty() ? tile.note : tile.reason);
}

// The plan

class PlanBox::Line final : public Painted {
public:
  Line(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setToolTip(text(localized("The stroke stands at 80%, where an alert comes.")));
  }

  /// What the words at both ends take in every line.
  struct Ends {
    double name = 0, reset = 0;
    bool operator==(const Ends&) const = default;
  };
  static Ends endsOf(const AIUsagePage::Limit& limit, const Theme& theme) {
    return {std::max<double>(theme.scaled(nameWidth),
                             textWidth(theme, TextStyle::body, text(limit.name)) + barGap),
            textWidth(theme, TextStyle::small, text(limit.reset))};
  }

  void show(const AIUsagePage::Limit& limit, const Ends& ends) {
    if (limit == limit_ && ends == ends_) return;
    limit_ = limit;
    ends_ = ends;
    setName(limit.spoken);
    update();
  }

  QSize sizeHint() const override { return {400, theme().scaled(lineRow)}; }
  QSize minimumSizeHint() const override { return {240, sizeHint().height()}; }
  QAccessible::Role role() const override { return QAccessible::ProgressBar; }
  std::optional<double> meter() const override { return limit_.level * 100; }

protected:
  void draw(QPainter& painter) override {
    const auto high = double(height());
    const auto [named, resetWidth] = ends_;
    const double fixed = barGap + toneSize + theme().scaled(percentWidth) + percentGap + resetWidth;
    const double bar = std::clamp<double>(width() - named - fixed, 24, theme().scaled(barWidth));
    drawText(painter, fromStart(*this, 0, 0, named, high), theme(), TextStyle::body, Token::text1,
             text(limit_.name));
    drawLevel(painter, fromStart(*this, named, std::round((high - barHeight) / 2), bar, barHeight));
    double from = named + bar + barGap;
    if (limit_.isTight)
      drawIcon(painter, Icon::warning, fromStart(*this, from, (high - toneSize) / 2, toneSize, toneSize),
               theme().color(Token::warningMark), layoutDirection());
    from += toneSize;
    painter.setPen(theme().color(limit_.hasReset ? Token::text3 : Token::text1));
    drawFigures(painter, fromStart(*this, from, 0, theme().scaled(percentWidth), high),
                isRightToLeft() ? Qt::AlignLeft : Qt::AlignRight, fontOf(theme(), TextStyle::strong),
                text(limit_.percent));
    drawText(painter, fromStart(*this, std::max(from, width() - resetWidth), 0, resetWidth, high), theme(),
             TextStyle::small, Token::text2, text(limit_.reset), Qt::AlignRight);
  }

private:
  void drawLevel(QPainter& painter, const QRectF& box) const {
    const auto fill = limit_.hasReset ? Token::border : limit_.isTight ? Token::warningMark : Token::accent;
    korvell::drawBar(painter, box, theme(), fill, limit_.level, layoutDirection());
    const double share = isRightToLeft() ? 1 - markAt : markAt;
    drawHairline(painter, {box.left() + share * box.width(), box.top() - 2}, box.height() + 4,
                 theme().color(Token::text2), Qt::Vertical);
  }

  AIUsagePage::Limit limit_;
  Ends ends_;
};

PlanBox::PlanBox(const Theme& theme, QWidget* parent)
    : QWidget(parent), theme_(theme), title_(new TextLabel(theme, TextStyle::small, Token::text3, "", this)),
      read_(new TextLabel(theme, TextStyle::small, Token::text3, "", this)),
      sentence_(new TextLabel(theme, TextStyle::body, Token::text2, "", this)), lines_(new QVBoxLayout) {
  auto* rows = bare<QVBoxLayout>(this);
  auto* head = new QHBoxLayout;
  head->setSpacing(12);
  head->addWidget(title_, 1);
  head->addWidget(read_);
  rows->addLayout(head);
  rows->addSpacing(2);
  rows->addWidget(sentence_);
  lines_->setSpacing(0);
  rows->addLayout(lines_);
  rows->addStretch(1);
  read_->setNeverCut();
}

void PlanBox::show(const AIUsagePage::Plan& plan) {
  title_->setWords(plan.title);
  read_->setWords(plan.read);
  read_->setVisible(!plan.read.empty());
  sentence_->setWords(plan.sentence);
  sentence_->setVisible(!plan.sentence.empty());
  fitRows(shown_, plan.limits.size(), [this] {
    auto* line = new Line(theme_, this);
    lines_->addWidget(line);
    line->QWidget::show();
    return line;
  });
  Line::Ends ends;
  for (const auto& limit : plan.limits) {
    const auto own = Line::endsOf(limit, theme_);
    ends = {std::max(ends.name, own.name), std::max(ends.reset, own.reset)};
  }
  for (std::size_t i = 0; i < shown_.size(); ++i) shown_[i]->show(plan.limits[i], ends);
}

// Tables

namespace {

struct UsageColumns {
  double tokens, cost; ///< where they begin
};

UsageColumns columnsOf(const Theme& theme, double width) {
  const double cost = width - theme.scaled(costWidth);
  return {cost - columnGap - theme.scaled(tokensWidth), cost};
}

} // namespace

class UsageTable::Head final : public Painted {
public:
  Head(const Theme& theme, std::string_view title, QWidget* parent) : Painted(theme, parent) {
    setName(title);
    title_ = text(title);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  }
  QSize sizeHint() const override { return {240, theme().scaled(tableHead)}; }
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::RowHeader; }

protected:
  void draw(QPainter& painter) override {
    const auto at = columnsOf(theme(), width());
    const double high = height();
    drawText(painter, fromStart(*this, 0, 0, at.tokens, high), theme(), TextStyle::head, Token::text1,
             title_);
    const auto head = [&](double from, double wide, const std::string& words) {
      drawText(painter, fromStart(*this, from, 0, wide, high), theme(), TextStyle::caption, Token::text3,
               text(words), Qt::AlignRight);
    };
    head(at.tokens, theme().scaled(tokensWidth), localized("Tokens"));
    head(at.cost, theme().scaled(costWidth), localized("API-equivalent"));
  }

private:
  QString title_;
};

class UsageTable::Row final : public Painted {
public:
  Row(const Theme& theme, std::optional<Icon> icon, QWidget* parent) : Painted(theme, parent), icon_(icon) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  }

  void show(const AIUsagePage::Row& row) {
    if (row == row_) return;
    row_ = row;
    setName(row.spoken);
    update();
  }

  QSize sizeHint() const override { return {240, theme().scaled(tableRow)}; }
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::ListItem; }

protected:
  void draw(QPainter& painter) override {
    drawHairline(painter, {0, 0}, width(), theme().color(Token::hairline));
    const auto at = columnsOf(theme(), width());
    const double high = height();
    double from = 0;
    if (icon_) {
      drawIcon(painter, *icon_, fromStart(*this, 0, (high - iconSize) / 2, iconSize, iconSize),
               theme().color(Token::text2), layoutDirection());
      from = iconRoom;
    }
    drawName(painter, from, at.tokens);
    const auto figure = [&](double place, double wide, Token ink, const std::string& words) {
      painter.setPen(theme().color(ink));
      drawFigures(painter, fromStart(*this, place, 0, wide, high),
                  isRightToLeft() ? Qt::AlignLeft : Qt::AlignRight, fontOf(theme(), TextStyle::body),
                  text(words));
    };
    figure(at.tokens, theme().scaled(tokensWidth), Token::text2, row_.tokens);
    figure(at.cost, theme().scaled(costWidth), Token::text1, row_.cost);
  }

private:
  /// The name gives way before its detail does.
  void drawName(QPainter& painter, double from, double end) {
    constexpr double leastName = 80;
    const auto name = text(row_.name), detail = text(row_.detail);
    const double room = end - from - detailGap;
    const double detailWidth =
        detail.isEmpty() ? 0 : textWidth(theme(), TextStyle::small, detail) + detailGap;
    const double shown =
        std::min(textWidth(theme(), TextStyle::body, name), std::max(leastName, room - detailWidth));
    const bool isCut = drawText(painter, fromStart(*this, from, 0, shown, height()), theme(), TextStyle::body,
                                Token::text1, name, Qt::AlignLeft, Qt::ElideMiddle);
    const auto whole = isCut ? name : QString();
    if (toolTip() != whole) setToolTip(whole);
    if (detail.isEmpty()) return;
    const double left = from + shown + detailGap;
    drawText(painter, fromStart(*this, left, 0, std::max(0.0, end - left - detailGap), height()), theme(),
             TextStyle::small, Token::text2, detail);
  }

  const std::optional<Icon> icon_;
  AIUsagePage::Row row_;
};

UsageTable::UsageTable(const Theme& theme, std::string_view title, std::optional<Icon> icon, QWidget* parent)
    : QWidget(parent), theme_(theme), icon_(icon), column_(bare<QVBoxLayout>(this)) {
  auto* rows = new QVBoxLayout;
  rows->setSpacing(0);
  column_->addWidget(new Head(theme, title, this));
  column_->addLayout(rows);
  column_->addStretch(1);
  column_ = rows;
}

void UsageTable::show(const std::vector<AIUsagePage::Row>& rows) {
  fitRows(rows_, rows.size(), [this] {
    auto* row = new Row(theme_, icon_, this);
    column_->addWidget(row);
    row->QWidget::show();
    return row;
  });
  for (std::size_t i = 0; i < rows_.size(); ++i) rows_[i]->show(rows[i]);
}

} // namespace korvell
