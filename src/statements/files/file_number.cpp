#include "statements/files/file_number.h"

#include "program/errors.h"
#include "program/messages.h"
#include "program/parse.h"
#include "values/evaluator.h"

namespace korvane {

OpenFile* lookup_file(Cursor& cursor, bool must_be_open) {
    accept(cursor, '#');
    const std::int64_t number = evaluate_integer(cursor);
    if (error_pending()) return nullptr;
    if (number >= 1 && number <= max_file_number) {
        OpenFile& file = file_table.entries[number - 1];
        if (file.handle != nullptr || !must_be_open) return &file;
    }
    raise(message::bad_file_number);
    return nullptr;
}

OpenFile* parse_output_file(Cursor& cursor) {
    OpenFile* file = lookup_file(cursor, true);
    if (file == nullptr) return nullptr;
    if (file->mode == FileMode::input) {
        raise(message::bad_file_mode);
        return nullptr;
    }
    return expect_comma(cursor) ? file : nullptr;
}

}  // namespace korvane
