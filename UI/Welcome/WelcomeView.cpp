#include "UI/Welcome/WelcomeView.h"

#include "UI/Kit/Icons.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/ListParts.h"
#include "UI/Tray/WideForm.h"

namespace korvell {

namespace {

constexpr int widest = 640;
constexpr int sectionGap = 24, headGap = 6, plateGap = 12, platePadding = 16, bottom = 28;
constexpr int markWidth = 72, markHeight = 52, markGap = 16, tickSize = 16, tickGap = 12;

/// The item as a tray shows it.
class MarkPicture final : public Painted {
public:
  MarkPicture(const Theme& theme, WelcomePage::Mark mark, QWidget* parent)
      : Painted(theme, parent), mark_(std::move(mark)) {
    setName(mark_.title);
    setFixedSize(markWidth, markHeight);
  }
  QAccessible::Role role() const override { return QAccessible::Graphic; }

protected:
  void draw(QPainter& painter) override {
    fillRounded(painter, rect(), 7, theme().color(Token::sunken));
    drawWideForm(painter, rect(), theme(), mark_.label, theme().color(Token::text1));
  }

private:
  const WelcomePage::Mark mark_;
};

/// The page's column, which stays readable in a wide window.
class Content final : public QWidget {
public:
  explicit Content(const Theme& theme) : theme_(theme) {}

protected:
  void resizeEvent(QResizeEvent*) override {
    const int side = pageSide(width(), window()->width());
    const int spare = std::max(side, width() - side - theme_.scaled(widest));
    const bool mirrored = isRightToLeft();
    layout()->setContentsMargins(mirrored ? spare : side, 0, mirrored ? side : spare, bottom);
  }

private:
  const Theme& theme_;
};

} // namespace

WelcomeView::WelcomeView(const Theme& theme, Handlers handlers, const WelcomePage& page, QWidget* parent)
    : Page(parent), theme_(theme), handlers_(std::move(handlers)), shown_(page),
      skip_(new Button(theme, Button::Kind::quiet, page.skip, this)),
      scroll_(new ScrollArea(theme, Token::surface, this)), content_(new Content(theme)),
      column_(bare<QVBoxLayout>(content_)) {
  bare<QVBoxLayout>(this)->addWidget(scroll_);
  column_->setContentsMargins(pagePadding, 0, pagePadding,
                              bottom); // as it will be: the first height goes by them
  skip_->onPress([this] { handlers_.done(); });
  addText(TextStyle::body, Token::text2, page.lead, 0);
  makeMarks(page);
  makeChoices(page);
  makePrivacy(page);
  auto* start = new Button(theme, Button::Kind::primary, page.start, content_);
  start->setHeight(Button::Height::tall);
  start->onPress([this] { handlers_.done(); });
  column_->addSpacing(sectionGap);
  column_->addWidget(start, 0, Qt::AlignLeading);
  column_->addStretch(1);
  scroll_->setContent(*content_);
  fill(page);
}

TextLabel& WelcomeView::addText(TextStyle style, Token token, const std::string& words, int above) {
  auto* label = new TextLabel(theme_, style, token, words, content_);
  label->setWrapped();
  column_->addSpacing(above);
  column_->addWidget(label);
  return *label;
}

void WelcomeView::makeMarks(const WelcomePage& page) {
  addText(TextStyle::head, Token::text1, page.marksTitle, sectionGap);
  addText(TextStyle::body, Token::text2, page.marksNote, headGap);
  auto* line = new QHBoxLayout;
  line->setSpacing(markGap);
  for (const auto& mark : page.marks) {
    line->addWidget(new MarkPicture(theme_, mark, content_), 0, Qt::AlignTop);
    auto* words = new QVBoxLayout;
    words->setSpacing(2);
    for (const auto& [style, token, text] : {std::tuple{TextStyle::strong, Token::text1, &mark.title},
                                             {TextStyle::small, Token::text2, &mark.meaning}}) {
      auto* label = new TextLabel(theme_, style, token, *text, content_);
      label->setWrapped();
      words->addWidget(label);
    }
    words->addStretch(1);
    line->addLayout(words, 1);
  }
  column_->addSpacing(plateGap);
  column_->addLayout(line);
}

void WelcomeView::makeChoices(const WelcomePage& page) {
  addText(TextStyle::head, Token::text1, page.choicesTitle, sectionGap);
  addText(TextStyle::body, Token::text2, page.choicesNote, headGap);
  auto* plate = new Plate(theme_, content_);
  plate->setName(page.choicesTitle);
  auto* rows = bare<QVBoxLayout>(plate);
  rows->setContentsMargins(platePadding, 0, platePadding, 0);
  opensAtLogin_ = new SettingSwitch(theme_, plate, [this](bool on) { handlers_.opensAtLogin(on); });
  rows->addWidget(opensAtLogin_);
  rows->addWidget(helperRule_ = new Hairline(theme_, plate));
  helper_ = new SettingRow(theme_, page.helperTitle, plate);
  approval_ = new Button(theme_, Button::Kind::plain, "", helper_);
  approval_->onPress([this] { handlers_.openApproval(); });
  helperAction_ = new Button(theme_, Button::Kind::plain, "", helper_);
  helperAction_->onPress([this] { handlers_.turnHelper(shown_.helper.turnsOn); });
  helper_->addControl(*approval_);
  helper_->addControl(*helperAction_);
  rows->addWidget(helper_);
  rows->addWidget(new Hairline(theme_, plate));
  tool_ = new SettingRow(theme_, page.toolTitle, plate);
  install_ = new Button(theme_, Button::Kind::plain, "", tool_);
  install_->onPress([this] { handlers_.installTool(); });
  tool_->addControl(*install_);
  rows->addWidget(tool_);
  column_->addSpacing(plateGap);
  column_->addWidget(plate);
}

void WelcomeView::makePrivacy(const WelcomePage& page) {
  addText(TextStyle::head, Token::text1, page.privacyTitle, sectionGap);
  for (const auto& sentence : page.privacy) {
    auto* line = new QHBoxLayout;
    line->setSpacing(tickGap);
    line->addWidget(new IconLabel(theme_, Icon::check, tickSize, Token::good, content_), 0, Qt::AlignTop);
    auto* label = new TextLabel(theme_, TextStyle::body, Token::text1, sentence, content_);
    label->setWrapped();
    line->addWidget(label, 1);
    column_->addSpacing(headGap + 2);
    column_->addLayout(line);
  }
}

void WelcomeView::show(const WelcomePage& page) {
  if (page != shown_) fill(page);
}

void WelcomeView::fill(const WelcomePage& page) {
  shown_ = page;
  opensAtLogin_->show(page.opensAtLogin);
  const auto& helper = page.helper;
  const bool isKnown = !helper.explanation.empty() || !helper.state.empty();
  helper_->setVisible(isKnown);
  helperRule_->setVisible(isKnown);
  helper_->tell(helper.explanation, helper.state, helper.trouble);
  for (auto [button, words] : {std::pair{helperAction_, &helper.action}, {approval_, &helper.approval}}) {
    setWords(*button, *words);
    button->setName(*words + ": " + page.helperTitle);
    button->setVisible(!words->empty());
  }
  tool_->tell(page.tool.note, page.tool.outcome, {});
  setWords(*install_, page.tool.action);
  install_->setName(page.tool.action + ": " + page.toolTitle);
  tellLayouts(*content_);
}

FirstLaunch::FirstLaunch(const Theme& theme, SettingsEditor::Services services, Task done, QWidget* parent)
    : WelcomeView(theme, handlers(*this, std::move(done)),
                  welcomePage(settingsPage(services.model, services.defaults, services.context, {})),
                  parent) {
  editor_.emplace(std::move(services), [this] { update(); });
}

WelcomeView::Handlers FirstLaunch::handlers(FirstLaunch& view, Task done) {
  return {.opensAtLogin = [&view](bool on) { view.editor_->setOpensAtLogin(on); },
          .turnHelper = [&view](bool on) { view.editor_->turnHelper(on); },
          .openApproval = [&view] { view.editor_->openApproval(); },
          .installTool = [&view] { view.editor_->installTool(); },
          .done = std::move(done)};
}

void FirstLaunch::update() {
  if (editor_) show(welcomePage(editor_->page()));
}

} // namespace korvell
