#include "screen/noted_cells.h"

#include <algorithm>
#include <array>

#include "platform/clock.h"
#include "screen/font.h"

namespace korvane {
namespace {

// Cells wait for one part in so many of a second: shorter than a picture stays on a screen.
constexpr std::uint64_t waits_per_second = 128;

struct Colours {
    std::uint32_t foreground;
    std::uint32_t background;
};

// A cell's character, and in the upper byte the number of its colours; 0 for a cell that has not been drawn
// into since the rectangle began to wait.
using Note = std::uint16_t;

// Which of a row's cells have been drawn into: what has not is moved up from below.
enum class Noted : std::uint8_t {
    none,  // its notes are not set
    some,
    all,  // it came in at the bottom
};
constexpr std::uint32_t max_colours = 256;  // numbers; 0 is none

struct NotedCells {
    CellRectangle area;
    std::uint64_t since;         // the time stamp when it began to wait
    std::uint32_t scrolled;      // rows by which the pixels of unnoted cells lie too low
    std::uint32_t first;         // of the rows of notes: the one of the rectangle's top row
    std::uint32_t colour_count;  // numbers in use
    std::uint32_t last;          // the number that was used last
    std::array<Colours, max_colours> colours;
    std::array<Noted, max_text_rows> rows;  // rows in a ring
    Note notes[max_text_rows][max_text_columns];
};
NotedCells noted;

std::uint32_t height_of(const CellRectangle& area) {
    return area.bottom - area.top + 1;
}

// Where in the ring a row of the screen is.
std::uint32_t place_of(std::uint32_t row) {
    return (noted.first + row - noted.area.top) % height_of(noted.area);
}

void fill_notes(std::uint32_t place, Note note) {
    std::fill_n(&noted.notes[place][noted.area.left], noted.area.right - noted.area.left + 1, note);
}

// Only what lies wholly on the screen and in memory waits: a numbered window may not.
bool may_wait(const CellRectangle& area) {
    if (area.right < area.left || area.right >= max_text_columns || area.bottom < area.top ||
        area.bottom >= max_text_rows)
        return false;
    const std::uint32_t end = (area.right + 1) * glyph_width;
    return end <= screen.width &&
           pixel_index(end - 1, (area.bottom + 1) * glyph_height - 1) < screen.addressable;
}

void begin_to_wait(const CellRectangle& area) {
    noted.area = area;
    noted.since = read_time_stamp();
    noted.scrolled = 0;
    noted.first = 0;
    noted.colour_count = 1;
    noted.last = 0;
    noted.rows.fill(Noted::none);
    screen.cells_wait = true;
}

bool is_due() {
    return read_time_stamp() - noted.since >= tsc_clock.ticks_per_second / waits_per_second;
}

// The note of a character; 0 when there are too many colours to number them.
Note note_for(std::uint8_t code, std::uint32_t foreground, std::uint32_t background) {
    std::uint32_t number = noted.last;
    const auto fits = [&] {
        return noted.colours[number].foreground == foreground &&
               noted.colours[number].background == background;
    };
    if (number == 0 || !fits()) {
        for (number = 1; number < noted.colour_count && !fits();)
            ++number;
        if (number == max_colours) return 0;
        if (number == noted.colour_count) {
            noted.colours[number] = {foreground, background};
            ++noted.colour_count;
        }
        noted.last = number;
    }
    return static_cast<Note>(number << 8 | code);
}

void draw_noted_row(std::uint32_t row) {
    const CellRectangle& area = noted.area;
    const std::uint32_t place = place_of(row);
    const Noted state = noted.rows[place];
    const std::uint32_t x = area.left * glyph_width;
    const std::uint32_t y = row * glyph_height;
    const std::uint32_t columns = (area.right - area.left + 1) * glyph_width;
    // The rows at the bottom are noted as a whole: nothing from below the rectangle is moved.
    if (state != Noted::all)
        move_waiting_pixels_up(x, y, y + noted.scrolled * glyph_height, columns, glyph_height);
    if (state == Noted::none) return;
    for (std::uint32_t column = area.left; column <= area.right; ++column) {
        const Note note = noted.notes[place][column];
        if (note == 0) continue;
        const Colours& colours = noted.colours[note >> 8];
        draw_back_glyph(column * glyph_width, y, static_cast<std::uint8_t>(note), colours.foreground,
                        colours.background);
    }
    show_back_pixels(x, y, columns, glyph_height);
}

}  // namespace

void draw_noted_cells() {
    screen.cells_wait = false;
    for (std::uint32_t row = noted.area.top; row <= noted.area.bottom; ++row)
        draw_noted_row(row);
}

void draw_cell(std::uint32_t row, std::uint32_t column, std::uint8_t code, std::uint32_t foreground,
               std::uint32_t background) {
    const CellRectangle& area = noted.area;
    if (screen.cells_wait && row >= area.top && row <= area.bottom && column >= area.left &&
        column <= area.right) {
        if (const Note note = note_for(code, foreground, background)) {
            const std::uint32_t place = place_of(row);
            if (noted.rows[place] == Noted::none) {
                fill_notes(place, 0);
                noted.rows[place] = Noted::some;
            }
            noted.notes[place][column] = note;
            return;
        }
        draw_noted_cells();
    }
    draw_glyph(column * glyph_width, row * glyph_height, code, foreground, background);
}

void scroll_cells(const CellRectangle& area, std::uint32_t background) {
    if (screen.cells_wait && area != noted.area) draw_noted_cells();
    const bool waits = may_wait(area);
    if (waits && !screen.cells_wait) begin_to_wait(area);
    // The foreground of a blank is nobody's business: most often it has a number as the text's.
    const Colours& last = noted.colours[noted.last];
    const std::uint32_t any = last.background == background ? last.foreground : background;
    const Note blank = waits ? note_for(' ', any, background) : Note{0};
    if (blank == 0) {
        const std::uint32_t columns = (area.right - area.left + 1) * glyph_width;
        move_pixels_up(area.left * glyph_width, area.top * glyph_height, (area.top + 1) * glyph_height,
                       columns, (area.bottom - area.top) * glyph_height);
        fill_pixels(area.left * glyph_width, area.bottom * glyph_height, columns, glyph_height, background);
        return;
    }
    noted.first = (noted.first + 1) % height_of(area);
    ++noted.scrolled;
    const std::uint32_t bottom = place_of(area.bottom);
    fill_notes(bottom, blank);
    noted.rows[bottom] = Noted::all;
    if (is_due()) draw_noted_cells();
}

void draw_first_row(const CellRectangle& area) {
    if (!screen.cells_wait) return;
    if (area == noted.area) {
        // Where it is drawn lies only what has been scrolled away.
        draw_noted_row(area.top);
    } else {
        draw_noted_cells();
    }
}

void draw_cells_if_due() {
    if (screen.cells_wait && is_due()) draw_noted_cells();
}

}  // namespace korvane
