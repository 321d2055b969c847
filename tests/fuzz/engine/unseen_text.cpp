// The linker leads calls of these functions to the ones below, as in guards.cpp.
#include "unseen_text.h"

#include <cstdint>

#include "screen/noted_cells.h"

namespace korvane::fuzz {
bool text_is_unseen = false;
}  // namespace korvane::fuzz

extern "C" {

#define KORVANE_DRAW(name)                                                                              \
    void __real_##name(std::uint32_t, std::uint32_t, std::uint8_t, std::uint32_t, std::uint32_t);       \
    void __wrap_##name(std::uint32_t across, std::uint32_t down, std::uint8_t code, std::uint32_t text, \
                       std::uint32_t ground) {                                                          \
        if (!korvane::fuzz::text_is_unseen) __real_##name(across, down, code, text, ground);            \
    }
KORVANE_DRAW(_ZN7korvane10draw_glyphEjjhjj)
KORVANE_DRAW(_ZN7korvane9draw_cellEjjhjj)

void __real__ZN7korvane12scroll_cellsERKNS_13CellRectangleEj(const korvane::CellRectangle& area,
                                                             std::uint32_t background);
void __wrap__ZN7korvane12scroll_cellsERKNS_13CellRectangleEj(const korvane::CellRectangle& area,
                                                             std::uint32_t background) {
    if (!korvane::fuzz::text_is_unseen)
        __real__ZN7korvane12scroll_cellsERKNS_13CellRectangleEj(area, background);
}

}  // extern "C"
