#include "UI/Startup/StartupView.h"

#include "Base/Localization.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/PartViews.h"

#include <QClipboard>
#include <QGuiApplication>

namespace korvell {

class StartupView::Row final : public ListRow {
public:
  using Handler = std::function<void(const StartupPage::Item&)>;
  using MenuHandler = std::function<void(const StartupPage::Item&, QPoint)>;

  Row(const Theme& theme, Handler remove, const MenuHandler& menu, QWidget* parent)
      : ListRow(theme, parent), remove_(std::move(remove)),
        label_(new TextLabel(theme, TextStyle::strong, Token::text1, "", this)),
        program_(new TextLabel(theme, TextStyle::small, Token::text2, "", this)),
        starts_(new TextLabel(theme, TextStyle::small, Token::text2, "", this)),
        state_(new StateLabel(theme, this)),
        button_(new Button(theme, Button::Kind::quiet, localized("Remove…"), this)),
        menu_(new IconButton(theme, Icon::dots, localized("More"), this)) {
    label_->setElide(Qt::ElideMiddle);
    button_->setHeight(Button::Height::compact);
    button_->onPress([this] { remove_(item_); });
    menu_->onPress([this, menu] { menu(item_, menu_->mapToGlobal(QPoint(0, menu_->height()))); });
    layOut();
  }

  void show(const StartupPage::Item& item, bool isNarrow, bool hasButtons) {
    starts_->setVisible(!isNarrow);
    auto policy = button_->sizePolicy();
    policy.setRetainSizeWhenHidden(hasButtons && !isNarrow);
    button_->setSizePolicy(policy);
    if (item == item_) return;
    item_ = item;
    setName(item.spoken);
    label_->setWords(item.label);
    program_->setElide(item.isPath ? Qt::ElideMiddle : Qt::ElideRight);
    program_->setWords(item.program);
    starts_->setWords(item.starts);
    const StateLook gone{.icon = Icon::warning, .mark = Token::warningMark, .words = Token::warning};
    const StateLook loaded{.mark = Token::good, .words = Token::text2};
    state_->show(item.remove ? gone : loaded, item.state);
    button_->setVisible(item.remove.has_value());
    button_->setName(localized("Remove {label}…", {{"label", item.label}}));
    menu_->setName(localized("More for {name}", {{"name", item.label}}));
  }

  Control* action() const override { return item_.remove ? static_cast<Control*>(button_) : menu_; }
  void remove() override {
    if (item_.remove) remove_(item_);
  }

private:
  void layOut() {
    constexpr int beyond = 4; // the dots end where the text does
    auto* row = bare<QHBoxLayout>(this);
    row->setContentsMargins(rowInset - beyond, 7, rowInset - beyond, 7);
    row->addSpacing(beyond);
    auto* words = new QVBoxLayout;
    words->setSpacing(1);
    words->addWidget(label_);
    words->addWidget(program_);
    row->addLayout(words, 1);
    row->addSpacing(20);
    const auto widthOf = [&](std::string_view text) {
      return qCeil(textWidth(theme(), TextStyle::small, korvell::text(text)));
    };
    starts_->setFixedWidth(widthOf(localized("starts by itself")));
    row->addWidget(starts_);
    row->addSpacing(20);
    state_->setFixedWidth(qCeil(std::max(stateWidth(theme(), korvell::text(localized("leftover"))),
                                         stateWidth(theme(), korvell::text(localized("loaded"))))));
    row->addWidget(state_);
    row->addSpacing(12);
    row->addWidget(button_);
    row->addSpacing(4);
    row->addWidget(menu_);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  }

  const Handler remove_;
  StartupPage::Item item_;
  TextLabel *label_, *program_, *starts_;
  StateLabel* state_;
  Button* button_;
  IconButton* menu_;
};

StartupView::StartupView(Services services, QWidget* parent)
    : ListPage(services.theme, SidebarItem::startup, parent), services_(std::move(services)),
      lead_(new TextLabel(theme_, TextStyle::body, Token::text2, "", content_)),
      measuring_(new TextLabel(theme_, TextStyle::body, Token::text2, localized("Measuring…"), content_)),
      empty_(new EmptyState(theme_, Icon::startup, localized("No startup items"),
                            startupPage(services_.model).lead, content_)),
      groupsColumn_(new QVBoxLayout),
      cycles_(services_.model.cycle.observe([this](std::int64_t) { update(); })) {
  lead_->setWrapped();
  addInset(lead_, *column_, 0, 14);
  addInset(measuring_, *column_);
  column_->addWidget(empty_, 1);
  groupsColumn_->setSpacing(0);
  column_->addLayout(groupsColumn_);
  column_->addStretch(0);
  update();
}

std::vector<ListRow*> StartupView::rows() const {
  std::vector<ListRow*> all;
  for (const auto* group : groups_) all.insert(all.end(), group->rows().begin(), group->rows().end());
  return all;
}

void StartupView::arrange(bool isNarrow) {
  if (std::exchange(isNarrow_, isNarrow) == isNarrow) return;
  shown_.reset();
  update();
}

void StartupView::update() {
  auto page = startupPage(services_.model);
  if (shown_ == page) return;
  shown_ = std::move(page);
  say(shown_->summary);
  lead_->setWords(shown_->lead);
  lead_->setVisible(!shown_->groups.empty());
  measuring_->setVisible(!shown_->isMeasured);
  empty_->setVisible(shown_->isMeasured && shown_->groups.empty());
  fitGroups(groups_, shown_->groups.size(), *groupsColumn_, theme_, content_);
  const bool hasButtons = !shown_->groups.empty() && shown_->groups.front().items.front().remove;
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    const auto& group = shown_->groups[i];
    groups_[i]->setTitle(group.title);
    groups_[i]->fit(group.items.size(), [this](QWidget* parent) {
      return new Row(
          theme_, [this](const StartupPage::Item& item) { services_.ask(*item.remove); },
          [this](const StartupPage::Item& item, QPoint where) { showMenu(item, where); }, parent);
    });
    for (std::size_t j = 0; j < group.items.size(); ++j)
      static_cast<Row*>(groups_[i]->rows()[j])->show(group.items[j], isNarrow_, hasButtons);
  }
}

void StartupView::showMenu(const StartupPage::Item& item, QPoint where) {
  auto* menu = new Menu(theme_, this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  if (services_.showFile)
    menu->add(Icon::folder, localized("Show File in Finder"),
              [this, file = item.file] { services_.showFile(file); });
  menu->add(Icon::copy, localized("Copy"),
            [words = item.label + "\t" + item.file] { QGuiApplication::clipboard()->setText(text(words)); });
  menu->popup(where);
}

} // namespace korvell
