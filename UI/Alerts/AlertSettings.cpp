#include "UI/Alerts/AlertSettings.h"

#include "Base/Localization.h"
#include "UI/Kit/Switches.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr int headGap = 7, sectionGap = 18, reportGap = 8;

}

AlertSettings::AlertSettings(const Theme& theme, const Handlers& handlers, QWidget* parent)
    : QWidget(parent), theme_(theme), handlers_(handlers), column_(bare<QVBoxLayout>(this)),
      report_(new Plate(theme, {.fill = Token::hover, .outline = std::nullopt}, this)),
      reportTitle_(new TextLabel(theme, TextStyle::smallStrong, Token::text1, "", report_)),
      reportBody_(new TextLabel(theme, TextStyle::small, Token::text2, "", report_)),
      reportTime_(new TextLabel(theme, TextStyle::caption, Token::text3, "", report_)),
      hint_(new TextLabel(theme, TextStyle::small, Token::text3, "", this)) {
  addHead(localized("Alert me when"));
  const auto& kinds = allCases<HealthAlert::Kind>();
  for (std::size_t i = 0; i < std::size(kinds); ++i) {
    auto* toggle = addSwitch(localized(kinds[i].title), i + 1 == std::size(kinds));
    toggle->onToggle([this, kind = kinds[i].value](bool isOn) { handlers_.alerts(kind, isOn); });
    switches_.push_back(toggle);
  }
  column_->addSpacing(sectionGap);
  addHead(localized("Weekly report"));
  sends_ = addSwitch(localized("Send a weekly report on Monday morning"), true);
  sends_->onToggle([this](bool isOn) { handlers_.report(isOn); });
  auto* words = bare<QVBoxLayout>(report_);
  words->setContentsMargins(14, 12, 14, 12);
  for (auto* label : {reportTitle_, reportBody_, reportTime_}) {
    label->setWrapped();
    words->addWidget(label);
    words->addSpacing(label == reportTitle_ ? 4 : label == reportBody_ ? 8 : 0);
  }
  column_->addSpacing(reportGap);
  column_->addWidget(report_);
  hint_->setWrapped();
  column_->addWidget(hint_);
  column_->addStretch(1);
}

void AlertSettings::addHead(std::string_view words) {
  auto* head = new TextLabel(theme_, TextStyle::head, Token::text1, words, this);
  column_->addWidget(head);
  column_->addSpacing(headGap);
  column_->addWidget(new Hairline(theme_, this));
}

Toggle* AlertSettings::addSwitch(std::string_view words, bool isLast) {
  auto* line = new QHBoxLayout;
  line->setContentsMargins(0, 6, 0, 5);
  line->setSpacing(16);
  auto* label = new TextLabel(theme_, TextStyle::body, Token::text1, words, this);
  label->setWrapped();
  auto* toggle = new Toggle(theme_, words, this);
  // The switch stands on the middle of the first line.
  auto* lines = new QVBoxLayout;
  lines->setContentsMargins(0, std::max(0, (Control::leastHit - lineHeight(theme_, TextStyle::body)) / 2), 0,
                            0);
  lines->addWidget(label, 0, Qt::AlignTop);
  line->addLayout(lines, 1);
  line->addWidget(toggle, 0, Qt::AlignTop);
  column_->addLayout(line);
  if (!isLast) column_->addWidget(new Hairline(theme_, this));
  return toggle;
}

void AlertSettings::show(const AlertsPage& page) {
  for (std::size_t i = 0; i < switches_.size(); ++i) switches_[i]->setOn(page.switches[i].isOn);
  sends_->setOn(page.sendsReport);
  report_->setVisible(page.report.has_value());
  if (page.report) {
    report_->setName(page.report->title);
    reportTitle_->setWords(page.report->title);
    reportBody_->setWords(page.report->body);
    reportTime_->setWords(page.report->time);
  }
  hint_->setWords(page.reportHint);
  hint_->setVisible(!page.reportHint.empty());
}

} // namespace korvell
