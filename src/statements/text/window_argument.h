// The "@n" of statements that address a numbered text window.
#pragma once

#include "program/token.h"
#include "screen/text_windows.h"

namespace korvane {

// "@" and a window number. Raises "Expected @", "Type mismatch", "Illegal function call" outside 0 to 7 and
// "Window not defined". Null after an error.
TextWindow* parse_window(Cursor& cursor);

// The same for a window that need not be defined yet.
TextWindow* parse_window_to_define(Cursor& cursor);

}  // namespace korvane
