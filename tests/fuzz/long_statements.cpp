// Statements and commands that may go on for long without a look at the keyboard: each for a size and for
// twice that size. No more than twice the steps may be taken then, and a stated number for each unit of the
// size; so what takes long is a large text, a large program or a large screen, and nobody can make a small
// one take for ever.
//
//     long-statements             plays all; prints a table, and what is beyond its bound
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "player.h"
#include "program/errors.h"
#include "program/messages.h"
#include "steps.h"
#include "targets.h"

namespace korvane::fuzz {
namespace {

struct Row {
    std::string_view what;
    std::string_view unit;
    std::uint64_t size;                    // in units; the row is played with twice as many, too
    std::uint64_t bound;                   // steps for each unit
    std::vector<std::string_view> before;  // lines, in which {n} is the size
    std::string_view line;
};

const std::vector<Row>& rows() {
    static const std::vector<Row> all = {
        {"SPACE$, STRING$ and their kin", "byte", 200'000, 40, {}, "A$=SPACE$({n})"},
        {"texts put together", "byte", 200'000, 40, {"A$=SPACE$({n})"}, "B$=A$+\"x\""},
        {"UCASE$ and LCASE$", "byte", 200'000, 40, {"A$=SPACE$({n})"}, "B$=UCASE$(A$)"},
        {"comparing texts", "byte", 200'000, 40, {"A$=SPACE$({n})", "B$=SPACE$({n})+\"x\""}, "C=A$<B$"},
        {"INSTR", "byte", 200'000, 40, {"A$=SPACE$({n})", "B$=SPACE$({n}/2)+\"x\""}, "C=INSTR(A$,B$)"},
        {"VAL", "byte", 200'000, 40, {"A$=STRING$({n},\"0\")+\"7\""}, "C=VAL(A$)"},
        {"VAL of a fraction", "byte", 200'000, 40, {"A$=\".\"+STRING$({n},\"1\")"}, "C=VAL(A$)"},
        {"MID$ as a statement", "byte", 200'000, 40, {"A$=SPACE$({n})", "B$=SPACE$({n})"}, "MID$(A$,1)=B$"},
        {"PRINT", "byte", 4'000, 400, {"A$=STRING$({n},\"x\")"}, "PRINT A$"},
        {"PRINT #", "byte", 100'000, 40, {"OPEN \"O\" FOR OUTPUT AS 1", "A$=SPACE$({n})"}, "PRINT #1,A$"},
        {"LINE INPUT #", "byte", 100'000, 40, {"OPEN \"F.DAT\" FOR INPUT AS 1"}, "LINE INPUT #1,A$"},
        {"INPUT #", "byte", 100'000, 40, {"OPEN \"F.DAT\" FOR INPUT AS 1"}, "INPUT #1,A$"},
        {"INPUT$", "byte", 100'000, 40, {"OPEN \"F.DAT\" FOR INPUT AS 1"}, "A$=INPUT$({n},#1)"},
        {"DIM and CLEAR", "element", 100'000, 40, {}, "DIM A({n})"},
        {"ERASE", "element", 100'000, 40, {"DIM A(9)", "DIM B({n})"}, "ERASE A"},
        {"DRAW", "command", 250, 20'000, {"FOR I=1 TO {n}:A$=A$+\"U1\":NEXT"}, "DRAW A$"},
        {"PAINT", "pixel", 25'600, 400, {"CLS", "VIEW(0,0)-(159,{n}/160-1)"}, "PAINT(1,1),4"},
        {"LINE with BF", "pixel", 25'600, 40, {}, "LINE(0,0)-(159,{n}/160-1),3,BF"},
        {"a very long LINE", "clipped pixel", 1'000'000'000, 1, {}, "LINE(0,0)-({n},{n}/3),3"},
        {"a very large CIRCLE", "clipped pixel", 1'000'000'000, 1, {}, "CIRCLE(0,0),{n},3"},
        {"GET and PUT", "pixel", 12'800, 100, {"DIM A%(60000)"}, "GET(0,0)-(159,{n}/160-1),A%"},
        {"LOAD", "line", 2'000, 4'000, {}, "LOAD \"F\""},
        {"MERGE", "line", 2'000, 4'000, {}, "MERGE \"F.BAS\""},
        {"CHAIN", "line", 2'000, 4'000, {}, "CHAIN \"F.BAS\""},
        {"SAVE", "line", 2'000, 4'000, {"LOAD \"F\""}, "SAVE \"G\""},
        {"RENUM", "line", 2'000, 4'000, {"LOAD \"F\""}, "RENUM"},
        {"DELETE", "line", 2'000, 4'000, {"LOAD \"F\""}, "DELETE 20-"},
        {"FIND", "line", 2'000, 4'000, {"LOAD \"F\""}, "FIND \"nowhere\""},
        {"READ without DATA", "line", 2'000, 4'000, {"LOAD \"F\""}, "READ A"},
        {"FOR without a turn", "line", 2'000, 4'000, {"LOAD \"F\"", "1 FOR I=1 TO 0", "99999 NEXT"}, "RUN"},
        {"WHILE without a turn", "line", 2'000, 4'000, {"LOAD \"F\"", "1 WHILE 0", "99999 WEND"}, "RUN"},
        {"LIST NOWAIT", "line", 500, 10'000, {"LOAD \"F\""}, "LIST NOWAIT"},
    };
    return all;
}

int failures = 0;

std::string with_size(std::string_view line, std::uint64_t size) {
    constexpr std::string_view mark = "{n}";
    std::string text(line);
    for (std::size_t at; (at = text.find(mark)) != std::string::npos;)
        text.replace(at, mark.size(), std::to_string(size));
    return text;
}

void put_files(std::uint64_t size) {
    std::string program;
    for (std::uint64_t i = 1; i <= size && i <= 10'000; ++i)
        program += std::to_string(10 * i) + " A=A+1:PRINT \"text\":REM GOTO\r\n";
    Volume& volume = machine->firmware().volume();
    volume.put_file("F.BAS", program);
    volume.put_file("F.DAT", std::string(std::min<std::uint64_t>(size, 1'000'000), 'x'));
}

// A line that fails would show nothing of what it may take.
void type_without_error(const std::string& line) {
    errors.message = nullptr;
    type(line);
    if (errors.message == nullptr || errors.message == message::out_of_data) return;
    std::printf("  %s: %s\n", line.substr(0, 60).c_str(), errors.message);
    ++failures;
}

std::uint64_t steps_of(const Row& row, std::uint64_t size) {
    begin_input();
    put_files(size);
    for (const std::string_view line : row.before)
        type_without_error(with_size(line, size));
    forget_steps();
    type_without_error(with_size(row.line, size));
    return most_steps();
}

int play() {
    std::printf("| Statement | Unit | Steps for each | Twice as much takes |\n|---|---|---:|---:|\n");
    for (const Row& row : rows()) {
        const std::uint64_t once = steps_of(row, row.size);
        const std::uint64_t twice = steps_of(row, 2 * row.size);
        std::printf("| %.*s | %.*s | %.2f | %.2f |\n", static_cast<int>(row.what.size()), row.what.data(),
                    static_cast<int>(row.unit.size()), row.unit.data(),
                    static_cast<double>(twice) / static_cast<double>(2 * row.size),
                    static_cast<double>(twice) / static_cast<double>(once));
        const bool grows = twice > 2 * once + once / 4 + 10'000;
        const bool beyond = twice > 2 * row.size * row.bound;
        if (once == 0) std::printf("  no steps are counted\n");
        if (grows) std::printf("  twice as much takes more than twice as long\n");
        if (beyond)
            std::printf("  more than %llu steps for each\n", static_cast<unsigned long long>(row.bound));
        failures += once == 0 || grows || beyond;
    }
    return failures == 0 ? 0 : 1;
}

}  // namespace
}  // namespace korvane::fuzz

int main() {
    using namespace korvane::fuzz;
    static Machine the_machine;
    prepare(*find_target("session"), true);
    return play();
}
