#include "values/screen_function.h"

#include "program/errors.h"
#include "program/messages.h"
#include "program/parse.h"
#include "screen/console.h"
#include "values/convert.h"
#include "values/functions.h"

namespace korvane {

Value screen_function(Cursor& cursor) {
    constexpr std::int64_t constant_attribute = 7;
    ++cursor;
    if (cursor->kind != '(') return fail(message::syntax_error_lower);
    Value arguments[3];
    const int count = read_arguments(cursor, arguments, 2, 3);
    if (count == 0) return Value::nothing();
    const std::int64_t row = to_integer(arguments[0]);
    const std::int64_t column = to_integer(arguments[1]);
    const std::int64_t mode = count == 3 ? to_integer(arguments[2]) : 0;
    if (error_pending()) return Value::nothing();
    if (row < 1 || row > text_rows() || column < 1 || column > text_columns())
        return fail(message::illegal_function_call);
    if (mode != 0) return Value::of_integer(constant_attribute, Type::INTEGER);
    return Value::of_integer(
        con_read_cell(static_cast<std::uint32_t>(row - 1), static_cast<std::uint32_t>(column - 1)),
        Type::INTEGER);
}

}  // namespace korvane
