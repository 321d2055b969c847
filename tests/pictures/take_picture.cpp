// take_picture IMAGE PROGRAM.BAS PICTURE.ppm: runs a program on the hosted firmware from a fresh start and
// writes the screen at which it first waits for a key as a PPM file. The clock stands at 10:08:36.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <span>
#include <string>
#include <vector>

#include "machine.h"
#include "temporary_folder.h"

namespace korvane::host {
namespace {

bool write_ppm(const Display& display, const std::filesystem::path& path) {
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << display.width() << ' ' << display.height() << "\n255\n";
    for (std::uint32_t y = 0; y < display.height(); ++y) {
        for (std::uint32_t x = 0; x < display.width(); ++x) {
            const std::uint32_t pixel = display.pixel(x, y);
            file.put(static_cast<char>(pixel >> 16))
                .put(static_cast<char>(pixel >> 8))
                .put(static_cast<char>(pixel));
        }
    }
    file.close();
    return file.good();
}

// Lets the program run until its picture is complete; false when it ends or breaks down before.
bool run_to_picture(Machine& machine) {
    constexpr std::uint64_t interval = 200'000;  // microseconds
    constexpr int unchanged_intervals = 5;
    machine.stop_at_polls(interval);
    std::vector<std::uint32_t> seen;
    for (int unchanged = 0; unchanged < unchanged_intervals;) {
        const Stop stop = machine.run();
        if (stop == Stop::waits_for_key) return true;
        if (stop != Stop::polls_key) return false;
        const std::span<const std::uint32_t> pixels = machine.firmware().display()->pixels();
        unchanged = std::ranges::equal(pixels, seen) ? unchanged + 1 : 0;
        seen.assign(pixels.begin(), pixels.end());
    }
    return true;
}

int take_picture(const std::filesystem::path& image, const std::filesystem::path& program,
                 const std::filesystem::path& picture) {
    const test::TemporaryFolder volume;
    std::filesystem::copy_file(program, volume.path() / "STARTUP.BAS");
    Config config;
    config.width = 640;
    config.height = 480;
    config.volumes = {{.folder = volume.path()}};
    uefi::Time& time = config.time.emplace();
    time.Year = 2024;
    time.Month = 5;
    time.Day = 17;
    time.Hour = 10;
    time.Minute = 8;
    time.Second = 36;
    Machine machine(config, ImageSource::file(image));
    if (!run_to_picture(machine)) {
        std::cerr << "take_picture: the program did not wait for a key. " << machine.fault_report() << '\n';
        return EXIT_FAILURE;
    }
    return write_ppm(*machine.firmware().display(), picture) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace korvane::host

int main(int count, char** arguments) {
    if (count != 4) {
        std::cerr << "usage: take_picture IMAGE PROGRAM.BAS PICTURE.ppm\n";
        return 2;
    }
    return korvane::host::take_picture(arguments[1], arguments[2], arguments[3]);
}
