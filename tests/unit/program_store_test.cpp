#include "program/program_store.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "program/arenas.h"
#include "program/errors.h"
#include "program/keywords.h"
#include "program/late_lines.h"
#include "raised_error.h"
#include "random_bits.h"

namespace korvane {
namespace {

using test::take_error;

using Model = std::map<std::uint32_t, std::string>;

class ProgramStoreTest : public ::testing::Test {
  protected:
    void SetUp() override { use_arena(1 << 20); }
    void TearDown() override {
        clear_program();
        arenas.CODEBASE = arenas.CODEEND = nullptr;
    }

    void use_arena(std::size_t size) {
        memory_ = std::make_unique<std::uint64_t[]>(size / 8 + 1);
        arenas.CODEBASE = reinterpret_cast<std::uint8_t*>(memory_.get());
        arenas.CODEEND = arenas.CODEBASE + size;
        errors.pending = false;
        clear_program();
    }

    static std::uint32_t number_at(const std::uint8_t* at) {
        std::uint32_t number;
        std::memcpy(&number, at, sizeof number);
        return number;
    }

    // The records as they lie in memory, the index and the searches agree with the model.
    static void expect_holds(const Model& model) {
        ASSERT_EQ(program.count, model.size());
        const std::uint8_t* record = arenas.CODEBASE;
        std::uint32_t index = 0;
        for (const auto& [number, text] : model) {
            ASSERT_EQ(program.lines[index].number, number);
            ASSERT_EQ(program.lines[index].record, record);
            ASSERT_EQ(line_text(index), text);
            ASSERT_EQ(number_at(record), number);
            ASSERT_EQ(number_at(record + 4), text.size());
            const std::uint8_t* end = record + (8 + text.size() + 1 + 3) / 4 * 4;
            for (const std::uint8_t* padding = record + 8 + text.size(); padding < end; ++padding)
                ASSERT_EQ(*padding, 0);
            record = end;
            ++index;
        }
        ASSERT_EQ(program.write, record);
    }

    static std::string text_of_length(std::size_t length, char fill = 'a') {
        return std::string(length, fill);
    }

    std::unique_ptr<std::uint64_t[]> memory_;
};

std::size_t record_size(const std::string& text) {
    return (8 + text.size() + 1 + 3) / 4 * 4;
}

std::size_t used(const Model& model) {
    std::size_t bytes = 0;
    for (const auto& [number, text] : model)
        bytes += record_size(text);
    return bytes;
}

// Stores a line in the model, as far as it has room; what the store must say.
std::string model_store(Model& model, std::uint32_t number, const std::string& text, std::size_t arena) {
    if (text.size() > 244) return "Line too long";
    if (text.empty()) {
        model.erase(number);
        return "";
    }
    Model changed = model;
    changed[number] = text;
    if (used(changed) > arena) return "Program too large";
    model = std::move(changed);
    return "";
}

void edit_at_random(std::uint64_t seed, std::size_t arena, int edits, int numbers,
                    const std::function<void(const Model&)>& check) {
    test::RandomBits random(seed);
    Model model;
    for (int edit = 0; edit < edits; ++edit) {
        const auto number = static_cast<std::uint32_t>(
            random.below(10) == 0 ? 4294967294u - static_cast<unsigned>(random.below(3))
                                  : static_cast<unsigned>(random.below(numbers)));
        std::string text;
        if (random.below(4) != 0) {
            const int length = random.below(20) == 0 ? 240 + random.below(8) : random.below(60);
            for (int i = 0; i < length; ++i)
                text += static_cast<char>(32 + random.below(90));
        }
        execution.can_continue = true;
        store_line(number, text);
        EXPECT_FALSE(execution.can_continue);
        EXPECT_EQ(take_error(), model_store(model, number, text, arena));
        check(model);
        if (::testing::Test::HasFatalFailure()) return;
        // A line that has run keeps its tokens until the next change.
        if (program.count > 0) {
            const auto index = static_cast<std::uint32_t>(random.below(static_cast<int>(program.count)));
            prepare_line(index);
            take_error();
        }
        const auto wanted = static_cast<std::uint32_t>(random.below(numbers));
        const std::uint32_t found = find_line(wanted);
        EXPECT_EQ(found != direct_line, model.contains(wanted));
        EXPECT_EQ(first_line_from(wanted),
                  static_cast<std::uint32_t>(std::distance(model.begin(), model.lower_bound(wanted))));
        if (random.below(50) == 0 && program.count > 3) {
            const auto first = static_cast<std::uint32_t>(random.below(static_cast<int>(program.count)));
            const auto end =
                first + 1 + static_cast<std::uint32_t>(random.below(static_cast<int>(program.count - first)));
            delete_lines(first, end);
            model.erase(std::next(model.begin(), first), std::next(model.begin(), end));
            check(model);
        }
    }
}

TEST_F(ProgramStoreTest, RandomEditsAgreeWithAMap) {
    edit_at_random(1, 1 << 20, 4000, 200, expect_holds);
}

TEST_F(ProgramStoreTest, RandomEditsInASmallArenaAgreeWithAMap) {
    for (const std::size_t arena : {64U, 500U, 2000U, 4096U}) {
        use_arena(arena);
        edit_at_random(arena, arena, 1500, 40, expect_holds);
    }
}

// Batches of lines in any order, each of which finds what the batches before have left.
void enter_at_random(std::uint64_t seed, std::size_t arena, int batches, int numbers,
                     const std::function<void(const Model&)>& check) {
    test::RandomBits random(seed);
    Model model;
    for (int batch = 0; batch < batches; ++batch) {
        {
            LateLines lines;
            const bool ascending = random.below(4) == 0;
            const bool descending = random.below(4) == 0;
            for (int i = random.below(60); i-- > 0;) {
                auto number = static_cast<std::uint32_t>(random.below(numbers));
                if (ascending) number = 1000 + static_cast<std::uint32_t>(60 * batch - i);
                if (descending) number = 4294967294u - static_cast<std::uint32_t>(60 * batch - i);
                std::string text;
                if (random.below(6) != 0) text.assign(static_cast<std::size_t>(random.below(30)), 'a');
                if (random.below(200) == 0) text.assign(static_cast<std::size_t>(240 + random.below(8)), 'b');
                execution.can_continue = true;
                lines.store(number, text);
                ASSERT_EQ(take_error(), model_store(model, number, text, arena));
                if (random.below(40) != 0) continue;
                lines.settle();
                check(model);
                if (::testing::Test::HasFatalFailure()) return;
            }
        }
        check(model);
        if (::testing::Test::HasFatalFailure()) return;
        for (std::uint32_t index = 0; index < program.count; ++index) {
            ASSERT_TRUE(program.cache_start != nullptr || program.lines[index].tokens == nullptr);
            ASSERT_EQ(find_line(program.lines[index].number), index);
        }
        // Lines that have run keep their tokens behind the program, where the next batch will lie.
        for (std::uint32_t index = 0; index < program.count; index += 5) {
            prepare_line(index);
            take_error();
        }
        if (random.below(30) == 0) {
            clear_program();
            model.clear();
        }
    }
}

TEST_F(ProgramStoreTest, LateLinesAgreeWithAMap) {
    enter_at_random(1, 1 << 20, 200, 200, expect_holds);
    clear_program();
    enter_at_random(2, 1 << 20, 150, 20000, expect_holds);
}

// Also where there is no room to sort them, and where there is none for the program itself.
TEST_F(ProgramStoreTest, LateLinesInASmallArenaAgreeWithAMap) {
    for (const std::size_t arena : {64U, 500U, 2000U, 4096U, 10000U}) {
        use_arena(arena);
        enter_at_random(arena, arena, 200, 100, expect_holds);
    }
}

TEST_F(ProgramStoreTest, LateLinesUpToTheIndexesEnd) {
    use_arena(1 << 22);
    {
        LateLines lines;
        for (std::uint32_t number = 65536; number-- > 0;)
            lines.store(number * 2, "x");
        EXPECT_EQ(take_error(), "");
        for (std::uint32_t number = 0; number < 1000; ++number)
            lines.store(number * 2, "y");  // each takes the place of one
        EXPECT_EQ(take_error(), "");
        lines.store(1, "x");
        EXPECT_EQ(take_error(), "Program too large");
        lines.store(6, "");
        lines.store(1, "z");
        EXPECT_EQ(take_error(), "");
    }
    EXPECT_EQ(program.count, 65536U);
    EXPECT_EQ(line_text(0), "y");
    EXPECT_EQ(line_text(1), "z");
    EXPECT_EQ(find_line(6), direct_line);
    EXPECT_EQ(line_text(find_line(1998)), "y");
    EXPECT_EQ(line_text(find_line(2000)), "x");
}

TEST_F(ProgramStoreTest, ALateLineEndsWhatCouldBeContinued) {
    store_line(20, "REM");
    execution.can_continue = true;
    LateLines lines;
    lines.store(10, "REM");
    lines.settle();
    EXPECT_FALSE(execution.can_continue);
    expect_holds({{10, "REM"}, {20, "REM"}});
}

TEST_F(ProgramStoreTest, TextLengths) {
    store_line(10, text_of_length(244));
    EXPECT_EQ(take_error(), "");
    store_line(10, text_of_length(245));
    EXPECT_EQ(take_error(), "Line too long");
    expect_holds({{10, text_of_length(244)}});
}

TEST_F(ProgramStoreTest, AReplacedLinesSpaceCountsAsFree) {
    // 8 + 7 + 1 = 16 bytes for each of the lines.
    use_arena(48);
    store_line(10, text_of_length(7));
    store_line(20, text_of_length(7));
    store_line(30, text_of_length(7));
    EXPECT_EQ(take_error(), "");
    store_line(40, "x");
    EXPECT_EQ(take_error(), "Program too large");
    store_line(20, text_of_length(8));
    EXPECT_EQ(take_error(), "Program too large");
    store_line(20, text_of_length(7, 'b'));
    EXPECT_EQ(take_error(), "");
    store_line(10, text_of_length(3));
    store_line(30, text_of_length(11));
    EXPECT_EQ(take_error(), "");
    expect_holds({{10, text_of_length(3)}, {20, text_of_length(7, 'b')}, {30, text_of_length(11)}});
}

TEST_F(ProgramStoreTest, TheIndexHolds65536Lines) {
    use_arena(1 << 21);
    for (std::uint32_t number = 0; number < 65536; ++number)
        store_line(number * 2, "x");
    EXPECT_EQ(take_error(), "");
    EXPECT_EQ(program.count, 65536U);
    for (const std::uint32_t number : {1U, 65537U, 4294967294U}) {
        store_line(number, "x");
        EXPECT_EQ(take_error(), "Program too large");
    }
    store_line(1000, "replaced");
    EXPECT_EQ(take_error(), "");
    EXPECT_EQ(line_text(find_line(1000)), "replaced");
    store_line(2, "");
    store_line(3, "new");
    EXPECT_EQ(take_error(), "");
    EXPECT_EQ(program.count, 65536U);
    EXPECT_EQ(find_line(3), 1U);
    store_line(5, "x");
    EXPECT_EQ(take_error(), "Program too large");
}

TEST_F(ProgramStoreTest, PreparedLinesAreCachedUntilTheProgramChanges) {
    store_line(10, "PRINT 1");
    store_line(20, "PRINT 2:PRINT 3");
    EXPECT_EQ(prepare_line(1), 6U);
    EXPECT_EQ(program.lines[1].tokens, execution.tokens);
    EXPECT_EQ(program.lines[1].token_count, 6U);
    // Behind the last record, rounded up to 8.
    const auto write = reinterpret_cast<std::uintptr_t>(program.write);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(execution.tokens), (write + 7) / 8 * 8);
    Token* second = execution.tokens;
    prepare_line(0);
    EXPECT_EQ(execution.tokens, second + 6);
    prepare_line(1);
    EXPECT_EQ(execution.tokens, second);
    store_line(99, "");
    EXPECT_EQ(program.lines[1].tokens, second);
    store_line(30, "REM");
    EXPECT_EQ(program.lines[0].tokens, nullptr);
    EXPECT_EQ(program.lines[1].tokens, nullptr);
}

TEST_F(ProgramStoreTest, ALineWithoutRoomInTheCacheRunsFromABuffer) {
    // One record of 16 bytes; the cache behind it holds two records of 64 bytes, not three.
    use_arena(16 + 2 * 64 + 63);
    store_line(10, "PRINT 1");
    EXPECT_EQ(prepare_line(0), 3U);
    EXPECT_EQ(program.lines[0].tokens, nullptr);
    EXPECT_EQ(execution.tokens, execution_buffer.tokens);
    EXPECT_EQ(execution.tokens[0].kind, KW_PRINT);
    store_line(10, "END");
    EXPECT_EQ(prepare_line(0), 2U);
    EXPECT_EQ(program.lines[0].tokens, execution.tokens);
}

TEST_F(ProgramStoreTest, ALineThatCannotBeTokenizedNamesItsLine) {
    store_line(70, "PRINT \"A");
    execution.program_running = true;
    EXPECT_EQ(prepare_line(0), 0U);
    execution.program_running = false;
    EXPECT_EQ(errors.line, 70U);
    EXPECT_EQ(take_error(), "Unterminated string");
    EXPECT_EQ(program.lines[0].tokens, nullptr);
}

TEST_F(ProgramStoreTest, Jumps) {
    store_line(10, "REM");
    store_line(4294967294u, "REM");
    jump_to_line(4294967294);
    EXPECT_EQ(take_error(), "");
    EXPECT_EQ(execution.line, 1U);
    EXPECT_EQ(execution.record, 0U);
    EXPECT_TRUE(execution.jumped);
    for (const std::int64_t number : {std::int64_t{11}, std::int64_t{4294967295}, std::int64_t{4294967306},
                                      std::int64_t{-1}, INT64_MIN, INT64_MAX}) {
        jump_to_line(number);
        EXPECT_EQ(take_error(), "Undefined line number");
    }
}

}  // namespace
}  // namespace korvane
