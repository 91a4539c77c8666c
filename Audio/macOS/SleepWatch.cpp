#include "Audio/macOS/SleepWatch.h"

#include <IOKit/IOKitLib.h>
#include <IOKit/IOMessage.h>
#include <dispatch/dispatch.h>

#include <utility>

// As IOKit/pwr_mgt/IOPMLib.h declares them.
extern "C" {
io_connect_t IORegisterForSystemPower(void* context, IONotificationPortRef* port,
                                      IOServiceInterestCallback handler, io_object_t* notifier);
IOReturn IODeregisterForSystemPower(io_object_t* notifier);
IOReturn IOAllowPowerChange(io_connect_t root, intptr_t change);
}

namespace korvell {

struct SleepWatch::State {
  Handler handler;
  dispatch_queue_t queue = dispatch_queue_create("Korvell.sleep", DISPATCH_QUEUE_SERIAL);
  IONotificationPortRef port = nullptr;
  io_object_t notifier = IO_OBJECT_NULL;
  io_connect_t root = IO_OBJECT_NULL;

  static void told(void* context, io_service_t, natural_t message, void* argument) {
    auto& state = *static_cast<State*>(context);
    const auto change = reinterpret_cast<intptr_t>(argument);
    if (message == kIOMessageCanSystemSleep) {
      IOAllowPowerChange(state.root, change);
    } else if (message == kIOMessageSystemWillSleep) {
      state.handler(true,
                    {nullptr, [root = state.root, change](void*) { IOAllowPowerChange(root, change); }});
    } else if (message == kIOMessageSystemHasPoweredOn) {
      state.handler(false, nullptr);
    }
  }

  static void end(void* context) {
    auto* state = static_cast<State*>(context);
    if (state->port) {
      IODeregisterForSystemPower(&state->notifier);
      IOServiceClose(state->root);
      IONotificationPortDestroy(state->port);
    }
    dispatch_release(state->queue);
    delete state;
  }
};

SleepWatch::SleepWatch(Handler handler) : state_(new State{.handler = std::move(handler)}) {
  state_->root = IORegisterForSystemPower(state_, &state_->port, State::told, &state_->notifier);
  if (state_->root != IO_OBJECT_NULL) IONotificationPortSetDispatchQueue(state_->port, state_->queue);
}

// Behind whatever is being told, and the last on that queue.
SleepWatch::~SleepWatch() { dispatch_async_f(state_->queue, state_, State::end); }

} // namespace korvell
