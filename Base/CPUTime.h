#pragma once
// What the calling thread has cost so far: user and system time.

#include "Base/Date.h"

namespace korvell {

Seconds threadCPUTime();

} // namespace korvell
