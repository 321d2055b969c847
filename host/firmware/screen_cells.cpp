#include "screen_cells.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <utility>
#include <vector>

#include "code_page.h"
#include "screen/colour.h"
#include "screen/font.h"

namespace korvane::host {
namespace {

constexpr std::uint32_t cell_width = 8;
constexpr std::uint32_t cell_height = 16;
constexpr char32_t upper_half_block = U'▀';

// The 128 pixels of a glyph, the upper eight rows in the first word.
using Shape = std::array<std::uint64_t, 2>;

struct ShapeOfCode {
    Shape shape;
    std::uint8_t code;
};

Shape glyph_shape(std::uint32_t code) {
    Shape shape{};
    for (std::uint32_t y = 0; y < cell_height; ++y)
        shape[y / 8] = shape[y / 8] << 8 | font_glyphs[code][y];
    return shape;
}

// Where glyphs look alike, the code of the lowest rank counts: ASCII comes first.
std::uint32_t rank_of(std::uint8_t code) {
    return (code + 256U - 32U) % 256U;
}

// The shapes in order.
std::vector<ShapeOfCode> make_shape_table() {
    std::vector<ShapeOfCode> table;
    for (std::uint32_t code = 0; code < 256; ++code)
        table.push_back({glyph_shape(code), static_cast<std::uint8_t>(code)});
    std::sort(table.begin(), table.end(), [](const ShapeOfCode& left, const ShapeOfCode& right) {
        return left.shape != right.shape ? left.shape < right.shape
                                         : rank_of(left.code) < rank_of(right.code);
    });
    return table;
}

const std::vector<ShapeOfCode> codes_by_shape = make_shape_table();

// Null for a shape that is no glyph.
const ShapeOfCode* find_shape(const Shape& shape) {
    const auto found =
        std::lower_bound(codes_by_shape.begin(), codes_by_shape.end(), shape,
                         [](const ShapeOfCode& one, const Shape& wanted) { return one.shape < wanted; });
    return found != codes_by_shape.end() && found->shape == shape ? &*found : nullptr;
}

std::uint32_t mean_colour(const std::uint32_t* first, std::uint32_t pitch) {
    std::uint32_t red = 0;
    std::uint32_t green = 0;
    std::uint32_t blue = 0;
    for (std::uint32_t y = 0; y < 8; ++y) {
        for (std::uint32_t x = 0; x < 8; ++x) {
            const std::uint32_t pixel = first[std::size_t{y} * pitch + x];
            red += pixel >> 16 & 0xFF;
            green += pixel >> 8 & 0xFF;
            blue += pixel & 0xFF;
        }
    }
    return red / 64 << 16 | green / 64 << 8 | blue / 64;
}

constexpr std::size_t most_line_colours = 4;  // of drawings: the ground, a grid, and lines over it

// The colours of 8x8 pixels with the numbers of their pixels; only the first few.
struct ColourCounts {
    struct Entry {
        std::uint32_t colour;
        std::uint32_t pixels;
    };
    std::array<Entry, most_line_colours> entries{};
    std::size_t count = 0;
    bool has_more = false;  // there are other colours
};

ColourCounts count_colours(const std::uint32_t* first, std::uint32_t pitch) {
    ColourCounts counts;
    for (std::uint32_t y = 0; y < 8; ++y) {
        for (std::uint32_t x = 0; x < 8; ++x) {
            const std::uint32_t pixel = first[std::size_t{y} * pitch + x] & colour_mask;
            const auto end = counts.entries.begin() + static_cast<std::ptrdiff_t>(counts.count);
            const auto known = std::find_if(counts.entries.begin(), end, [=](const ColourCounts::Entry& one) {
                return one.colour == pixel;
            });
            if (known != end)
                ++known->pixels;
            else if (counts.count < most_line_colours)
                counts.entries[counts.count++] = {pixel, 1};
            else
                counts.has_more = true;
        }
    }
    return counts;
}

// How much a colour stands out: coloured lines from grey ones, then bright ones from dark ones.
std::uint32_t vividness(std::uint32_t colour) {
    const std::array<std::uint32_t, 3> parts = {colour >> 16 & 0xFF, colour >> 8 & 0xFF, colour & 0xFF};
    const auto [least, most] = std::minmax_element(parts.begin(), parts.end());
    return (*most - *least) * 256 + *most;
}

// The colour to show for 8x8 pixels that begin at `first`: what is drawn on the paper if that is of one
// colour, so that thin lines are seen; where lines of a few colours lie on a ground that fills at least
// half, the most vivid of them, so that a curve is seen on its grid; else the mean.
std::uint32_t half_colour(const std::uint32_t* first, std::uint32_t pitch, std::uint32_t paper) {
    const ColourCounts counts = count_colours(first, pitch);
    if (counts.has_more) return mean_colour(first, pitch);
    const auto begin = counts.entries.begin();
    const auto end = begin + static_cast<std::ptrdiff_t>(counts.count);
    if (counts.count == 1) return begin->colour;
    if (counts.count == 2 && begin[0].colour == paper) return begin[1].colour;
    if (counts.count == 2 && begin[1].colour == paper) return begin[0].colour;
    const auto ground =
        std::max_element(begin, end, [](const auto& a, const auto& b) { return a.pixels < b.pixels; });
    if (ground->pixels < 32) return mean_colour(first, pitch);
    std::uint32_t shown = ground->colour;
    for (auto one = begin; one != end; ++one) {
        if (one == ground) continue;
        if (shown == ground->colour || vividness(one->colour) > vividness(shown)) shown = one->colour;
    }
    return shown;
}

// A cell of at most two colours, with the shape of its ink.
Cell two_colour_cell(const Shape& shape, std::uint32_t ink, std::uint32_t paper) {
    if (ink == paper) return {U' ', ink, paper, true};
    // The top left pixel is paper in nearly every glyph; where it is ink, the shape is found inside out.
    const Shape inside_out = {~shape[0], ~shape[1]};
    if (const ShapeOfCode* found = find_shape(shape)) return {code_to_unicode(found->code), ink, paper, true};
    if (const ShapeOfCode* found = find_shape(inside_out))
        return {code_to_unicode(found->code), paper, ink, true};
    // A drawing: the rarer colour is what was drawn, and must be seen however thin its lines are.
    const bool is_inside_out = std::popcount(shape[0]) + std::popcount(shape[1]) > 64;
    const Shape& drawing = is_inside_out ? inside_out : shape;
    if (is_inside_out) std::swap(ink, paper);
    return {upper_half_block, drawing[0] != 0 ? ink : paper, drawing[1] != 0 ? ink : paper, false};
}

}  // namespace

Cell read_cell(const Pixels& pixels, std::uint32_t row, std::uint32_t column) {
    const std::uint32_t* first =
        pixels.words + std::size_t{row} * cell_height * pixels.pitch + std::size_t{column} * cell_width;
    const std::uint32_t paper = first[0] & colour_mask;
    std::uint32_t ink = paper;
    Shape shape{};
    for (std::uint32_t y = 0; y < cell_height; ++y) {
        for (std::uint32_t x = 0; x < cell_width; ++x) {
            const std::uint32_t pixel = first[std::size_t{y} * pixels.pitch + x] & colour_mask;
            if (pixel != paper && ink == paper) ink = pixel;
            if (pixel != paper && pixel != ink) {
                return {upper_half_block, half_colour(first, pixels.pitch, paper),
                        half_colour(first + std::size_t{8} * pixels.pitch, pixels.pitch, paper), false};
            }
            shape[y / 8] = shape[y / 8] << 1 | static_cast<std::uint64_t>(pixel != paper);
        }
    }
    return two_colour_cell(shape, ink, paper);
}

std::string read_row(const Pixels& pixels, std::uint32_t row) {
    std::string text;
    for (std::uint32_t column = 0; column < cell_columns(pixels); ++column) {
        const Cell cell = read_cell(pixels, row, column);
        append_utf8(text, cell.is_glyph ? cell.character : U' ');
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

std::vector<std::string> read_rows(const Pixels& pixels) {
    std::vector<std::string> rows;
    for (std::uint32_t row = 0; row < cell_rows(pixels); ++row)
        rows.push_back(read_row(pixels, row));
    return rows;
}

}  // namespace korvane::host
