#include "frame/traps.hpp"

#include <string>

#include "frame/trace.hpp"
#include "orvogeneric/user_interface.hpp"
#include "runtime/strings.hpp"

namespace orvo {

Error asError(const std::exception_ptr& caught) {
  try {
    std::rethrow_exception(caught);
  } catch (const Error& e) {
    return e;
  } catch (const std::bad_alloc&) {
    return Error(errOutOfMemory, String(runtime::standardErrorText(errOutOfMemory)));
  } catch (...) {
    // A fault of our own code (a standard-library exception) surfaces as the language's
    // internal error rather than escaping as something an automation caller cannot read.
    return Error(errInternalError, String(runtime::standardErrorText(errInternalError)));
  }
}

}  // namespace orvo

namespace orvo::frame {

void HandleError(std::u16string_view procedure, std::int32_t number,
                 std::u16string_view description, bool reraise) {
  const String handledBy = String(u"Error handled by ") + String(procedure);
  String report = u"Unexpected error (";
  report.append(procedure).append(u")\r\n");
  report.append(runtime::DecimalText(number)).append(u": ").append(description).append(u"\r\n");
  report.append(handledBy);
  // The report must never replace the error being handled: a failing trace is dropped.
  try {
    LibraryTrace(report);
  } catch (...) {  // NOLINT(bugprone-empty-catch)
  }
  if (reraise) {
    throw Error(number, String(description) + u"\r\n" + handledBy);
  }
  try {
    userInterface()->messageBox(report, u"", vbCritical | vbOKOnly);
  } catch (...) {  // NOLINT(bugprone-empty-catch)
  }
}

void RaiseLibraryError(std::u16string_view message) {
  throw Error(kLibraryErrorNumber, String(message));
}

void RaiseWithContext(std::u16string_view procedure, std::u16string_view context,
                      const Error& error) {
  RaiseWithContext(procedure, context, {}, error);
}

void RaiseWithContext(std::u16string_view procedure, std::u16string_view context,
                      std::u16string_view details, const Error& error) {
  String description = error.description();
  if (description == runtime::standardErrorText(error.number())) {
    description =
        String(context) + u"\r\n" + runtime::DecimalText(error.number()) + u": " + description;
  }
  if (!details.empty()) description.append(u"\r\n").append(details);
  description.append(u"\r\n").append(procedure);
  throw Error(error.number(), std::move(description));
}

}  // namespace orvo::frame
