#include "Bench/UI/XWindows.h"

#include <cstdlib>
#include <string_view>
#include <xcb/xcb.h>

namespace korvell {

namespace {

class Connection {
public:
  Connection() : connection_(xcb_connect(nullptr, nullptr)) {}
  ~Connection() { xcb_disconnect(connection_); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  xcb_atom_t atom(std::string_view name) const {
    auto* reply = xcb_intern_atom_reply(
        connection_, xcb_intern_atom(connection_, 0, std::uint16_t(name.size()), name.data()), nullptr);
    const auto result = reply ? reply->atom : xcb_atom_t{};
    std::free(reply);
    return result;
  }
  xcb_window_t root() const { return xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root; }
  template <class Event>
  void send(std::uint32_t window, const Event& event) const {
    static_assert(sizeof(Event) == 32, "the size of every event on the wire");
    xcb_send_event(connection_, 0, window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&event));
    // The server has it before anything that another connection sends later.
    std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
  }

private:
  xcb_connection_t* connection_;
};

} // namespace

void closeWindow(std::uint32_t window) {
  const Connection connection;
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = connection.atom("WM_PROTOCOLS");
  event.data.data32[0] = connection.atom("WM_DELETE_WINDOW");
  connection.send(window, event);
}

void pressKey(std::uint32_t window, Key key, bool withControl) {
  const Connection connection;
  xcb_key_press_event_t event{};
  event.detail = xcb_keycode_t(key);
  event.root = connection.root();
  event.event = window;
  event.same_screen = 1;
  event.state = withControl ? XCB_MOD_MASK_CONTROL : 0;
  for (const auto type : {XCB_KEY_PRESS, XCB_KEY_RELEASE}) {
    event.response_type = std::uint8_t(type);
    connection.send(window, event);
  }
}

} // namespace korvell
