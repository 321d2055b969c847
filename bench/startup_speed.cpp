// startup_speed [--rounds N] IMAGE: the time from the image's entry point until it first looks for a key at
// its prompt, on a screen of 1280x1024 of the hosted firmware, beside the C library's fill of the same two
// buffers. The time-stamp counter's calibration is left out, for the firmware sleeps while it stalls.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <iostream>
#include <vector>

#include "rounds.h"
#include "screen_cells.h"
#include "session.h"

namespace korvane::bench {
namespace {

constexpr std::uint32_t width = 1280;
constexpr std::uint32_t height = 1024;

bool shows_prompt(const host::Display& display) {
    const std::vector<std::string> rows =
        host::read_rows({display.pixels().data(), display.width(), display.height(), display.pitch()});
    return std::ranges::find(rows, "Ready.") != rows.end();
}

double seconds_to_prompt(const std::filesystem::path& image) {
    const test::TemporaryFolder folder;
    host::Config config;
    config.width = width;
    config.height = height;
    config.volumes = {{.folder = folder.path()}};
    host::Machine machine(config, host::ImageSource::file(image));
    machine.stop_at_polls(1);
    const double start = processor_seconds();
    const host::Stop stop = machine.run();
    const double seconds = processor_seconds() - start;
    if (stop != host::Stop::polls_key || !shows_prompt(*machine.firmware().display()))
        give_up("the image did not come to its prompt");
    return seconds;
}

// Fresh memory, as the image's buffers are.
double seconds_to_fill() {
    std::vector<wchar_t> back;
    std::vector<wchar_t> front;
    return seconds_each(1, [&] {
        back.resize(std::size_t{width} * height);
        front.resize(std::size_t{width} * height);
    });
}

void measure(const Options& options) {
    const Table table("start", "first fill of two buffers", milliseconds);
    const Comparison start = take_turns(
        options.rounds, [&] { return seconds_to_prompt(options.image); }, seconds_to_fill);
    table.row("from the entry point to \"Ready.\"", start);
    std::cout << "\nThe goal is 20 ms beyond the calibration.\n";
}

}  // namespace
}  // namespace korvane::bench

int main(int count, char** arguments) {
    korvane::bench::measure(korvane::bench::parse_options(count, arguments));
    return EXIT_SUCCESS;
}
