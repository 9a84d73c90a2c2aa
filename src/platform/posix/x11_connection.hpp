#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <optional>
#include <string_view>

#include "orvogeneric/types.hpp"

// What the desktop and the clipboard both need of an X display: a connection to the one DISPLAY
// names, its atoms by name, replies freed when done with, and Latin-1 text as UTF-16.
namespace orvo::platform::x11 {

struct Connection {
  xcb_connection_t* connection;
  xcb_screen_t* screen;
  int screenNumber;
};

// A connection to the display named by DISPLAY, with its default screen; nullopt when DISPLAY
// names none or it cannot be reached.
std::optional<Connection> connectDisplay();

// The atom of that name, made if the server has none yet; XCB_ATOM_NONE when it cannot answer.
xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name);

// A reply the server sent, freed at the end of its scope.
template <class Reply>
struct Freed {
  Reply* reply;
  explicit Freed(Reply* r) : reply(r) {}
  Freed(const Freed&) = delete;
  Freed& operator=(const Freed&) = delete;
  ~Freed() { std::free(reply); }
  Reply* operator->() const { return reply; }
  explicit operator bool() const { return reply != nullptr; }
};

// Latin-1 text (STRING, and WM_NAME without an encoding of its own) as UTF-16.
String fromLatin1(std::string_view bytes);

}  // namespace orvo::platform::x11
