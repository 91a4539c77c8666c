#include "Widget/DesktopWindow.h"

#include <QGuiApplication>
#include <QWidget>
#include <xcb/xcb.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace korvell {

namespace {

xcb_connection_t* connection() {
  const auto* native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return native ? native->connection() : nullptr;
}

struct Free {
  void operator()(void* reply) const { std::free(reply); }
};

xcb_atom_t atom(xcb_connection_t* x, const char* name) {
  const auto asked = xcb_intern_atom(x, 0, std::uint16_t(std::strlen(name)), name);
  const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(xcb_intern_atom_reply(x, asked, nullptr));
  return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

} // namespace

bool canPlaceWindows() { return connection() != nullptr; }

bool showsThrough() {
  auto* x = connection();
  if (!x) return true; // every Wayland compositor composes
  const auto asked = xcb_get_selection_owner(x, atom(x, "_NET_WM_CM_S0"));
  const std::unique_ptr<xcb_get_selection_owner_reply_t, Free> reply(
      xcb_get_selection_owner_reply(x, asked, nullptr));
  return reply && reply->owner != XCB_NONE;
}

// The toolkit takes every window without a frame for one of no particular type; it keeps the states that it
// does not know.
void keepOnDesktop(QWidget& window) {
  auto* x = connection();
  if (!x) return;
  const std::array states{atom(x, "_NET_WM_STATE_SKIP_TASKBAR"), atom(x, "_NET_WM_STATE_SKIP_PAGER"),
                          atom(x, "_NET_WM_STATE_STICKY"), atom(x, "_NET_WM_STATE_BELOW")};
  const auto id = xcb_window_t(window.winId());
  xcb_change_property(x, XCB_PROP_MODE_APPEND, id, atom(x, "_NET_WM_STATE"), XCB_ATOM_ATOM, 32,
                      std::uint32_t(states.size()), states.data());
  const auto type = atom(x, "_NET_WM_WINDOW_TYPE_UTILITY");
  xcb_change_property(x, XCB_PROP_MODE_REPLACE, id, atom(x, "_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, 1,
                      &type);
  const std::uint32_t everywhere = 0xFFFFFFFF;
  xcb_change_property(x, XCB_PROP_MODE_REPLACE, id, atom(x, "_NET_WM_DESKTOP"), XCB_ATOM_CARDINAL, 32, 1,
                      &everywhere);
  xcb_flush(x);
}

} // namespace korvell
