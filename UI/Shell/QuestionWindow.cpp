#include "UI/Shell/QuestionWindow.h"

#include "Agents/Strangers.h"
#include "Base/Localization.h"
#include "UI/Kit/Dialog.h"
#include "UI/Kit/Text.h"
#include "UI/Shell/Errands.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

namespace korvell {

namespace {

/// In which nobody has read the question.
constexpr int glance = 1000; // milliseconds

class QuestionWindow final : public QWidget {
public:
  QuestionWindow(const Theme& theme, Question question, std::function<void(bool)> answered)
      : QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                             Qt::WindowCloseButtonHint | Qt::WindowStaysOnTopHint),
        dialog_(
            &Dialog::fill(theme, std::move(question), *this, [this, told = std::move(answered)](bool yes) {
              hide();
              told(yes);
            })) {
    setWindowTitle(text(localized("An agent asks")));
    auto& action = dialog_->actionButton();
    action.setEnabled(false);
    QTimer::singleShot(glance, &action, [&action] { action.setEnabled(true); });
    ensurePolished();
    auto size = dialog_->sizeHint();
    const auto* screen = QGuiApplication::primaryScreen();
    const auto available = screen ? screen->availableGeometry() : QRect(QPoint(), size);
    constexpr int frame = 48; // what the window manager draws around it, at most
    size.setHeight(std::min(size.height(), available.height() - frame));
    setFixedSize(size);
    if (screen) {
      move(available.center() - QPoint(size.width() / 2, size.height() / 2));
    }
  }

protected:
  void closeEvent(QCloseEvent* event) override {
    QWidget::closeEvent(event);
    if (dialog_) dialog_->answer(false);
  }

private:
  QPointer<Dialog> dialog_;
};

Question agentQuestion(const ActionDescription& description) {
  auto question = questionOf(description);
  question.title = localized("An agent asks: {question}", {{"question", cleanedText(question.title)}});
  for (auto& passage : question.passages) {
    passage.text = cleanedText(passage.text);
    for (auto& line : passage.well) line = cleanedText(line);
  }
  question.cancel = localized("Don't");
  return question;
}

} // namespace

std::shared_ptr<void> askForAgent(const Theme& theme, const ActionDescription& description,
                                  std::function<void(bool)> answered) {
  auto window = std::make_shared<QuestionWindow>(theme, agentQuestion(description), std::move(answered));
  window->show();
  window->raise();
  window->activateWindow();
  return window;
}

} // namespace korvell
