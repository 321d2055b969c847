// The store rule: how a Value becomes the content of a variable of a given type.
#include "platform/memory.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/messages.h"
#include "values/convert.h"
#include "values/variables.h"

namespace korvane {
namespace {

template <typename Narrow>
void store_narrow_integer(std::uint8_t* storage, const Value& value) {
    const std::int64_t integer = to_integer(value);
    if (error_pending()) return;
    const auto narrow = static_cast<Narrow>(integer);
    if (narrow != integer) {
        raise(message::overflow);
        return;
    }
    write_unaligned(storage, narrow);
}

void store_number(const Reference& reference, const Value& value) {
    switch (reference.type) {
        case Type::INTEGER:
            store_narrow_integer<std::int16_t>(reference.storage, value);
            break;
        case Type::LONG:
            store_narrow_integer<std::int32_t>(reference.storage, value);
            break;
        case Type::INT64:
            store_narrow_integer<std::int64_t>(reference.storage, value);
            break;
        // Deliberately without an overflow test:
        // a value outside the range becomes an infinity in the variable.
        case Type::SINGLE:
            write_unaligned(reference.storage, static_cast<float>(to_double(value)));
            break;
        case Type::DOUBLE:
            write_unaligned(reference.storage, to_double(value));
            break;
        case Type::STRING:
        case Type::NONE:
            break;
    }
}

}  // namespace

void store_string(std::uint8_t* storage, const Value& value) {
    std::uint8_t* bytes = allocate_string(value.length);
    if (error_pending()) return;
    copy_bytes(bytes, value.bytes, value.length);
    write_unaligned(storage, StringDescriptor{.length = value.length, .zero = 0, .bytes = bytes});
}

void store(const Reference& reference, const Value& value) {
    const bool is_string = value.type == Type::STRING;
    if (is_string != (reference.type == Type::STRING))
        raise(message::type_mismatch);
    else if (is_string)
        store_string(reference.storage, value);
    else
        store_number(reference, value);
}

}  // namespace korvane
