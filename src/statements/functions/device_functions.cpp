#include "statements/functions/device_functions.h"

#include "files/output.h"
#include "program/errors.h"
#include "program/messages.h"
#include "screen/console.h"
#include "screen/keyboard.h"
#include "statements/graphics/point_function.h"
#include "statements/text/print.h"
#include "values/convert.h"
#include "values/functions.h"

namespace korvane {
namespace {

Value send_blanks(const Value& argument, void (*send)(std::int64_t)) {
    const std::int64_t count = to_integer(argument);
    if (!error_pending()) send(count);
    return Value::of_string(nullptr, 0);
}

}  // namespace

Value function_inkey() {
    const std::int32_t key = key_get_nowait();
    if (key == no_key) return new_string_of(nullptr, 0);
    const auto character = static_cast<std::uint8_t>(key);
    return new_string_of(&character, 1);
}

Value function_csrlin() {
    return narrowest_integer(std::int64_t{console.cursor_row} + 1);
}
Value function_pos(const Value&) {
    return narrowest_integer(std::int64_t{out_column()} + 1);
}

// Items of a print list: they act when they are evaluated and print as nothing.
Value function_tab(const Value& column) {
    return send_blanks(column, print_tab);
}
Value function_spc(const Value& count) {
    return send_blanks(count, print_spaces);
}

Value function_point(const Value* arguments, int) {
    const double x = to_double(arguments[0]);
    const double y = to_double(arguments[1]);
    return error_pending() ? Value::nothing() : gfx_point(x, y);
}

}  // namespace korvane
