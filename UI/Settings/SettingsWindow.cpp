#include "UI/Settings/SettingsWindow.h"

#include "Base/Localization.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Text.h"
#include "UI/Settings/SettingsView.h"

#include <QBoxLayout>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QScreen>
#include <QShortcut>
#include <QTimer>

#include <algorithm>
#include <optional>

namespace korvell {

namespace {

constexpr int screenMargin = 80; ///< for the window's frame and the desktop's bars
constexpr int leastHeight = 320;

} // namespace

class SettingsWindow::Frame final : public QWidget {
public:
  Frame(const Theme& theme, SettingsEditor::Services services, Task closed)
      : theme_(theme), closed_(std::move(closed)), help_(services.openHelp) {
    if (help_) connect(new QShortcut(QKeySequence(Qt::Key_F1), this), &QShortcut::activated, help_);
    editor_.emplace(std::move(services), [this] { refresh(); });
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    auto* close = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), this);
    connect(close, &QShortcut::activated, this, &QWidget::close);
    makeView();
    fit();
  }

  void speakAnew() {
    auto* former = view_;
    editor_->speakAnew();
    makeView();
    // It is shown in the next turn: made and shown in one, it would hold up the user for more than a frame.
    QTimer::singleShot(0, view_, [this, former] { replace(*former); });
  }

protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() != Qt::Key_Escape) return QWidget::keyPressEvent(event);
    if (!view_->dismiss()) close();
  }
  bool event(QEvent* event) override {
    if (event->type() == QEvent::WindowActivate && editor_) editor_->refresh();
    const bool answered = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest) fit();
    return answered;
  }
  void closeEvent(QCloseEvent* event) override {
    event->accept();
    editor_.reset(); // it knows things that may be gone before this is
    deleteLater();
    closed_();
  }

private:
  void refresh() {
    if (editor_ && view_) view_->show(editor_->page());
  }

  void makeView() {
    setWindowTitle(text(localized("Settings")));
    view_ = new SettingsView(theme_, handlers(help_), this);
    layout()->addWidget(view_);
    refresh();
  }

  void replace(SettingsView& former) {
    const auto* focus = focusWidget();
    const auto reason = focus && FocusRing::isShown(*focus) ? Qt::TabFocusReason : Qt::OtherFocusReason;
    const int top = former.top();
    former.hide();
    former.deleteLater();
    fit();
    view_->show();
    view_->focusLanguage(reason, top);
  }

  /// Follows the content for as long as the user has not chosen another height.
  void fit() {
    const auto natural = view_->sizeHint();
    const int room = screen()->availableGeometry().height() - screenMargin;
    const bool isOwnHeight = fitted_ == 0 || height() == fitted_;
    fitted_ = std::min(natural.height(), room);
    setFixedWidth(natural.width());
    setMinimumHeight(std::min({leastHeight, natural.height(), room}));
    setMaximumHeight(natural.height());
    if (isOwnHeight) resize(natural.width(), fitted_);
  }

  SettingsView::Handlers handlers(const Task& help) {
    return {.style = [this](MenuBarStyle style) { editor_->setStyle(style); },
            .appearance = [this](AppearanceChoice choice) { editor_->setAppearance(choice); },
            .language = [this](LanguageChoice choice) { editor_->setLanguage(choice); },
            .temperatures = [this](TemperatureUnit unit) { editor_->setTemperatures(unit); },
            .opensAtLogin = [this](bool on) { editor_->setOpensAtLogin(on); },
            .panelSound = [this](bool on) { editor_->setPanelSound(on); },
            .weeklyReport = [this](bool on) { editor_->setWeeklyReport(on); },
            .alerts = [this](HealthAlert::Kind kind, bool on) { editor_->setAlerts(kind, on); },
            .turnHelper = [this](bool on) { editor_->turnHelper(on); },
            .openApproval = [this] { editor_->openApproval(); },
            .installTool = [this] { editor_->installTool(); },
            .automaticallyChecks = [this](bool on) { editor_->setAutomaticallyChecks(on); },
            .checkForUpdates = [this] { editor_->checkForUpdates(); },
            .help = help};
  }

  const Theme& theme_;
  const Task closed_, help_;
  SettingsView* view_ = nullptr;
  std::optional<SettingsEditor> editor_;
  int fitted_ = 0; ///< the height that it gave itself
};

SettingsWindow::SettingsWindow(const Theme& theme, std::function<SettingsEditor::Services()> services,
                               Task closed)
    : theme_(theme), services_(std::move(services)), closed_(std::move(closed)) {}

SettingsWindow::~SettingsWindow() { close(); }

void SettingsWindow::speakAnew() {
  if (frame_) frame_->speakAnew();
}

void SettingsWindow::close() { delete frame_; }

QWidget* SettingsWindow::widget() const { return frame_; }

void SettingsWindow::show() {
  const auto bringUp = [this] {
    if (!frame_) return; // closed before its turn came
    frame_->show();
    frame_->raise();
    frame_->activateWindow();
  };
  if (frame_) return bringUp();
  frame_ = new Frame(theme_, services_(), [this] {
    frame_.clear();
    closed_();
  });
  QTimer::singleShot(0, frame_, bringUp); // in a turn of its own: both in one would take longer than a frame
}

} // namespace korvell
