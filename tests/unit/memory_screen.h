// A screen in ordinary memory, for tests of what draws: a framebuffer, and a firmware that has pages to give.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/firmware.h"
#include "screen/console.h"
#include "screen/graphics.h"
#include "screen/text_windows.h"

namespace korvane::test {

class MemoryScreen {
  public:
    // A mode of `width` by `height` pixels whose scan lines have `pitch` of them, with the given number of
    // pixels of memory behind the framebuffer (0: exactly pitch * height).
    MemoryScreen(std::uint32_t width, std::uint32_t height, std::uint32_t pitch = 0,
                 std::uint64_t memory = 0) {
        pages_available = true;
        boot_services_.AllocatePages = allocate_pages;
        firmware.boot = &boot_services_;
        screen = Screen{};
        set_mode(width, height, pitch, memory);
        gfx_start();
        initialize_text_windows();
        con_reset();
    }
    ~MemoryScreen() {
        screen = Screen{};
        firmware.boot = nullptr;
        pages().clear();
    }
    MemoryScreen(const MemoryScreen&) = delete;
    MemoryScreen& operator=(const MemoryScreen&) = delete;

    // Changes to another framebuffer, as a mode change does.
    void set_mode(std::uint32_t width, std::uint32_t height, std::uint32_t pitch = 0,
                  std::uint64_t memory = 0) {
        if (pitch == 0) pitch = width;
        if (memory == 0) memory = std::uint64_t{pitch} * height;
        // Words behind the framebuffer's memory tell whether something was stored there.
        framebuffer_.assign(memory + guard_pixels, guard);
        take_framebuffer(reinterpret_cast<std::uint64_t>(framebuffer_.data()), memory * 4, width, height,
                         pitch);
        con_clear_black();
    }

    std::uint32_t front(std::uint32_t x, std::uint32_t y) const { return framebuffer_[pixel_index(x, y)]; }
    std::uint32_t back(std::uint32_t x, std::uint32_t y) const {
        return screen.back_buffer[pixel_index(x, y)];
    }

    // True when the two buffers agree in every word of the framebuffer's memory that the back buffer has too.
    bool buffers_agree() const {
        for (std::uint64_t i = 0; i < screen.addressable; ++i)
            if (framebuffer_[i] != screen.back_buffer[i]) return false;
        return true;
    }

    // True when nothing was stored behind the framebuffer's memory.
    bool guard_is_intact() const {
        for (std::uint64_t i = screen.framebuffer_size / 4; i < framebuffer_.size(); ++i)
            if (framebuffer_[i] != guard) return false;
        return true;
    }

    static inline bool pages_available = true;

  private:
    static constexpr std::uint32_t guard = 0xDEADBEEF;
    static constexpr std::uint64_t guard_pixels = 4096;

    static std::vector<std::unique_ptr<std::uint8_t[]>>& pages() {
        static std::vector<std::unique_ptr<std::uint8_t[]>> allocated;
        return allocated;
    }

    static uefi::Status EFIAPI allocate_pages(uefi::AllocateType, uefi::MemoryType, std::uint64_t count,
                                              uefi::PhysicalAddress* memory) {
        if (!pages_available || count == 0) return uefi::out_of_resources;
        pages().push_back(std::make_unique<std::uint8_t[]>(count * uefi::page_size));
        *memory = reinterpret_cast<uefi::PhysicalAddress>(pages().back().get());
        return uefi::success;
    }

    uefi::BootServices boot_services_{};
    std::vector<std::uint32_t> framebuffer_;
};

}  // namespace korvane::test
