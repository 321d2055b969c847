// screen_speed IMAGE: how long screen statements of the image take at 1920x1080 on the hosted firmware,
// beside plain fills and copies of the same bytes to two buffers, measured in the same process. Prints a
// table of medians.
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "machine.h"

namespace korvane::host {
namespace {

constexpr std::uint32_t width = 1920;
constexpr std::uint32_t height = 1080;
constexpr int rounds = 5;

struct Subject {
    const char* name;
    const char* preparation;  // BASIC, once
    const char* statement;    // BASIC, repeated
    int repetitions;
    std::function<void()>
        plain;  // the same bytes, by the C library; empty when there is nothing to compare with
};

// Two buffers as the interpreter has them: one in ordinary memory, one for the display.
struct PlainBuffers {
    std::vector<std::uint32_t> back = std::vector<std::uint32_t>(std::size_t{width} * height);
    std::vector<std::uint32_t> front = back;
    std::vector<std::uint32_t> source = back;

    void fill(std::size_t pixels) {
        // A colour whose bytes differ, as a fill of words.
        std::fill_n(back.data(), pixels, 0x123456U);
        std::fill_n(front.data(), pixels, 0x123456U);
    }
    void copy(std::size_t pixels) {
        std::memcpy(back.data(), source.data(), pixels * 4);
        std::memcpy(front.data(), source.data(), pixels * 4);
    }
    void scroll() {
        const std::size_t rows = height / 16 - 1;
        const std::size_t pixels = rows * 16 * width;
        std::memmove(back.data(), back.data() + std::size_t{16} * width, pixels * 4);
        std::memcpy(front.data(), back.data(), pixels * 4);
        std::fill_n(back.data() + pixels, std::size_t{16} * width, 0U);
        std::fill_n(front.data() + pixels, std::size_t{16} * width, 0U);
    }
};

double seconds_of(const std::function<void()>& work, int repetitions) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < repetitions; ++i)
        work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / repetitions;
}

double median(std::vector<double> numbers) {
    std::ranges::sort(numbers);
    return numbers[numbers.size() / 2];
}

std::string measuring_program(const std::vector<Subject>& subjects) {
    std::ostringstream text;
    text << "10 OPEN \"TIMES.TXT\" FOR OUTPUT AS #1\r\n";
    int line = 20;
    for (const Subject& subject : subjects) {
        text << line << " CLS: " << subject.preparation << "\r\n"
             << line + 1 << " T# = TIMER: FOR K = 1 TO " << subject.repetitions << "\r\n"
             << line + 2 << " " << subject.statement << "\r\n"
             << line + 3 << " NEXT K: PRINT #1, (TIMER - T#) / " << subject.repetitions << "\r\n";
        line += 10;
    }
    text << line << " CLOSE #1: A$ = INPUT$(1)\r\n";
    return text.str();
}

// The seconds that each statement took, from one run of the image.
std::vector<double> run_image(const std::filesystem::path& image, const std::vector<Subject>& subjects) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("korvane-speed-" + std::to_string(std::rand()));
    std::filesystem::create_directory(folder);
    std::ofstream(folder / "STARTUP.BAS", std::ios::binary) << measuring_program(subjects);
    Config config;
    config.width = width;
    config.height = height;
    config.volumes = {{.folder = folder}};
    Machine machine(config, ImageSource::file(image));
    std::vector<double> times;
    if (machine.run() == Stop::waits_for_key) {
        std::ifstream file(folder / "TIMES.TXT");
        for (std::string number; file >> number;) {
            std::ranges::replace(number, 'D', 'E');  // the exponent letter of a DOUBLE
            times.push_back(std::stod(number));
        }
    }
    std::filesystem::remove_all(folder);
    return times;
}

std::vector<Subject> make_subjects(PlainBuffers& buffers) {
    constexpr std::size_t all = std::size_t{width} * height;
    const auto fill = [&buffers] { buffers.fill(all); };
    return {
        {"LINE ... BF, whole screen", "C& = 0", "C& = C& + 16: LINE (0,0)-(1919,1079), C&, BF", 50, fill},
        {"CLS", "C& = 0", "CLS", 50, fill},
        {"PUT ... PSET, 1000x1000", "DIM A&(1000001): GET (0,0)-(999,999), A&", "PUT (500,50), A&, PSET", 50,
         [&buffers] { buffers.copy(1000 * 1000); }},
        {"PUT ... XOR, 1000x1000", "REM", "PUT (500,50), A&", 50, [&buffers] { buffers.copy(1000 * 1000); }},
        {"scrolling one row", "LOCATE 67, 1", "PRINT", 200, [&buffers] { buffers.scroll(); }},
        {"PAINT, empty screen", "C& = 0", "C& = C& + 16: PAINT (960,540), C&", 20, fill},
        {"LINE across, 1920 pixels", "REM", "LINE (0,0)-(1919,1079)", 2000, {}},
        {"LINE 100 times too long", "REM", "LINE (-96000,-54000)-(96000,54000)", 2000, {}},
        {"CIRCLE, radius 500", "REM", "CIRCLE (960,540), 500", 2000, {}},
        {"CIRCLE, radius 1000000", "REM", "CIRCLE (960,1000540), 1000000", 2000, {}},
    };
}

int measure(const std::filesystem::path& image) {
    PlainBuffers buffers;
    const std::vector<Subject> subjects = make_subjects(buffers);
    std::vector<std::vector<double>> statement_times(subjects.size());
    std::vector<std::vector<double>> plain_times(subjects.size());
    for (int round = 0; round < rounds; ++round) {
        const std::vector<double> times = run_image(image, subjects);
        if (times.size() != subjects.size()) {
            std::cerr << "screen_speed: the program did not come to its end\n";
            return EXIT_FAILURE;
        }
        for (std::size_t i = 0; i < subjects.size(); ++i) {
            statement_times[i].push_back(times[i]);
            if (subjects[i].plain)
                plain_times[i].push_back(seconds_of(subjects[i].plain, subjects[i].repetitions));
        }
    }
    std::cout << std::left << std::setw(28) << "statement" << std::right << std::setw(12) << "us"
              << std::setw(12) << "plain us" << std::setw(9) << "ratio" << '\n'
              << std::fixed;
    for (std::size_t i = 0; i < subjects.size(); ++i) {
        const double statement = median(statement_times[i]) * 1e6;
        std::cout << std::left << std::setw(28) << subjects[i].name << std::right << std::setprecision(1)
                  << std::setw(12) << statement;
        if (subjects[i].plain) {
            const double plain = median(plain_times[i]) * 1e6;
            std::cout << std::setw(12) << plain << std::setprecision(2) << std::setw(9) << statement / plain;
        }
        std::cout << '\n';
    }
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace korvane::host

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "usage: screen_speed IMAGE\n";
        return 2;
    }
    return korvane::host::measure(arguments[1]);
}
