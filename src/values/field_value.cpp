#include "values/field_value.h"

#include "core/errors.h"

namespace korvane {

namespace {

NumberReading store_value(const Reference& place, const Value& value) {
    store(place, value);
    return error_pending() ? NumberReading::failed : NumberReading::number;
}

}  // namespace

NumberReading store_field(const Reference& place, std::string_view text) {
    if (place.type == Type::STRING) {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
        return store_value(place, Value::of_string(bytes, static_cast<std::uint32_t>(text.size())));
    }
    if (is_integer(place.type)) {
        std::int64_t integer = 0;
        const NumberReading reading = text_to_integer(text, integer);
        if (reading == NumberReading::number) return store_value(place, Value::of_integer(integer));
        if (reading == NumberReading::failed) return reading;
    }
    double number = 0;
    const NumberReading reading = text_to_double(text, number);
    return reading == NumberReading::number ? store_value(place, Value::of_real(number)) : reading;
}

}  // namespace korvane
