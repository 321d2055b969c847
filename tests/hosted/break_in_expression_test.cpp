// Escape while an expression waits for a key, in every place of every statement: the statement is given up
// without any effect, the break counts at its start, and executed again it does what it does undisturbed.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

#include "forked.h"
#include "help/help_table.h"
#include "interrupted_statements.h"
#include "linked_session.h"
#include "program/execution.h"
#include "program/keywords.h"
#include "program/tokenizer.h"
#include "run/dispatch.h"
#include "screen/console.h"
#include "session_state.h"
#include "values/functions.h"

namespace korvane::test {
namespace {

using transcript::ForkedResult;
using transcript::run_forked;

// The keys that the program below asks for, one by one, select what a run does.
struct Course {
    std::string_view handlers_so_far;  // "1": count as if the handler had run; "0"
    std::string_view on_break;         // the handler: "S" stops, "R" resumes, "-" there is none
    std::string_view at_statement;     // "!": the handler that stops instead of the statement; "-"
    std::string keys;                  // for the statement
    bool goes_on = false;              // CONT when the run has been broken off
};

// Everything a program can look at is put to a value of its own before the statement comes.
std::string program_with(std::string_view setup, std::string_view statement) {
    std::string lines =
        "1 ON ERROR GOTO 3:ERROR 77\r\n"
        "3 RESUME 4\r\n"
        "4 K9=0:IF INKEY$=\"1\" THEN K9=1\r\n"
        "5 K$=INKEY$:IF K$=\"S\" THEN ON BREAK GOTO 900 ELSE IF K$=\"R\" THEN ON BREAK GOTO 920\r\n"
        "6 ON ERROR GOTO 950:DIM N%(9),A$(3),G&(199)\r\n"
        "7 A=1:B=2:X=3:Y=4:Z9=0:Z8=0:F$=\"\":I=0:N%(2)=2:PSET (300,300)\r\n";
    if (!setup.empty()) lines += "10 " + std::string(setup) + "\r\n";
    lines += "19 IF INKEY$=\"!\" THEN Z9=Z9+1:GOTO 900\r\n";
    lines += "20 Z9=Z9+1:" + std::string(statement) + "\r\n";
    return lines +
           "25 Z8=Z8+1\r\n"
           "30 STOP\r\n"
           "50 Z8=50:STOP\r\n"
           "51 Z8=51:STOP\r\n"
           "60 REM\r\n"
           "61 REM\r\n"
           "70 DATA 1,2,3\r\n"
           "71 DATA 4,5,6,7\r\n"
           "900 K9=K9+1:STOP\r\n"
           "920 K9=K9+1:RESUME\r\n"
           "950 STOP\r\n";
}

// A 1x1 bitmap of 24 bits a pixel.
std::string one_pixel_bitmap() {
    std::string file(58, '\0');
    for (const auto& [at, value] : std::array<std::pair<std::size_t, char>, 9>{
             {{0, 'B'}, {1, 'M'}, {2, 58}, {10, 54}, {14, 40}, {18, 1}, {22, 1}, {26, 1}, {28, 24}}})
        file[at] = value;
    return file;
}

void prepare_volume(const LinkedSession& session, const std::string& program_text) {
    for (const auto& entry : std::filesystem::directory_iterator(session.folder()))
        std::filesystem::remove_all(entry.path());
    std::filesystem::create_directory(session.folder() / "D");
    session.write_file("P.BAS", program_text);
    session.write_file("C.BAS", "20 REM CHAINED\r\n25 STOP\r\n");
    session.write_file("T.TXT", "1,two\r\n3,four,5\r\n6,seven,8\r\n");
    session.write_file("B.BMP", one_pixel_bitmap());
}

std::string row_text(std::uint32_t row) {
    const std::string text(reinterpret_cast<const char*>(console.grid[row]), text_columns());
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

bool on_screen(std::string_view text) {
    for (std::uint32_t row = 0; row < text_rows(); ++row)
        if (row_text(row) == text) return true;
    return false;
}

// The places of a statement that are tried: all of them, but with the sanitizers, which make everything ten
// times as slow, every sixth, and others in each of the tests.
std::vector<Interruption> tried_places(const InterruptedStatement& statement, [[maybe_unused]] int test) {
    std::vector<Interruption> places = interruptions_of(statement);
#ifdef __SANITIZE_ADDRESS__
    static int counted = 0;
    std::erase_if(places, [&](const Interruption&) { return (counted++ + test) % 6 != 0; });
#endif
    return places;
}

class BreakInExpression : public testing::Test {
  protected:
    // The state and the screen after a run of the program with the setup and the statement, each run in a
    // process of its own.
    std::string after_run(const InterruptedStatement& statement, std::string_view text,
                          const Course& course) {
        return run_apart(
            statement, text,
            [&] {
                session_.queue_keys("RUN\r" + std::string(course.handlers_so_far) +
                                    std::string(course.on_break) + std::string(course.at_statement));
                if (!course.goes_on) {
                    // The last Enter only ends a reply, or the line that the editor is left with.
                    session_.queue_keys(course.keys);
                    if (!session_.run()) return session_.problem();
                    return describe_state(session_) + describe_screen();
                }
                session_.queue_keys({&escape_key, 1});
                if (!session_.run()) return session_.problem();
                if (!on_screen("Break in 20")) return std::string("no message");
                session_.queue_keys("CONT\r" + course.keys);
                if (!session_.run()) return session_.problem();
                return describe_state(session_);
            });
    }

    // Calls `work` in a process of its own, where the program has been loaded.
    template <typename Work>
    std::string run_apart(const InterruptedStatement& statement, std::string_view text, const Work& work) {
        prepare_volume(session_, program_with(statement.setup, text));
        const ForkedResult result = run_forked([&]() -> ForkedResult {
            if (!session_.type("CLS:LOAD \"P\"")) return {session_.problem(), "", false};
            return {"", work(), false};
        });
        return result.report + result.shown;
    }

    LinkedSession session_{640, 480};
};

TEST_F(BreakInExpression, StatementsHaveNoEffect) {
    for (const InterruptedStatement& statement : interrupted_statements()) {
        if (statement.only_typed) continue;
        for (const Interruption& place : tried_places(statement, 0)) {
            if (place.later_item) continue;
            const std::string never_met =
                after_run(statement, place.statement,
                          {.handlers_so_far = "0", .on_break = "S", .at_statement = "!", .keys = ""});
            const std::string broken_off = after_run(
                statement, place.statement,
                {.handlers_so_far = "0", .on_break = "S", .at_statement = "-", .keys = {escape_key}});
            EXPECT_EQ(broken_off, never_met) << place.statement;
        }
    }
}

TEST_F(BreakInExpression, HandlersExecuteStatementsAgain) {
    for (const InterruptedStatement& statement : interrupted_statements()) {
        if (statement.only_typed) continue;
        for (const Interruption& place : tried_places(statement, 1)) {
            const std::string answer = place.answer + std::string(statement.reply);
            const std::string undisturbed =
                after_run(statement, place.statement,
                          {.handlers_so_far = "1", .on_break = "R", .at_statement = "-", .keys = answer});
            EXPECT_EQ(undisturbed.find("Syntax"), std::string::npos) << undisturbed;
            const std::string again = after_run(
                statement, place.statement,
                {.handlers_so_far = "0", .on_break = "R", .at_statement = "-", .keys = escape_key + answer});
            EXPECT_EQ(again, undisturbed) << place.statement;
        }
    }
}

TEST_F(BreakInExpression, ContExecutesStatementsAgain) {
    for (const InterruptedStatement& statement : interrupted_statements()) {
        if (statement.only_typed) continue;
        for (const Interruption& place : tried_places(statement, 2)) {
            const std::string answer = place.answer + std::string(statement.reply);
            std::string undisturbed =
                after_run(statement, place.statement,
                          {.handlers_so_far = "1", .on_break = "-", .at_statement = "-", .keys = answer});
            undisturbed.erase(undisturbed.rfind("cursor "));
            const std::string continued = after_run(statement, place.statement,
                                                    {.handlers_so_far = "1",
                                                     .on_break = "-",
                                                     .at_statement = "-",
                                                     .keys = answer,
                                                     .goes_on = true});
            EXPECT_EQ(continued, undisturbed) << place.statement;
        }
    }
}

// In a direct line nothing is said; what CONT would go on with stays.
TEST_F(BreakInExpression, TypedStatementsHaveNoEffect) {
    for (const InterruptedStatement& statement : interrupted_statements()) {
        for (const Interruption& place : tried_places(statement, 3)) {
            if (place.later_item) continue;
            const std::string difference = run_apart(statement, "REM", [&]() -> std::string {
                session_.queue_keys("RUN\r0S!");
                if (!session_.run()) return session_.problem();
                const std::string before = describe_state(session_);
                const bool could_continue = execution.can_continue;
                session_.queue_keys(place.statement + "\r" + escape_key);
                if (!session_.run()) return session_.problem();
                const std::string last_row = row_text(console.cursor_row - 2);
                if (row_text(console.cursor_row - 1) != "Ready." || !place.statement.ends_with(last_row))
                    return "not back at the prompt: " + last_row;
                if (execution.can_continue != could_continue) return "CONT has changed";
                const std::string after = describe_state(session_);
                return after == before ? "" : before + "\nhas become\n" + after;
            });
            EXPECT_EQ(difference, "") << place.statement;
        }
    }
}

// ---- Nothing is left out ----------------------------------------------------------------------------

std::uint8_t first_kind(std::string_view text) {
    const std::string line(text.substr(0, text.find_first_of(" {")));
    tokenize(reinterpret_cast<const std::uint8_t*>(line.c_str()));
    return tokenizer.scratch[0].kind;
}

TEST_F(BreakInExpression, EveryStatementIsTried) {
    std::array<bool, 256> tried{};
    tried[END_OF_LINE] = tried[':'] = true;
    for (const InterruptedStatement& statement : interrupted_statements())
        tried[first_kind(statement.text)] = true;
    for (const std::string_view word : words_without_expressions())
        tried[first_kind(word)] = true;
    for (std::size_t kind = 0; kind < tried.size(); ++kind) {
        const bool is_statement = statement_handlers.numbers[kind] != 0;
        EXPECT_TRUE(tried[kind] || !is_statement) << keyword_name(static_cast<std::uint8_t>(kind));
    }
}

TEST_F(BreakInExpression, EveryFunctionIsTried) {
    for (HelpWalk walk; walk.next();) {
        const std::string name(walk.entry().name);
        // VARPTR takes a variable, SPC and TAB stand in lists: they are among the statements.
        if (find_called_function(name) == nullptr) continue;
        bool tried = false;
        for (const InterruptedStatement& statement : interrupted_statements())
            tried = tried || statement.text.find(name + "(") != std::string_view::npos;
        EXPECT_TRUE(tried) << name;
    }
}

// The words that are left out never wait for a key in what follows them.
TEST_F(BreakInExpression, OtherWordsEvaluateNothing) {
    for (const std::string_view word : words_without_expressions()) {
        const std::string where = run_apart({.text = "REM"}, "REM", [&]() -> std::string {
            if (!session_.type(std::string(word) + " INPUT$(1)")) return session_.problem();
            return row_text(console.cursor_row - 1);
        });
        EXPECT_EQ(where, "Ready.") << word;
    }
}

}  // namespace
}  // namespace korvane::test
