#pragma once
// The page of the first launch, and that page with what it offers at work.

#include "UI/Settings/SettingRows.h"
#include "UI/Settings/SettingsEditor.h"
#include "UI/Welcome/WelcomePage.h"
#include "UI/Window/Page.h"

#include <functional>
#include <optional>

class QVBoxLayout;

namespace korvell {

class WelcomeView : public Page {
public:
  struct Handlers {
    std::function<void(bool)> opensAtLogin, turnHelper;
    Task openApproval, installTool;
    Task done; ///< the user goes on
  };

  WelcomeView(const Theme& theme, Handlers handlers, const WelcomePage& page, QWidget* parent);

  void show(const WelcomePage& page);
  using QWidget::show;

  std::string title() const override { return shown_.title; }
  QWidget* control() override { return skip_; }

protected:
  ScrollArea* scrolled() const override { return scroll_; }

private:
  TextLabel& addText(TextStyle style, Token token, const std::string& words, int above);
  void makeMarks(const WelcomePage& page);
  void makeChoices(const WelcomePage& page);
  void makePrivacy(const WelcomePage& page);
  void fill(const WelcomePage& page);

  const Theme& theme_;
  const Handlers handlers_;
  WelcomePage shown_;
  Button* skip_;
  ScrollArea* scroll_;
  QWidget* content_;
  QVBoxLayout* column_;
  SettingSwitch* opensAtLogin_;
  Hairline* helperRule_;
  SettingRow *helper_, *tool_;
  Button *helperAction_, *approval_, *install_;
};

/// Carries out what is switched on there.
class FirstLaunch final : public WelcomeView {
public:
  FirstLaunch(const Theme& theme, SettingsEditor::Services services, Task done, QWidget* parent);

private:
  static Handlers handlers(FirstLaunch& view, Task done);
  void update();

  std::optional<SettingsEditor> editor_;
};

} // namespace korvell
