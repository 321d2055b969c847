// BSAVE and BLOAD: memory-image files.
//
//   offset 0  u8   marker 0xFD
//          1  u16  segment, 0
//          3  u16  low 16 bits of the address the bytes were saved from
//          5  u16  number of data bytes n
//          7  n    the bytes
//        7+n  8    the first seven bytes again, then 0x1A; written for older systems, never read
#pragma once

#include "program/token.h"

namespace korvane {

// BSAVE file$, address, length: 1 to 65535 bytes from a machine address. Raises "Type mismatch",
// "Expected ,", "Illegal function call", "Bad file name" and "Disk I/O error" (the partial file stays).
void do_bsave(Cursor& cursor);

// BLOAD file$[, address]: reads the bytes straight to a machine address of at least 65536. Raises "Type
// mismatch", "File not found", "Bad file mode" (no memory image),
// "Illegal function call" and "Disk I/O error".
void do_bload(Cursor& cursor);

}  // namespace korvane
