#pragma once
// Work that a signal cuts short instead of ending the process in the middle of it.

#include "Base/Cancellation.h"

#include <functional>

namespace korvell {

/// Runs the work on a thread of its own and returns when it has returned. Meanwhile the first hang-up,
/// interrupt or terminate cancels what the work was given and calls `interrupted`, on the calling thread,
/// which is the main one; further ones change nothing, because the work is ending by then.
void runInterruptibly(const std::function<void(const Cancellation&)>& work,
                      const std::function<void()>& interrupted = {});

} // namespace korvell
