// The checker of invariants sees every kind of damage: each structure is spoilt in turn, and what is broken
// is named.
#include "invariants.h"

#include <gtest/gtest.h>

#include <functional>
#include <tuple>
#include <vector>

#include "files/file_table.h"
#include "linked_session.h"
#include "program/arenas.h"
#include "program/program_store.h"
#include "run/breakpoints.h"
#include "run/control_stacks.h"
#include "run/event_timers.h"
#include "run/trace.h"
#include "run/traps.h"
#include "screen/console.h"
#include "screen/graphics.h"
#include "screen/keyboard.h"
#include "statements/graphics/bitmaps.h"
#include "values/common_list.h"
#include "values/user_functions.h"
#include "values/variables.h"

namespace korvane::test {
namespace {

using fuzz::broken_invariants;

struct Damage {
    std::function<void()> spoil;
    std::string broken;  // the rule that is named
};

VariableEntry& entry(const char* name, bool is_array) {
    char padded[name_capacity] = {};
    std::copy_n(name, std::char_traits<char>::length(name), padded);
    return *find_variable(padded, is_array);
}

// Of the session below: lines 10 and 20, A% and A$, M%() and T$(), a loop that is open, a function, a bitmap,
// file 1.
std::vector<Damage> damages() {
    return {
        {[] { arenas.CODEEND -= 8; }, "the program arena has its size"},
        {[] { arenas.VARTABLE += 64; }, "the variable table stands at the data arena's start"},
        {[] { arenas.HIMEM = arenas.LOMEM - 1; }, "the data arena ends behind its start"},
        {[] { arenas.FREEBOT = arenas.LOMEM; }, "arrays stand behind the variable table"},
        {[] { arenas.FREETOP = arenas.FREEBOT - 1; }, "arrays and strings do not overlap"},
        {[] { arenas.FREETOP = arenas.HIMEM + 1; }, "strings stand in the data arena"},
        {[] { arenas.FREEBOT += 1; }, "arrays are aligned"},
        {[] { program.count = max_program_lines + 1; }, "the program has no more lines than it may"},
        {[] { program.write = arenas.CODEEND + 1; }, "the program's text stands in its arena"},
        {[] { variables.count = max_variables + 1; }, "there are no more variables than there may be"},
        {[] { program.lines[1].number = program.lines[0].number; }, "lines are sorted"},
        {[] { program.lines[0].record = arenas.CODEEND; }, "line records stand in the program's text"},
        {[] { program.lines[1].record += 4; }, "line records are packed"},
        {[] { program.lines[0].record[0] ^= 1; }, "a line's record has its number"},
        {[] { program.lines[1].record[4] = 255; }, "a line's text ends in the program's text"},
        {[] { program.lines[0].record[4] -= 1; }, "a line's text ends with a zero"},
        {[] { program.write += 4; }, "the program's text ends behind its last line"},
        {[] { program.cache_start = arenas.CODEBASE; }, "the token cache stands behind the program's text"},
        {[] { program.cache_start += 4; }, "the token cache is aligned"},
        {[] { program.lines[0].tokens = reinterpret_cast<Token*>(arenas.CODEBASE); },
         "a line's tokens stand in the cache"},
        {[] { program.lines[0].token_count -= 1; }, "a line's tokens have an end"},
        {[] { program.lines[0].tokens[4].string.bytes = arenas.LOMEM; },
         "a string literal stands in its line's text"},
        {[] { variables.table += 1; }, "the variable table has its place"},
        {[] { variables.array_base = 2; }, "OPTION BASE is 0 or 1"},
        {[] { variables.default_types[3] = static_cast<Type>(9); },
         "names have a type by their first letter"},
        {[] { entry("A%", false).type = static_cast<Type>(0); }, "a variable has a name and a type"},
        {[] { entry("A%", false).flags = 2; }, "a variable is an array or none"},
        {[] { entry("A%", false).name[0] = 'Z'; }, "a variable is found by its name"},
        {[] { entry("M%", true).array = nullptr; }, "an array stands among the arrays"},
        {[] { entry("M%", true).array->dimensions = 5; }, "an array has one to four dimensions"},
        {[] { entry("M%", true).array->bounds[0] = INT64_MAX; },
         "an array's bounds are those of an array that fits"},
        {[] { entry("M%", true).array->bounds[0] = 1 << 20; }, "an array's elements stand among the arrays"},
        {[] { entry("A$", false).storage[9] ^= 0x80; }, "a string stands in string space or in a record"},
        {[] { entry("T$", true).array->elements()[9] ^= 0x80; },
         "a string stands in string space or in a record"},
        {[] { control_stacks.gosub_count = max_gosub_depth + 1; }, "GOSUB is no deeper than it may be"},
        {[] { control_stacks.while_count = max_while_depth + 1; }, "WHILE is no deeper than it may be"},
        {[] { control_stacks.for_count = max_for_depth + 1; }, "FOR is no deeper than it may be"},
        {[] { traps.count = max_trap_frames + 1; }, "no more handlers run than may"},
        {[] { std::fill_n(control_stacks.fors[0].name, name_capacity, 'X'); },
         "a loop's variable has a name"},
        {[] { control_stacks.fors[0].step_sign = 2; }, "a loop's step has a sign"},
        {[] { control_stacks.fors[0].variable = variables.table + variables.count; },
         "a loop's variable is in the table"},
        {[] { breakpoints.count = max_breakpoints + 1; }, "there are no more breakpoints than there may be"},
        {[] { trace.watch_count = max_watches + 1; }, "no more variables are watched than may be"},
        {[] {
             trace.watch_count = 1;
             std::fill_n(trace.watches[0], name_capacity, 'X');
         },
         "a watched variable has a name"},
        {[] { user_functions.count = max_user_functions + 1; },
         "there are no more functions than there may be"},
        {[] { user_functions.functions[0].parameter_count = -1; },
         "a function has no more parameters than it may"},
        {[] { user_functions.functions[0].body_length = max_token_records; }, "a function's body fits"},
        {[] { std::fill_n(user_functions.functions[0].name, name_capacity, 'X'); }, "a function has a name"},
        {[] { common_list.count = max_common_entries + 1; }, "COMMON names no more variables than it may"},
        {[] {
             common_list.count = 1;
             std::fill_n(common_list.entries[0].name, name_capacity, 'X');
         },
         "a common variable has a name"},
        {[] {
             bitmaps.slots[3] = {screen.back_buffer, 2, 2, true, arenas.clears};
         },
         "a bitmap stands among the arrays"},
        {[] { event_timers.active = 4; }, "the timers that are on are known"},
        {[] { keyboard.look_ahead = 300; }, "the look-ahead holds a key or none"},
        {[] { screen.addressable = screen.framebuffer_size; }, "pixels lie in the framebuffer"},
        {[] { screen.back_buffer_capacity = 1; }, "pixels lie in the back buffer"},
        {[] { console.cursor_row = max_text_rows; }, "the cursor is on the grid"},
        {[] { console.continuation[5] = 2; }, "a row continues the one above or not"},
        {[] {
             graphics.viewport_active = true;
             graphics.viewport = {0, 0, 5, 1 << 20};
         },
         "the viewport lies on the screen"},
        {[] { file_table.entries[0].pending = -1; }, "pending output fits its buffer"},
        {[] { file_table.entries[0].input_next = 1; }, "input fits its buffer"},
        {[] { file_table.entries[0].record_length = max_record_length + 1; },
         "a record is no longer than it may be"},
        {[] { file_table.entries[0].buffer_position = 1; }, "a record's position lies in it"},
        {[] { file_table.entries[0].mode = FileMode::random; }, "random files have records, and no others"},
    };
}

// The state is put together again by hand: what the interpreter's modules keep, and its arenas' used parts.
template <typename... Structures>
class Copy {
  public:
    explicit Copy(Structures&... structures) : at_(structures...), content_(structures...) {}
    void put_back() { at_ = content_; }

  private:
    std::tuple<Structures&...> at_;
    std::tuple<Structures...> content_;
};

class Invariants : public testing::Test {
  protected:
    void SetUp() override {
        for (const char* line : {"10 A$=A$+\"text\":A%=A%+1", "20 REM", "DIM M%(9),T$(3)", "RUN",
                                 "DIM M%(9),T$(3):T$(0)=A$+A$:A$=A$+\"x\"", "A%=1", "DEF FNA(X)=X+1",
                                 "OPEN \"F.TXT\" FOR OUTPUT AS 1", "FOR I=1 TO 2"})
            ASSERT_TRUE(session_.type(line)) << line;
        ASSERT_EQ(session_.problem(), "");
    }

    LinkedSession session_{640, 480};
};

TEST_F(Invariants, HoldAtThePrompt) {
    EXPECT_EQ(broken_invariants(), std::vector<std::string>{});
}

TEST_F(Invariants, AreNamedWhenTheyAreBroken) {
    Copy copy(arenas, program, variables, control_stacks, traps, breakpoints, trace, user_functions,
              common_list, bitmaps, event_timers, keyboard, screen, console, graphics, file_table);
    const std::vector<std::uint8_t> text(arenas.CODEBASE, program.cache_end);
    const std::vector<std::uint8_t> data(arenas.LOMEM, arenas.FREEBOT);
    for (const Damage& damage : damages()) {
        damage.spoil();
        const std::vector<std::string> broken = broken_invariants();
        EXPECT_NE(std::find(broken.begin(), broken.end(), damage.broken), broken.end()) << damage.broken;
        copy.put_back();
        std::copy(text.begin(), text.end(), arenas.CODEBASE);
        std::copy(data.begin(), data.end(), arenas.LOMEM);
        ASSERT_EQ(broken_invariants(), std::vector<std::string>{}) << "after: " << damage.broken;
    }
}

}  // namespace
}  // namespace korvane::test
