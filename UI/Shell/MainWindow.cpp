#include "UI/Shell/MainWindow.h"

#include "Base/Localization.h"
#include "UI/Kit/Banner.h"
#include "UI/Kit/Button.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Text.h"
#include "UI/Window/SidebarView.h"

#include <QBoxLayout>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QShortcut>
#include <algorithm>

namespace korvell {

namespace {

constexpr int railBelow = 860, padding = 28, narrowPadding = 20, headerHeight = 56, widestContent = 1120;

std::optional<int> side(const Value& frame, std::string_view name) {
  const auto* value = frame.find(name);
  const auto number = value ? value->asInt() : std::nullopt;
  return number ? std::optional(int(*number)) : std::nullopt;
}

/// Where Tab enters a widget; null where it can't.
QWidget* firstStop(QWidget& widget) {
  for (auto* next = widget.nextInFocusChain(); next != &widget; next = next->nextInFocusChain())
    if (widget.isAncestorOf(next) && next->isVisible() && next->isEnabled() &&
        (next->focusPolicy() & Qt::TabFocus))
      return next;
  return nullptr;
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
        banner_(*new Banner(services.theme, this)),
        cycles_(services.model.cycle.observe([this](std::int64_t) { refreshSidebar(); })),
        selections_(services.model.selection.observe([this](const auto&) { openSelected(); })) {
    setWindowTitle("Korvell");
    setMinimumSize(leastWidth, leastHeight);
    setGeometry(frameOf(services.defaults));
    layOut();
    addKeys();
    sidebar_.onOpen([this](SidebarItem item) { services_.model.selection.set(item); });
    sidebar_.onSettings(services.openSettings);
    if (!welcomes || !openWelcome()) openSelected();
    sidebar_.takeFocus(Qt::OtherFocusReason);
  }

  Banner& banner() { return banner_; }
  void refreshSidebar() { sidebar_.show(sidebar(services_.model, shown_, services_.facts())); }

  void keepFrame() const {
    if (isMaximized() || isFullScreen()) return;
    const auto frame = geometry();
    services_.keepFrame(Value::object({{"x", std::int64_t{frame.x()}},
                                       {"y", std::int64_t{frame.y()}},
                                       {"width", std::int64_t{frame.width()}},
                                       {"height", std::int64_t{frame.height()}}}));
  }

protected:
  void resizeEvent(QResizeEvent* event) override {
    QWidget::resizeEvent(event);
    const bool isNarrow = QWidget::width() < railBelow;
    sidebar_.setRail(isNarrow);
    const int room = QWidget::width() - sidebar_.width() - 1;
    const int least = isNarrow ? narrowPadding : padding;
    const int side = std::max(least, (room - widestContent) / 2);
    header_->setContentsMargins(side, 0, side, 0);
    notices_->setContentsMargins(side, 0, side, 0);
  }

  /// No shortcut: charts, fields and lists have a use of their own for it first.
  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() == Qt::Key_Escape && isWelcome_ && banner_.isHidden())
      openSelected();
    else if (event->key() == Qt::Key_Escape)
      banner_.dismiss();
    else
      QWidget::keyPressEvent(event);
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
      auto* help = new IconButton(services_.theme, Icon::help, localized("Help for this page"), ground);
      help->onPress([this] { services_.openHelp(shown_); });
      header_->addWidget(help);
    }
    content_->addLayout(header_);
    notices_ = new QHBoxLayout;
    notices_->addWidget(&banner_);
    content_->addLayout(notices_);
    banner_.hide();
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

  /// From the sidebar to the page and back.
  void moveFocus() {
    auto* first = page_ && sidebar_.isAncestorOf(focusWidget()) ? firstStop(*page_) : nullptr;
    if (first)
      first->setFocus(Qt::TabFocusReason);
    else
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

  /// False when there is none to show.
  bool openWelcome() {
    auto welcome = services_.makeWelcome ? services_.makeWelcome(*this, [this] { openSelected(); }) : nullptr;
    if (!welcome) return false;
    isWelcome_ = true;
    take(std::move(welcome));
    refreshSidebar();
    return true;
  }

  void openSelected() {
    const auto item = services_.model.selection->value_or(SidebarItem::overview);
    if (page_ && item == shown_ && !isWelcome_) return;
    shown_ = item;
    if (!isRevisit_) keepPlace();
    owner_.visits_.visit(item);
    dropPage();
    banner_.dismiss();
    take(services_.makePage(item, *this, banner_));
    if (!page_ && item != SidebarItem::overview) return services_.model.selection.set(SidebarItem::overview);
    if (page_ && isRevisit_) page_->restore(owner_.visits_.place());
    refreshSidebar();
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
    isWelcome_ = false;
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
  Banner& banner_;
  QHBoxLayout *header_ = nullptr, *notices_ = nullptr;
  QVBoxLayout* content_ = nullptr;
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
  if (!frame_) {
    frame_ = new Frame(*this, services_, !item);
    if (told_) frame_->banner().say(Tone::info, told_->first, told_->second);
  }
  frame_->setWindowState(frame_->windowState() & ~Qt::WindowMinimized);
  frame_->show();
  frame_->raise();
  frame_->activateWindow();
}

void MainWindow::tell(const std::string& sentence, const std::string& detail) {
  told_ = {sentence, detail};
  if (frame_) frame_->banner().say(Tone::info, sentence, detail);
}

void MainWindow::untell() {
  if (std::exchange(told_, std::nullopt) && frame_) frame_->banner().dismiss();
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
