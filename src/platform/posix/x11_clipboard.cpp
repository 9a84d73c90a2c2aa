#include "platform/posix/x11_clipboard.hpp"

#include <sys/socket.h>
#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/posix/x11_connection.hpp"

namespace orvo::platform {

namespace {

// How long a holder of the clipboard, or a clipboard manager, is given to answer, and a holder
// sending text in pieces to send the next one: a loaded machine serving megabytes in pieces
// pauses for over a second between them.
constexpr auto kAnswerTime = std::chrono::seconds(3);
// Each request names a property of its own, in turn, so that the late answer or piece of a request
// that was given up is never taken for the next one's.
constexpr std::size_t kRequestProperties = 4;

// Latin-1 for clients that ask for STRING: what it cannot hold becomes "?".
std::string latin1(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char16_t c : text) out.push_back(c < 0x100 ? static_cast<char>(c) : '?');
  return out;
}

}  // namespace

struct X11Clipboard::State {
  xcb_connection_t* connection = nullptr;
  xcb_window_t window = XCB_NONE;
  xcb_atom_t clipboard = XCB_ATOM_NONE;
  xcb_atom_t utf8 = XCB_ATOM_NONE;
  xcb_atom_t text = XCB_ATOM_NONE;
  xcb_atom_t targets = XCB_ATOM_NONE;
  xcb_atom_t incr = XCB_ATOM_NONE;
  std::array<xcb_atom_t, kRequestProperties> properties{};
  xcb_atom_t property = XCB_ATOM_NONE;  // the current request's, under the mutex
  std::size_t request = 0;
  xcb_atom_t manager = XCB_ATOM_NONE;
  xcb_atom_t saveTargets = XCB_ATOM_NONE;

  std::mutex requesting;
  std::mutex mutex;
  std::condition_variable answered;
  bool owned = false;
  std::string ownedUtf8;  // what is served while owned
  String ownedText;
  // The answer to the last conversion this process asked for.
  bool arrived = false;
  std::optional<std::string> received;
  bool receivedLatin1 = false;  // STRING rather than UTF-8
  bool inPieces = false;        // an answer arriving in pieces, gathered in pieces
  std::string pieces;
  bool managerDone = false;
  std::thread events;

  void serve(const xcb_selection_request_event_t& request) {
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    // An old client names no property: the target is the property (ICCCM).
    const xcb_atom_t into = request.property != XCB_ATOM_NONE ? request.property : request.target;
    notify.property = XCB_ATOM_NONE;
    {
      const std::lock_guard lock(mutex);
      if (owned) {
        if (request.target == targets) {
          const xcb_atom_t offered[] = {targets, utf8, text, XCB_ATOM_STRING};
          xcb_change_property(connection, XCB_PROP_MODE_REPLACE, request.requestor, into,
                              XCB_ATOM_ATOM, 32, 4, offered);
          notify.property = into;
        } else if (request.target == utf8 || request.target == text) {
          xcb_change_property(connection, XCB_PROP_MODE_REPLACE, request.requestor, into, utf8, 8,
                              static_cast<std::uint32_t>(ownedUtf8.size()), ownedUtf8.data());
          notify.property = into;
        } else if (request.target == XCB_ATOM_STRING) {
          const std::string bytes = latin1(ownedText);
          xcb_change_property(connection, XCB_PROP_MODE_REPLACE, request.requestor, into,
                              XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(bytes.size()),
                              bytes.data());
          notify.property = into;
        }
      }
    }
    xcb_send_event(connection, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&notify));
    xcb_flush(connection);
  }

  void arrive(const xcb_selection_notify_event_t& notify) {
    std::optional<std::string> got;
    bool isLatin1 = false;
    if (notify.selection != manager && notify.property != XCB_ATOM_NONE) {
      const std::lock_guard lock(mutex);
      if (notify.property != property || arrived) return;  // an answer given up on
    }
    if (notify.property != XCB_ATOM_NONE) {
      xcb_get_property_reply_t* reply =
          xcb_get_property_reply(connection,
                                 xcb_get_property(connection, 1, window, notify.property,
                                                  XCB_GET_PROPERTY_TYPE_ANY, 0, UINT32_MAX / 4),
                                 nullptr);
      // Text too large for one request comes in pieces (INCR): this first answer is only its
      // size, and reading it (which deletes it) asks for the first piece. Deleting it once more
      // would delete the first piece if the holder were quick, and the text would lose it.
      if (reply != nullptr && reply->type == incr && notify.selection != manager) {
        std::free(reply);
        {
          const std::lock_guard lock(mutex);
          pieces.clear();
          inPieces = true;
        }
        answered.notify_all();
        return;
      }
      if (reply != nullptr && reply->format == 8) {
        const auto* data = static_cast<const char*>(xcb_get_property_value(reply));
        got = std::string(data, static_cast<std::size_t>(xcb_get_property_value_length(reply)));
        isLatin1 = reply->type == XCB_ATOM_STRING;
      }
      std::free(reply);
    }
    const std::lock_guard lock(mutex);
    if (notify.selection == manager) {
      managerDone = true;
    } else {
      received = std::move(got);
      receivedLatin1 = isLatin1;
      arrived = true;
    }
    answered.notify_all();
  }

  // A piece of text sent in pieces: an empty one ends it.
  void piece(const xcb_property_notify_event_t& change) {
    if (change.window != window || change.state != XCB_PROPERTY_NEW_VALUE) return;
    {
      const std::lock_guard lock(mutex);
      if (!inPieces || change.atom != property) return;
    }
    xcb_get_property_reply_t* reply =
        xcb_get_property_reply(connection,
                               xcb_get_property(connection, 1, window, change.atom,
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, UINT32_MAX / 4),
                               nullptr);
    xcb_flush(connection);
    const std::lock_guard lock(mutex);
    // A piece already taken (its notice can come after it was read) is no piece.
    if (reply != nullptr && reply->type == XCB_ATOM_NONE) {
      std::free(reply);
      return;
    }
    if (reply == nullptr || reply->format != 8 || xcb_get_property_value_length(reply) == 0) {
      if (reply != nullptr && reply->format == 8) {
        received = std::move(pieces);
        receivedLatin1 = reply->type == XCB_ATOM_STRING;
      } else {
        received.reset();
      }
      pieces.clear();
      inPieces = false;
      arrived = true;
      answered.notify_all();
    } else {
      pieces.append(static_cast<const char*>(xcb_get_property_value(reply)),
                    static_cast<std::size_t>(xcb_get_property_value_length(reply)));
      answered.notify_all();
    }
    std::free(reply);
  }

  void run() {
    while (xcb_generic_event_t* event = xcb_wait_for_event(connection)) {
      switch (event->response_type & 0x7F) {
        case XCB_SELECTION_REQUEST:
          serve(*reinterpret_cast<xcb_selection_request_event_t*>(event));
          break;
        case XCB_SELECTION_NOTIFY:
          arrive(*reinterpret_cast<xcb_selection_notify_event_t*>(event));
          break;
        case XCB_PROPERTY_NOTIFY:
          piece(*reinterpret_cast<xcb_property_notify_event_t*>(event));
          break;
        case XCB_SELECTION_CLEAR: {
          const std::lock_guard lock(mutex);
          owned = false;
          break;
        }
        default:
          break;
      }
      std::free(event);
    }
  }
};

std::unique_ptr<X11Clipboard> X11Clipboard::connect() {
  const auto display = x11::connectDisplay();
  if (!display) return nullptr;
  xcb_connection_t* c = display->connection;
  auto state = std::make_unique<State>();
  state->connection = c;
  // A window of our own, never mapped: selections are owned by, and delivered to, a window.
  state->window = xcb_generate_id(c);
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(c, XCB_COPY_FROM_PARENT, state->window, display->screen->root, 0, 0, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
  state->clipboard = x11::internAtom(c, "CLIPBOARD");
  state->utf8 = x11::internAtom(c, "UTF8_STRING");
  state->text = x11::internAtom(c, "TEXT");
  state->targets = x11::internAtom(c, "TARGETS");
  state->incr = x11::internAtom(c, "INCR");
  for (std::size_t i = 0; i < kRequestProperties; ++i) {
    state->properties[i] = x11::internAtom(c, "ORVO_CLIPBOARD" + std::to_string(i));
  }
  state->property = state->properties[0];
  state->manager = x11::internAtom(c, "CLIPBOARD_MANAGER");
  state->saveTargets = x11::internAtom(c, "SAVE_TARGETS");
  xcb_flush(c);
  State* raw = state.get();
  state->events = std::thread([raw] { raw->run(); });
  return std::unique_ptr<X11Clipboard>(new X11Clipboard(std::move(state)));
}

X11Clipboard::X11Clipboard(std::unique_ptr<State> state) : state_(std::move(state)) {}

X11Clipboard::~X11Clipboard() {
  State& s = *state_;
  bool owned = false;
  {
    const std::lock_guard lock(s.mutex);
    owned = s.owned;
  }
  // What this process put on the clipboard outlives it where a clipboard manager runs: the
  // manager is asked to take a copy, and is served until it says it has.
  if (owned) {
    xcb_get_selection_owner_reply_t* reply = xcb_get_selection_owner_reply(
        s.connection, xcb_get_selection_owner(s.connection, s.manager), nullptr);
    const bool managed = reply != nullptr && reply->owner != XCB_NONE;
    std::free(reply);
    if (managed) {
      xcb_convert_selection(s.connection, s.window, s.manager, s.saveTargets, s.property,
                            XCB_CURRENT_TIME);
      xcb_flush(s.connection);
      std::unique_lock lock(s.mutex);
      s.answered.wait_for(lock, kAnswerTime, [&s] { return s.managerDone; });
    }
  }
  // Closing the connection ends the thread's wait for events.
  xcb_destroy_window(s.connection, s.window);
  xcb_flush(s.connection);
  ::shutdown(xcb_get_file_descriptor(s.connection), SHUT_RDWR);
  s.events.join();
  xcb_disconnect(s.connection);
}

std::optional<String> X11Clipboard::text() {
  State& s = *state_;
  // One request at a time: the answer and its pieces are the state's.
  const std::lock_guard one(s.requesting);
  xcb_atom_t into = XCB_ATOM_NONE;
  {
    const std::lock_guard lock(s.mutex);
    if (s.owned) return s.ownedText;
    s.arrived = false;
    s.inPieces = false;
    s.pieces.clear();
    s.received.reset();
    s.request = (s.request + 1) % kRequestProperties;
    s.property = s.properties[s.request];
    into = s.property;
  }
  // Whatever a request given up on left in this property goes first.
  xcb_delete_property(s.connection, s.window, into);
  xcb_convert_selection(s.connection, s.window, s.clipboard, s.utf8, into, XCB_CURRENT_TIME);
  xcb_flush(s.connection);
  std::unique_lock lock(s.mutex);
  // The holder answers within the answer time; text in pieces may take longer, as long as pieces
  // keep coming.
  std::size_t had = 0;
  if (!s.answered.wait_for(lock, kAnswerTime, [&s, had] {
        return s.arrived || (s.inPieces && s.pieces.size() != had);
      })) {
    s.inPieces = false;
    return std::nullopt;
  }
  while (!s.arrived) {
    had = s.pieces.size();
    if (!s.answered.wait_for(lock, kAnswerTime,
                             [&s, had] { return s.arrived || s.pieces.size() != had; })) {
      s.inPieces = false;
      return std::nullopt;
    }
  }
  if (!s.received) return std::nullopt;
  if (!s.receivedLatin1) return fromUtf8(*s.received);
  return x11::fromLatin1(*s.received);
}

bool X11Clipboard::setText(std::u16string_view text) {
  State& s = *state_;
  {
    const std::lock_guard lock(s.mutex);
    s.ownedText = String(text);
    s.ownedUtf8 = toUtf8(s.ownedText);
    s.owned = true;
  }
  xcb_set_selection_owner(s.connection, s.window, s.clipboard, XCB_CURRENT_TIME);
  xcb_get_selection_owner_reply_t* reply = xcb_get_selection_owner_reply(
      s.connection, xcb_get_selection_owner(s.connection, s.clipboard), nullptr);
  const bool ours = reply != nullptr && reply->owner == s.window;
  std::free(reply);
  if (!ours) {
    const std::lock_guard lock(s.mutex);
    s.owned = false;
  }
  return ours;
}

}  // namespace orvo::platform
