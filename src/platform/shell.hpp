#pragma once

#include <cstdint>
#include <string_view>

// The desktop shell's services.
namespace orvo::platform {

// Opens a document or address with the program associated with it, as ShellExecute with the
// default verb does, and answers as it answers: a value above 32 on success, else one of its
// error codes (2 file not found, 3 path not found, 5 access denied, 8 out of memory, 31 no
// associated program, or another value below 33).
std::int32_t openDocument(std::u16string_view document);

}  // namespace orvo::platform
