#include "statements/files/chain.h"

#include <utility>

#include "files/file_handle.h"
#include "files/program_text.h"
#include "platform/listener.h"
#include "platform/memory.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/keywords.h"
#include "program/line_range.h"
#include "program/messages.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "run/remembered_lines.h"
#include "run/run.h"
#include "screen/console.h"
#include "statements/files/file_name.h"
#include "values/common_list.h"
#include "values/evaluator.h"
#include "values/variables.h"

namespace korvane {

namespace {

struct ChainRequest {
    FileName name;
    bool merge;
    bool has_start;
    bool keep_all;
    bool has_range;
    std::int64_t start;  // line number
    LineRange range;     // lines to delete
};

bool syntax_fault() {
    raise(message::syntax_error);
    return false;
}

// "DELETE range" behind the last comma.
bool read_delete_range(Cursor& cursor, ChainRequest& request) {
    if (!expect(cursor, KW_DELETE, message::syntax_error)) return false;
    request.has_range = true;
    return read_line_range(cursor, delete_range_messages, request.range) && check_line_range(request.range);
}

// "[, [line][, [ALL][, DELETE range]]]" behind the file name.
bool read_options(Cursor& cursor, ChainRequest& request) {
    if (!accept(cursor, ',')) return true;
    if (!at_statement_end(cursor) && cursor->kind != ',') {
        request.has_start = true;
        request.start = evaluate_line_number(cursor);
        if (error_pending()) return false;
    }
    if (!accept(cursor, ',')) return true;
    request.keep_all = accept_word(cursor, "ALL");
    if (accept(cursor, ',')) return read_delete_range(cursor, request);
    return request.keep_all || at_statement_end(cursor) || syntax_fault();
}

bool read_request(Cursor& cursor, ChainRequest& request) {
    request.merge = accept(cursor, KW_MERGE);
    request.name = read_file_name(cursor);
    if (error_pending() || !read_options(cursor, request)) return false;
    if (!at_statement_end(cursor)) return syntax_fault();
    if (!request.has_range || request.merge) return true;
    raise(message::illegal_function_call);
    return false;
}

// Brings the new program text in. False after an error.
bool replace_program(const ChainRequest& request) {
    FileHandle file = open_program(request.name.view());
    if (!file) {
        raise(message::file_not_found);
        return false;
    }
    if (!request.merge) clear_program();
    read_program_text(std::move(file));
    if (error_pending()) return false;
    if (!request.merge) tell(Happening::keeps);
    return true;
}

// Finds the line to go on with. False after an error.
bool find_start(const ChainRequest& request, std::uint32_t& index) {
    if (!request.has_start) return true;
    index =
        request.start <= max_line_number ? find_line(static_cast<std::uint32_t>(request.start)) : direct_line;
    if (index != direct_line) return true;
    raise(message::undefined_line);
    return false;
}

// Everything that CHAIN does in front of going on at the line with the given index. False after an error.
bool change_program(const ChainRequest& request, std::uint32_t& start) {
    if (!request.keep_all) keep_common_variables();
    if (request.has_range) delete_line_range(request.range);
    if (error_pending() || !replace_program(request)) return false;

    reset_run_state();
    text_window_off();
    execution.stop = false;
    if (!request.merge) reset_default_types();
    clear_common_list();
    return find_start(request, start);
}

// One name of a COMMON statement. False after an error.
bool declare_common(Cursor& cursor) {
    if (cursor->kind != IDENTIFIER) {
        raise(message::expected_variable);
        return false;
    }
    CommonEntry entry{};
    copy_bytes(entry.name, cursor->name, name_capacity - 1);
    ++cursor;
    if (accept(cursor, '(')) {
        if (!expect(cursor, ')', message::syntax_error)) return false;
        entry.is_array = true;
    }
    if (is_common(entry.name, entry.is_array)) {
        raise(message::duplicate_definition);
        return false;
    }
    if (common_list.count == max_common_entries) {
        raise(message::too_many_variables);
        return false;
    }
    common_list.entries[common_list.count++] = entry;
    return true;
}

}  // namespace

void do_common(Cursor& cursor) {
    ++cursor;
    do {
        if (!declare_common(cursor)) return;
    } while (accept(cursor, ','));
}

void do_chain(Cursor& cursor) {
    ++cursor;
    ChainRequest request{};
    if (!read_request(cursor, request)) return;

    const RememberedLines lines;
    std::uint32_t start = 0;
    if (!change_program(request, start)) {
        lines.follow();
    } else if (program.count == 0) {
        // There is nothing to go on with: the run ends.
        execution.stop = true;
    } else {
        chain_to_line(start);
    }
}

}  // namespace korvane
