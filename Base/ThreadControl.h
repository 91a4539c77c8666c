#pragma once
// What the systems let a thread say about itself.

#include "Base/Date.h"

#include <string>

namespace korvell {

/// The name under which process viewers and debuggers show the calling thread. Linux keeps 15 bytes.
void nameCurrentThread(const std::string& name);

/// How late the system may end the calling thread's timed waits, so that wake-ups coincide; zero is the
/// system's default. Linux only: macOS grants leeway to the timers of its dispatch queues.
void setCurrentTimerSlack(Seconds slack);

} // namespace korvell
