// growth_speed [--rounds N] IMAGE: whether a statement takes as long in a long program as in a short one, and
// with a name that was created after many others as with one created before them, on the hosted firmware. The
// yardstick is the same work in the short program, or with the early name. A long program does not fit into
// the processor's nearest cache, which its goal allows for.
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "rounds.h"
#include "session.h"

namespace korvane::bench {
namespace {

constexpr int short_lines = 40;
constexpr int long_lines = 20000;
constexpr int executions = 400000;        // of the statement, in one measurement
constexpr double long_preparation = 1.5;  // seconds until a long program has its machine code; a single
                                          // round only shows that all can be measured
constexpr int many_names = 4000;
constexpr double growth_goal = 4;
constexpr double late_goal = 1.1;
constexpr double typed_goal = 2;
constexpr double copies_goal = 1.5;
constexpr double linear_goal = 1.2;  // for each of twice as many things

// The statement of a line, given its index and the number of lines.
using Statement = std::function<std::string(int index, int count)>;

std::string line_number(int index) {
    return std::to_string(1000 + index * 10);
}

// Passes through `count` lines until so many of them have been executed.
std::string long_loop(int count, const Statement& statement) {
    const std::string passes = std::to_string(executions / count);
    std::string text = "10 DIM A(10)\r\n20 IF INPUT$(1) = \"q\" THEN 999999\r\n30 L = " + passes + "\r\n";
    for (int i = 0; i < count; ++i)
        text += line_number(i) + ' ' + statement(i, count) + "\r\n";
    return text + "900000 L = L - 1: IF L > 0 THEN 1000 ELSE 20\r\n900010 RETURN\r\n";
}

// One statement in front of so many lines that are never executed, and of what it refers to.
std::string far_loop(int count, const std::string& statement) {
    std::string text = "10 DIM A(10)\r\n20 IF INPUT$(1) = \"q\" THEN 999999\r\n30 FOR K = 1 TO " +
                       std::to_string(executions) + ": " + statement + ": NEXT K\r\n40 GOTO 20\r\n";
    for (int i = 0; i < count; ++i)
        text += line_number(i) + " PRINT \"Result\"; A(I), B$\r\n";
    return text + "900000 DATA 1, 2, 3\r\n900010 RETURN\r\n";
}

// Jumps all over the program, to each of its lines once.
std::string jump(int index, int count) {
    constexpr int distance = 7919;  // has no divisor in common with the number of lines
    const int target = (index + distance) % count;
    return "GOTO " + (target == 0 ? "900000" : line_number(target));
}

// Seconds for one execution, when the lines have been tokenized and the program has worked for so long.
double seconds_each_execution(Session& session, const std::string& text, double preparation = 0) {
    WaitingProgram program(session, text);
    do
        preparation -= program.seconds();
    while (preparation > 0);
    return program.seconds() / executions;
}

// The statement in a loop, with a name that `create` brings into being before or after many others.
std::string name_loop(bool late, const std::string& create, const std::string& other_head,
                      const std::string& other_tail, const std::string& statement) {
    std::vector<std::string> lines;
    for (int i = 0; i < many_names; ++i)
        lines.push_back(other_head + 'N' + std::to_string(i) + other_tail);
    lines.insert(late ? lines.end() : lines.begin(), create);
    return repeating_program(lines, statement, executions);
}

// Creates so many names, each once.
std::string creating_program(int names) {
    std::string text;
    for (int i = 0; i < names; ++i)
        text += line_number(i).append(" N").append(std::to_string(i)).append(" = 1\r\n");
    return text;
}

// Two copies of a text at each letter that it grows by, downwards in memory as the image has its texts.
void copy_growing_texts(std::vector<char>& memory, std::size_t letters) {
    char* top = memory.data() + memory.size();
    const char* text = top;
    for (std::size_t length = 0; length != letters; ++length) {
        top -= 2 * (length + 1);
        for (char* copy : {top, top + length + 1}) {
            std::memcpy(copy, text, length);
            copy[length] = 'x';
        }
        text = top;
    }
}

class Growth {
  public:
    explicit Growth(const Options& options) : options_(options), session_(options.image, 640, 480) {}

    void measure_all() {
        compare_text_building();  // while the machine's memory is as the host gives it
        compare_lengths(
            "X = X + 1", [](int, int) { return "X = X + 1"; });
        compare_lengths(
            "A(3) = A(2) + X", [](int, int) { return "A(3) = A(2) + X"; });
        compare_lengths(
            "A$ = B$", [](int, int) { return "A$ = B$"; });
        compare_lengths(
            "IF X < 0 THEN X = 1", [](int, int) { return "IF X < 0 THEN X = 1"; });
        compare_lengths("GOSUB to the program's end", [](int, int) { return "GOSUB 900010"; });
        compare_lengths("GOTO all over the program", jump);
        // Here the lines' tokens would take 31 MB; the program arena has 16 MiB.
        const std::string many_tokens = "LET X = X + A(I) * A(I + 1) - A(I + 2)";
        compare_lengths(
            many_tokens, [&](int, int) { return many_tokens; }, 0);
        compare_far("GOSUB 900010");
        compare_far("ON 2 GOSUB 1000, 900010");
        compare_far("RESTORE: READ X");
        compare_far("RESTORE 900000: READ X");
        compare_far("RESTORE 1000: READ X");
        compare_names("Z = Z + 1", "Z = 0", "", " = 0");
        compare_names("Z$ = Y$", "Z$ = \"z\"", "", "$ = \"n\"");
        compare_names("Z(3) = Z(2) + 1", "DIM Z(10)", "DIM ", "(1)");
        compare_erasing();
        compare_creation();
        compare_loading(
            "in descending order", [](int index, int count) { return count - 1 - index; });
        compare_loading("in no order", [](int index, int count) {
            return static_cast<int>(std::int64_t{index} * 7919 % count);  // no common divisor with the count
        });
        compare_typed("X = X + 1");
        compare_windows();
    }

  private:
    void compare(const std::string& name, const std::string& subject, const std::string& yardstick,
                 double goal, double preparation = 0) {
        table_.row(
            name,
            take_turns(
                options_.rounds, [&] { return seconds_each_execution(session_, subject, preparation); },
                [&] { return seconds_each_execution(session_, yardstick, preparation / 10); }),
            goal);
    }

    void compare_lengths(const std::string& name, const Statement& statement, double goal = growth_goal) {
        compare(name + "; 20,000 lines, 40 lines", long_loop(long_lines, statement),
                long_loop(short_lines, statement), goal, options_.rounds > 1 ? long_preparation : 0);
    }

    void compare_far(const std::string& statement) {
        compare(statement + "; before 20,000 lines, 40 lines", far_loop(long_lines, statement),
                far_loop(short_lines, statement), growth_goal);
    }

    // `other_head` and `other_tail` stand around the many names.
    void compare_names(const std::string& statement, const std::string& create, const std::string& other_head,
                       const std::string& other_tail) {
        const auto loop = [&](bool late) {
            return name_loop(late, create, other_head, other_tail, statement);
        };
        compare(statement + "; created after 4,000 names, before them", loop(true), loop(false), late_goal);
    }

    // An array that comes and goes beside many names and few, alone and among other statements.
    void compare_erasing() {
        const auto beside = [](int names, const std::string& statement) {
            std::vector<std::string> lines;
            for (int i = 0; i < names; ++i)
                lines.push_back(std::string("N").append(std::to_string(i)).append(" = 0"));
            return repeating_program(lines, statement, executions);
        };
        const std::string alone = "DIM Z(3): Z(1) = 2: ERASE Z";
        std::string among = "DIM Z(3): ERASE Z";
        for (int i = 0; i < 10; ++i)
            among += ": X = X + N1";
        compare(alone + "; beside 4,000 names, 40", beside(many_names, alone), beside(short_lines, alone),
                linear_goal);
        compare("DIM Z(3): ERASE Z and 10 sums; beside 4,000 names, 40", beside(many_names, among),
                beside(short_lines, among), linear_goal);
    }

    // A line of a file in which they do not stand in their order. `place` gives the number of the line that
    // stands at an index.
    void compare_loading(const std::string& order, int (*place)(int index, int count)) {
        constexpr int lines = 60000;
        const auto write = [&](const std::string& name, int count) {
            std::ofstream file(session_.file(name), std::ios::binary);
            for (int i = 0; i < count; ++i)
                file << place(i, count) + 1 << " PRINT \"Result\"; A(I), B$\r\n";
        };
        write("MANY.BAS", lines);
        write("HALF.BAS", lines / 2);
        table_.row("LOAD of a line, " + order + "; of 60,000, of 30,000",
                   take_turns(
                       options_.rounds, [&] { return session_.seconds_of("LOAD \"MANY.BAS\"") / lines; },
                       [&] { return session_.seconds_of("LOAD \"HALF.BAS\"") / (lines / 2); }),
                   linear_goal);
    }

    void compare_creation() {
        const auto seconds_each_name = [this](int names) {
            std::ofstream(session_.file("NAMES.BAS"), std::ios::binary) << creating_program(names);
            session_.enter("LOAD \"NAMES.BAS\"");
            session_.enter("RUN");
            return session_.seconds_of("RUN") / names;
        };
        table_.row("a new name; of 4,000, of 2,000",
                   take_turns(
                       options_.rounds, [&] { return seconds_each_name(many_names); },
                       [&] { return seconds_each_name(many_names / 2); }),
                   linear_goal);
    }

    // A text that grows by a letter at a time: in memory that has not been touched before, for which the
    // host's system has to find pages, and in memory that is there.
    void compare_text_building() {
        constexpr std::size_t letters = 3000;
        const std::string grow =
            "T$ = \"\": FOR I = 1 TO " + std::to_string(letters) + ": T$ = T$ + \"x\": NEXT";
        const auto seconds_each_letter = [&] { return session_.seconds_of(grow) / letters; };
        std::vector<double> touching;
        for (int i = 0; i < options_.rounds; ++i)
            touching.push_back(seconds_each_letter());
        std::vector<char> memory(letters * (letters + 1));
        const Comparison building = take_turns(
            options_.rounds,
            [&] {
                session_.enter("CLEAR");
                return seconds_each_letter();
            },
            [&] { return seconds_each(1, [&] { copy_growing_texts(memory, letters); }) / letters; });
        table_.row("T$ = T$ + \"x\" up to 3,000 letters; two copies by memcpy", building, copies_goal);
        table_.row("the same; in memory never touched before, in memory that is there",
                   {touching, building.subject}, 0);
        session_.enter("NEW");
    }

    // A loop that is typed, and the same in a program.
    void compare_typed(const std::string& statement) {
        const std::string typed = "FOR K = 1 TO " + std::to_string(executions) + ": " + statement + ": NEXT";
        const std::string stored = repeating_program({"X = 0"}, statement, executions);
        table_.row(std::string(statement).append("; in a typed loop, in a program's"),
                   take_turns(
                       options_.rounds,
                       [&] {
                           session_.enter("NEW");
                           return session_.seconds_of(typed) / executions;
                       },
                       [&] { return seconds_each_execution(session_, stored); }),
                   typed_goal);
    }

    void compare_windows() {
        const auto seconds_each_row = [this](int rows) {
            constexpr int lines = 4000;
            const std::vector<std::string> window = {"TXTWINDOW @1, 10, 1, 29, " + std::to_string(rows)};
            WaitingProgram program(session_, repeating_program(window, "PRINT @1, \"X\"", lines));
            program.seconds();
            return program.seconds() / lines / rows;
        };
        table_.row(
            "a row of a window that scrolls; of 28, of 14",
            take_turns(
                options_.rounds, [&] { return seconds_each_row(28); }, [&] { return seconds_each_row(14); }),
            linear_goal);
    }

    Options options_;
    Session session_;
    Table table_{"statement", "yardstick", nanoseconds};
};

}  // namespace
}  // namespace korvane::bench

int main(int count, char** arguments) {
    korvane::bench::Growth(korvane::bench::parse_options(count, arguments)).measure_all();
    return EXIT_SUCCESS;
}
