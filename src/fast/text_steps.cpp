#include "fast/text_steps.h"

#include <algorithm>

#include "core/arenas.h"
#include "fast/sides.h"
#include "fast/text_sides.h"
#include "platform/memory.h"

namespace korvane::fast {
namespace {

Value copy_of(const std::uint8_t* bytes, std::uint64_t length) {
    std::uint8_t* copy = take_string_space(length);
    if (copy == nullptr) return no_text();
    copy_bytes(copy, bytes, length);
    return Value::of_string(copy, static_cast<std::uint32_t>(length));
}

Value concatenate(Token* at) {
    const Value left = left_text(at);
    if (left.type == Type::NONE) return left;
    const Value right = right_text(at);
    if (right.type == Type::NONE) return right;
    const std::uint64_t length = std::uint64_t{left.length} + right.length;
    std::uint8_t* bytes = length > UINT32_MAX ? nullptr : take_string_space(length);
    if (bytes == nullptr) return no_text();
    copy_bytes(bytes, left.bytes, left.length);
    copy_bytes(bytes + left.length, right.bytes, right.length);
    return Value::of_string(bytes, static_cast<std::uint32_t>(length));
}

// The number behind a comma, or failed when it is below `lowest`.
Whole number_at(const Token* mark, std::int64_t lowest) {
    const Whole number = right_whole(mark);
    return number.failed != 0 || number.value < lowest ? Whole{0, 1} : number;
}

Value left_part(Token* at) {
    const Value text = right_text(at);
    if (text.type == Type::NONE) return text;
    const Whole count = number_at(at->step.left_inner, 0);
    if (count.failed != 0) return no_text();
    return copy_of(text.bytes, static_cast<std::uint64_t>(std::min<std::int64_t>(count.value, text.length)));
}

Value right_part(Token* at) {
    const Value text = right_text(at);
    if (text.type == Type::NONE) return text;
    const Whole count = number_at(at->step.left_inner, 0);
    if (count.failed != 0) return no_text();
    const auto length = static_cast<std::uint64_t>(std::min<std::int64_t>(count.value, text.length));
    return copy_of(text.bytes + (text.length - length), length);
}

Value middle_part(Token* at) {
    const Value text = right_text(at);
    if (text.type == Type::NONE) return text;
    const Token* start_mark = at->step.left_inner;
    const Whole start = number_at(start_mark, 1);
    if (start.failed != 0) return no_text();
    Whole length{INT64_MAX, 0};
    if (start_mark->step.left_inner != nullptr) length = number_at(start_mark->step.left_inner, 0);
    if (length.failed != 0) return no_text();
    if (start.value > text.length) return copy_of(nullptr, 0);
    const std::int64_t available = text.length - (start.value - 1);
    return copy_of(text.bytes + (start.value - 1),
                   static_cast<std::uint64_t>(std::min(length.value, available)));
}

Value character(Token* at) {
    const Whole code = right_whole(at);
    if (code.failed != 0 || code.value < 0 || code.value > 255) return no_text();
    const auto byte = static_cast<std::uint8_t>(code.value);
    return copy_of(&byte, 1);
}

struct TextFunction {
    std::string_view name;
    std::string_view arguments;
    Value (*step)(Token*);
};

constexpr TextFunction rows[] = {
    {"MID$", "tn?n", middle_part},
    {"LEFT$", "tn", left_part},
    {"RIGHT$", "tn", right_part},
    {"CHR$", "n", character},
};

const TextFunction* find_row(std::string_view name) {
    for (const TextFunction& row : rows) {
        if (row.name == name) return &row;
    }
    return nullptr;
}

}  // namespace

void set_concatenation_step(Token* at) {
    at->step.text = concatenate;
}

std::string_view text_function_arguments(std::string_view name) {
    const TextFunction* row = find_row(name);
    return row == nullptr ? std::string_view{} : row->arguments;
}

void set_text_function_step(Token* bracket, std::string_view name) {
    bracket->step.text = find_row(name)->step;
}

}  // namespace korvane::fast
