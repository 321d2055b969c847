// screen_speed [--rounds N] IMAGE: how long the image's screen statements take at 1920x1080 on the hosted
// firmware, beside the C library's fills and moves of the same bytes in the same two buffers, in turns.
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <string>
#include <vector>

#include "plain_buffers.h"
#include "rounds.h"
#include "session.h"

namespace korvane::bench {
namespace {

constexpr std::uint32_t width = 1920;
constexpr std::uint32_t height = 1080;
constexpr std::uint32_t text_columns = width / 8;
constexpr std::uint32_t text_rows = height / 16;
constexpr Area whole_screen{0, 0, width, height};
constexpr Area all_text{0, 0, width, text_rows * 16};
constexpr Area bottom_row{0, (text_rows - 1) * 16, width, 16};

constexpr double block_goal = 1.5;
constexpr double text_goal = 2.5;

struct Subject {
    const char* name;
    const char* preparation;  // BASIC, once
    const char* statement;    // BASIC, repeated
    int repetitions;
    std::function<void()> plain;  // empty when there is nothing to compare with
    double goal = 0;
};

Area cells(std::uint32_t left, std::uint32_t top, std::uint32_t right, std::uint32_t bottom) {
    return {(left - 1) * 8, (top - 1) * 16, (right - left + 1) * 8, (bottom - top + 1) * 16};
}

// The places of a circle's pixels, as many as the midpoint algorithm draws.
std::vector<std::uint64_t> circle_places(std::uint32_t pitch, std::int64_t radius) {
    std::vector<std::uint64_t> places;
    const auto octant = static_cast<std::int64_t>(static_cast<double>(radius) / std::numbers::sqrt2);
    for (std::int64_t y = 0; y <= octant; ++y) {
        const std::int64_t signs[] = {-1, 1};
        for (const std::int64_t down : signs) {
            for (const std::int64_t across : signs) {
                const auto place = [pitch](std::int64_t column, std::int64_t row) {
                    return static_cast<std::uint64_t>((height / 2 + row) * pitch + width / 2 + column);
                };
                places.push_back(place(across * radius, down * y));
                places.push_back(place(across * y, down * radius));
            }
        }
    }
    return places;
}

std::vector<std::uint64_t> outline_places(std::uint32_t pitch, const Area& area) {
    std::vector<std::uint64_t> places;
    const auto add = [&](std::uint32_t x, std::uint32_t y) {
        places.push_back(std::uint64_t{y} * pitch + x);
    };
    for (std::uint32_t i = 0; i < area.columns; ++i) {
        add(area.x + i, area.y);
        add(area.x + i, area.y + area.rows - 1);
    }
    for (std::uint32_t i = 0; i < area.rows; ++i) {
        add(area.x, area.y + i);
        add(area.x + area.columns - 1, area.y + i);
    }
    return places;
}

std::vector<std::uint64_t> diagonal_places(std::uint32_t pitch) {
    std::vector<std::uint64_t> places;
    for (std::uint64_t x = 0; x < width; ++x)
        places.push_back(x * height / width * pitch + x);
    return places;
}

std::vector<Subject> text_subjects(PlainBuffers& buffers) {
    static constexpr const char* at_bottom = "LOCATE 67, 1";
    return {
        {"CLS", "C& = 0", "CLS", 50, [&] { buffers.fill(whole_screen); }, block_goal},
        {"scrolling by PRINT", at_bottom, "PRINT", 50, [&] { buffers.scroll(all_text); }, block_goal},
        {"PRINT of full rows, scrolling", "LOCATE 67, 1: A$ = STRING$(240, \"W\")", "PRINT A$;", 50,
         [&] {
             buffers.scroll(all_text);
             buffers.fill(bottom_row);
         },
         text_goal},
        {"PRINT of a number, scrolling", at_bottom, "PRINT K", 50, [&] { buffers.scroll(all_text); },
         text_goal},
        {"PRINT of 66 full rows", "A$ = STRING$(240, \"W\")",
         "LOCATE 1, 1: FOR I = 1 TO 66: PRINT A$;: NEXT I", 20,
         [&] {
             buffers.fill({0, 0, width, 66 * 16});
         },
         text_goal},
        {"TXTWINDOW of 200x55, scrolling", "TXTWINDOW 21, 6, 220, 60: LOCATE 55, 1", "PRINT", 50,
         [&] { buffers.scroll(cells(21, 6, 220, 60)); }, block_goal},
        {"TXTWINDOW of 20x40, scrolling", "TXTWINDOW 101, 6, 120, 45: LOCATE 40, 1", "PRINT", 500,
         [&] { buffers.scroll(cells(101, 6, 120, 45)); }, block_goal},
        {"VIEW PRINT 2 TO 66, scrolling", "VIEW PRINT 2 TO 66: LOCATE 65, 1", "PRINT", 50,
         [&] { buffers.scroll(cells(1, 2, text_columns, 66)); }, block_goal},
        {"window @1 of 200x55, scrolling", "TXTWINDOW @1, 21, 6, 220, 60: LOCATE @1, 55, 1", "PRINT @1", 50,
         [&] { buffers.scroll(cells(21, 6, 220, 60)); }, block_goal},
        {"CLS @1, 200x55", "TXTWINDOW @1, 21, 6, 220, 60", "CLS @1", 50,
         [&] { buffers.fill(cells(21, 6, 220, 60)); }, block_goal},
        {"CLS in a TXTWINDOW of 200x55", "TXTWINDOW 21, 6, 220, 60", "CLS", 50,
         [&] { buffers.fill(cells(21, 6, 220, 60)); }, block_goal},
    };
}

std::vector<Subject> graphics_subjects(PlainBuffers& buffers) {
    static constexpr Area large{500, 50, 1000, 1000};
    static constexpr Area small{500, 50, 16, 16};
    const auto copy_large = [&] { buffers.copy_in(large); };
    const auto circle = circle_places(buffers.pitch(), 500);
    const auto diagonal = diagonal_places(buffers.pitch());
    const auto outline = outline_places(buffers.pitch(), large);
    return {
        {"LINE ... BF, whole screen", "C& = 0", "C& = C& + 16: LINE (0,0)-(1919,1079), C&, BF", 50,
         [&] { buffers.fill(whole_screen); }, block_goal},
        {"LINE ... BF, 1000x1000", "C& = 0", "C& = C& + 16: LINE (500,50)-(1499,1049), C&, BF", 50,
         [&] { buffers.fill(large); }, block_goal},
        {"LINE ... B, 1000x1000", "REM", "LINE (500,50)-(1499,1049), 7, B", 2000,
         [&, outline] { buffers.store(outline); }},
        {"LINE ... BF, 16x16", "C& = 0", "LINE (500,50)-(515,65), 7, BF", 20000,
         [&] { buffers.fill(small); }},
        {"PUT ... PSET, 1000x1000", "DIM A&(1000001): GET (0,0)-(999,999), A&", "PUT (500,50), A&, PSET", 50,
         copy_large, block_goal},
        {"PUT ... XOR, 1000x1000", "DIM A&(1000001): GET (0,0)-(999,999), A&", "PUT (500,50), A&", 50,
         copy_large},
        {"PUT ... PSET, 16x16", "DIM A&(257): GET (0,0)-(15,15), A&", "PUT (500,50), A&, PSET", 20000,
         [&] { buffers.copy_in(small); }},
        {"PUT ... XOR, 16x16", "DIM A&(257): GET (0,0)-(15,15), A&", "PUT (500,50), A&", 20000,
         [&] { buffers.copy_in(small); }},
        {"GET, 1000x1000", "DIM A&(1000001)", "GET (500,50)-(1499,1049), A&", 50,
         [&] { buffers.copy_out(large); }},
        {"BITBLT, 1000x1000", "LOADBMP 0, \"PICTURE.BMP\"", "BITBLT 0, 500, 50", 50,
         [&] { buffers.copy_to_front(large); }},
        {"BITBLT, 1000x1000, transparent", "LOADBMP 0, \"PICTURE.BMP\"", "BITBLT 0, 500, 50, 5", 50,
         [&] { buffers.copy_to_front(large); }},
        {"PAINT, empty screen", "C& = 0", "C& = C& + 16: PAINT (960,540), C&", 10,
         [&] { buffers.fill(whole_screen); }},
        // The yardstick's fill overwrites the circle.
        {"PAINT, circle of radius 500", "C& = 0",
         "CIRCLE (960,540), 500, 1: C& = C& + 16: PAINT (960,540), C&, 1", 10,
         [&] {
             buffers.fill({460, 147, 1000, 785});
         }},
        {"CIRCLE, radius 500", "REM", "CIRCLE (960,540), 500", 2000, [&, circle] { buffers.store(circle); }},
        {"CIRCLE, radius 1000000", "REM", "CIRCLE (960,1000540), 1000000", 2000, {}},
        {"LINE, 1920 pixels", "REM", "LINE (0,0)-(1919,1079)", 2000,
         [&, diagonal] { buffers.store(diagonal); }},
        {"LINE 100 times too long", "REM", "LINE (-96000,-54000)-(96000,54000)", 2000,
         [&, diagonal] { buffers.store(diagonal); }},
        {"PSET", "REM", "PSET (960,540), 7", 20000, {}},
    };
}

// A 24-bit BMP of 1000x1000 pixels that fade from black to white.
void write_picture(const std::filesystem::path& path) {
    constexpr std::uint32_t size = 1000;
    constexpr std::uint32_t head_size = 54;
    std::string bytes(head_size + size * size * 3, '\0');
    const auto put = [&bytes](std::size_t offset, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i)
            bytes[offset + i] = static_cast<char>(value >> (8 * i));
    };
    bytes.replace(0, 2, "BM");
    put(2, static_cast<std::uint32_t>(bytes.size()));
    put(10, head_size);
    put(14, 40);
    put(18, size);
    put(22, size);
    put(26, 1 | 24 << 16);  // planes; bits per pixel
    for (std::size_t i = head_size; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>((i - head_size) / 3 % size / 4);
    std::ofstream(path, std::ios::binary) << bytes;
}

void measure(const Options& options) {
    Session session(options.image, width, height);
    PlainBuffers buffers(session);
    write_picture(session.file("PICTURE.BMP"));
    const Table table("statement", "C library", microseconds);
    for (const auto& subjects : {text_subjects(buffers), graphics_subjects(buffers)}) {
        for (const Subject& subject : subjects) {
            session.enter("TXTWINDOW: VIEW PRINT: COLOR 15, 0: CLS");
            WaitingProgram program(
                session, repeating_program({subject.preparation}, subject.statement, subject.repetitions));
            std::function<double()> plain;
            if (subject.plain) plain = [&] { return seconds_each(subject.repetitions, subject.plain); };
            const Comparison comparison = take_turns(
                options.rounds, [&] { return program.seconds() / subject.repetitions; }, plain);
            table.row(subject.name, comparison, subject.goal);
        }
    }
}

}  // namespace
}  // namespace korvane::bench

int main(int count, char** arguments) {
    korvane::bench::measure(korvane::bench::parse_options(count, arguments));
    return EXIT_SUCCESS;
}
