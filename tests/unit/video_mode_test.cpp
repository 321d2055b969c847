#include "screen/video_mode.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "memory_screen.h"
#include "program/errors.h"
#include "screen/colour.h"

namespace korvane {
namespace {

using test::MemoryScreen;

// A firmware with a graphics output of three modes, which writes down what it is asked.
struct FakeFirmware {
    uefi::BootServices boot{};
    uefi::GraphicsOutputProtocol graphics_output{};
    uefi::GraphicsOutputMode mode{};
    uefi::GraphicsOutputModeInformation current{};
    uefi::CpuArchProtocol cpu{};

    bool has_graphics_output = true;
    bool has_cpu = true;
    std::uint32_t failing_query = 99;  // number of the mode whose query fails, with its record left behind
    std::uint32_t empty_query = 99;    // number of the mode whose query succeeds, without a record
    bool set_mode_fails = false;
    std::vector<std::uint32_t> queried;
    int queries_not_freed = 0;
    std::vector<std::uint32_t> modes_set;
    std::uint64_t attribute_base = 0;
    std::uint64_t attribute_length = 0;
    std::uint64_t attributes = 0;
    std::vector<std::uint32_t> pixels;
    std::vector<std::vector<std::uint32_t>> pages;
};

FakeFirmware* fake;

constexpr uefi::GraphicsOutputModeInformation mode_information(std::uint32_t width, std::uint32_t height,
                                                               std::uint32_t pitch) {
    uefi::GraphicsOutputModeInformation info{};
    info.HorizontalResolution = width;
    info.VerticalResolution = height;
    info.PixelsPerScanLine = pitch;
    info.PixelFormat = uefi::PixelFormat::PixelBlueGreenRedReserved8BitPerColor;
    return info;
}

constexpr uefi::GraphicsOutputModeInformation modes[] = {
    mode_information(160, 96, 160),
    mode_information(80, 64, 100),
    mode_information(80, 64, 128),
};

void enter_mode(std::uint32_t number) {
    fake->current = modes[number];
    fake->pixels.assign(std::uint64_t{fake->current.PixelsPerScanLine} * fake->current.VerticalResolution,
                        0x555555);
    fake->mode.Mode = number;
    fake->mode.FrameBufferBase = reinterpret_cast<std::uint64_t>(fake->pixels.data());
    fake->mode.FrameBufferSize = fake->pixels.size() * 4;
}

uefi::Status EFIAPI query_mode(uefi::GraphicsOutputProtocol*, std::uint32_t number, std::uint64_t* size,
                               uefi::GraphicsOutputModeInformation** info) {
    fake->queried.push_back(number);
    static uefi::GraphicsOutputModeInformation left_behind;
    if (number == fake->failing_query) {
        left_behind = modes[number];
        *info = &left_behind;
        return uefi::device_error;
    }
    if (number == fake->empty_query) return uefi::success;
    *size = sizeof **info;
    *info = static_cast<uefi::GraphicsOutputModeInformation*>(std::malloc(sizeof **info));
    **info = modes[number];
    ++fake->queries_not_freed;
    return uefi::success;
}

uefi::Status EFIAPI set_mode(uefi::GraphicsOutputProtocol*, std::uint32_t number) {
    fake->modes_set.push_back(number);
    if (fake->set_mode_fails) return uefi::device_error;
    enter_mode(number);
    return uefi::success;
}

uefi::Status EFIAPI set_memory_attributes(uefi::CpuArchProtocol*, uefi::PhysicalAddress base,
                                          std::uint64_t length, std::uint64_t attributes) {
    fake->attribute_base = base;
    fake->attribute_length = length;
    fake->attributes = attributes;
    return uefi::unsupported;  // which nobody minds
}

uefi::Status EFIAPI free_pool(void* buffer) {
    std::free(buffer);
    --fake->queries_not_freed;
    return uefi::success;
}

uefi::Status EFIAPI allocate_pages(uefi::AllocateType, uefi::MemoryType, std::uint64_t count,
                                   uefi::PhysicalAddress* memory) {
    fake->pages.emplace_back(count * 1024);
    *memory = reinterpret_cast<uefi::PhysicalAddress>(fake->pages.back().data());
    return uefi::success;
}

uefi::Status EFIAPI locate_protocol(const uefi::Guid* protocol, void*, void** interface) {
    if (*protocol == uefi::graphics_output_guid && fake->has_graphics_output) {
        *interface = &fake->graphics_output;
        return uefi::success;
    }
    if (*protocol == uefi::cpu_arch_guid && fake->has_cpu) {
        *interface = &fake->cpu;
        return uefi::success;
    }
    return uefi::not_found;
}

class VideoMode : public ::testing::Test {
  protected:
    // The console starts on some screen of its own, so that messages have a place.
    VideoMode() : console_screen_(80, 64) {
        fake = &fake_;
        fake_.boot.LocateProtocol = locate_protocol;
        fake_.boot.AllocatePages = allocate_pages;
        fake_.boot.FreePool = free_pool;
        fake_.graphics_output.QueryMode = query_mode;
        fake_.graphics_output.SetMode = set_mode;
        fake_.graphics_output.Mode = &fake_.mode;
        fake_.mode.MaxMode = 3;
        fake_.mode.Info = &fake_.current;
        fake_.cpu.SetMemoryAttributes = set_memory_attributes;
        firmware.boot = &fake_.boot;
        enter_mode(0);
        errors.pending = false;
    }
    ~VideoMode() override {
        errors.pending = false;
        video = Video{};
    }

    FakeFirmware fake_;
    MemoryScreen console_screen_;
};

TEST_F(VideoMode, StartKeepsTheCurrentModeAndClearsItToBlack) {
    ASSERT_TRUE(video_start());
    EXPECT_TRUE(fake_.modes_set.empty());
    EXPECT_EQ(screen.framebuffer, fake_.pixels.data());
    EXPECT_EQ(screen.width, 160u);
    EXPECT_EQ(screen.height, 96u);
    EXPECT_EQ(screen.pitch, 160u);
    for (const std::uint32_t pixel : fake_.pixels)
        ASSERT_EQ(pixel, 0u);
}

TEST_F(VideoMode, StartWithoutGraphicsOutputChangesNothing) {
    fake_.has_graphics_output = false;
    const std::uint32_t* const before = screen.framebuffer;
    EXPECT_FALSE(video_start());
    EXPECT_EQ(screen.framebuffer, before);
}

TEST_F(VideoMode, FramebufferIsMadeWriteCombiningInWholePages) {
    ASSERT_TRUE(video_start());
    EXPECT_EQ(fake_.attribute_base, fake_.mode.FrameBufferBase);
    EXPECT_EQ(fake_.attribute_length, 61440u);  // 160 * 96 * 4, fifteen pages
    EXPECT_EQ(fake_.attributes, 2u);
    con_set_mode(80, 64);
    EXPECT_EQ(fake_.attribute_base, fake_.mode.FrameBufferBase);
    EXPECT_EQ(fake_.attribute_length, 28672u);  // 100 * 64 * 4 = 25600, rounded up
}

TEST_F(VideoMode, WithoutTheCpuProtocolStartSucceeds) {
    fake_.has_cpu = false;
    EXPECT_TRUE(video_start());
    EXPECT_EQ(fake_.attribute_length, 0u);
}

TEST_F(VideoMode, FirstModeOfTheResolutionIsSet) {
    ASSERT_TRUE(video_start());
    EXPECT_TRUE(con_set_mode(80, 64));
    EXPECT_EQ(fake_.queried, (std::vector<std::uint32_t>{0, 1}));
    EXPECT_EQ(fake_.modes_set, (std::vector<std::uint32_t>{1}));
    EXPECT_EQ(fake_.queries_not_freed, 0);
    EXPECT_EQ(screen.pitch, 100u);
}

TEST_F(VideoMode, ModeWhoseQueryFailsIsSkipped) {
    ASSERT_TRUE(video_start());
    fake_.failing_query = 1;
    con_set_mode(80, 64);
    EXPECT_EQ(fake_.modes_set, (std::vector<std::uint32_t>{2}));
    EXPECT_EQ(screen.pitch, 128u);
    EXPECT_EQ(fake_.queries_not_freed, 0);
}

TEST_F(VideoMode, ModeThatIsNotToldIsSkipped) {
    ASSERT_TRUE(video_start());
    fake_.empty_query = 1;
    con_set_mode(80, 64);
    EXPECT_EQ(fake_.modes_set, (std::vector<std::uint32_t>{2}));
    EXPECT_EQ(fake_.queries_not_freed, 0);
}

TEST_F(VideoMode, UnknownResolutionIsAnErrorAndSetsNothing) {
    ASSERT_TRUE(video_start());
    EXPECT_FALSE(con_set_mode(80, 65));
    EXPECT_TRUE(fake_.modes_set.empty());
    EXPECT_EQ(fake_.queried.size(), 3u);
    EXPECT_EQ(screen.width, 160u);
}

TEST_F(VideoMode, FailedModeChangeLeavesTheGeometry) {
    ASSERT_TRUE(video_start());
    fake_.set_mode_fails = true;
    console.view_print_active = true;
    EXPECT_FALSE(con_set_mode(80, 64));
    EXPECT_EQ(screen.width, 160u);
    EXPECT_EQ(screen.framebuffer, fake_.pixels.data());
    EXPECT_TRUE(console.view_print_active);
}

TEST_F(VideoMode, ModeChangeEndsWhatConfinesOutputButKeepsNumberedWindows) {
    ASSERT_TRUE(video_start());
    console.view_print_active = true;
    console.text_window_active = true;
    console.background = 0x000040;
    graphics.viewport_active = true;
    graphics.logical_active = true;
    text_windows.windows[3].defined = 1;
    text_windows.windows[3].right = 19;
    con_set_mode(80, 64);
    EXPECT_FALSE(console.view_print_active);
    EXPECT_FALSE(console.text_window_active);
    EXPECT_FALSE(graphics.viewport_active);
    EXPECT_FALSE(graphics.logical_active);
    EXPECT_EQ(graphics.last_point.x, 40);
    EXPECT_EQ(graphics.last_point.y, 32);
    EXPECT_EQ(text_windows.windows[3].defined, 1u);
    EXPECT_EQ(text_windows.windows[3].right, 19u);
    // The visible part has the background, the unseen end of the scan lines is black.
    EXPECT_EQ(fake_.pixels[79], 0x000040u);
    EXPECT_EQ(fake_.pixels[80], 0u);
    EXPECT_EQ(fake_.pixels[63 * 100 + 79], 0x000040u);
}

TEST(Colour, ValuesUpTo15ArePaletteEntriesHigherOnesColours) {
    EXPECT_EQ(colour_from_value(0), 0x000000u);
    EXPECT_EQ(colour_from_value(6), 0xAA5500u);
    EXPECT_EQ(colour_from_value(15), 0xFFFFFFu);
    EXPECT_EQ(colour_from_value(16), 0x000010u);
    EXPECT_EQ(colour_from_value(0x7FFFFFFFFF123456), 0x123456u);
    EXPECT_EQ(colour_from_triple(1, 2, 255), 0x0102FFu);
}

}  // namespace
}  // namespace korvane
