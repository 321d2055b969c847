// The field language of PRINT USING: taking a format apart into fields, and formatting a number by a field.
// The statement itself (evaluating and sending) is screen/print's.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace korvane {

// Only so many characters of a format are used.
constexpr std::size_t using_format_limit = 255;

// A numeric field: [+] [$$ | **] any run of # , . then any run of ^ then [+ | -].
struct NumericField {
    std::int32_t digits_before;  // count of # before the point
    std::int32_t digits_after;   // count of # after the point
    bool point;                  // a . was present
    bool comma;                  // a , was present
    bool leading_plus;           // the field began with + and did not end with one
    bool trailing_sign;          // the field ended with + or -
    bool dollar;                 // $$
    bool star_fill;              // **
    bool exponent;               // one or more ^ followed the digits
    std::uint32_t extra_width;   // 1 for $$, 2 for **, else 0
};

enum class UsingKind : std::uint8_t {
    end,           // the format is used up
    literal,       // `character` is printed as it stands
    first_byte,    // ! : the first byte of a string, nothing of an empty one
    whole_string,  // & : a whole string
    fixed_string,  // \ \ : a string cut or padded with blanks on the right to `width`
    number,        // a number by `field`
};

struct UsingItem {
    UsingKind kind;
    char character;       // of literal
    std::uint32_t width;  // of fixed_string: 2 plus the blanks after the \, up to and including a closing one
    NumericField field;   // of number

    bool is_field() const { return kind > UsingKind::literal; }
};

// The item at `position` of a format, which is advanced past it.
UsingItem next_using_item(std::string_view format, std::size_t& position);

// Text of a number in a field.
// The longest is a % before 309 digits in groups of three and 255 more after a point.
struct FieldText {
    std::array<char, 960> characters;
    std::uint32_t size;

    std::string_view view() const { return {characters.data(), size}; }
};

// Formats a number by a field of a format of at most using_format_limit characters. A body that is too long
// for the field is marked by "%". The sign takes no position of the width, and a field that ends in "-" shows
// "+" for a number that is not negative; both are deliberate.
void format_field(double number, const NumericField& field, FieldText& text);

}  // namespace korvane
