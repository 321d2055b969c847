#include "statements/graphics/graphics_colour.h"

#include "program/parse.h"
#include "screen/colour.h"
#include "statements/colour_argument.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

// The last two components of a triple whose first has been read; the cursor stands on the comma behind it. A
// missing one is "Illegal function call".
std::uint32_t parse_triple_rest(Cursor& cursor, std::int64_t red) {
    std::int64_t components[2];
    for (std::int64_t& component : components) {
        if (!accept(cursor, ',') || at_statement_end(cursor)) {
            raise(message::illegal_function_call);
            return 0;
        }
        component = evaluate_integer(cursor);
        if (error_pending()) return 0;
    }
    return require_colour(colour_from_triple(red, components[0], components[1]));
}

bool box_word_follows(const Token* comma) {
    return is_word(comma + 1, "B") || is_word(comma + 1, "BF");
}

}  // namespace

std::uint32_t parse_colour_value(Cursor& cursor) {
    const std::int64_t value = evaluate_integer(cursor);
    return error_pending() ? 0 : require_colour(colour_from_value(value));
}

std::uint32_t gfx_parse_colour(Cursor& cursor, std::uint32_t default_colour) {
    if (cursor->kind != ',') return default_colour;
    ++cursor;
    if (cursor->kind == ',' || at_statement_end(cursor)) return default_colour;
    const std::int64_t value = evaluate_integer(cursor);
    if (error_pending()) return 0;
    if (cursor->kind != ',' || box_word_follows(cursor)) return require_colour(colour_from_value(value));
    return parse_triple_rest(cursor, value);
}

std::uint32_t parse_plain_colour(Cursor& cursor, std::uint32_t default_colour) {
    if (!accept(cursor, ',') || at_statement_end(cursor)) return default_colour;
    const std::int64_t value = evaluate_integer(cursor);
    if (error_pending()) return 0;
    return cursor->kind == ',' ? parse_triple_rest(cursor, value) : require_colour(colour_from_value(value));
}

PaintColours parse_paint_colours(Cursor& cursor, std::uint32_t default_colour) {
    PaintColours colours{default_colour, default_colour};
    if (!accept(cursor, ',') || at_statement_end(cursor)) return colours;
    if (accept(cursor, ',')) {
        colours.border = parse_colour_value(cursor);
        if (!error_pending() && cursor->kind == ',') raise(message::illegal_function_call);
        return colours;
    }
    std::int64_t values[4];
    std::uint32_t count = 0;
    do {
        if (count == 4) {
            raise(message::illegal_function_call);
            return colours;
        }
        values[count++] = evaluate_integer(cursor);
        if (error_pending()) return colours;
    } while (accept(cursor, ','));
    colours.paint = require_colour(count < 3 ? colour_from_value(values[0])
                                             : colour_from_triple(values[0], values[1], values[2]));
    if (error_pending()) return colours;
    colours.border = count % 2 == 0 ? require_colour(colour_from_value(values[count - 1])) : colours.paint;
    return colours;
}

}  // namespace korvane
