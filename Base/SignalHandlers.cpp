#include "Base/SignalHandlers.h"

namespace korvell {

SignalHandlers::SignalHandlers(std::initializer_list<int> signals, void (*handler)(int)) {
  for (const int signal : signals) {
    Action before{}, action{};
    if (sigaction(signal, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) continue;
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    if (sigaction(signal, &action, nullptr) == 0) before_.emplace_back(signal, before);
  }
}

SignalHandlers::~SignalHandlers() {
  for (const auto& [signal, action] : before_) sigaction(signal, &action, nullptr);
}

} // namespace korvell
