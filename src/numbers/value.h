// The value model: six types, one 16-byte Value.
//
// Every datum that the interpreter computes, stores or prints is one of six types. An evaluated datum travels
// as a Value: two machine words, returned in registers by the System V convention that the image uses inside.
//
//   type     payload                       meaning
//   INTEGER  integer (widened to 64 bits)  the 16-bit range is enforced only when the value is stored
//   LONG     integer (widened to 64 bits)  the 32-bit range is enforced only when the value is stored
//   INT64    integer
//   SINGLE   real, rounded to binary32 precision at the moment it was produced
//   DOUBLE   real
//   STRING   bytes + length; counted, not terminated, any byte value; the Value does not own the bytes
#pragma once

#include <cstdint>
#include <string_view>

namespace korvane {

// The numbering is fixed: it orders the numeric types by width, and promotion compares the codes.
enum class Type : std::uint8_t {
    NONE = 0,
    INTEGER = 1,
    LONG = 2,
    INT64 = 3,
    SINGLE = 4,
    DOUBLE = 5,
    STRING = 6
};

constexpr bool is_integer(Type type) {
    return type >= Type::INTEGER && type <= Type::INT64;
}
constexpr bool is_floating(Type type) {
    return type == Type::SINGLE || type == Type::DOUBLE;
}
constexpr bool is_numeric(Type type) {
    return type >= Type::INTEGER && type <= Type::DOUBLE;
}

// Whether a variable of an integer type holds the number.
constexpr bool holds(Type type, std::int64_t number) {
    if (type == Type::INTEGER) return number == static_cast<std::int16_t>(number);
    if (type == Type::LONG) return number == static_cast<std::int32_t>(number);
    return true;
}

struct Value {
    union {
        std::int64_t integer;
        double real;
        const std::uint8_t* bytes;
    };
    std::uint32_t length;  // byte count of a STRING; 0 otherwise
    Type type;

    static constexpr Value of_integer(std::int64_t value, Type type = Type::INT64) {
        return Value{.integer = value, .length = 0, .type = type};
    }
    // The caller has rounded `value` to binary32 when `type` is SINGLE.
    static constexpr Value of_real(double value, Type type = Type::DOUBLE) {
        return Value{.real = value, .length = 0, .type = type};
    }
    static constexpr Value of_string(const std::uint8_t* bytes, std::uint32_t length) {
        return Value{.bytes = bytes, .length = length, .type = Type::STRING};
    }
    // The characters stay where they are.
    static Value of_string(std::string_view text) {
        return of_string(reinterpret_cast<const std::uint8_t*>(text.data()),
                         static_cast<std::uint32_t>(text.size()));
    }
    static constexpr Value of_truth(bool truth) { return of_integer(truth ? -1 : 0); }
    // What a failed evaluation yields; nobody looks at it because an error is pending.
    static constexpr Value nothing() { return of_integer(0); }

    // The bytes of a STRING as characters.
    std::string_view text() const { return {reinterpret_cast<const char*>(bytes), length}; }
};
static_assert(sizeof(Value) == 16);

// How a string variable or array element keeps its text: the bytes live in string space (or, for a field
// variable, in a record buffer).
struct StringDescriptor {
    std::uint32_t length;
    std::uint32_t zero;  // always written as zero
    std::uint8_t* bytes;
};
static_assert(sizeof(StringDescriptor) == 16);

// Bytes that a datum of the type takes in a variable or array element: 2, 4, 8, 4, 8, 16; 0 for NONE.
constexpr std::uint64_t storage_size(Type type) {
    constexpr std::uint8_t sizes[] = {0, 2, 4, 8, 4, 8, 16};
    return sizes[static_cast<std::uint8_t>(type)];
}

}  // namespace korvane
