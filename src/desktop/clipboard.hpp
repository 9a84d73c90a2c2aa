#pragma once

#include "orvogeneric/enums.hpp"
#include "orvogeneric/types.hpp"

// The clipboard's plain text, through the installed desktop (the display's CLIPBOARD selection
// on X), and the search of that text for a path.
namespace orvo::clipboard {

// The first path of each kind among the clipboard's lines, chosen by Search; "" when the
// clipboard holds no text or no line is of that kind.
String GetPathFromClipboard(enumGetPathFromClipboardSearch Search);
// The clipboard's text; "" when it holds none.
String ClipboardGetText();
// Replaces the clipboard's content with the text; 521 when the clipboard cannot be opened.
void ClipboardSetText(const String& text);

}  // namespace orvo::clipboard
