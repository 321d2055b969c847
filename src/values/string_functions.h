// Built-in functions of strings. Every new string takes fresh string space ("Out of string space"). Numeric
// arguments are rounded to integers; out of range they raise "Illegal function call"; a wrong type raises
// "Type mismatch".
#pragma once

#include "numbers/value.h"

namespace korvane {

Value function_asc(const Value& text);  // first byte; an empty text is out of range
Value function_chr(const Value& code);  // 0 to 255
Value function_len(const Value& text);
Value function_lcase(const Value& text);  // ASCII letters only
Value function_ucase(const Value& text);
Value function_space(const Value& count);
Value function_str(const Value& number);  // the free form without its trailing blank
Value function_val(const Value& text);    // longest numeric beginning, 0 when there is none
Value function_hex(const Value& number);  // 64-bit two's complement, no leading zeros
Value function_oct(const Value& number);

// Images of numbers as strings, and back: 2-byte integers and Microsoft Binary Format.
Value function_mki(const Value& number);
Value function_mks(const Value& number);
Value function_mkd(const Value& number);
Value function_cvi(const Value& image);
Value function_cvs(const Value& image);
Value function_cvd(const Value& image);

// Copies a text to `to` with the bytes from `first` to `last` moved by `distance`, as LCASE$ and UCASE$ do.
void copy_shifted(std::uint8_t* to, const Value& text, std::uint8_t first, std::uint8_t last, int distance);

// Where one text is found in another at or behind `start`, both counted from 1; 0 where it is not. An empty
// text is found at `start` unless that lies behind the other text.
std::int64_t find_text(const Value& text, const Value& wanted, std::int64_t start);

// Of several arguments.
Value function_left(const Value* arguments, int count);    // (s$, n)
Value function_right(const Value* arguments, int count);   // (s$, n)
Value function_mid(const Value* arguments, int count);     // (s$, start[, length]), start from 1
Value function_instr(const Value* arguments, int count);   // ([start,] string$, search$)
Value function_string(const Value* arguments, int count);  // (n, code) or (n, s$)

}  // namespace korvane
