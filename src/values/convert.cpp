#include "values/convert.h"

#include <iterator>

#include "numbers/rounding.h"
#include "program/errors.h"
#include "program/messages.h"

namespace korvane {

std::int64_t round_to_integer(double number) {
    std::int64_t integer;
    if (nearest_integer(number, integer)) return integer;
    raise(message::overflow);
    return 0;
}

std::int64_t to_integer(const Value& value) {
    if (is_integer(value.type)) return value.integer;
    if (is_floating(value.type)) return round_to_integer(value.real);
    raise(message::type_mismatch);
    return 0;
}

double to_double(const Value& value) {
    if (is_floating(value.type)) return value.real;
    if (is_integer(value.type)) return static_cast<double>(value.integer);
    raise(message::type_mismatch);
    return 0;
}

const char* type_name(Type type) {
    static constexpr const char* names[] = {"", "INTEGER", "LONG", "INT64", "SINGLE", "DOUBLE", "STRING"};
    const auto code = static_cast<std::size_t>(type);
    return code < std::size(names) ? names[code] : names[0];
}

}  // namespace korvane
