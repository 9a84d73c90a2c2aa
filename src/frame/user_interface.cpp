#include "orvogeneric/user_interface.hpp"

#include <cstdio>
#include <mutex>

#include "orvogeneric/types.hpp"

namespace orvo {

UserInterface::~UserInterface() = default;

void UserInterface::showErrorReport(const ErrorReportShown& report) {
  messageBox(report.details, errorDialogCaptions().title, vbCritical | vbOKOnly);
}

std::int32_t UserInterface::autoCompleteFilePaths(std::int32_t /*hwnd*/, std::int32_t /*flags*/) {
  return 0;
}

namespace {

// Without a desktop nobody can press a button: the box is written to stderr and the default
// button answers, which is what an unattended user pressing Enter would have chosen.
class ConsoleUserInterface final : public UserInterface {
 public:
  MsgBoxResult messageBox(std::u16string_view text, std::u16string_view caption,
                          std::int32_t style) override {
    std::fprintf(stderr, "[%s] %s\n", toUtf8(caption).c_str(), toUtf8(text).c_str());
    return defaultAnswer(style);
  }
  void beep() override {
    std::fputc('\a', stderr);
    std::fflush(stderr);
  }

  static MsgBoxResult defaultAnswer(std::int32_t style) {
    static constexpr MsgBoxResult kButtons[6][3] = {
        {vbOK, vbOK, vbOK},      {vbOK, vbCancel, vbCancel}, {vbAbort, vbRetry, vbIgnore},
        {vbYes, vbNo, vbCancel}, {vbYes, vbNo, vbNo},        {vbRetry, vbCancel, vbCancel}};
    const int buttons = style & 7;
    const int defaultButton = (style >> 8) & 3;
    if (buttons > 5 || defaultButton > 2) return vbOK;
    return kButtons[buttons][defaultButton];
  }
};

std::mutex gMutex;
std::shared_ptr<UserInterface>& current() {
  static std::shared_ptr<UserInterface> ui = std::make_shared<ConsoleUserInterface>();
  return ui;
}

}  // namespace

std::shared_ptr<UserInterface> setUserInterface(std::shared_ptr<UserInterface> ui) {
  if (!ui) ui = std::make_shared<ConsoleUserInterface>();
  const std::lock_guard lock(gMutex);
  std::swap(current(), ui);
  return ui;
}

std::shared_ptr<UserInterface> userInterface() {
  const std::lock_guard lock(gMutex);
  return current();
}

}  // namespace orvo
