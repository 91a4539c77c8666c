#include "UI/Sound/SoundView.h"

#include "Base/Localization.h"

#include <QHideEvent>
#include <QShowEvent>

#include <utility>

namespace korvell {

SoundView::SoundView(Services services, QWidget* parent)
    : ListPage(services.theme, SidebarItem::sound, parent), services_(std::move(services)),
      appHandlers_{
          .move = [this](const std::string& app,
                         int percent) { services_.sound.setVolume(app, percent / 100.0); },
          .mute = [this](const std::string& app, bool muted) { services_.sound.setMuted(app, muted); },
          .reset = [this](const std::string& app) { services_.sound.reset(app); }},
      outputHandlers_{
          .move = [this](const std::string&,
                         int percent) { services_.sound.setOutputVolume(percent / 100.0); },
          .mute = [this](const std::string&, bool muted) { services_.sound.setOutputMuted(muted); },
          .reset = {}},
      notice_(new Notice(theme_, Icon::mute, localized("Open System Settings"), content_)),
      output_(new SoundRow(theme_, outputHandlers_, 100, content_)), rule_(new Hairline(theme_, content_)),
      measuring_(new TextLabel(theme_, TextStyle::body, Token::text2,
                               korvell::title(SoundConnection::connecting), content_)),
      quiet_(new TextLabel(theme_, TextStyle::body, Token::text2, "", content_)),
      apps_(new RowGroup(theme_, content_)), remembered_(new RowGroup(theme_, content_)),
      resetAll_(new Button(theme_, Button::Kind::quiet, localized("Reset All"), remembered_)),
      note_(new TextLabel(theme_, TextStyle::small, Token::text3, "", content_)) {
  build();
  if (services_.sound.state)
    changes_ = services_.sound.state->observe([this](const SoundState&) { update(); });
  if (services_.pictures) arrivals_ = services_.pictures->observe([this] { content_->update(); });
  update();
}

void SoundView::build() {
  addInset(notice_, *column_);
  column_->addWidget(output_);
  addInset(rule_, *column_, 6);
  addInset(measuring_, *column_, 12);
  addInset(quiet_, *column_, 16, 20);
  column_->addWidget(apps_);
  column_->addWidget(remembered_);
  addInset(note_, *column_, 16);
  column_->addStretch(0);
  note_->setWrapped();
  quiet_->setWrapped();
  apps_->setTitle(localized("Apps"));
  remembered_->setTitle(localized("Remembered"));
  resetAll_->setHeight(Button::Height::compact);
  remembered_->addButton(resetAll_);
  resetAll_->onPress([this] { services_.sound.resetAll(); });
  notice_->button().onPress(services_.openPermission);
}

std::vector<ListRow*> SoundView::rows() const {
  std::vector<ListRow*> all;
  if (!output_->isHidden()) all.push_back(output_);
  for (const auto* group : {apps_, remembered_})
    all.insert(all.end(), group->rows().begin(), group->rows().end());
  return all;
}

void SoundView::arrange(bool isNarrow) {
  if (std::exchange(isNarrow_, isNarrow) == isNarrow) return;
  shown_.reset();
  update();
}

void SoundView::showEvent(QShowEvent* event) {
  ListPage::showEvent(event);
  if (services_.sound.watchLevels) watching_ = services_.sound.watchLevels();
}

void SoundView::hideEvent(QHideEvent* event) {
  watching_.reset();
  ListPage::hideEvent(event);
}

/// A row stays its application's for as long as it is there: who holds its slider keeps it.
void SoundView::fill(RowGroup& group, const std::vector<SoundPage::Row>& rows) {
  std::vector<ListRow*> shown;
  for (const auto& row : rows) {
    auto* view = rowOf(group, row.key);
    view->show(row, isNarrow_);
    shown.push_back(view);
  }
  group.setRows(std::move(shown));
  group.setVisible(!rows.empty());
}

SoundRow* SoundView::rowOf(RowGroup& group, const std::string& app) {
  for (auto* row : group.rows())
    if (auto* known = static_cast<SoundRow*>(row); known->key() == app) return known;
  auto* row = new SoundRow(theme_, appHandlers_, loudestPercent, &group);
  row->setPictures(services_.pictures);
  return row;
}

/// Tab goes from top to bottom, whoever has come last.
void SoundView::chainControls() {
  QWidget* last = output_->action();
  const auto chain = [&last](QWidget* next) { QWidget::setTabOrder(std::exchange(last, next), next); };
  for (const auto* group : {apps_, remembered_}) {
    if (group == remembered_) chain(resetAll_);
    for (auto* row : group->rows())
      for (auto* control : static_cast<SoundRow*>(row)->controls()) chain(control);
  }
}

void SoundView::showEmptiness() {
  if (emptiness_ == shown_->empty) return;
  emptiness_ = shown_->empty;
  delete std::exchange(empty_, nullptr);
  if (!emptiness_) return;
  empty_ = new EmptyState(theme_, Icon::sound, emptiness_->title, emptiness_->sentence, content_);
  column_->insertWidget(column_->count() - 1, empty_, 1);
  empty_->show();
}

void SoundView::update() {
  const auto* state = services_.sound.state;
  auto page = soundPage(state ? std::optional(**state) : std::nullopt);
  if (shown_ && isInUse()) page = settled(std::move(page), *shown_);
  if (shown_ == page) return;
  shown_ = std::move(page);
  say(shown_->summary);
  notice_->setVisible(shown_->trouble.has_value());
  if (shown_->trouble) {
    notice_->show(shown_->trouble->sentence, shown_->trouble->detail);
    notice_->button().setVisible(shown_->trouble->isPermission && services_.openPermission);
  }
  output_->setVisible(shown_->output.has_value());
  rule_->setVisible(shown_->output.has_value());
  if (shown_->output) output_->show(*shown_->output, isNarrow_);
  measuring_->setVisible(!shown_->isMeasured);
  quiet_->setWords(shown_->quiet);
  quiet_->setVisible(!shown_->quiet.empty());
  const auto before = rows();
  fill(*apps_, shown_->apps);
  fill(*remembered_, shown_->remembered);
  if (rows() != before) chainControls();
  note_->setWords(shown_->note);
  note_->setVisible(!shown_->note.empty());
  showEmptiness();
}

} // namespace korvell
