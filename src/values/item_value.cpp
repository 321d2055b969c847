#include "values/item_value.h"

#include "program/errors.h"
#include "values/text_number.h"

namespace korvane {
namespace {

bool store_as_integer(const Reference& target, std::string_view item) {
    std::int64_t integer;
    if (text_to_integer(item, integer) != NumberReading::number) return false;
    store(target, Value::of_integer(integer));
    return true;
}

}  // namespace

bool store_item(const Reference& target, std::string_view item) {
    if (target.type == Type::STRING) {
        store_string(target.storage, Value::of_string(reinterpret_cast<const std::uint8_t*>(item.data()),
                                                      static_cast<std::uint32_t>(item.size())));
        return true;
    }
    if (is_integer(target.type) && (store_as_integer(target, item) || error_pending())) return true;
    double number;
    const NumberReading reading = text_to_double(item, number);
    if (reading == NumberReading::number) store(target, Value::of_real(number));
    return reading != NumberReading::not_a_number;
}

}  // namespace korvane
