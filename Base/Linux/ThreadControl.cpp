#include "Base/ThreadControl.h"

#include <algorithm>
#include <cmath>
#include <pthread.h>
#include <sys/prctl.h>

namespace korvell {

void nameCurrentThread(const std::string& name) {
  pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());
}

void setCurrentTimerSlack(Seconds slack) {
  const double nanoseconds = std::clamp(std::round(slack.count() * 1e9), 0.0, 1e18);
  prctl(PR_SET_TIMERSLACK, static_cast<unsigned long>(nanoseconds), 0, 0, 0);
}

} // namespace korvell
