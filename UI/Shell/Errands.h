#pragma once
// What a button of a view asks for: says in words what would be done, asks, does it, and tells how it went
// where the user looks.

#include "App/Actions.h"
#include "UI/Kit/Banner.h"
#include "UI/Kit/Dialog.h"

#include <QPointer>

#include <memory>

namespace korvell {

/// In the words that every action is asked about with.
Question questionOf(const ActionDescription& description);

class Errands {
public:
  /// Both outlive it.
  Errands(Actions& actions, const Theme& theme) : actions_(actions), theme_(theme) {}

  /// Asks over `window`, which also has the banner. A window that has closed by then is not asked any more,
  /// and nothing is done.
  void run(const ActionRequest& request, QWidget& window, Banner& banner);

private:
  void ask(const DescribedAction& action, QWidget& window, QPointer<Banner> banner);
  void perform(const ActionRequest& request, QPointer<Banner> banner);

  Actions& actions_;
  const Theme& theme_;
};

} // namespace korvell
