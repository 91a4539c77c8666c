#pragma once
// Owners of X11 selections, by which window managers and trays say that they are there.

#include <QGuiApplication>
#include <qguiapplication_platform.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace korvell {

/// False also where there is no X11.
inline bool isSelectionOwned(std::string_view name) {
  const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
  auto* connection = x11 ? x11->connection() : nullptr;
  if (!connection) return false;
  const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
      xcb_intern_atom_reply(connection,
                            xcb_intern_atom(connection, 0, std::uint16_t(name.size()), name.data()), nullptr),
      &std::free);
  if (!atom) return false;
  const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
      xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr),
      &std::free);
  return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace korvell
