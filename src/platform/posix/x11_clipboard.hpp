#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "orvogeneric/types.hpp"

// The CLIPBOARD selection of an X display in plain text (UTF-8 targets, with STRING and TEXT for
// older clients). Text put on it is served by a thread of its own while the process lives, and
// handed to a clipboard manager at exit where one runs, so that it outlives the process.
namespace orvo::platform {

class X11Clipboard {
 public:
  // On the display named by DISPLAY; null when it cannot be reached.
  static std::unique_ptr<X11Clipboard> connect();
  X11Clipboard(const X11Clipboard&) = delete;
  X11Clipboard& operator=(const X11Clipboard&) = delete;
  ~X11Clipboard();

  // The clipboard's text, from whichever program holds it (in pieces when it is large); nullopt
  // when none holds text or the holder stops answering for three seconds.
  std::optional<String> text();
  // Takes the clipboard with this text; false when the display refused.
  bool setText(std::u16string_view text);

  struct State;

 private:
  explicit X11Clipboard(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

}  // namespace orvo::platform
