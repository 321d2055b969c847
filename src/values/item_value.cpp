#include "values/item_value.h"

#include "program/errors.h"
#include "program/messages.h"
#include "values/text_number.h"

namespace korvane {
namespace {

NumberReading read_for_type(std::string_view item, Type type, Value& number) {
    if (is_integer(type)) return text_to_number(item, number);
    double real = 0;
    const NumberReading reading = text_to_double(item, real);
    number = Value::of_real(real);
    return reading;
}

}  // namespace

bool store_item(const Reference& target, std::string_view item) {
    if (target.type == Type::STRING) {
        store_string(target.storage, Value::of_string(item));
        return true;
    }
    Value number;
    switch (read_for_type(item, target.type, number)) {
        case NumberReading::number:
            store(target, number);
            return true;
        case NumberReading::too_large:
            raise(message::overflow);
            return true;
        case NumberReading::not_a_number:
            return false;
    }
    return false;
}

}  // namespace korvane
