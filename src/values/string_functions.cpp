#include "values/string_functions.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "numbers/format.h"
#include "platform/characters.h"
#include "platform/memory.h"
#include "program/errors.h"
#include "program/messages.h"
#include "values/convert.h"
#include "values/functions.h"
#include "values/mbf.h"
#include "values/text_number.h"

// Functions that specialised statements have steps of their own for are cold here: they are evaluated once or
// twice, and when they fail.
namespace korvane {
namespace {

bool require_string(const Value& value) {
    if (value.type == Type::STRING) return true;
    raise(message::type_mismatch);
    return false;
}

// An integer argument in a range, or the error.
bool read_in_range(const Value& value, std::int64_t lowest, std::int64_t highest, std::int64_t& integer) {
    integer = to_integer(value);
    if (error_pending()) return false;
    if (integer >= lowest && integer <= highest) return true;
    raise(message::illegal_function_call);
    return false;
}

bool read_count(const Value& value, std::int64_t& count) {
    return read_in_range(value, 0, INT64_MAX, count);
}

[[gnu::cold]] Value map_bytes(const Value& text, std::uint8_t first, std::uint8_t last, int distance) {
    if (!require_string(text)) return Value::nothing();
    const NewString mapped = new_string(text.length);
    if (error_pending()) return Value::nothing();
    copy_shifted(mapped.bytes, text, first, last, distance);
    return mapped.value;
}

[[gnu::cold]] Value repeat(std::uint8_t byte, std::int64_t count) {
    const NewString text = new_string(static_cast<std::uint64_t>(count));
    if (!error_pending()) fill_bytes(text.bytes, byte, text.value.length);
    return text.value;
}

// The digits of a number read as unsigned, in groups of `bits_per_digit`.
Value radix_digits(const Value& number, unsigned bits_per_digit) {
    const auto bits = static_cast<std::uint64_t>(to_integer(number));
    if (error_pending()) return Value::nothing();
    char digits[22];
    char* first = digits + sizeof digits;
    std::uint64_t rest = bits;
    do {
        *--first = hex_digit(rest & ((1U << bits_per_digit) - 1));
        rest >>= bits_per_digit;
    } while (rest != 0);
    return new_string_of(first, static_cast<std::uint64_t>(digits + sizeof digits - first));
}

// How many bytes of its text LEFT$ or RIGHT$ gives.
[[gnu::cold]] bool read_part_length(const Value* arguments, std::uint32_t& length) {
    std::int64_t wanted;
    if (!require_string(arguments[0]) || !read_count(arguments[1], wanted)) return false;
    length = static_cast<std::uint32_t>(std::min<std::int64_t>(wanted, arguments[0].length));
    return true;
}

bool require_image(const Value& image, std::uint32_t size) {
    if (!require_string(image)) return false;
    if (image.length >= size) return true;
    raise(message::illegal_function_call);
    return false;
}

using Text = std::string_view;

// The bytes from the beginning that two texts have in common.
std::size_t common_length(Text left, Text right) {
    std::size_t i = 0;
    while (i < left.size() && i < right.size() && left[i] == right[i])
        ++i;
    return i;
}

// By sums of the bytes that a text as long as `wanted` has at each place, which follow from one another: only
// where they are equal is the text itself looked at.
std::size_t find_by_sums(Text text, Text wanted) {
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15;
    std::uint64_t sum = 0;
    std::uint64_t wanted_sum = 0;
    std::uint64_t weight = 1;  // of the byte that is left behind, once it is
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        sum = sum * factor + static_cast<unsigned char>(text[i]);
        wanted_sum = wanted_sum * factor + static_cast<unsigned char>(wanted[i]);
        weight *= factor;
    }
    for (std::size_t at = 0;; ++at) {
        if (sum == wanted_sum && text.substr(at, wanted.size()) == wanted) return at;
        const std::size_t next = at + wanted.size();
        if (next >= text.size()) return Text::npos;
        sum = sum * factor + static_cast<unsigned char>(text[next]) -
              static_cast<unsigned char>(text[at]) * weight;
    }
}

// Where the first byte stands, the others are compared. That is quick, but for texts in which nearly
// everything begins as what is wanted does: these would take as long as the product of both lengths.
std::size_t find_from(Text text, Text wanted, std::size_t at) {
    constexpr std::size_t most_work = 1 << 16;
    for (std::size_t work = 0; work < most_work; ++at) {
        at = text.find(wanted.front(), at);
        if (at == Text::npos || text.size() - at < wanted.size()) return Text::npos;
        const std::size_t common = common_length(text.substr(at), wanted);
        if (common == wanted.size()) return at;
        work += common - 1;
    }
    if (text.size() - at < wanted.size()) return Text::npos;
    const std::size_t found = find_by_sums(text.substr(at), wanted);
    return found == Text::npos ? found : found + at;
}

[[gnu::cold]] Value position_of(const Value& text, const Value& wanted, std::int64_t start) {
    if (!require_string(text) || !require_string(wanted)) return Value::nothing();
    return narrowest_integer(find_text(text, wanted, start));
}

}  // namespace

void copy_shifted(std::uint8_t* to, const Value& text, std::uint8_t first, std::uint8_t last, int distance) {
    for (std::uint32_t i = 0; i < text.length; ++i) {
        const std::uint8_t byte = text.bytes[i];
        const bool in_range = byte >= first && byte <= last;
        to[i] = static_cast<std::uint8_t>(in_range ? byte + distance : byte);
    }
}

std::int64_t find_text(const Value& text, const Value& wanted, std::int64_t start) {
    if (start > text.length) return 0;
    if (wanted.length == 0) return start;
    const std::size_t found = find_from(text.text(), wanted.text(), static_cast<std::size_t>(start - 1));
    return found == std::string_view::npos ? 0 : static_cast<std::int64_t>(found) + 1;
}

[[gnu::cold]] Value function_asc(const Value& text) {
    if (!require_string(text)) return Value::nothing();
    return text.length == 0 ? fail(message::illegal_function_call) : narrowest_integer(text.bytes[0]);
}

[[gnu::cold]] Value function_chr(const Value& value) {
    std::int64_t code;
    if (!read_in_range(value, 0, 255, code)) return Value::nothing();
    return repeat(static_cast<std::uint8_t>(code), 1);
}

Value function_len(const Value& text) {
    return require_string(text) ? narrowest_integer(text.length) : Value::nothing();
}

Value function_lcase(const Value& text) {
    return map_bytes(text, 'A', 'Z', 'a' - 'A');
}
Value function_ucase(const Value& text) {
    return map_bytes(text, 'a', 'z', 'A' - 'a');
}

[[gnu::cold]] Value function_space(const Value& value) {
    std::int64_t count;
    return read_count(value, count) ? repeat(' ', count) : Value::nothing();
}

Value function_str(const Value& number) {
    if (number.type == Type::STRING) return fail(message::type_mismatch);
    const NumberText text = format_number(number);
    return new_string_of(text.characters.data(), text.size - 1);
}

[[gnu::cold]] Value function_val(const Value& text) {
    if (!require_string(text)) return Value::nothing();
    const Value number = longest_number(text.text());
    return number.type == Type::NONE ? fail(message::overflow) : number;
}

Value function_hex(const Value& number) {
    return radix_digits(number, 4);
}
Value function_oct(const Value& number) {
    return radix_digits(number, 3);
}

Value function_mki(const Value& number) {
    const std::int64_t integer = to_integer(number);
    if (error_pending()) return Value::nothing();
    const auto narrow = static_cast<std::int16_t>(integer);
    return narrow == integer ? new_string_of(&narrow, sizeof narrow) : fail(message::overflow);
}

Value function_mks(const Value& number) {
    std::uint8_t image[4];
    const double x = to_double(number);
    if (error_pending() || !to_mbf_single(x, image)) return Value::nothing();
    return new_string_of(image, sizeof image);
}

Value function_mkd(const Value& number) {
    std::uint8_t image[8];
    const double x = to_double(number);
    if (error_pending() || !to_mbf_double(x, image)) return Value::nothing();
    return new_string_of(image, sizeof image);
}

Value function_cvi(const Value& image) {
    if (!require_image(image, 2)) return Value::nothing();
    return Value::of_integer(read_unaligned<std::int16_t>(image.bytes), Type::INTEGER);
}

Value function_cvs(const Value& image) {
    if (!require_image(image, 4)) return Value::nothing();
    return Value::of_real(from_mbf_single(std::span<const std::uint8_t, 4>(image.bytes, 4)), Type::SINGLE);
}

Value function_cvd(const Value& image) {
    if (!require_image(image, 8)) return Value::nothing();
    return Value::of_real(from_mbf_double(std::span<const std::uint8_t, 8>(image.bytes, 8)));
}

[[gnu::cold]] Value function_left(const Value* arguments, int) {
    std::uint32_t length;
    return read_part_length(arguments, length) ? new_string_of(arguments[0].bytes, length) : Value::nothing();
}

[[gnu::cold]] Value function_right(const Value* arguments, int) {
    std::uint32_t length;
    if (!read_part_length(arguments, length)) return Value::nothing();
    return new_string_of(arguments[0].bytes + (arguments[0].length - length), length);
}

[[gnu::cold]] Value function_mid(const Value* arguments, int count) {
    std::int64_t start;
    std::int64_t length = INT64_MAX;
    if (!require_string(arguments[0]) || !read_in_range(arguments[1], 1, INT64_MAX, start) ||
        (count == 3 && !read_count(arguments[2], length)))
        return Value::nothing();
    const Value& text = arguments[0];
    if (start > text.length) return new_string_of(nullptr, 0);
    const std::int64_t available = text.length - (start - 1);
    return new_string_of(text.bytes + (start - 1), static_cast<std::uint64_t>(std::min(length, available)));
}

[[gnu::cold]] Value function_instr(const Value* arguments, int count) {
    if (count == 2) return position_of(arguments[0], arguments[1], 1);
    std::int64_t start;
    if (!read_in_range(arguments[0], 1, INT64_MAX, start)) return Value::nothing();
    return position_of(arguments[1], arguments[2], start);
}

[[gnu::cold]] Value function_string(const Value* arguments, int) {
    std::int64_t count;
    std::int64_t code;
    if (!read_count(arguments[0], count)) return Value::nothing();
    const Value& character = arguments[1];
    if (character.type == Type::STRING) {
        if (character.length == 0) return fail(message::illegal_function_call);
        return repeat(character.bytes[0], count);
    }
    return read_in_range(character, 0, 255, code) ? repeat(static_cast<std::uint8_t>(code), count)
                                                  : Value::nothing();
}

}  // namespace korvane
