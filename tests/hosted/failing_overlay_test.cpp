// A program whose CHAIN MERGE fails goes on as if nothing had been changed, as long as only remarks came and
// went before the failure. Random programs of loops, subroutines, READ and handlers run twice: with overlays
// that find no file and change nothing, and with ones that delete remarks, or insert some in front of a line
// that has no number. Both runs must leave the same log.
// KORVANE_OVERLAY_PROGRAMS sets the number of programs.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>
#include <string>

#include "linked_session.h"
#include "values/variables.h"

namespace korvane::test {
namespace {

constexpr char overlay_mark = '@';  // stands for an overlay in the text of a line

class OverlayProgram {
  public:
    explicit OverlayProgram(std::uint32_t seed) : random_(seed) {
        add("ON ERROR GOTO 30000:" + log());
        block(2, 0);
        add("END");
        for (int i = 0; i < subroutine_count; ++i) {
            number_ = 10000 + 1000 * i;
            add(log());  // no remark: GOSUB looks for the line
            block(1, i + 1);
            add("RETURN");
        }
        number_ = 30000;
        add("L$=L$+\"E\"+STR$(ERL):RESUME NEXT");
    }

    // Its text, with overlays that fail at once.
    std::string unchanged() { return text("CHAIN MERGE \"NOSUCH\",,ALL"); }

    // Its text, with overlays that fail after they have deleted or inserted remarks.
    std::string changed() { return text(""); }

    // A file of remarks between the lines, with a line at its end that cannot be merged.
    std::string overlay() {
        std::string lines;
        for (std::uint32_t i = 1 + below(6); i != 0; --i)
            lines += std::to_string(below(3) * 10000 + below(200) * 10 + 1 + below(9)) + " REM NEW\r\n";
        return lines + "PRINT\r\n";
    }

  private:
    static constexpr int subroutine_count = 3;

    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_()) % limit; }

    void add(const std::string& line) {
        lines_[number_] = line;
        number_ += 10;
    }

    std::string log() { return "L$=L$+\"" + std::to_string(++logged_) + ",\""; }

    // A statement that stands on a line; `callable` is the first subroutine that it may call.
    std::string statement(int callable) {
        switch (below(8)) {
            case 0:
            case 1:
                return {overlay_mark};
            case 2:
                return "READ A$:L$=L$+A$";
            case 3:
                if (callable == subroutine_count) return log();
                return "GOSUB " + std::to_string(10000 + 1000 * callable);
            case 4:
                if (callable == subroutine_count) return log();
                return "ON 1 GOSUB " + std::to_string(10000 + 1000 * callable);
            case 5:
                return below(6) == 0 ? "RESTORE" : log();
            default:
                return log();
        }
    }

    std::string statements(int callable) {
        std::string joined = statement(callable);
        for (std::uint32_t i = below(3); i != 0; --i)
            joined += ":" + statement(callable);
        return joined;
    }

    void loop(int depth, int callable) {
        const std::string name = "I" + std::to_string(++loops_);
        const bool counts = below(2) == 0;
        add(counts ? "FOR " + name + "=1 TO 2:" + statements(callable)
                   : name + "=0:WHILE " + name + "<2:" + name + "=" + name + "+1:" + statements(callable));
        block(depth - 1, callable);
        add(statements(callable) + (counts ? ":NEXT " + name : ":WEND") + ":" + log());
    }

    void block(int depth, int callable) {
        for (std::uint32_t i = 2 + below(4); i != 0; --i) {
            switch (below(8)) {
                case 0:
                case 1:
                    add("REM OLD");
                    break;
                case 2:
                    add("DATA " + std::to_string(below(100)) + "," + std::to_string(below(100)));
                    break;
                case 3:
                case 4:
                    if (depth > 0) loop(depth, callable);
                    break;
                case 5:
                    add("IF LEN(L$)/2=INT(LEN(L$)/2) THEN " + statements(callable));
                    break;
                default:
                    add(statements(callable));
            }
        }
    }

    // One that fails late. Each remark is deleted by one overlay alone, which may be met again.
    std::string late_overlay() {
        std::string statement =
            below(2) == 0 ? "CHAIN MERGE \"NOSUCH\",,ALL" : "CHAIN MERGE \"OVERLAY\",,ALL";
        auto first = lines_.begin();
        std::advance(first, below(static_cast<std::uint32_t>(lines_.size())));
        if (first->second != "REM OLD") return statement;
        auto last = first;
        while (std::next(last) != lines_.end() && std::next(last)->second == "REM OLD")
            ++last;
        return statement + ",DELETE " + std::to_string(first->first) + "-" + std::to_string(last->first);
    }

    std::string text(const std::string& overlay) {
        std::string all;
        for (const auto& [number, line] : lines_) {
            std::string written = line;
            for (std::size_t at; (at = written.find(overlay_mark)) != std::string::npos;)
                written.replace(at, 1, overlay.empty() ? late_overlay() : overlay);
            all += std::to_string(number) + " " + written + "\r\n";
        }
        return all;
    }

    std::mt19937 random_;
    std::map<std::uint32_t, std::string> lines_;
    std::uint32_t number_ = 10;
    int logged_ = 0;
    int loops_ = 0;
};

std::string logged() {
    constexpr char name[name_capacity] = "L$";
    const VariableEntry* entry = find_variable(name, false);
    if (entry == nullptr) return "";
    const Value value = load({const_cast<std::uint8_t*>(entry->storage), entry->type});
    return {reinterpret_cast<const char*>(value.bytes), value.length};
}

TEST(FailingOverlay, GoesOnAsIfNothingHadBeenChanged) {
    const char* setting = std::getenv("KORVANE_OVERLAY_PROGRAMS");
    const int programs = setting == nullptr ? 25 : std::atoi(setting);
    LinkedSession session(640, 480);
    for (int seed = 1; seed <= programs; ++seed) {
        OverlayProgram program(static_cast<std::uint32_t>(seed));
        const auto run = [&](const std::string& text) {
            session.write_file("P.BAS", text);
            EXPECT_TRUE(session.type("LOAD \"P\"") && session.type("RUN")) << session.problem() << text;
            return logged();
        };
        const std::string expected = run(program.unchanged());
        ASSERT_NE(expected, "") << seed;
        session.write_file("OVERLAY", program.overlay());
        const std::string changed = program.changed();
        ASSERT_EQ(run(changed), expected) << "seed " << seed << "\n" << changed;
    }
    EXPECT_EQ(session.problem(), "");
}

}  // namespace
}  // namespace korvane::test
