#include "screen/pixel_order.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

#include "platform/firmware.h"

namespace korvane {
namespace {

// A mode of four pixels, whose framebuffer a test can look at; pages come from the host.
struct SmallMode {
    uefi::BootServices boot{};
    uefi::GraphicsOutputModeInformation info{};
    uefi::GraphicsOutputMode mode{};
    std::array<std::uint32_t, 4> shown{};

    explicit SmallMode(uefi::PixelFormat format, uefi::PixelBitmask masks = {}) {
        boot.AllocatePages = [](uefi::AllocateType, uefi::MemoryType, std::uint64_t pages,
                                uefi::PhysicalAddress* memory) EFIAPI -> uefi::Status {
            const std::size_t bytes = pages * uefi::page_size;
            *memory = reinterpret_cast<std::uint64_t>(std::aligned_alloc(uefi::page_size, bytes));
            return uefi::success;
        };
        firmware.boot = &boot;
        pixel_order = {};
        info.HorizontalResolution = 2;
        info.VerticalResolution = 2;
        info.PixelsPerScanLine = 2;
        info.PixelFormat = format;
        info.PixelInformation = masks;
        mode.Info = &info;
        mode.FrameBufferBase = reinterpret_cast<std::uint64_t>(shown.data());
        mode.FrameBufferSize = sizeof shown;
    }
    ~SmallMode() {
        std::free(reinterpret_cast<void*>(pixel_order.memory));
        pixel_order = {};
        firmware = {};
    }
    SmallMode(const SmallMode&) = delete;
    SmallMode& operator=(const SmallMode&) = delete;

    // Whether what is drawn goes straight into the framebuffer.
    bool is_drawn_into() {
        const DrawnFramebuffer drawn = choose_drawn_framebuffer(mode);
        return drawn.base == mode.FrameBufferBase && drawn.size == mode.FrameBufferSize &&
               pixel_order.drawn == nullptr;
    }

    // What is shown of the colour 0x123456 in the first pixel and 0xFF8001 in the last.
    std::array<std::uint32_t, 2> pixels() {
        const DrawnFramebuffer drawn = choose_drawn_framebuffer(mode);
        EXPECT_NE(drawn.base, mode.FrameBufferBase);
        EXPECT_EQ(drawn.size, sizeof shown);
        auto* const memory = reinterpret_cast<std::uint32_t*>(drawn.base);
        memory[0] = 0x123456;
        memory[3] = 0xFF8001;
        show_drawn_pixels();
        return {shown[0], shown[3]};
    }
};

using Pixels = std::array<std::uint32_t, 2>;
constexpr uefi::PixelFormat by_masks = uefi::PixelFormat::PixelBitMask;

TEST(PixelOrder, TheConsolesOwnNeedsNoCopy) {
    EXPECT_TRUE(SmallMode(uefi::PixelFormat::PixelBlueGreenRedReserved8BitPerColor).is_drawn_into());
    EXPECT_TRUE(SmallMode(by_masks, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}).is_drawn_into());
}

TEST(PixelOrder, OthersAreShownInTheirOrder) {
    EXPECT_EQ(SmallMode(uefi::PixelFormat::PixelRedGreenBlueReserved8BitPerColor).pixels(),
              (Pixels{0x563412, 0x0180FF}));
    EXPECT_EQ(SmallMode(by_masks, {0xFF, 0xFF00, 0xFF0000, 0}).pixels(), (Pixels{0x563412, 0x0180FF}));
    EXPECT_EQ(SmallMode(by_masks, {0xFF000000, 0xFF0000, 0xFF00, 0xFF}).pixels(),
              (Pixels{0x12345600, 0xFF800100}));
    EXPECT_EQ(SmallMode(by_masks, {0xFF00, 0xFF0000, 0xFF000000, 0}).pixels(),
              (Pixels{0x56341200, 0x0180FF00}));
    // Two of the three where the console has them.
    EXPECT_EQ(SmallMode(by_masks, {0xFF0000, 0xFF00, 0xFF000000, 0}).pixels(),
              (Pixels{0x56123400, 0x01FF8000}));
    EXPECT_EQ(SmallMode(by_masks, {0xFF0000, 0xFF000000, 0xFF, 0}).pixels(),
              (Pixels{0x34120056, 0x80FF0001}));
    EXPECT_EQ(SmallMode(by_masks, {0xFF000000, 0xFF00, 0xFF, 0}).pixels(), (Pixels{0x12003456, 0xFF008001}));
}

TEST(PixelOrder, ColoursThatAreNoEightBitsCannotBePutInOrder) {
    EXPECT_TRUE(SmallMode(by_masks, {0x7FE00000, 0x1FF800, 0x7FF, 0}).is_drawn_into());
    EXPECT_TRUE(SmallMode(by_masks, {0, 0xFF00, 0xFF, 0}).is_drawn_into());
    EXPECT_TRUE(SmallMode(by_masks, {0xFF, 0, 0xFF0000, 0}).is_drawn_into());
    EXPECT_TRUE(SmallMode(by_masks, {0xFF, 0xFF00, 0, 0}).is_drawn_into());
    EXPECT_TRUE(SmallMode(by_masks, {0xFF, 0xFF00, 0x7F0000, 0}).is_drawn_into());
    EXPECT_TRUE(SmallMode(uefi::PixelFormat::PixelBltOnly, {0xFF, 0xFF00, 0xFF0000, 0}).is_drawn_into());
}

TEST(PixelOrder, TheFramebuffersEndBoundsWhatIsCopied) {
    SmallMode small(uefi::PixelFormat::PixelRedGreenBlueReserved8BitPerColor);
    small.mode.FrameBufferSize = 3 * sizeof(std::uint32_t);
    const DrawnFramebuffer drawn = choose_drawn_framebuffer(small.mode);
    EXPECT_EQ(drawn.size, 3 * sizeof(std::uint32_t));
    for (int i = 0; i < 4; ++i)
        reinterpret_cast<std::uint32_t*>(drawn.base)[i] = 0x010203;
    show_drawn_pixels();
    EXPECT_EQ(small.shown, (std::array<std::uint32_t, 4>{0x030201, 0x030201, 0x030201, 0}));
}

}  // namespace
}  // namespace korvane
