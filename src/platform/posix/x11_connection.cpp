#include "platform/posix/x11_connection.hpp"

namespace orvo::platform::x11 {

std::optional<Connection> connectDisplay() {
  const char* display = std::getenv("DISPLAY");
  if (display == nullptr || *display == '\0') return std::nullopt;
  int screenNumber = 0;
  xcb_connection_t* connection = xcb_connect(nullptr, &screenNumber);
  if (xcb_connection_has_error(connection) != 0) {
    xcb_disconnect(connection);
    return std::nullopt;
  }
  auto it = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (int i = 0; i < screenNumber && it.rem > 0; ++i) xcb_screen_next(&it);
  if (it.data == nullptr) {
    xcb_disconnect(connection);
    return std::nullopt;
  }
  return Connection{connection, it.data, screenNumber};
}

xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name) {
  const Freed reply(xcb_intern_atom_reply(
      connection,
      xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()),
      nullptr));
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

String fromLatin1(std::string_view bytes) {
  String out;
  out.reserve(bytes.size());
  for (const char c : bytes) out.push_back(static_cast<unsigned char>(c));
  return out;
}

}  // namespace orvo::platform::x11
