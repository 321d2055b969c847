#include "plain_buffers.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace korvane::bench {

namespace {

constexpr std::uint32_t glyph_height = 16;

// The image tells nobody where its back buffer is; but that begins on a page, and holds what is drawn.
std::uint32_t* find_back_buffer(Session& session) {
    constexpr std::uint32_t colours[] = {0x9A31C5, 0x07B2E8, 0x5CD463, 0xE81F76};
    session.enter("CLS");
    for (int x = 0; x < 4; ++x)
        session.enter("PSET (" + std::to_string(x) + ", 0), " + std::to_string(colours[x]));
    for (const host::MemoryRegion& region : session.machine().firmware().config().memory) {
        if (region.type != uefi::MemoryType::EfiConventionalMemory) continue;
        for (std::uint64_t page = 0; page < region.pages; ++page) {
            auto* const words = reinterpret_cast<std::uint32_t*>(region.base + page * uefi::page_size);
            if (std::equal(std::begin(colours), std::end(colours), words)) return words;
        }
    }
    give_up("there is no back buffer");
}

void fill_words(std::uint32_t* words, std::size_t count, std::uint32_t colour) {
    static_assert(sizeof(wchar_t) == sizeof(std::uint32_t));
    std::wmemset(reinterpret_cast<wchar_t*>(words), static_cast<wchar_t>(colour), count);
}

void copy_words(std::uint32_t* to, const std::uint32_t* from, std::size_t count) {
    std::memcpy(to, from, count * sizeof *to);
}

// Calls work(place in the buffer, words) for the rows of the area; once when they follow each other.
template <typename Work>
void for_rows(const Area& area, std::uint32_t pitch, Work work) {
    const std::uint64_t first = std::uint64_t{area.y} * pitch + area.x;
    if (area.columns == pitch) {
        work(first, std::size_t{pitch} * area.rows);
        return;
    }
    for (std::uint32_t row = 0; row < area.rows; ++row)
        work(first + std::uint64_t{row} * pitch, std::size_t{area.columns});
}

}  // namespace

PlainBuffers::PlainBuffers(Session& session) : back_(find_back_buffer(session)) {
    host::Display& display = *session.machine().firmware().display();
    front_ = reinterpret_cast<std::uint32_t*>(display.mapping().bytes().data());
    pitch_ = display.pitch();
    elsewhere_.resize(std::size_t{pitch_} * display.height());
}

void PlainBuffers::fill(const Area& area) {
    colour_ += 0x10;
    for_rows(area, pitch_, [this](std::uint64_t place, std::size_t count) {
        fill_words(back_ + place, count, colour_);
        fill_words(front_ + place, count, colour_);
    });
}

void PlainBuffers::copy_in(const Area& area) {
    for_rows(
        area, pitch_,
        [this](std::uint64_t place, std::size_t count) {
            copy_words(back_ + place, elsewhere_.data() + place, count);
            copy_words(front_ + place, elsewhere_.data() + place, count);
        });
}

void PlainBuffers::copy_to_front(const Area& area) {
    for_rows(
        area, pitch_,
        [this](std::uint64_t place, std::size_t count) {
            copy_words(front_ + place, elsewhere_.data() + place, count);
        });
}

void PlainBuffers::copy_out(const Area& area) {
    for_rows(
        area, pitch_,
        [this](std::uint64_t place, std::size_t count) {
            copy_words(elsewhere_.data() + place, back_ + place, count);
        });
}

void PlainBuffers::scroll(const Area& area) {
    const Area moved{area.x, area.y, area.columns, area.rows - glyph_height};
    const std::uint64_t distance = std::uint64_t{glyph_height} * pitch_;
    for_rows(moved, pitch_, [this, distance](std::uint64_t place, std::size_t count) {
        std::memmove(back_ + place, back_ + place + distance, count * sizeof *back_);
        copy_words(front_ + place, back_ + place, count);
    });
    fill({area.x, area.y + moved.rows, area.columns, glyph_height});
}

void PlainBuffers::store(const std::vector<std::uint64_t>& places) {
    for (const std::uint64_t place : places) {
        back_[place] = colour_;
        front_[place] = colour_;
    }
}

}  // namespace korvane::bench
