#pragma once

#include "Tool/Command.h"

namespace korvell {

/// Says that the history's file is there and can't be read; the exit code.
int failUnreadableHistory(Context& context);

} // namespace korvell
