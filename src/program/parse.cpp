#include "program/parse.h"

#include <string_view>

namespace korvane {

bool is_word(const Token* at, const char* word) {
    return at->kind == IDENTIFIER && std::string_view(at->name) == word;
}

bool accept_word(Cursor& cursor, const char* word) {
    if (!is_word(cursor, word)) return false;
    ++cursor;
    return true;
}

}  // namespace korvane
