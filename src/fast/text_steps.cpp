#include "fast/text_steps.h"

#include <algorithm>

#include "fast/records.h"
#include "fast/sides.h"
#include "fast/text_sides.h"
#include "numbers/format.h"
#include "platform/memory.h"
#include "program/arenas.h"
#include "values/functions.h"
#include "values/string_functions.h"

namespace korvane::fast {
namespace {

Value copy_of(const std::uint8_t* bytes, std::uint64_t length) {
    std::uint8_t* copy = take_string_space(length);
    if (copy == nullptr) return no_text();
    copy_text(copy, bytes, length);
    return Value::of_string(copy, static_cast<std::uint32_t>(length));
}

Value concatenate(Token* at) {
    return joined(at, 1);
}

// The number behind a bracket or comma; one that no function takes when it failed.
std::int64_t number_at(const Token* mark) {
    const Whole number = quick_right_index(mark);
    return number.failed != 0 ? INT64_MIN : number.value;
}

Value left_part(Token* at) {
    const Value text = right_text(at);
    if (failed(text)) return text;
    return middle_of(text, 1, number_at(as<MarkRecord>(at).next_mark));
}

Value right_part(Token* at) {
    const Value text = right_text(at);
    if (failed(text)) return text;
    return end_of(text, number_at(as<MarkRecord>(at).next_mark));
}

// A part of a text where the text has it.
inline Value piece_of(Value text, std::int64_t start, std::int64_t length) {
    if (start < 1 || length < 0) return no_text();
    if (start > text.length) return Value::of_string(nullptr, 0);
    const std::int64_t available = text.length - (start - 1);
    return Value::of_string(text.bytes + (start - 1),
                            static_cast<std::uint32_t>(std::min(length, available)));
}

inline Value copy_of_piece(const Value& text) {
    return failed(text) ? text : copy_of(text.bytes, text.length);
}

Value middle_part(Token* at) {
    return copy_of_piece(middle_piece(at));
}

Value character(Token* at) {
    return character_of(number_at(at));
}

Value number_text(Token* at) {
    const Type type = as<CallRecord>(at).last_argument;
    Value number;
    if (is_integer(type)) {
        const Whole whole = right_whole(at);
        if (whole.failed != 0) return no_text();
        number = Value::of_integer(whole.value);
    } else {
        number = Value::of_real(right_real(at), type);
        if (!is_finite(number.real)) return no_text();
    }
    const NumberText text = format_number(number);
    return copy_of(reinterpret_cast<const std::uint8_t*>(text.characters.data()), text.size - 1);
}

template <std::uint8_t first, std::uint8_t last, int distance>
Value other_case(Token* at) {
    const Value text = right_text(at);
    if (failed(text)) return text;
    std::uint8_t* bytes = take_string_space(text.length);
    if (bytes == nullptr) return no_text();
    copy_shifted(bytes, text, first, last, distance);
    return Value::of_string(bytes, text.length);
}

Value repeated(std::uint8_t byte, std::int64_t count) {
    if (count < 0 || count > UINT32_MAX) return no_text();
    const auto length = static_cast<std::uint32_t>(count);
    std::uint8_t* bytes = take_string_space(length);
    if (bytes == nullptr) return no_text();
    fill_bytes(bytes, byte, length);
    return Value::of_string(bytes, length);
}

Value blanks(Token* at) {
    return repeated(' ', number_at(at));
}

Value repeated_character(Token* at) {
    const std::int64_t count = number_at(at);
    const Token* mark = as<MarkRecord>(at).next_mark;
    if (as<CallRecord>(at).last_argument == Type::STRING) {
        const Value text = right_text(mark);
        return failed(text) || text.length == 0 ? no_text() : repeated(text.bytes[0], count);
    }
    const std::int64_t code = number_at(mark);
    return code < 0 || code > 255 ? no_text() : repeated(static_cast<std::uint8_t>(code), count);
}

// The digits of an integer, which no function makes more of than these.
constexpr std::int64_t most_digits = 22;

Value digits(Token* at) {
    const Whole number = quick_right_index(at);
    if (number.failed != 0 || arenas.FREETOP - arenas.FREEBOT < most_digits) return no_text();
    return as<CallRecord>(at).built_in->unary(Value::of_integer(number.value));
}

struct TextFunction {
    std::string_view name;
    Value (*step)(Token*);
};

constexpr TextFunction rows[] = {
    {"MID$", middle_part},
    {"LEFT$", left_part},
    {"RIGHT$", right_part},
    {"CHR$", character},
    {"STR$", number_text},
    {"HEX$", digits},
    {"OCT$", digits},
    {"SPACE$", blanks},
    {"STRING$", repeated_character},
    {"UCASE$", other_case<'a', 'z', 'A' - 'a'>},
    {"LCASE$", other_case<'A', 'Z', 'a' - 'A'>},
};

const TextFunction* find_row(std::string_view name) {
    for (const TextFunction& row : rows)
        if (row.name == name) return &row;
    return nullptr;
}

}  // namespace

Value middle_of(Value text, std::int64_t start, std::int64_t length) {
    return copy_of_piece(piece_of(text, start, length));
}

Value middle_piece(const Token* bracket) {
    const Value text = right_text(bracket);
    if (failed(text)) return text;
    const Token* start_mark = as<MarkRecord>(bracket).next_mark;
    const Token* length_mark = as<MarkRecord>(start_mark).next_mark;
    const std::int64_t start = number_at(start_mark);
    return piece_of(text, start, length_mark == nullptr ? INT64_MAX : number_at(length_mark));
}

Value end_of(Value text, std::int64_t length) {
    if (length < 0) return no_text();
    const auto taken = static_cast<std::uint64_t>(std::min<std::int64_t>(length, text.length));
    return copy_of(text.bytes + (text.length - taken), taken);
}

Value character_of(std::int64_t code) {
    if (code < 0 || code > 255) return no_text();
    const auto byte = static_cast<std::uint8_t>(code);
    return copy_of(&byte, 1);
}

// As many adjacent copies; gives the last one taken.
static Value joined(Value left, Value right, unsigned copies) {
    const std::uint64_t length = std::uint64_t{left.length} + right.length;
    std::uint8_t* bytes = length > UINT32_MAX ? nullptr : take_string_space(length * copies);
    if (bytes == nullptr) return no_text();
    // Each copy is made from the parts, for what has just been written is slow to read.
    for (std::uint8_t* copy = bytes; copies != 0; --copies, copy += length) {
        copy_bytes(copy, left.bytes, left.length);
        copy_text(copy + left.length, right.bytes, right.length);
    }
    return Value::of_string(bytes, static_cast<std::uint32_t>(length));
}

Value join(Value left, Value right) {
    return joined(left, right, 1);
}

bool assign_copy(std::uint8_t* place, Value text) {
    return store_text(place, text);
}

bool assign_joined(std::uint8_t* place, Value left, Value right) {
    const Value text = joined(left, right, 2);
    if (failed(text)) return false;
    write_text(place, text);
    return true;
}

Value joined(const Token* plus, unsigned copies) {
    const Value left = left_text(plus);
    if (failed(left)) return left;
    const Value right = right_text(plus);
    if (failed(right)) return right;
    return joined(left, right, copies);
}

void set_concatenation_step(Token* at) {
    as<OperatorRecord>(at).function.text = concatenate;
}

bool gives_text(std::string_view name) {
    return find_row(name) != nullptr;
}

void set_text_function_step(Token* bracket, const BuiltInFunction& function, Type last) {
    auto& call = as<CallRecord>(bracket);
    call.last_argument = last;
    call.built_in = &function;
    call.function.text = find_row(bracket[-1].name)->step;
}

}  // namespace korvane::fast
