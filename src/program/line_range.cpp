#include "program/line_range.h"

#include "numbers/rounding.h"
#include "program/parse.h"
#include "program/program_store.h"

namespace korvane {

std::optional<std::uint32_t> line_number_of(const Token& number) {
    std::int64_t integer = number.number.integer;
    if (is_floating(number.value_type) && !nearest_integer(number.number.real, integer)) return std::nullopt;
    if (integer < 0 || integer > max_line_number) return std::nullopt;
    return static_cast<std::uint32_t>(integer);
}

std::optional<std::uint32_t> read_line_number(Cursor& cursor, const char* not_a_number,
                                              const char* out_of_range) {
    if (cursor->kind != NUMBER) {
        raise(not_a_number);
        return std::nullopt;
    }
    const auto number = line_number_of(*cursor);
    if (!number) {
        raise(out_of_range);
        return std::nullopt;
    }
    ++cursor;
    return number;
}

bool read_line_range(Cursor& cursor, const LineRangeMessages& messages, LineRange& range) {
    if (cursor->kind == NUMBER) {
        const auto first = read_line_number(cursor, messages.malformed, messages.out_of_range);
        if (!first) return false;
        range = {*first, *first};
        if (!accept(cursor, '-')) return true;
        range.last = max_line_number;
        if (cursor->kind != NUMBER) return true;
    } else if (accept(cursor, '-')) {
        range.first = 0;
    } else {
        raise(messages.malformed);
        return false;
    }
    const auto last = read_line_number(cursor, messages.missing_number, messages.out_of_range);
    if (!last) return false;
    range.last = *last;
    return true;
}

bool check_line_range(const LineRange& range) {
    if (range.first <= range.last) return true;
    raise(message::illegal_function_call);
    return false;
}

void delete_line_range(const LineRange& range) {
    const std::uint32_t first = first_line_from(range.first);
    const std::uint32_t end = first_line_from(std::uint64_t{range.last} + 1);
    if (first == end) {
        // An empty deletion is an error, deliberately: most likely the range was mistyped.
        raise(message::illegal_function_call);
        return;
    }
    delete_lines(first, end);
}

}  // namespace korvane
