#include "platform/x11_desktop.hpp"

#include <xcb/randr.h>
#include <xcb/xcb.h>
#include <xcb/xcb_ewmh.h>
#include <xcb/xcb_icccm.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>
#include <string>
#include <vector>

#include "platform/posix/x11_clipboard.hpp"
#include "platform/posix/x11_connection.hpp"
#include "platform/posix/x11_keys.hpp"

namespace orvo::platform {

namespace {

using x11::Freed;

// ICCCM's WM_STATE value of a minimised window.
constexpr std::uint32_t kIconicState = 3;
// The source a pager gives when it asks for a window to be activated: window managers let it
// through their focus-stealing prevention, as the platform let an attached thread through.
constexpr xcb_ewmh_client_source_type_t kPagerSource = XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER;

RECT rectOf(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
  return RECT{x, y, x + width, y + height};
}

RECT intersection(const RECT& a, const RECT& b) {
  RECT r{std::max(a.Left, b.Left), std::max(a.Top, b.Top), std::min(a.Right, b.Right),
         std::min(a.Bottom, b.Bottom)};
  if (r.Right < r.Left) r.Right = r.Left;
  if (r.Bottom < r.Top) r.Bottom = r.Top;
  return r;
}

std::int64_t area(const RECT& r) {
  return static_cast<std::int64_t>(r.Right - r.Left) * (r.Bottom - r.Top);
}

class X11Desktop final : public Desktop {
 public:
  explicit X11Desktop(const x11::Connection& display)
      : connection_(display.connection),
        screenNumber_(display.screenNumber),
        screen_(display.screen) {
    ewmhReady_ =
        xcb_ewmh_init_atoms_replies(&ewmh_, xcb_ewmh_init_atoms(connection_, &ewmh_), nullptr) != 0;
    wmState_ = x11::internAtom(connection_, "WM_STATE");
    changeState_ = x11::internAtom(connection_, "WM_CHANGE_STATE");
  }
  X11Desktop(const X11Desktop&) = delete;
  X11Desktop& operator=(const X11Desktop&) = delete;
  ~X11Desktop() override {
    if (ewmhReady_) xcb_ewmh_connection_wipe(&ewmh_);
    xcb_disconnect(connection_);
  }

  [[nodiscard]] bool usable() const { return screen_ != nullptr && ewmhReady_; }

  std::vector<WindowHandle> topLevelWindows() override {
    // The stacking list runs from the bottom up; the platform's list runs from the top down.
    std::vector<WindowHandle> out;
    xcb_ewmh_get_windows_reply_t list{};
    if (xcb_ewmh_get_client_list_stacking_reply(
            &ewmh_, xcb_ewmh_get_client_list_stacking(&ewmh_, screenNumber_), &list, nullptr) ==
        0) {
      return out;
    }
    for (std::uint32_t i = list.windows_len; i > 0; --i) {
      out.push_back(static_cast<WindowHandle>(list.windows[i - 1]));
    }
    xcb_ewmh_get_windows_reply_wipe(&list);
    return out;
  }

  bool isWindowVisible(WindowHandle window) override {
    const Freed attributes(xcb_get_window_attributes_reply(
        connection_, xcb_get_window_attributes(connection_, id(window)), nullptr));
    if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE) return false;
    return !hasState(window, ewmh_._NET_WM_STATE_HIDDEN);
  }

  String windowTitle(WindowHandle window) override {
    xcb_ewmh_get_utf8_strings_reply_t name{};
    if (xcb_ewmh_get_wm_name_reply(&ewmh_, xcb_ewmh_get_wm_name(&ewmh_, id(window)), &name,
                                   nullptr) != 0) {
      String title = fromUtf8(std::string_view(name.strings, name.strings_len));
      xcb_ewmh_get_utf8_strings_reply_wipe(&name);
      return title;
    }
    xcb_icccm_get_text_property_reply_t text{};
    if (xcb_icccm_get_wm_name_reply(connection_, xcb_icccm_get_wm_name(connection_, id(window)),
                                    &text, nullptr) == 0) {
      return {};
    }
    String title = text.encoding == ewmh_.UTF8_STRING
                       ? fromUtf8(std::string_view(text.name, text.name_len))
                       : x11::fromLatin1(std::string_view(text.name, text.name_len));
    xcb_icccm_get_text_property_reply_wipe(&text);
    return title;
  }

  String windowClassName(WindowHandle window) override {
    xcb_icccm_get_wm_class_reply_t names{};
    if (xcb_icccm_get_wm_class_reply(connection_, xcb_icccm_get_wm_class(connection_, id(window)),
                                     &names, nullptr) == 0) {
      return {};
    }
    String className = fromUtf8(names.class_name != nullptr ? names.class_name : "");
    xcb_icccm_get_wm_class_reply_wipe(&names);
    return className;
  }

  WindowHandle windowOwner(WindowHandle window) override {
    xcb_window_t owner = XCB_NONE;
    if (xcb_icccm_get_wm_transient_for_reply(
            connection_, xcb_icccm_get_wm_transient_for(connection_, id(window)), &owner,
            nullptr) == 0) {
      return 0;
    }
    return static_cast<WindowHandle>(owner);
  }

  WindowHandle foregroundWindow() override {
    xcb_window_t active = XCB_NONE;
    if (xcb_ewmh_get_active_window_reply(&ewmh_, xcb_ewmh_get_active_window(&ewmh_, screenNumber_),
                                         &active, nullptr) == 0) {
      return 0;
    }
    return static_cast<WindowHandle>(active);
  }

  std::int64_t windowOwnerId(WindowHandle window) override {
    std::uint32_t pid = 0;
    if (xcb_ewmh_get_wm_pid_reply(&ewmh_, xcb_ewmh_get_wm_pid(&ewmh_, id(window)), &pid, nullptr) ==
        0) {
      return 0;
    }
    return pid;
  }

  std::int32_t activateWindow(WindowHandle window) override {
    if (window == 0) return 0;
    xcb_ewmh_request_change_active_window(&ewmh_, screenNumber_, id(window), kPagerSource,
                                          XCB_CURRENT_TIME,
                                          static_cast<xcb_window_t>(foregroundWindow()));
    return flushed();
  }

  std::int32_t showWindow(WindowHandle window, ShowCommand command) override {
    if (window == 0) return 0;
    // As the platform's call answers: whether the window was visible before.
    const bool wasVisible = isWindowVisible(window);
    // Mapping a window is how a client asks to show it, and to bring it back from minimised.
    if (command == ShowCommand::Minimize) {
      // ICCCM's request to iconify: a WM_CHANGE_STATE message to the root window.
      xcb_client_message_event_t message{};
      message.response_type = XCB_CLIENT_MESSAGE;
      message.format = 32;
      message.window = id(window);
      message.type = changeState_;
      message.data.data32[0] = kIconicState;
      xcb_send_event(connection_, 0, screen_->root,
                     XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                     reinterpret_cast<const char*>(&message));
      flushed();
      return wasVisible ? 1 : 0;
    }
    xcb_map_window(connection_, id(window));
    if (command == ShowCommand::Maximize || command == ShowCommand::ShowNormal) {
      xcb_ewmh_request_change_wm_state(
          &ewmh_, screenNumber_, id(window),
          command == ShowCommand::Maximize ? XCB_EWMH_WM_STATE_ADD : XCB_EWMH_WM_STATE_REMOVE,
          ewmh_._NET_WM_STATE_MAXIMIZED_VERT, ewmh_._NET_WM_STATE_MAXIMIZED_HORZ, kPagerSource);
    }
    if (command != ShowCommand::Show && isIconic(window)) {
      xcb_ewmh_request_change_active_window(&ewmh_, screenNumber_, id(window), kPagerSource,
                                            XCB_CURRENT_TIME, XCB_NONE);
    }
    flushed();
    return wasVisible ? 1 : 0;
  }

  std::int32_t raiseWindow(WindowHandle window) override {
    if (window == 0) return 0;
    xcb_ewmh_request_restack_window(&ewmh_, screenNumber_, id(window), XCB_NONE,
                                    XCB_STACK_MODE_ABOVE);
    return flushed();
  }

  bool isIconic(WindowHandle window) override {
    const Freed state(xcb_get_property_reply(
        connection_, xcb_get_property(connection_, 0, id(window), wmState_, wmState_, 0, 2),
        nullptr));
    if (state && xcb_get_property_value_length(state.reply) >= 4) {
      std::uint32_t value = 0;
      std::memcpy(&value, xcb_get_property_value(state.reply), sizeof value);
      if (value == kIconicState) return true;
    }
    return hasState(window, ewmh_._NET_WM_STATE_HIDDEN);
  }

  bool isZoomed(WindowHandle window) override {
    return hasState(window, ewmh_._NET_WM_STATE_MAXIMIZED_VERT) &&
           hasState(window, ewmh_._NET_WM_STATE_MAXIMIZED_HORZ);
  }

  std::optional<RECT> windowRect(WindowHandle window) override {
    const Freed geometry(
        xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, id(window)), nullptr));
    if (!geometry) return std::nullopt;
    const Freed onRoot(xcb_translate_coordinates_reply(
        connection_, xcb_translate_coordinates(connection_, id(window), screen_->root, 0, 0),
        nullptr));
    if (!onRoot) return std::nullopt;
    return rectOf(onRoot->dst_x, onRoot->dst_y, geometry->width, geometry->height);
  }

  RECT virtualScreen() override {
    return rectOf(0, 0, screen_->width_in_pixels, screen_->height_in_pixels);
  }

  std::optional<RECT> monitorWorkArea(WindowHandle nearestTo) override {
    const auto window = windowRect(nearestTo);
    if (!window) return std::nullopt;
    const auto monitors = this->monitors();
    if (monitors.empty()) return std::nullopt;
    // The monitor that shows most of the window, else the one whose centre is nearest.
    const RECT* best = &monitors.front().rect;
    std::int64_t bestScore = std::numeric_limits<std::int64_t>::min();
    for (const auto& m : monitors) {
      const std::int64_t shown = area(intersection(m.rect, *window));
      const std::int64_t dx = (m.rect.Left + m.rect.Right) / 2 - (window->Left + window->Right) / 2;
      const std::int64_t dy = (m.rect.Top + m.rect.Bottom) / 2 - (window->Top + window->Bottom) / 2;
      const std::int64_t score = shown > 0 ? shown : -(dx * dx + dy * dy);
      if (score > bestScore) {
        bestScore = score;
        best = &m.rect;
      }
    }
    return intersection(*best, workArea());
  }

  std::optional<RECT> primaryWorkArea() override {
    const auto monitors = this->monitors();
    if (monitors.empty()) return intersection(virtualScreen(), workArea());
    const auto primary =
        std::find_if(monitors.begin(), monitors.end(), [](const Monitor& m) { return m.primary; });
    return intersection(primary != monitors.end() ? primary->rect : monitors.front().rect,
                        workArea());
  }

  std::optional<String> clipboardText() override {
    X11Clipboard* c = clipboard();
    return c != nullptr ? c->text() : std::nullopt;
  }

  bool setClipboardText(std::u16string_view text) override {
    X11Clipboard* c = clipboard();
    return c != nullptr && c->setText(text);
  }

  bool isKeyDown(std::int32_t virtualKey) override {
    if (const int button = buttonOfVirtualKey(virtualKey); button != 0) {
      const Freed pointer(xcb_query_pointer_reply(
          connection_, xcb_query_pointer(connection_, screen_->root), nullptr));
      return pointer && (pointer->mask & (XCB_BUTTON_MASK_1 << (button - 1))) != 0;
    }
    const std::vector<std::uint32_t> wanted = keysymsOfVirtualKey(virtualKey);
    if (wanted.empty()) return false;
    const xcb_setup_t* setup = xcb_get_setup(connection_);
    const xcb_keycode_t first = setup->min_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - first + 1);
    const Freed keymap(xcb_query_keymap_reply(connection_, xcb_query_keymap(connection_), nullptr));
    const Freed mapping(xcb_get_keyboard_mapping_reply(
        connection_, xcb_get_keyboard_mapping(connection_, first, count), nullptr));
    if (!keymap || !mapping) return false;
    const xcb_keysym_t* keysyms = xcb_get_keyboard_mapping_keysyms(mapping.reply);
    const int perKey = mapping->keysyms_per_keycode;
    for (int k = 0; k < count; ++k) {
      const int keycode = first + k;
      if ((keymap->keys[keycode / 8] & (1U << (keycode % 8))) == 0) continue;
      for (int j = 0; j < perKey; ++j) {
        const xcb_keysym_t sym = keysyms[k * perKey + j];
        if (std::find(wanted.begin(), wanted.end(), sym) != wanted.end()) return true;
      }
    }
    return false;
  }

  TwipsPerPixel twipsPerPixel() override {
    // 1440 twips to the inch, at the display's dots per inch. The server knows its size in
    // whole millimetres only, so the resolution is rounded to whole dots as resolutions are
    // set (96, 120, 144): 1080 pixels in 286 mm are 96 dots, not 95.9.
    const auto perPixel = [](std::uint16_t pixels, std::uint16_t millimetres) {
      if (pixels == 0 || millimetres == 0) return 15.0;
      const double dpi = std::round(pixels * 25.4 / millimetres);
      return dpi > 0 ? 1440.0 / dpi : 15.0;
    };
    return {perPixel(screen_->width_in_pixels, screen_->width_in_millimeters),
            perPixel(screen_->height_in_pixels, screen_->height_in_millimeters)};
  }

 private:
  struct Monitor {
    RECT rect;
    bool primary;
  };

  static xcb_window_t id(WindowHandle window) { return static_cast<xcb_window_t>(window); }

  // The clipboard has a connection and a thread of its own, made when it is first used.
  X11Clipboard* clipboard() {
    std::call_once(clipboardMade_, [this] { clipboard_ = X11Clipboard::connect(); });
    return clipboard_.get();
  }

  // Sent, and read by the server: a request still in the socket when the process ends can be lost
  // (an activation asked for just before exit was, one time in three on a loaded machine). A
  // round trip proves the server has read everything before it.
  std::int32_t flushed() {
    if (xcb_flush(connection_) <= 0) return 0;
    const Freed sync(
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    return sync ? 1 : 0;
  }

  bool hasState(WindowHandle window, xcb_atom_t state) {
    xcb_ewmh_get_atoms_reply_t states{};
    if (xcb_ewmh_get_wm_state_reply(&ewmh_, xcb_ewmh_get_wm_state(&ewmh_, id(window)), &states,
                                    nullptr) == 0) {
      return false;
    }
    const bool found = std::find(states.atoms, states.atoms + states.atoms_len, state) !=
                       states.atoms + states.atoms_len;
    xcb_ewmh_get_atoms_reply_wipe(&states);
    return found;
  }

  // The current desktop's work area (_NET_WORKAREA), else the whole screen.
  RECT workArea() {
    std::uint32_t current = 0;
    xcb_ewmh_get_current_desktop_reply(&ewmh_, xcb_ewmh_get_current_desktop(&ewmh_, screenNumber_),
                                       &current, nullptr);
    xcb_ewmh_get_workarea_reply_t areas{};
    if (xcb_ewmh_get_workarea_reply(&ewmh_, xcb_ewmh_get_workarea(&ewmh_, screenNumber_), &areas,
                                    nullptr) == 0) {
      return virtualScreen();
    }
    RECT r = virtualScreen();
    if (areas.workarea_len > 0) {
      const auto& a = areas.workarea[current < areas.workarea_len ? current : 0];
      r = rectOf(static_cast<std::int32_t>(a.x), static_cast<std::int32_t>(a.y),
                 static_cast<std::int32_t>(a.width), static_cast<std::int32_t>(a.height));
    }
    xcb_ewmh_get_workarea_reply_wipe(&areas);
    return r;
  }

  std::vector<Monitor> monitors() {
    std::vector<Monitor> out;
    const Freed reply(xcb_randr_get_monitors_reply(
        connection_, xcb_randr_get_monitors(connection_, screen_->root, 1), nullptr));
    if (!reply) return out;
    for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.reply); it.rem > 0;
         xcb_randr_monitor_info_next(&it)) {
      out.push_back(
          {rectOf(it.data->x, it.data->y, it.data->width, it.data->height), it.data->primary != 0});
    }
    return out;
  }

  xcb_connection_t* connection_;
  int screenNumber_;
  xcb_screen_t* screen_;
  xcb_ewmh_connection_t ewmh_{};
  bool ewmhReady_ = false;
  xcb_atom_t wmState_ = XCB_ATOM_NONE;
  xcb_atom_t changeState_ = XCB_ATOM_NONE;
  std::once_flag clipboardMade_;
  std::unique_ptr<X11Clipboard> clipboard_;
};

}  // namespace

std::shared_ptr<Desktop> connectX11Desktop() {
  const auto display = x11::connectDisplay();
  if (!display) return nullptr;
  auto desktop = std::make_shared<X11Desktop>(*display);
  if (!desktop->usable()) return nullptr;
  return desktop;
}

}  // namespace orvo::platform
