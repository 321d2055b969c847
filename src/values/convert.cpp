#include "values/convert.h"

#include <iterator>

#include "program/errors.h"
#include "program/messages.h"

namespace korvane {

std::int64_t round_to_integer(double number) {
    constexpr double limit = 9223372036854775808.0;
    if (!(number >= -limit && number < limit)) {  // a NaN fails both comparisons
        raise(message::overflow);
        return 0;
    }
    const auto truncated = static_cast<std::int64_t>(number);
    const double fraction = number - static_cast<double>(truncated);
    // Only numbers below 2^52 in magnitude have a fraction, so neither step can leave the INT64 range.
    if (fraction >= 0.5) return truncated + 1;
    if (fraction <= -0.5) return truncated - 1;
    return truncated;
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
