#include "UI/Shell/MainWindow.h"

#include "Base/Localization.h"
#include "UI/Kit/Banner.h"
#include "UI/Kit/Button.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/PageLayout.h"
#include "UI/Window/SidebarView.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QShortcut>
#include <algorithm>

namespace korvell {

namespace {

constexpr int headerHeight = 56, noticeGap = 8;

/// Absent beyond every desktop, where numbers would overflow.
std::optional<int> side(const Value& frame, std::string_view name) {
  constexpr std::int64_t farthest = 1 << 20;
  const auto* value = frame.find(name);
  const auto number = value ? value->asInt() : std::nullopt;
  return number && *number >= -farthest && *number <= farthest ? std::optional(int(*number)) : std::nullopt;
}

/// Where Tab enters a widget; null where it can't.
QWidget* firstStop(QWidget& widget) {
  auto* next = &widget;
  do {
    if ((next == &widget || widget.isAncestorOf(next)) && next->isVisible() && next->isEnabled() &&
        (next->focusPolicy() & Qt::TabFocus))
      return next;
    next = next->nextInFocusChain();
  } while (next != &widget);
  return nullptr;
}

bool holds(const QWidget* part, const QWidget* focus) {
  return part && focus && (part == focus || part->isAncestorOf(focus));
}

/// The kept frame, as far as a screen still shows it; centred on the first one otherwise.
QRect frameOf(const UserDefaults& defaults) {
  const auto* screen = QGuiApplication::primaryScreen();
  QRect frame(QPoint(), QSize(MainWindow::width, MainWindow::height));
  if (!screen) return frame; // the last one was unplugged, and the next one is still to come
  const auto available = screen->availableGeometry();
  frame.setSize(frame.size().boundedTo(available.size()));
  frame.moveCenter(available.center());
  const auto kept = defaults.value(MainWindow::frameKey);
  if (!kept) return frame;
  const auto x = side(*kept, "x"), y = side(*kept, "y"), w = side(*kept, "width"), h = side(*kept, "height");
  if (!x || !y || !w || !h) return frame;
  const QRect wanted(*x, *y, std::max(*w, MainWindow::leastWidth), std::max(*h, MainWindow::leastHeight));
  const auto* there = QGuiApplication::screenAt(wanted.center());
  return there ? wanted.intersected(there->availableGeometry()) : frame;
}

} // namespace

class MainWindow::Frame final : public QWidget {
public:
  Frame(MainWindow& owner, const Services& services, bool welcomes)
      : owner_(owner), services_(services), sidebar_(*new SidebarView(services.theme, this)),
        title_(*new TextLabel(services.theme, TextStyle::title, Token::text1, "", this)),
        notice_(*new Banner(services.theme, this)), banner_(*new Banner(services.theme, this)),
        cycles_(services.model.cycle.observe([this](std::int64_t) { refreshSidebar(); })),
        selections_(services.model.selection.observe([this](const auto&) { openSelected(); })) {
    setWindowTitle("Korvell");
    setMinimumSize(leastWidth, leastHeight);
    setGeometry(frameOf(services.defaults));
    layOut();
    addKeys();
    sidebar_.onOpen([this](SidebarItem item) { services_.model.selection.set(item); });
    sidebar_.onSettings(services.openSettings);
    isWelcome_ = welcomes;
    if (isWelcome_)
      openWelcome();
    else
      openSelected();
    showNotice();
    sidebar_.takeFocus(Qt::OtherFocusReason);
  }

  void showNotice() {
    if (!owner_.told_) return notice_.dismiss();
    const auto [sentence, detail] = owner_.told_();
    notice_.say(Tone::info, sentence, detail);
    notice_.offer(localized("Close"), [this] { owner_.untell(); });
  }

  void speakAnew() {
    keepPlace();
    sidebar_.speakAnew();
    if (help_) help_->setName(localized("Help for this page"));
    if (isWelcome_)
      openWelcome();
    else
      openPage(true);
    showNotice();
  }

  void refreshSidebar() { sidebar_.show(sidebar(services_.model, shown_, services_.facts())); }

  void keepFrame() const {
    const auto frame = isMaximized() || isFullScreen() ? normalGeometry() : geometry();
    if (frame.isEmpty()) return;
    services_.keepFrame(Value::object({{"x", std::int64_t{frame.x()}},
                                       {"y", std::int64_t{frame.y()}},
                                       {"width", std::int64_t{frame.width()}},
                                       {"height", std::int64_t{frame.height()}}}));
  }

protected:
  void resizeEvent(QResizeEvent* event) override {
    QWidget::resizeEvent(event);
    sidebar_.setRail(QWidget::width() < railBelow);
    const int side = pageSide(QWidget::width() - sidebar_.width() - 1, QWidget::width());
    header_->setContentsMargins(side, 0, side, 0);
    notices_->setContentsMargins(side, 0, side, 0);
  }

  /// No shortcut: charts, fields and lists have a use of their own for it first.
  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() != Qt::Key_Escape) return QWidget::keyPressEvent(event);
    if (!banner_.isHidden())
      banner_.dismiss();
    else if (!notice_.isHidden())
      owner_.untell();
    else if (isWelcome_)
      openSelected();
  }

  void closeEvent(QCloseEvent* event) override {
    keepFrame();
    QWidget::closeEvent(event);
    owner_.windowWillClose();
  }

private:
  void layOut() {
    auto* columns = new QHBoxLayout(this);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(0);
    columns->addWidget(&sidebar_);
    columns->addWidget(new Hairline(services_.theme, this, Qt::Vertical));
    auto* ground = new Ground(services_.theme, Token::surface, this);
    content_ = new QVBoxLayout(ground);
    content_->setContentsMargins(0, 0, 0, 0);
    content_->setSpacing(0);
    columns->addWidget(ground, 1);
    header_ = new QHBoxLayout;
    header_->addWidget(&title_, 1);
    header_->addStrut(headerHeight);
    if (services_.openHelp) {
      help_ = new IconButton(services_.theme, Icon::help, localized("Help for this page"), ground);
      help_->onPress([this] { services_.openHelp(shown_); });
      header_->addWidget(help_);
    }
    content_->addLayout(header_);
    notices_ = new QVBoxLayout;
    notices_->setSpacing(noticeGap);
    notices_->addWidget(&notice_);
    notices_->addWidget(&banner_);
    content_->addLayout(notices_);
  }

  void key(const QKeySequence& keys, Task task) {
    QObject::connect(new QShortcut(keys, this), &QShortcut::activated, this, std::move(task));
  }

  void addKeys() {
    constexpr int numbered = 9;
    for (int i = 0; i < numbered; ++i)
      key(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + i)), [this, i] { openAt(i); });
    key(QKeySequence("Ctrl+PgUp"), [this] { step(-1); });
    key(QKeySequence("Ctrl+PgDown"), [this] { step(1); });
    key(QKeySequence("Alt+Left"), [this] { revisit(&Visits::back); });
    key(QKeySequence("Alt+Right"), [this] { revisit(&Visits::forward); });
    key(QKeySequence("Ctrl+F"), [this] {
      if (page_) page_->find();
    });
    key(QKeySequence("Ctrl+R"), [this] {
      if (page_) page_->refresh();
    });
    key(QKeySequence("Ctrl+S"), [this] {
      if (services_.share) services_.share(banner_);
    });
    key(QKeySequence("Ctrl+,"), services_.openSettings);
    if (services_.openHelp) key(QKeySequence("F1"), [this] { services_.openHelp(shown_); });
    key(QKeySequence("Ctrl+W"), [this] { close(); });
    key(QKeySequence("Ctrl+Q"), services_.quit);
    key(QKeySequence("F6"), [this] { moveFocus(); });
  }

  /// From the sidebar to the header's control, the page, its footer and back; past what takes no focus.
  void moveFocus() {
    auto* footer = page_ ? page_->footer() : nullptr;
    QWidget* const stops[] = {page_ ? page_->control() : nullptr, page_, footer};
    const auto holdsFocus = [focus = focusWidget()](const QWidget* stop) { return holds(stop, focus); };
    // The footer is part of the page.
    const auto here = std::ranges::find_if(std::rbegin(stops), std::rend(stops), holdsFocus);
    for (auto next = here == std::rend(stops) ? std::begin(stops) : here.base(); next != std::end(stops);
         ++next)
      if (auto* first = *next ? firstStop(**next) : nullptr) return first->setFocus(Qt::TabFocusReason);
    sidebar_.takeFocus(Qt::TabFocusReason);
  }

  /// Those that have a page, in the sidebar's order.
  std::vector<SidebarItem> sections() const {
    const auto facts = services_.facts();
    std::vector<SidebarItem> result;
    for (const auto& section : EnumTable<SidebarItem>::cases)
      if (facts.sections.contains(section.value)) result.push_back(section.value);
    return result;
  }

  void step(int by) {
    const auto all = sections();
    const auto next = std::ranges::find(all, shown_) - all.begin() + by;
    openAt(next);
  }

  void openAt(std::ptrdiff_t place) {
    const auto all = sections();
    if (place >= 0 && place < std::ptrdiff_t(all.size()))
      services_.model.selection.set(all[std::size_t(place)]);
  }

  void keepPlace() {
    if (page_ && !isWelcome_) owner_.visits_.keep(page_->place());
  }

  void revisit(std::optional<SidebarItem> (Visits::*where)()) {
    keepPlace();
    isRevisit_ = true;
    if (const auto item = (owner_.visits_.*where)()) services_.model.selection.set(*item);
    isRevisit_ = false;
  }

  void openWelcome() {
    replacePage([this] { return services_.makeWelcome(*this, [this] { openSelected(); }); });
  }

  void openSelected() {
    const auto item = services_.model.selection->value_or(SidebarItem::overview);
    if (page_ && item == shown_ && !isWelcome_) return;
    shown_ = item;
    if (!isRevisit_) keepPlace();
    owner_.visits_.visit(item);
    isWelcome_ = false;
    openPage(isRevisit_);
  }

  /// That of the section that is shown; where it was left, or at its beginning.
  void openPage(bool isWhereItWas) {
    banner_.dismiss();
    replacePage([this] { return services_.makePage(shown_, *this, banner_); });
    if (!page_ && shown_ != SidebarItem::overview)
      return services_.model.selection.set(SidebarItem::overview);
    if (page_ && isWhereItWas) page_->restore(owner_.visits_.place());
  }

  /// The keyboard goes on at the section's own row, where it was in the page that goes or at another row.
  void replacePage(const std::function<std::unique_ptr<Page>()>& make) {
    const auto* focus = focusWidget();
    const bool follows =
        holds(&sidebar_, focus) || holds(page_, focus) || holds(page_ ? page_->control() : nullptr, focus);
    const auto reason = focus && FocusRing::isShown(*focus) ? Qt::TabFocusReason : Qt::OtherFocusReason;
    dropPage();
    take(make());
    refreshSidebar();
    orderStops();
    if (follows) sidebar_.takeFocus(reason);
  }

  /// What stands round the page, which comes behind and looks after its own.
  void orderStops() {
    auto parts = sidebar_.stops();
    if (page_) parts.push_back(page_->control());
    parts.insert(parts.end(), {help_, &notice_, &banner_});
    orderTabs(parts);
  }

  void take(std::unique_ptr<Page> page) {
    page_ = page.release();
    if (!page_) return;
    title_.setWords(page_->title());
    if (auto* control = page_->control()) header_->insertWidget(1, control); // behind the title
    content_->addWidget(page_, 1);
    page_->show();
  }

  void dropPage() {
    if (!page_) return;
    // Not at once: one of its own buttons may have led here.
    for (QWidget* old : {page_->control(), static_cast<QWidget*>(page_)})
      if (old) {
        old->hide();
        old->deleteLater();
      }
  }

  MainWindow& owner_;
  const Services& services_;
  SidebarView& sidebar_;
  TextLabel& title_;
  Banner &notice_, &banner_; ///< what holds for all pages; what is said on this one
  QHBoxLayout* header_ = nullptr;
  IconButton* help_ = nullptr; ///< null where no help is installed
  QVBoxLayout *notices_ = nullptr, *content_ = nullptr;
  Page* page_ = nullptr;
  SidebarItem shown_ = SidebarItem::overview;
  bool isRevisit_ = false; ///< the page that opens now was there before
  bool isWelcome_ = false; ///< the page that is shown is that of the first launch
  Subscription cycles_, selections_;
};

MainWindow::MainWindow(Services services) : services_(std::move(services)) {}

MainWindow::~MainWindow() { close(); }

void MainWindow::close() {
  if (frame_) frame_->keepFrame();
  delete frame_;
}

void MainWindow::show(std::optional<SidebarItem> item) {
  if (item) services_.model.selection.set(*item);
  if (!frame_) frame_ = new Frame(*this, services_, !item && services_.welcomes && services_.welcomes());
  frame_->setWindowState(frame_->windowState() & ~Qt::WindowMinimized);
  frame_->show();
  frame_->raise();
  frame_->activateWindow();
}

void MainWindow::tell(std::function<Notice()> notice) {
  told_ = std::move(notice);
  if (frame_) frame_->showNotice();
}

void MainWindow::untell() { tell(nullptr); }

void MainWindow::speakAnew() {
  if (frame_) frame_->speakAnew();
}

void MainWindow::refresh() {
  if (frame_) frame_->refreshSidebar();
}

bool MainWindow::isVisible() const { return frame_ && frame_->isVisible(); }

QWidget* MainWindow::widget() const { return frame_; }

void MainWindow::windowWillClose() {
  // Not from inside its own event.
  if (frame_) frame_->deleteLater();
  frame_.clear();
  services_.closed();
}

} // namespace korvell
