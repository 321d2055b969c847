#include "statements/graphics/draw_macro.h"

#include <cstdint>
#include <limits>
#include <optional>

#include "numbers/kernels.h"
#include "platform/characters.h"
#include "program/errors.h"
#include "program/messages.h"
#include "screen/colour.h"
#include "screen/console.h"
#include "screen/gfx_line.h"
#include "screen/plot.h"
#include "statements/colour_argument.h"
#include "statements/graphics/coordinates.h"
#include "values/convert.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

constexpr double pi = 3.14159265358979323846;

struct Pen {
    std::string_view rest;  // commands not yet read
    Point position;
    std::uint32_t colour;
    std::int64_t scale;  // distances are multiplied by scale / 4
    double angle;        // rotation in radians
    bool blank;          // the next move does not draw
    bool returns;        // the next move goes back to where it started
};

void skip_spaces(Pen& pen) {
    while (!pen.rest.empty() && pen.rest.front() == ' ')
        pen.rest.remove_prefix(1);
}

void fail() {
    raise(message::illegal_function_call);
}

// An optionally signed decimal integer; nothing is read when there is none. One beyond the INT64 range raises
// "Illegal function call".
std::optional<std::int64_t> read_number(Pen& pen) {
    skip_spaces(pen);
    std::string_view text = pen.rest;
    const bool negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
    if (text.empty() || !is_digit(text.front())) return std::nullopt;
    std::int64_t number = 0;
    while (!text.empty() && is_digit(text.front())) {
        const std::int64_t digit = text.front() - '0';
        if (__builtin_mul_overflow(number, std::int64_t{10}, &number) ||
            __builtin_add_overflow(number, negative ? -digit : digit, &number)) {
            fail();
            return 0;
        }
        text.remove_prefix(1);
    }
    pen.rest = text;
    return number;
}

// A number that must be there and lie in low..high, else "Illegal function call"; look at error_pending().
std::int64_t read_required(Pen& pen, std::int64_t low, std::int64_t high) {
    const std::optional<std::int64_t> number = read_number(pen);
    if (error_pending()) return 0;
    if (!number || *number < low || *number > high) {
        fail();
        return 0;
    }
    return *number;
}

// A distance in pixels: number * scale / 4, truncated toward zero.
std::int64_t scaled(const Pen& pen, std::int64_t number) {
    std::int64_t product;
    if (!__builtin_mul_overflow(number, pen.scale, &product)) return product / 4;
    return number < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

// Turns a displacement counterclockwise as seen on the screen, where y grows downwards.
Point rotated(const Pen& pen, Point move) {
    if (pen.angle == 0) return move;
    const double sine = kernel_sin(pen.angle);
    const double cosine = kernel_cos(pen.angle);
    const auto dx = static_cast<double>(move.x);
    const auto dy = static_cast<double>(move.y);
    return {round_to_integer(dx * cosine + dy * sine), round_to_integer(dy * cosine - dx * sine)};
}

void move_by(Pen& pen, Point displacement) {
    const Point turned = rotated(pen, displacement);
    if (error_pending()) return;
    const Point start = pen.position;
    const Point end = {saturating_add(start.x, turned.x), saturating_add(start.y, turned.y)};
    if (!pen.blank) gfx_line(start, end, pen.colour);
    pen.position = pen.returns ? start : end;
    pen.blank = false;
    pen.returns = false;
    gfx_set_last_point(pen.position);
}

void move_along(Pen& pen, int x_direction, int y_direction) {
    const std::optional<std::int64_t> number = read_number(pen);
    if (error_pending()) return;
    const std::int64_t distance = scaled(pen, number.value_or(1));
    const auto directed = [distance](int direction) {
        if (direction == 0) return std::int64_t{0};
        return direction > 0 ? distance : saturating_subtract(0, distance);
    };
    move_by(pen, {directed(x_direction), directed(y_direction)});
}

// M x,y. An absolute target is turned into a displacement and rotated like any other move,
// which is deliberate.
void move_to(Pen& pen) {
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
    skip_spaces(pen);
    const bool relative = !pen.rest.empty() && (pen.rest.front() == '+' || pen.rest.front() == '-');
    const std::int64_t x = read_required(pen, lowest, highest);
    if (error_pending()) return;
    skip_spaces(pen);
    if (pen.rest.empty() || pen.rest.front() != ',') {
        fail();
        return;
    }
    pen.rest.remove_prefix(1);
    const std::int64_t y = read_required(pen, lowest, highest);
    if (error_pending()) return;
    if (relative) {
        move_by(pen, {scaled(pen, x), scaled(pen, y)});
        return;
    }
    const Point target = gfx_map(static_cast<double>(x), static_cast<double>(y));
    if (error_pending()) return;
    move_by(pen,
            {saturating_subtract(target.x, pen.position.x), saturating_subtract(target.y, pen.position.y)});
}

// TA n. The turn adds to the current angle instead of setting it, which is deliberate.
void turn_by(Pen& pen) {
    if (pen.rest.empty() || fold_to_upper(pen.rest.front()) != 'A') {
        fail();
        return;
    }
    pen.rest.remove_prefix(1);
    pen.angle += static_cast<double>(read_required(pen, -360, 360)) * pi / 180;
}

// A n. Negative quarter turns go the other way round; only what is left of whole turns counts, so that the
// angle is exact for any number of them.
void set_angle(Pen& pen) {
    const std::int64_t quarters = read_required(pen, std::numeric_limits<std::int64_t>::min(), 3);
    pen.angle = static_cast<double>(quarters % 4) * pi / 2;
}

void set_colour(Pen& pen) {
    const std::int64_t value = read_required(pen, 0, std::numeric_limits<std::int64_t>::max());
    if (!error_pending()) pen.colour = require_colour(colour_from_value(value));
}

// The commands that move by a direction, and these.
struct Direction {
    char command;
    std::int8_t x;
    std::int8_t y;
};
constexpr Direction directions[] = {{'U', 0, -1}, {'D', 0, 1}, {'L', -1, 0}, {'R', 1, 0},
                                    {'E', 1, -1}, {'F', 1, 1}, {'G', -1, 1}, {'H', -1, -1}};

void carry_out(Pen& pen, char command) {
    for (const Direction& direction : directions)
        if (direction.command == command) return move_along(pen, direction.x, direction.y);
    switch (command) {
        case 'B':
            pen.blank = true;
            return;
        case 'N':
            pen.returns = true;
            return;
        case 'C':
            set_colour(pen);
            return;
        case 'S':
            pen.scale = read_required(pen, 1, 255);
            return;
        case 'A':
            set_angle(pen);
            return;
        case 'T':
            turn_by(pen);
            return;
        case 'M':
            move_to(pen);
            return;
        default:
            fail();
            return;
    }
}

}  // namespace

void gfx_draw(std::string_view commands) {
    Pen pen{.rest = commands.substr(0, max_draw_commands),
            .position = gfx_settle_last_point(),
            .colour = console.foreground,
            .scale = 4,
            .angle = 0,
            .blank = false,
            .returns = false};
    while (!error_pending()) {
        while (!pen.rest.empty() && (pen.rest.front() == ' ' || pen.rest.front() == ';'))
            pen.rest.remove_prefix(1);
        if (pen.rest.empty()) return;
        const char command = fold_to_upper(pen.rest.front());
        pen.rest.remove_prefix(1);
        carry_out(pen, command);
    }
}

void do_draw(Cursor& cursor) {
    ++cursor;
    // No allocation happens while the commands are carried out,
    // so the string's own bytes serve as the buffer.
    const Value text = evaluate_string(cursor);
    if (error_pending()) return;
    gfx_draw(text.text());
}

}  // namespace korvane
