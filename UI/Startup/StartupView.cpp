#include "UI/Startup/StartupView.h"

#include "Base/Localization.h"
#include "UI/Kit/Focus.h"
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
  using MenuHandler = std::function<void(Menu&, const StartupPage::Item&)>;

  Row(const Theme& theme, Handler remove, MenuHandler menu, QWidget* parent)
      : ListRow(theme, parent), remove_(std::move(remove)), fillMenu_(std::move(menu)),
        label_(new TextLabel(theme, TextStyle::strong, Token::text1, "", this)),
        program_(new TextLabel(theme, TextStyle::small, Token::text2, "", this)),
        starts_(new TextLabel(theme, TextStyle::small, Token::text2, "", this)),
        state_(new StateLabel(theme, this)),
        button_(new Button(theme, Button::Kind::quiet, localized("Remove…"), this)),
        menu_(new IconButton(theme, Icon::dots, localized("More"), this)) {
    label_->setElide(Qt::ElideMiddle);
    button_->setHeight(Button::Height::compact);
    button_->onPress([this] { remove_(item_); });
    menu_->onPress([this] { openMenu(menu_->mapToGlobal(QPoint(0, menu_->height()))); });
    setRuled(true);
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
  void fillMenu(Menu& menu) override { fillMenu_(menu, item_); }

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
  const MenuHandler fillMenu_;
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
      noMatch_(new TextLabel(theme_, TextStyle::body, Token::text2, "", content_)),
      filter_(new FilterField(theme_, content_)),
      empty_(new EmptyState(theme_, Icon::startup, localized("No startup items"),
                            startupPage(services_.model).lead, content_)),
      head_(new QBoxLayout(QBoxLayout::LeftToRight)), list_(new KeptColumn(content_)),
      cycles_(services_.model.cycle.observe([this](std::int64_t) { update(); })) {
  lead_->setWrapped();
  noMatch_->setWrapped();
  head_->setContentsMargins(rowInset, 0, rowInset, 14);
  head_->addWidget(lead_, 1);
  head_->addWidget(filter_, 0, Qt::AlignTop | Qt::AlignLeft);
  column_->addLayout(head_);
  addInset(measuring_, *column_);
  addInset(noMatch_, *column_);
  column_->addWidget(empty_, 1);
  column_->addWidget(list_);
  column_->addStretch(0);
  filter_->onFilter([this](std::string words) {
    filtered_ = std::move(words);
    update();
  });
  update();
}

void StartupView::arrange(bool isNarrow) {
  head_->setDirection(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
  head_->setSpacing(isNarrow ? 10 : 32);
  head_->setStretch(0, isNarrow ? 0 : 1); // what a short list leaves free is not for the lead
  if (std::exchange(isNarrow_, isNarrow) == isNarrow) return;
  shown_.reset();
  update();
}

void StartupView::update() {
  auto page = startupPage(services_.model, filtered_);
  if (shown_ == page) return;
  shown_ = std::move(page);
  say(shown_->summary);
  lead_->setWords(shown_->lead);
  lead_->setVisible(shown_->hasItems);
  filter_->setVisible(shown_->hasItems);
  measuring_->setVisible(!shown_->isMeasured);
  noMatch_->setWords(shown_->noMatch);
  noMatch_->setVisible(!shown_->noMatch.empty());
  empty_->setVisible(shown_->isMeasured && !shown_->hasItems);
  if (list_->refill([this] { fill(); })) orderTabs({filter_, list_});
}

void StartupView::fill() {
  for (const auto& group : shown_->groups) {
    const bool isFirst = &group == &shown_->groups.front();
    list_
        ->put("group " + group.title, isFirst ? 0 : GroupHead::gap,
              [this](QWidget* parent) { return new GroupHead(theme_, parent); })
        .setTitle(group.title);
    for (const auto& item : group.items)
      list_
          ->put("item " + item.key, 0,
                [this](QWidget* parent) {
                  return new Row(
                      theme_, [this](const StartupPage::Item& item) { services_.ask(*item.remove); },
                      [this](Menu& menu, const StartupPage::Item& item) { fillMenu(menu, item); }, parent);
                })
          .show(item, isNarrow_, shown_->hasLeftovers);
  }
}

void StartupView::fillMenu(Menu& menu, const StartupPage::Item& item) {
  if (item.remove) {
    menu.add(Icon::trash, localized("Remove…"), [this, remove = *item.remove] { services_.ask(remove); });
    menu.addRule();
  }
  if (services_.showFile)
    menu.add(Icon::folder, localized("Show File in Finder"),
             [this, file = item.file] { services_.showFile(file); });
  menu.add(Icon::copy, localized("Copy"),
           [words = item.label + "\t" + item.file] { QGuiApplication::clipboard()->setText(text(words)); });
}

} // namespace korvell
