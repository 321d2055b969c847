#include "statements/files/open_statement.h"

#include <utility>

#include "files/file_handle.h"
#include "files/file_table.h"
#include "files/named_files.h"
#include "platform/characters.h"
#include "platform/memory.h"
#include "program/errors.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "statements/files/file_name.h"
#include "statements/files/file_number.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

struct OpenRequest {
    FileName name;
    FileMode mode;
    OpenFile* file;
    std::int64_t record_length;
};

bool read_record_length(Cursor& cursor, OpenRequest& request) {
    request.record_length = evaluate_integer(cursor);
    if (error_pending()) return false;
    if (request.record_length >= 1 && request.record_length <= max_record_length) return true;
    raise(message::bad_record_length);
    return false;
}

bool read_file_number(Cursor& cursor, OpenRequest& request) {
    request.file = lookup_file(cursor, false);
    return request.file != nullptr;
}

// The mode of the first form, by the first letter of `word`.
bool mode_from_letter(const FileName& word, FileMode& mode) {
    switch (word.length == 0 ? '\0' : fold_to_upper(word.text[0])) {
        case 'I':
            mode = FileMode::input;
            return true;
        case 'O':
            mode = FileMode::output;
            return true;
        case 'A':
            mode = FileMode::append;
            return true;
        case 'R':
            mode = FileMode::random;
            return true;
        default:
            raise(message::bad_file_mode);
            return false;
    }
}

// The mode of the second form, at the cursor.
bool read_mode_word(Cursor& cursor, FileMode& mode) {
    if (accept(cursor, KW_INPUT)) {
        mode = FileMode::input;
    } else if (accept(cursor, KW_OUTPUT)) {
        mode = FileMode::output;
    } else if (accept(cursor, KW_APPEND)) {
        mode = FileMode::append;
    } else if (accept_word(cursor, "RANDOM")) {
        mode = FileMode::random;
    } else {
        raise(message::bad_file_mode);
        return false;
    }
    return true;
}

// mode$ has been read: ", [#]n, file$[, reclen]" follows.
bool read_first_form(Cursor& cursor, const FileName& mode, OpenRequest& request) {
    if (!mode_from_letter(mode, request.mode) || !expect_comma(cursor)) return false;
    if (!read_file_number(cursor, request) || !expect_comma(cursor)) return false;
    request.name = read_file_name(cursor);
    if (error_pending()) return false;
    return !accept(cursor, ',') || read_record_length(cursor, request);
}

// file$ has been read: "[FOR mode] AS [#]n [LEN = reclen]" follows.
bool read_second_form(Cursor& cursor, const FileName& name, OpenRequest& request) {
    request.name = name;
    request.mode = FileMode::random;
    if (accept(cursor, KW_FOR) && !read_mode_word(cursor, request.mode)) return false;
    if (!expect(cursor, KW_AS, message::expected_as) || !read_file_number(cursor, request)) return false;
    if (!accept_word(cursor, "LEN")) return true;
    return expect(cursor, '=', message::expected_equals) && read_record_length(cursor, request);
}

OpenMode firmware_mode(FileMode mode) {
    switch (mode) {
        case FileMode::input:
            return OpenMode::read;
        case FileMode::output:
            return OpenMode::create;
        case FileMode::append:
            return OpenMode::append;
        case FileMode::random:
            break;
    }
    return OpenMode::update;
}

void open_requested(const OpenRequest& request) {
    if (request.file->handle != nullptr) {
        raise(message::file_already_open);
        return;
    }
    FileHandle handle = OpenFileByName(request.name.view(), firmware_mode(request.mode));
    if (!handle) {
        raise(request.mode == FileMode::input ? message::file_not_found : message::bad_file_name);
        return;
    }
    const bool random = request.mode == FileMode::random;
    attach_file(*request.file, std::move(handle), request.mode,
                random ? static_cast<std::uint32_t>(request.record_length) : 0);
}

}  // namespace

void do_open(Cursor& cursor) {
    ++cursor;
    // Both forms begin with a string; a comma after it tells that it is a mode.
    const FileName first = read_file_name(cursor);
    if (error_pending()) return;
    OpenRequest request{};
    request.record_length = default_record_length;
    const bool is_first_form = cursor->kind == ',';
    if (is_first_form ? read_first_form(cursor, first, request) : read_second_form(cursor, first, request))
        open_requested(request);
}

void do_close(Cursor& cursor) {
    ++cursor;
    if (at_statement_end(cursor)) return;
    do {
        OpenFile* file = lookup_file(cursor, false);
        if (file == nullptr) return;
        close_file(*file);
    } while (accept(cursor, ','));
}

}  // namespace korvane
