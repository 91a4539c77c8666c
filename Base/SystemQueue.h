#pragma once
// The queues of the running system: threads of our own on Linux, dispatch queues on macOS.

#include "Base/Queue.h"

namespace korvell {

QueueFactory systemQueueFactory();

} // namespace korvell
