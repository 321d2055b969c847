#include "prompt/renumber.h"

#include <optional>
#include <span>
#include <string_view>

#include "program/arenas.h"
#include "program/execution.h"
#include "program/line_references.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "run/breakpoints.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

struct Request {
    std::int64_t new_number = 10;
    std::int64_t old_number = 0;  // the first line of the program
    std::int64_t increment = 10;
};

// The free part of the data arena, used without being allocated: two tables with an entry for every line, and
// the rewritten texts one after the other.
struct WorkSpace {
    std::span<std::uint32_t> new_numbers;
    std::span<std::uint32_t> text_ends;  // where each line's rewritten text ends in `texts`
    std::span<std::uint8_t> texts;
};

// One value of the argument list, unless it is left out.
void read_number(Cursor& cursor, std::int64_t& number) {
    if (at_statement_end(cursor) || cursor->kind == ',') return;
    number = evaluate_line_number(cursor);
}

std::optional<Request> read_request(Cursor& cursor) {
    Request request;
    read_number(cursor, request.new_number);
    if (!error_pending() && accept(cursor, ',')) read_number(cursor, request.old_number);
    if (!error_pending() && accept(cursor, ',')) read_number(cursor, request.increment);
    if (!error_pending() && !at_statement_end(cursor)) raise(message::syntax_error);
    if (error_pending()) return std::nullopt;
    return request;
}

// Whether the new numbers of the lines from `first` on keep the order of all lines and are line numbers.
bool numbers_fit(const Request& request, std::uint32_t first) {
    if (request.increment < 1 || request.new_number > max_line_number) return false;
    if (first > 0 && request.new_number <= program.lines[first - 1].number) return false;
    const std::uint32_t renumbered = program.count - first;
    if (renumbered < 2) return true;
    return request.increment <= (max_line_number - request.new_number) / (renumbered - 1);
}

// Raises "Out of memory" when the tables do not fit.
std::optional<WorkSpace> take_work_space() {
    const std::uint64_t tables = std::uint64_t{program.count} * 2 * sizeof(std::uint32_t);
    const std::uint64_t free = free_data_bytes();
    if (tables > free) {
        raise(message::out_of_memory);
        return std::nullopt;
    }
    auto* numbers = reinterpret_cast<std::uint32_t*>(arenas.FREEBOT);
    return WorkSpace{{numbers, program.count},
                     {numbers + program.count, program.count},
                     {arenas.FREEBOT + tables, free - tables}};
}

void assign_numbers(const Request& request, std::uint32_t first, std::span<std::uint32_t> new_numbers) {
    for (std::uint32_t index = 0; index < first; ++index)
        new_numbers[index] = program.lines[index].number;
    for (std::uint32_t index = first; index < program.count; ++index) {
        const std::int64_t number = request.new_number + request.increment * (index - first);
        new_numbers[index] = static_cast<std::uint32_t>(number);
    }
}

std::uint32_t renumbered_line(std::uint32_t line, const void* context) {
    const std::uint32_t index = find_line(line);
    return index == direct_line ? line : static_cast<const WorkSpace*>(context)->new_numbers[index];
}

// Rewrites the texts of all lines into the work space. Raises and gives false when one does not fit, or all
// of them together do not fit in the program arena.
bool rewrite_texts(const WorkSpace& space) {
    std::uint64_t program_size = 0;
    std::uint32_t written = 0;
    for (std::uint32_t index = 0; index < program.count; ++index) {
        std::uint32_t length = 0;
        switch (rewrite_line_references(line_text(index), renumbered_line, &space,
                                        space.texts.subspan(written), length)) {
            case Rewriting::done:
                break;
            case Rewriting::text_too_long:
                raise(message::line_too_long);
                return false;
            case Rewriting::out_of_space:
                raise(message::out_of_memory);
                return false;
        }
        written += length;
        space.text_ends[index] = written;
        program_size += line_record_size(length);
    }
    if (program_size <= program_arena_size) return true;
    raise(message::program_too_large);
    return false;
}

void renumber_breakpoints(const WorkSpace& space) {
    for (std::uint32_t i = 0; i < breakpoints.count; ++i)
        breakpoints.lines[i] = renumbered_line(breakpoints.lines[i], &space);
}

void store_renumbered(const WorkSpace& space) {
    const std::uint32_t count = program.count;
    clear_program();
    std::uint32_t start = 0;
    for (std::uint32_t index = 0; index < count; ++index) {
        const std::uint32_t end = space.text_ends[index];
        const auto* text = reinterpret_cast<const char*>(space.texts.data()) + start;
        store_line(space.new_numbers[index], std::string_view(text, end - start));
        start = end;
    }
}

}  // namespace

void do_renum(Cursor& cursor) {
    ++cursor;
    const auto request = read_request(cursor);
    if (!request || program.count == 0) return;
    const std::uint32_t first = first_line_from(static_cast<std::uint64_t>(request->old_number));
    if (!numbers_fit(*request, first)) {
        raise(message::illegal_function_call);
        return;
    }
    const auto space = take_work_space();
    if (!space) return;
    assign_numbers(*request, first, space->new_numbers);
    if (!rewrite_texts(*space)) return;
    renumber_breakpoints(*space);
    empty_token_cache();
    store_renumbered(*space);
}

}  // namespace korvane
