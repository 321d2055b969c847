// The line handler: stores a program line, runs a command, or executes a direct line.
#include <array>
#include <string_view>

#include "files/file_table.h"
#include "help/help.h"
#include "platform/characters.h"
#include "platform/memory.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "program/tokenizer.h"
#include "prompt/auto_numbering.h"
#include "prompt/command_loop.h"
#include "prompt/delete_lines.h"
#include "prompt/find_text.h"
#include "prompt/list.h"
#include "prompt/renumber.h"
#include "run/breakpoints.h"
#include "run/continue.h"
#include "run/control_stacks.h"
#include "run/dispatch.h"
#include "run/run.h"
#include "run/trace.h"
#include "statements/files/program_files.h"
#include "values/clear.h"
#include "values/data_items.h"

namespace korvane {
namespace {

void skip_blanks(const std::uint8_t*& text) {
    while (*text == ' ')
        ++text;
}

// Takes the digits at `text` as a line number. Raises an error and gives false when it is too large.
bool take_typed_number(const std::uint8_t*& text, std::uint32_t& number) {
    std::uint64_t value = 0;
    for (; is_digit(*text); ++text) {
        value = value * 10 + (*text - '0');
        if (value > max_line_number) {
            raise(message::line_number_too_large);
            return false;
        }
    }
    number = static_cast<std::uint32_t>(value);
    return true;
}

void handle_program_line(const std::uint8_t* text) {
    std::uint32_t number;
    if (!take_typed_number(text, number)) return;
    skip_blanks(text);
    store_line(number, reinterpret_cast<const char*>(text));
}

void do_run(Cursor& cursor) {
    // Whatever follows on the line is ignored.
    while (cursor->kind != END_OF_LINE)
        ++cursor;
    run_program();
}

// NEW as a command, unlike the statement of the same name, also gives the program up.
void do_new_command(Cursor& cursor) {
    ++cursor;
    clear_trace();
    clear_breakpoints();
    close_all_files();
    clear_data();
    clear_program();
    reset_data_position();
}

struct Command {
    std::uint8_t kind;
    StatementHandler handler;
};

// Commands that are recognised only as the first word of a typed line.
constexpr std::array commands{
    Command{KW_RUN, do_run},         Command{KW_AUTO, do_auto},   Command{KW_RENUM, do_renum},
    Command{KW_DELETE, do_delete},   Command{KW_MERGE, do_merge}, Command{KW_LIST, do_list},
    Command{KW_BREAK, do_break},     Command{KW_CONT, do_cont},   Command{KW_HELP, do_help},
    Command{KW_NEW, do_new_command},
};

bool is_find_command(const Token* at) {
    return is_word(at, "FIND") && at[1].kind != '=' && at[1].kind != '(';
}

StatementHandler find_command(const Token* first) {
    if (is_find_command(first)) return do_find;
    for (const Command& command : commands)
        if (command.kind == first->kind) return command.handler;
    return nullptr;
}

void make_direct_line_current(std::uint32_t record) {
    execution.program_running = false;
    execution.line = direct_line;
    execution.tokens = execution_buffer.direct;
    execution.record = record;
    execution.statement_start = record;
    execution.stop = false;
    execution.jumped = false;
    execution.then_part = false;
}

void execute_direct(std::uint32_t record) {
    make_direct_line_current(record);
    run_loop();
    execution.stop = false;
}

// After a command that ended at ":" what follows is a direct line of its own.
void execute_command(StatementHandler command) {
    make_direct_line_current(0);
    Cursor cursor = execution_buffer.direct;
    command(cursor);
    if (!error_pending() && cursor->kind == ':')
        execute_direct(static_cast<std::uint32_t>(cursor - execution_buffer.direct));
}

}  // namespace

void handle_line(const std::uint8_t* line) {
    errors.pending = false;
    skip_blanks(line);
    if (is_digit(*line)) {
        handle_program_line(line);
        return;
    }
    execution_buffer.direct_count = static_cast<std::uint32_t>(tokenize(line));
    if (error_pending()) return;
    forget_direct_line();
    copy_bytes(execution_buffer.direct, tokenizer.scratch, execution_buffer.direct_count * sizeof(Token));
    auto& end = execution_buffer.direct[execution_buffer.direct_count - 1].line_end;
    end.line = direct_line;
    end.record = execution_buffer.direct_count - 1;
    const StatementHandler command = find_command(execution_buffer.direct);
    if (command != nullptr)
        execute_command(command);
    else
        execute_direct(0);
}

void handle_text(const char* line) {
    handle_line(reinterpret_cast<const std::uint8_t*>(line));
}

}  // namespace korvane
