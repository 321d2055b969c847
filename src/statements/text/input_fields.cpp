#include "statements/text/input_fields.h"

#include <algorithm>

#include "numbers/rounding.h"
#include "values/text_number.h"

namespace korvane {

namespace {

constexpr std::string_view blanks = " \t";

void skip_any_of(std::string_view& text, std::string_view characters) {
    text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
}

// Up to the closing quote or the end of the text, and past the comma behind it.
std::string_view take_quoted(std::string_view& text) {
    text.remove_prefix(1);
    const std::string_view field = text.substr(0, text.find('"'));
    text.remove_prefix(std::min(field.size() + 1, text.size()));
    skip_any_of(text, " ");
    if (text.starts_with(',')) text.remove_prefix(1);
    return field;
}

std::string_view take_plain(std::string_view& text) {
    std::string_view field = text.substr(0, text.find(','));
    text.remove_prefix(std::min(field.size() + 1, text.size()));
    field.remove_suffix(field.size() - (field.find_last_not_of(blanks) + 1));
    return field;
}

// Whether a store with rounding would stay inside the type's range.
// SINGLE takes any number, if need be as an infinity.
bool fits(const Value& number, Type type) {
    if (is_floating(type)) return true;
    std::int64_t whole = number.integer;
    if (is_floating(number.type) && !nearest_integer(number.real, whole)) return false;
    return holds(type, whole);
}

}  // namespace

std::optional<std::string_view> ReplyFields::next() {
    skip_any_of(rest_, blanks);
    if (rest_.empty() && any_taken_) return std::nullopt;
    any_taken_ = true;
    return rest_.starts_with('"') ? take_quoted(rest_) : take_plain(rest_);
}

bool ReplyFields::has_more() const {
    return rest_.find_first_not_of(' ') != std::string_view::npos;
}

std::optional<Value> number_in_field(std::string_view field, Type type) {
    Value number;
    if (text_to_number(field, number) != NumberReading::number || !fits(number, type)) return std::nullopt;
    return number;
}

}  // namespace korvane
