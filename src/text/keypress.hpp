#pragma once

#include <cstdint>

#include "orvogeneric/types.hpp"

// Keystroke filters for text boxes that take a real number or free text: a rejected key
// becomes 0 (no character) and, unless suppressed, the user hears a beep.
namespace orvo::text {

void ValidRs_subWorker(std::int16_t& KeyAscii, const String& SelText, std::int32_t SelStart,
                       std::int32_t SelLen, const String& TestText, VBool SuppressBeep);
// A whole text replayed one keystroke at a time through the same rules.
VBool ValidRString(const String& text);
void ValidStr_worker(std::int16_t& KeyAscii, const String& BannedChars, VBool SuppressBeep);

}  // namespace orvo::text
