// Small readers of the token stream that every statement shares.
#pragma once

#include <cstdint>

#include "program/errors.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/token.h"

namespace korvane {

// End of line, ":" or ELSE ends a statement; so does a remark.
inline bool at_statement_end(const Token* at) {
    return at->kind == END_OF_LINE || at->kind == ':' || at->kind == KW_ELSE || at->kind == KW_REM;
}

// Skips a token of the kind when the cursor stands on one.
inline bool accept(Cursor& cursor, std::uint8_t kind) {
    if (cursor->kind != kind) return false;
    ++cursor;
    return true;
}

// Skips a token of the kind, or raises the message and gives false.
inline bool expect(Cursor& cursor, std::uint8_t kind, const char* error_message) {
    if (accept(cursor, kind)) return true;
    raise(error_message);
    return false;
}

inline bool expect_comma(Cursor& cursor) {
    return expect(cursor, ',', message::expected_comma);
}

// An identifier spelled exactly so (upper case), as the words that are no keywords: FULL, WRAP, OFF ...
bool is_word(const Token* at, const char* word);

bool accept_word(Cursor& cursor, const char* word);

}  // namespace korvane
