#pragma once
// The question before a clean-up, as the dialog sets it: word for word what describes the action, the paths
// in wells.

#include "App/Actions.h"
#include "UI/Kit/Dialog.h"

namespace korvell {

/// Of a described CleanStorageRequest.
Question cleanupQuestion(const ActionDescription& description);

} // namespace korvell
