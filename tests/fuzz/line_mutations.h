// Changing sessions by whole lines and statements: what breaks an interpreter lies in sequences, which
// changes of single bytes seldom make.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace korvane::fuzz {

inline constexpr char line_end = 10;

// The engine is libFuzzer's own: the same seed makes the same change, of the same known lines.
using Random = std::minstd_rand;

inline std::size_t below(Random& random, std::size_t bound) {
    return random() % bound;
}

std::vector<std::string> split(std::string_view text, char separator);
std::string join(const std::vector<std::string>& parts, char separator);

// Changes the session in `data`, which has room for `most` bytes; gives its new size. Lines of other sessions
// that have been changed before are put in. 0 when a change of bytes is wanted instead.
std::size_t change_lines(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed);

// One of these lines may be put into sessions from now on.
void learn_line(Random& random, const std::vector<std::string>& lines);

// Makes one change to a session's lines, of which there is at least one, by lines that are known.
void change_one(Random& random, std::vector<std::string>& lines);

}  // namespace korvane::fuzz
