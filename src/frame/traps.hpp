#pragma once

#include <cstdint>
#include <exception>
#include <new>
#include <string_view>
#include <utility>

#include "frame/state.hpp"
#include "orvogeneric/error.hpp"
#include "runtime/errors.hpp"

namespace orvo::frame {

// Reports a trapped error. With reraise it traces the report and raises the number again with
// "Error handled by <proc>" appended; without, it shows the report in a critical message box
// and returns.
void HandleError(std::u16string_view procedure, std::int32_t number,
                 std::u16string_view description, bool reraise);

// Raises kLibraryErrorNumber with the message as description and no source.
[[noreturn]] void RaiseLibraryError(std::u16string_view message);

// The traps turn what they catch into the language's error with the public asError.
using orvo::asError;

// The standard trap around a procedure body.
template <class Body>
decltype(auto) trap(std::u16string_view procedure, Body&& body) {
  if (InDevelopmentMode()) return std::forward<Body>(body)();
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    const Error e = asError(std::current_exception());
    HandleError(procedure, e.number(), e.description(), true);
    throw;  // unreachable: HandleError re-raises
  }
}

// The message-box form used by handlers that report and carry on: on error the report is shown,
// and the procedure returns `fallback`.
template <class Body, class Result>
Result trapAndShow(std::u16string_view procedure, Result fallback, Body&& body) {
  if (InDevelopmentMode()) return std::forward<Body>(body)();
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    const Error e = asError(std::current_exception());
    HandleError(procedure, e.number(), e.description(), false);
    return fallback;
  }
}

// Raises the context form of a trapped error: an untranslated run-time failure (its description
// is the standard text of its number) gets the context sentence and the number in front; every
// error gets the procedure name appended. Nothing is traced.
[[noreturn]] void RaiseWithContext(std::u16string_view procedure, std::u16string_view context,
                                   const Error& error);
// The detailed form: detail lines (each already CR LF separated) go between the context part
// and the procedure name.
[[noreturn]] void RaiseWithContext(std::u16string_view procedure, std::u16string_view context,
                                   std::u16string_view details, const Error& error);

template <class Body>
decltype(auto) contextTrap(std::u16string_view procedure, std::u16string_view context,
                           Body&& body) {
  if (InDevelopmentMode()) return std::forward<Body>(body)();
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    RaiseWithContext(procedure, context, asError(std::current_exception()));
  }
}

}  // namespace orvo::frame
