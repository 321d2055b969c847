#include "platform/memory.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/messages.h"
#include "program/parse.h"
#include "values/evaluator.h"
#include "values/functions.h"

namespace korvane {

int read_arguments(Cursor& cursor, Value* arguments, int required, int capacity) {
    if (!expect(cursor, '(', message::expected_left_parenthesis)) return 0;
    int count = 0;
    do {
        arguments[count] = evaluate(cursor);
        if (error_pending()) return 0;
        ++count;
    } while (count < capacity && accept(cursor, ','));
    if (count < required) {
        raise(message::expected_comma);
        return 0;
    }
    return expect(cursor, ')', message::expected_right_parenthesis) ? count : 0;
}

NewString new_string(std::uint64_t length) {
    if (length > UINT32_MAX) {
        raise(message::out_of_string_space);
        return {nullptr, Value::nothing()};
    }
    std::uint8_t* bytes = allocate_string(length);
    return {bytes, bytes == nullptr ? Value::nothing()
                                    : Value::of_string(bytes, static_cast<std::uint32_t>(length))};
}

Value new_string_of(const void* bytes, std::uint64_t length) {
    const NewString copy = new_string(length);
    if (!error_pending()) copy_bytes(copy.bytes, bytes, length);
    return copy.value;
}

Value narrowest_integer(std::int64_t integer) {
    if (holds(Type::INTEGER, integer)) return Value::of_integer(integer, Type::INTEGER);
    if (holds(Type::LONG, integer)) return Value::of_integer(integer, Type::LONG);
    return Value::of_integer(integer);
}

Value fail(const char* error_message) {
    raise(error_message);
    return Value::nothing();
}

}  // namespace korvane
