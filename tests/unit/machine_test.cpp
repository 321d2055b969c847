#include "machine.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "image_loader.h"

namespace korvane::host {
namespace {

// Applications for the machine, linked into this program.

uefi::Status EFIAPI returns(uefi::Handle, uefi::SystemTable*) {
    return 42;
}

uefi::Status EFIAPI exits(uefi::Handle image, uefi::SystemTable* system) {
    system->BootServices->Exit(image, 43, 0, nullptr);
    return 0;
}

uefi::Status EFIAPI never_ends(uefi::Handle, uefi::SystemTable*) {
    for (volatile bool goes_on = true; goes_on;) {
    }
    return 0;
}

// Spins for a key, waits for a second one, and returns the sum of their codes.
uefi::Status EFIAPI adds_keys(uefi::Handle, uefi::SystemTable* system) {
    uefi::InputKey key{};
    while (uefi::is_error(system->ConIn->ReadKeyStroke(system->ConIn, &key))) {
    }
    const uefi::Status first = key.UnicodeChar;
    std::uint64_t index = 0;
    system->BootServices->WaitForEvent(1, &system->ConIn->WaitForKey, &index);
    system->ConIn->ReadKeyStroke(system->ConIn, &key);
    return first + key.UnicodeChar;
}

TEST(MachineTest, RunsUntilTheApplicationReturns) {
    Machine machine(Config{}, {"", returns});
    EXPECT_EQ(machine.run(), Stop::returned);
    EXPECT_EQ(machine.status(), 42U);
}

TEST(MachineTest, ExitEndsTheApplication) {
    Machine machine(Config{}, {"", exits});
    EXPECT_EQ(machine.run(), Stop::returned);
    EXPECT_EQ(machine.status(), 43U);
}

TEST(MachineTest, TellsWhereItStandsWhenItsTimeIsUp) {
    Machine machine(Config{}, {"", never_ends});
    ASSERT_EQ(machine.run(std::chrono::milliseconds(20)), Stop::timed_out);
    const std::string report = machine.fault_report();
    const std::string begin = "the time limit has passed, outside the image at 0x";
    ASSERT_TRUE(report.starts_with(begin)) << report;
    const std::uint64_t place = std::stoull(report.substr(begin.size()), nullptr, 16);
    const auto function = reinterpret_cast<std::uint64_t>(never_ends);
    EXPECT_GE(place, function);
    EXPECT_LT(place, function + 1000);
}

TEST(MachineTest, StopsWhereverAKeyIsWaitedFor) {
    Machine machine(Config{}, {"", adds_keys});
    ASSERT_EQ(machine.run(), Stop::waits_for_key);
    EXPECT_FALSE(machine.waits_in_event());
    machine.firmware().keyboard().press({0, 100});
    ASSERT_EQ(machine.run(), Stop::waits_for_key);
    EXPECT_TRUE(machine.waits_in_event());
    machine.firmware().keyboard().press({0, 23});
    EXPECT_EQ(machine.run(), Stop::returned);
    EXPECT_EQ(machine.status(), 123U);
}

// A PE32+ image of one section, whose code is "mov eax, [address]; ret" with an absolute address that the
// relocations must correct.
class ImageFile {
  public:
    static constexpr std::uint32_t image_size = 0x3000;

    ImageFile() : bytes_(0x600) {
        put<std::uint16_t>(0, 0x5A4D);
        put<std::uint32_t>(0x3C, 0x40);
        put<std::uint32_t>(0x40, 0x4550);
        put<std::uint16_t>(0x44, 0x8664);
        put<std::uint16_t>(0x46, 2);  // sections
        put<std::uint16_t>(0x54, 240);
        put<std::uint16_t>(0x58, 0x20B);
        put<std::uint32_t>(0x58 + 16, 0x1000);       // entry point
        put<std::uint64_t>(0x58 + 24, 0x140000000);  // preferred base
        put<std::uint32_t>(0x58 + 56, image_size);
        put<std::uint32_t>(0x58 + 60, 0x200);  // headers
        put<std::uint16_t>(0x58 + 68, 10);     // UEFI application
        put<std::uint32_t>(0x58 + 108, 16);    // directories
        put<std::uint32_t>(0x58 + 152, 0x2000);
        put<std::uint32_t>(0x58 + 156, 12);
        section(0, 0x1000, 0x200, 0x60000020);
        section(1, 0x2000, 0x400, 0x42000040);
        // movabs eax, [0x140001010]; ret
        const std::uint8_t code[] = {0xA1, 0x10, 0x10, 0x00, 0x40, 0x01, 0x00, 0x00, 0x00, 0xC3};
        std::memcpy(&bytes_[0x200], code, sizeof code);
        put<std::uint32_t>(0x210, 77);
        put<std::uint32_t>(0x400, 0x1000);
        put<std::uint32_t>(0x404, 12);
        put<std::uint16_t>(0x408, 0xA001);
    }

    template <typename Number>
    void put(std::size_t offset, Number value) {
        std::memcpy(&bytes_[offset], &value, sizeof value);
    }
    std::vector<std::uint8_t>& bytes() { return bytes_; }

  private:
    void section(std::size_t number, std::uint32_t address, std::uint32_t offset, std::uint32_t flags) {
        const std::size_t at = 0x148 + number * 40;
        put<std::uint32_t>(at + 8, 0x200);
        put<std::uint32_t>(at + 12, address);
        put<std::uint32_t>(at + 16, 0x200);
        put<std::uint32_t>(at + 20, offset);
        put<std::uint32_t>(at + 36, flags);
    }

    std::vector<std::uint8_t> bytes_;
};

std::string problem_of(const ImageFile& file) {
    ImageFile copy = file;
    std::string problem;
    return load_image(copy.bytes(), image_base, problem) ? "" : problem;
}

// The same of one with another number somewhere.
template <typename Number>
std::string problem_with(std::size_t offset, Number value) {
    ImageFile file;
    file.put(offset, value);
    return problem_of(file);
}

TEST(ImageLoaderTest, PlacesSectionsAndRelocatesThem) {
    ImageFile file;
    std::string problem;
    const auto image = load_image(file.bytes(), image_base, problem);
    ASSERT_TRUE(image.has_value()) << problem;
    EXPECT_EQ(image->entry_point, image_base + 0x1000);
    EXPECT_EQ(image->memory.size(), ImageFile::image_size);
    const auto code = reinterpret_cast<int(EFIAPI*)()>(image->entry_point);
    EXPECT_EQ(code(), 77);
}

TEST(ImageLoaderTest, RefusesWhatIsNoApplication) {
    EXPECT_EQ(problem_of(ImageFile()), "");
    EXPECT_EQ(problem_with<std::uint16_t>(0x44, 0x14C), "not for x86-64");
    EXPECT_EQ(problem_with<std::uint16_t>(0x58 + 68, 3), "not a UEFI application");
    EXPECT_EQ(problem_with<std::uint32_t>(0x3C, 0xFFFFFFF0), "no PE signature");
    EXPECT_EQ(problem_with<std::uint32_t>(0x58 + 16, ImageFile::image_size), "entry point outside the image");
    EXPECT_EQ(problem_with<std::uint32_t>(0x58 + 56, 0xFFFFFFFF), "unreasonable image size");
    std::string problem;
    EXPECT_FALSE(load_image({}, image_base, problem).has_value());
}

TEST(ImageLoaderTest, RefusesSectionsAndRelocationsOutsideTheImage) {
    EXPECT_EQ(problem_with<std::uint32_t>(0x148 + 12, 0xFFFFF000),
              "a section lies outside the file or the image");
    EXPECT_EQ(problem_with<std::uint32_t>(0x148 + 20, 0xFFFFFFFF),
              "a section lies outside the file or the image");
    EXPECT_EQ(problem_with<std::uint32_t>(0x400, 0xFFFFFFFF), "the relocations are damaged");
    EXPECT_EQ(problem_with<std::uint32_t>(0x404, 6), "the relocations are damaged");
    EXPECT_EQ(problem_with<std::uint32_t>(0x58 + 152, 0x2FFF), "the relocations are damaged");
}

TEST(ImageLoaderTest, EveryCutOffFileIsRefusedOrLoaded) {
    ImageFile file;
    const std::vector<std::uint8_t> whole = file.bytes();
    for (std::size_t size = 0; size < whole.size(); size += 7) {
        std::string problem;
        const auto image = load_image(std::span(whole).first(size), image_base, problem);
        EXPECT_TRUE(image.has_value() || !problem.empty()) << size;
    }
}

}  // namespace
}  // namespace korvane::host
