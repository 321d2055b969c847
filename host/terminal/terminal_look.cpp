#include "terminal_look.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace korvane::host {
namespace {

std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view{} : value;
}

// The usual colours 0 to 15 of terminals.
constexpr std::array<std::uint32_t, 16> sixteen_colours = {
    0x000000, 0xAA0000, 0x00AA00, 0xAA5500, 0x0000AA, 0xAA00AA, 0x00AAAA, 0xAAAAAA,
    0x555555, 0xFF5555, 0x55FF55, 0xFFFF55, 0x5555FF, 0xFF55FF, 0x55FFFF, 0xFFFFFF,
};

int part(std::uint32_t colour, int shift) {
    return static_cast<int>(colour >> shift & 0xFF);
}

int distance(std::uint32_t left, std::uint32_t right) {
    const auto square = [&](int shift, int weight) {
        const int difference = part(left, shift) - part(right, shift);
        return weight * difference * difference;
    };
    return square(16, 3) + square(8, 4) + square(0, 2);
}

std::uint32_t nearest_of_sixteen(std::uint32_t colour) {
    return *std::min_element(
        sixteen_colours.begin(), sixteen_colours.end(),
        [=](std::uint32_t a, std::uint32_t b) { return distance(a, colour) < distance(b, colour); });
}

// Of the 256, the first sixteen look different everywhere; the others are a cube of 6x6x6 and 24 greys.
constexpr std::uint32_t first_of_cube = 16;
constexpr std::uint32_t first_grey = 232;

std::uint32_t cube_step(int value) {
    return value < 48 ? 0 : value < 115 ? 1 : static_cast<std::uint32_t>((value - 35) / 40);
}

std::uint32_t cube_value(std::uint32_t step) {
    return step == 0 ? 0 : 55 + 40 * step;
}

std::uint32_t colour_of_many(std::uint32_t index) {
    if (index >= first_grey) return (8 + 10 * (index - first_grey)) * 0x010101;
    const std::uint32_t at = index - first_of_cube;
    return cube_value(at / 36) << 16 | cube_value(at / 6 % 6) << 8 | cube_value(at % 6);
}

std::uint32_t index_of_many(std::uint32_t colour) {
    const std::uint32_t cube = first_of_cube + 36 * cube_step(part(colour, 16)) +
                               6 * cube_step(part(colour, 8)) + cube_step(part(colour, 0));
    const int mean = (part(colour, 16) + part(colour, 8) + part(colour, 0)) / 3;
    const std::uint32_t grey = first_grey + static_cast<std::uint32_t>(std::clamp((mean - 3) / 10, 0, 23));
    return distance(colour_of_many(grey), colour) < distance(colour_of_many(cube), colour) ? grey : cube;
}

int brightness(std::uint32_t colour) {
    return (3 * part(colour, 16) + 6 * part(colour, 8) + part(colour, 0)) / 10;
}

// Code page 437's characters beyond ASCII, and what resembles them.
constexpr std::u32string_view unicode_shapes =
    U"☺☻♥♦♣♠•◘○◙♂♀♪♫☼►◄↕‼¶§▬↨↑↓→←∟↔▲▼⌂ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜ¢£¥₧ƒáíóúñÑªº¿⌐¬½¼¡«»"
    U"░▒▓│┤╡╢╖╕╣║╗╝╜╛┐└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00a0";
constexpr std::string_view ascii_shapes =
    "@@*****o*oo+dd*><|!PS_|^v><L-^v^CueaaaaceeeiiiAAEaAooouuyOUcLYPfaiounNao?--%%!<>"
    ".:%|++++++|+++++++++-++++++++=+++++++++++++#_[]\"aBGpSsutPTOd8fen=+><|J/~o..Vn2# ";
static_assert(unicode_shapes.size() == ascii_shapes.size());

char32_t ascii_shape(char32_t character) {
    if (character < 128) return character;
    const std::size_t at = unicode_shapes.find(character);
    return at == unicode_shapes.npos ? U'?' : static_cast<char32_t>(ascii_shapes[at]);
}

// Colours of cells on terminals that have none.
constexpr std::uint32_t dark = 0;
constexpr std::uint32_t bright = 1;

bool is_bright(std::uint32_t colour) {
    return std::max({part(colour, 16), part(colour, 8), part(colour, 0)}) >= 96;
}

Cell monochrome_cell(const Cell& cell) {
    const bool ink = is_bright(cell.ink);
    const bool paper = is_bright(cell.paper);
    if (!cell.is_glyph) {
        const char32_t shape = ink ? (paper ? U'█' : U'▀') : (paper ? U'▄' : U' ');
        return {shape, bright, dark, false};
    }
    const bool is_reversed = paper && (cell.character == U' ' || !ink);
    return {cell.character, is_reversed ? dark : bright, is_reversed ? bright : dark, true};
}

}  // namespace

TerminalLook look_of_environment() {
    TerminalLook look;
    const std::string_view term = environment("TERM");
    const std::string_view colorterm = environment("COLORTERM");
    const auto is_one_of = [&](std::initializer_list<std::string_view> beginnings) {
        return std::any_of(beginnings.begin(), beginnings.end(),
                           [&](auto one) { return term.starts_with(one); });
    };
    if (!environment("NO_COLOR").empty() || is_one_of({"vt1", "vt2", "vt3", "vt4", "vt5"}) ||
        term.ends_with("-m") || term.ends_with("-mono"))
        look.colours = Colours::none;
    else if (colorterm == "truecolor" || colorterm == "24bit" || term.ends_with("-direct") ||
             is_one_of({"xterm-kitty", "alacritty", "foot", "wezterm", "xterm-ghostty"}))
        look.colours = Colours::all;
    else
        look.colours = term.find("256") != term.npos ? Colours::many : Colours::sixteen;

    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        std::string locale(environment(name));
        if (locale.empty()) continue;
        std::transform(locale.begin(), locale.end(), locale.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
        look.has_unicode = locale.find("utf-8") != locale.npos || locale.find("utf8") != locale.npos;
        break;
    }
    return look;
}

bool has_control_sequences() {
    return environment("TERM") != "dumb";
}

Cell shown_cell(Cell cell, const TerminalLook& look) {
    if (look.colours == Colours::none) {
        cell = monochrome_cell(cell);
    } else if (look.colours == Colours::sixteen) {
        const bool was_visible = cell.ink != cell.paper;
        cell.ink = nearest_of_sixteen(cell.ink);
        cell.paper = nearest_of_sixteen(cell.paper);
        // Text that can be read stays so.
        if (was_visible && cell.is_glyph && cell.character != U' ' && cell.ink == cell.paper)
            cell.ink = brightness(cell.paper) < 128 ? sixteen_colours[15] : sixteen_colours[0];
    } else if (look.colours == Colours::many) {
        cell.ink = colour_of_many(index_of_many(cell.ink));
        cell.paper = colour_of_many(index_of_many(cell.paper));
    }
    if (look.has_unicode) return cell;
    if (!cell.is_glyph && cell.ink == cell.paper) cell.character = U' ';
    cell.character = ascii_shape(cell.character);
    return cell;
}

void append_colour(std::string& bytes, bool is_paper, std::uint32_t colour, const TerminalLook& look) {
    const auto parameter = [&](std::uint32_t number) { bytes += std::to_string(number); };
    if (look.colours == Colours::none) {
        if (is_paper) bytes += colour == bright ? "\x1b[0;7m" : "\x1b[0m";
        return;
    }
    bytes += "\x1b[";
    if (look.colours == Colours::sixteen) {
        const auto found = std::find(sixteen_colours.begin(), sixteen_colours.end(), colour);
        const auto index = static_cast<std::uint32_t>(found - sixteen_colours.begin());
        parameter((index < 8 ? 30 : 82) + index + (is_paper ? 10 : 0));
    } else if (look.colours == Colours::many) {
        bytes += is_paper ? "48;5;" : "38;5;";
        parameter(index_of_many(colour));
    } else {
        bytes += is_paper ? "48;2;" : "38;2;";
        parameter(colour >> 16 & 0xFF);
        bytes += ';';
        parameter(colour >> 8 & 0xFF);
        bytes += ';';
        parameter(colour & 0xFF);
    }
    bytes += 'm';
}

}  // namespace korvane::host
