#pragma once
// What an agent wants to do, asked in a window of its own: the main window may be closed, and a question that
// came up over it could catch a click that was meant for another. Main thread only.

#include "App/Actions.h"
#include "UI/Kit/Theme.h"

#include <functional>
#include <memory>

namespace korvell {

/// Shows the window until what is handed back is dropped. `answered` once at most; closing the window is a
/// no. The action can be pressed only after a moment: nobody agrees by a click or a key that was on its way.
std::shared_ptr<void> askForAgent(const Theme& theme, const ActionDescription& description,
                                  std::function<void(bool)> answered);

} // namespace korvell
