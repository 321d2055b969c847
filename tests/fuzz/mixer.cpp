#include "mixer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace korvane::fuzz {

namespace {

constexpr std::size_t longest_run = 16;  // of lines that follow one another in a known input
constexpr std::size_t lines_for_each_change = 12;
constexpr std::size_t most_bytes = 6000;

// What the sizes, counts and offsets in files break on.
constexpr std::uint64_t bounds[] = {0,      1,      2,       0x7F,       0x80,       0xFF,       0x100,
                                    0x7FFF, 0x8000, 0xFFFF,  0x10000,    0x7FFFFFFF, 0x80000000, 0xFFFFFFFF,
                                    511,    512,    1 << 20, ~0ULL >> 1, ~0ULL};

// And what arithmetic does.
constexpr std::string_view numbers[] = {"0",
                                        "-1",
                                        "2",
                                        ".5",
                                        "255",
                                        "256",
                                        "32767",
                                        "32768",
                                        "2147483647&",
                                        "-2147483648&",
                                        "9223372036854775807&&",
                                        "(-9223372036854775807&&-1)",
                                        "4611686018427387904&&",
                                        "1E38",
                                        "3.4E38",
                                        "1D308",
                                        "1D-308",
                                        "&HFFFFFFFFFFFFFFFF"};

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

void Mixer::know(std::string text) {
    if (typed_) {
        std::vector<std::string> lines = split(text, line_end);
        if (lines.empty()) return;
        for (std::size_t i = 0; i < lines.size(); ++i)
            learn_line(random_, lines);
        sessions_.push_back(std::move(lines));
    }
    texts_.push_back(std::move(text));
}

std::string Mixer::mixed_lines(std::size_t count, bool (*is_wanted)(std::string_view line)) {
    std::vector<std::string> lines;
    while (lines.size() < count) {
        const std::vector<std::string>& from = sessions_[below(sessions_.size())];
        const std::size_t first = below(2) == 0 ? 0 : below(from.size());
        const std::size_t end = std::min(from.size(), first + 1 + below(longest_run));
        for (std::size_t i = first; i < end; ++i)
            lines.push_back(from[i]);
    }
    return changed(std::move(lines), is_wanted);
}

std::string Mixer::changed_lines(bool (*is_wanted)(std::string_view line)) {
    return changed(sessions_[below(sessions_.size())], is_wanted);
}

std::string Mixer::changed(std::vector<std::string> lines, bool (*is_wanted)(std::string_view line)) {
    for (std::size_t changes = lines.size() / lines_for_each_change + below(2); changes != 0; --changes)
        if (below(4) == 0)
            change_number(lines[below(lines.size())]);
        else
            change_one(random_, lines);
    std::erase_if(lines, [&](const std::string& line) { return !is_wanted(line); });
    return join(lines, line_end);
}

// Not the line's own number, nor a digit in a name.
void Mixer::change_number(std::string& line) {
    const auto first = std::find_if_not(line.begin(), line.end(), is_digit);
    std::vector<std::size_t> places;
    for (auto at = first; at != line.end(); ++at)
        if (is_digit(*at) && at != line.begin() &&
            std::string_view("=+-*/(<>, ").find(at[-1]) != std::string_view::npos)
            places.push_back(static_cast<std::size_t>(at - line.begin()));
    if (places.empty()) return;
    const std::size_t begin = places[below(places.size())];
    const std::size_t end = line.find_first_not_of("0123456789.", begin);
    line.replace(begin, end == std::string::npos ? end : end - begin, numbers[below(std::size(numbers))]);
}

std::string Mixer::changed_bytes() {
    std::string bytes = texts_[below(texts_.size())];
    for (std::size_t changes = below(4) + 1; changes != 0; --changes)
        change_bytes(bytes);
    return bytes.substr(0, most_bytes);
}

void Mixer::change_bytes(std::string& bytes) {
    const std::size_t at = below(bytes.size() + 1);
    const std::size_t length = std::min(below(16) + 1, bytes.size() - at);
    const std::string& other = texts_[below(texts_.size())];
    switch (below(8)) {
        case 0:
            if (length != 0) bytes[at] = static_cast<char>(bytes[at] ^ 1 << below(8));
            break;
        case 1:
            if (length != 0) bytes[at] = static_cast<char>(below(256));
            break;
        case 2: {
            const std::uint64_t number = bounds[below(std::size(bounds))];
            std::memcpy(bytes.data() + at, &number, std::min(std::size_t{1} << below(4), bytes.size() - at));
            break;
        }
        case 3:
            bytes.erase(at, length);
            break;
        case 4:
            bytes.insert(at, std::string(bytes, at, length));
            break;
        case 5:
            bytes.insert(at, std::string(below(8) + 1, static_cast<char>(below(256))));
            break;
        case 6:
            bytes.resize(at);
            break;
        default: {
            const std::size_t from = below(other.size() + 1);
            bytes.replace(at, length, std::string(other, from, below(64)));
            break;
        }
    }
}

}  // namespace korvane::fuzz
