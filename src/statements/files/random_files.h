// Random-access files: FIELD, LSET, RSET, and GET and PUT on a file number.
//
// A file opened for random access is read and written one record at a time through the record buffer of its
// table entry. A field variable is a string variable whose descriptor points into that buffer, so GET makes
// the fields show the record and LSET changes what the next PUT writes; nothing is copied in between.
#pragma once

#include "program/token.h"

namespace korvane {

// All of these raise "Bad file number" and "Bad file mode" (the file is not random)
// where they take a file number.

// FIELD [#]n, width AS s$[, width AS s$ ...]: "Field overflow", "Expected AS", "Expected variable", "Type
// mismatch", "Too many variables". Fields set before an error stay set.
void do_field(Cursor& cursor);

// LSET s$ = value$ and RSET s$ = value$: fill any string variable or array element in place, left or right
// justified with blanks; its length never changes. "Type mismatch", "Expected =", "Out of string space".
void do_lset(Cursor& cursor);
void do_rset(Cursor& cursor);

// GET [#]n[, record] and PUT [#]n[, record]; records count from 1, and without a number the one after the
// last used is taken. "Bad record number", "Type mismatch", "Disk I/O error". A GET beyond the end of the
// file is no error: the record reads as zero bytes and EOF turns true.
void do_get_record(Cursor& cursor);
void do_put_record(Cursor& cursor);

}  // namespace korvane
