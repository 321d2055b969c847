// After any sequence of statements both pixel buffers hold the same picture, nothing was drawn outside the
// screen, and the interpreter goes on. The framebuffer lies between inaccessible pages.
// KORVANE_DRAWING_PROGRAMS sets the number of programs; a failure names the seed, with which the program can
// be had again.
#include "random_drawing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "linked_session.h"
#include "screen/framebuffer.h"
#include "values/variables.h"

namespace korvane::test {
namespace {

// What the program left in DONE.
double variable_done() {
    constexpr char name[name_capacity] = "DONE";
    VariableEntry* entry = find_variable(name, false);
    return entry == nullptr ? -1 : load({entry->storage, entry->type}).real;
}

// The words of the framebuffer that are not as they must be: different from the back buffer's, or beyond the
// right edge and not black. A numbered window kept from a larger mode is still drawn at its old cells, which
// may lie in that unseen end of the scan lines.
std::uint64_t wrong_words(const host::Display& display, bool uses_windows) {
    const std::span<const std::uint32_t> pixels = display.pixels();
    std::uint64_t wrong = 0;
    for (std::uint64_t i = 0; i < pixels.size(); ++i) {
        const bool may_be_drawn = i % display.pitch() < display.width() || uses_windows;
        if (pixels[i] != screen.back_buffer[i] || (!may_be_drawn && pixels[i] != 0)) ++wrong;
    }
    return wrong;
}

TEST(RandomDrawing, BothBuffersHoldTheSamePicture) {
    const char* setting = std::getenv("KORVANE_DRAWING_PROGRAMS");
    const int programs = setting == nullptr ? 60 : std::atoi(setting);
    LinkedSession session(640, 480);
    for (int seed = 1; seed <= programs; ++seed) {
        const std::string program = RandomDrawing(static_cast<std::uint32_t>(seed)).program(40, seed);
        session.write_file("P.BAS", program);
        ASSERT_TRUE(session.type("LOAD \"P\"")) << "seed " << seed << "\n" << session.problem();
        ASSERT_TRUE(session.type("RUN")) << "seed " << seed << "\n" << session.problem() << program;
        ASSERT_EQ(variable_done(), seed) << program;
        ASSERT_NE(screen.back_buffer, screen.framebuffer);
        const bool uses_windows = program.find('@') != std::string::npos;
        ASSERT_EQ(wrong_words(*session.machine().firmware().display(), uses_windows), 0U)
            << "seed " << seed << "\n"
            << program;
    }
    EXPECT_EQ(session.problem(), "");
}

}  // namespace
}  // namespace korvane::test
