#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "orvogeneric/error_dialog.hpp"
#include "orvogeneric/export.hpp"

namespace orvo {

// Message-box styles and answers, numbered as the applications' language numbers them, so that
// a style such as vbCritical + vbYesNo travels unchanged.
enum MsgBoxStyle : std::int32_t {
  vbOKOnly = 0,
  vbOKCancel = 1,
  vbAbortRetryIgnore = 2,
  vbYesNoCancel = 3,
  vbYesNo = 4,
  vbRetryCancel = 5,
  vbCritical = 16,
  vbQuestion = 32,
  vbExclamation = 48,
  vbInformation = 64,
  vbDefaultButton2 = 256,
  vbDefaultButton3 = 512,
  vbApplicationModal = 0,
  vbSystemModal = 4096,
};

enum MsgBoxResult : std::int32_t {
  vbOK = 1,
  vbCancel = 2,
  vbAbort = 3,
  vbRetry = 4,
  vbIgnore = 5,
  vbYes = 6,
  vbNo = 7,
};

// The library's dialogs: the only way it talks to the user. A process without a desktop gets a
// console implementation; a host with its own windows installs one of its own (the library's
// Qt module is one), and tests install a recording one. What the library asks of the desktop
// itself (other windows, the clipboard, the keyboard) is the Desktop of desktop.hpp.
class ORVO_API UserInterface {
 public:
  UserInterface() = default;
  UserInterface(const UserInterface&) = delete;
  UserInterface& operator=(const UserInterface&) = delete;
  virtual ~UserInterface();
  // A modal message box; returns the button chosen.
  virtual MsgBoxResult messageBox(std::u16string_view text, std::u16string_view caption,
                                  std::int32_t style) = 0;
  virtual void beep() = 0;
  // Turns on file-path completion for an edit control (SHAutoComplete with these flags) and
  // returns the platform's result code, negative on failure. Without a desktop there is no edit
  // control to complete: the default does nothing and succeeds.
  virtual std::int32_t autoCompleteFilePaths(std::int32_t hwnd, std::int32_t flags);
  // Shows an error report in the error dialog (error_dialog.hpp says what it shows, where and
  // what it prints). The default, without a desktop, is a critical message box titled as the
  // dialog is.
  virtual void showErrorReport(const ErrorReportShown& report);
};

// Installs the user interface for the whole process and returns the previous one; an empty
// pointer restores the default for a process without a desktop.
ORVO_API std::shared_ptr<UserInterface> setUserInterface(std::shared_ptr<UserInterface> ui);
ORVO_API std::shared_ptr<UserInterface> userInterface();

}  // namespace orvo
