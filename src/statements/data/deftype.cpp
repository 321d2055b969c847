#include "statements/data/deftype.h"

#include "program/errors.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "values/variables.h"

namespace korvane {
namespace {

static_assert(KW_DEFSTR - KW_DEFINT == static_cast<int>(Type::STRING) - static_cast<int>(Type::INTEGER));

// A one-letter name.
bool read_letter(Cursor& cursor, char& letter) {
    if (cursor->kind != IDENTIFIER || cursor->name[1] != 0) {
        raise(message::expected_letter);
        return false;
    }
    letter = (cursor++)->name[0];
    return true;
}

// One letter, or a range of letters.
void read_item(Cursor& cursor, Type type) {
    char first;
    if (!read_letter(cursor, first)) return;
    char last = first;
    if (accept(cursor, '-') && !read_letter(cursor, last)) return;
    if (last < first) {
        raise(message::illegal_function_call);
        return;
    }
    for (char letter = first; letter <= last; ++letter)
        variables.default_types[letter - 'A'] = type;
}

}  // namespace

void do_deftype(Cursor& cursor) {
    const auto type = static_cast<Type>(cursor->kind - KW_DEFINT + static_cast<int>(Type::INTEGER));
    ++cursor;
    forget_absence();
    // Items already processed keep their effect when a later one fails.
    do {
        read_item(cursor, type);
    } while (!error_pending() && accept(cursor, ','));
}

}  // namespace korvane
