// Statements that set up the text screen: CLS, COLOR, LOCATE, SCREEN and TXTWINDOW.
#pragma once

#include "program/token.h"

namespace korvane {

// CLS clears the graphics viewport when there is one, else the text window, the rows of VIEW PRINT or
// everything; CLS @n clears a numbered window.
void do_cls(Cursor& cursor);

// COLOR [f][,b], COLOR r,g,b[,r,g,b], and the forms that begin with a value after COLOR @n,. Raises "Illegal
// function call" for a bad colour or a wrong number of values. New colours apply to what is drawn afterwards.
void do_color(Cursor& cursor);

// LOCATE [row][,[column]], 1-based in the text area; LOCATE @n, row, column in a numbered window. Raises
// "Illegal function call" outside of it.
void do_locate(Cursor& cursor);

// SCREEN width, height: each 1 to 65535, and a resolution that the firmware offers,
// else "Illegal function call".
void do_screen(Cursor& cursor);

// TXTWINDOW switches the global text window off; TXTWINDOW x1, y1, x2, y2 on; TXTWINDOW @n, ... defines a
// numbered one.
void do_txtwindow(Cursor& cursor);

}  // namespace korvane
