// Changing sessions by whole lines and statements: what breaks an interpreter lies in sequences, which
// changes of single bytes seldom make.
#pragma once

#include <cstddef>
#include <cstdint>

namespace korvane::fuzz {

// Changes the session in `data`, which has room for `most` bytes; gives its new size. Lines of other sessions
// that have been changed before are put in. 0 when a change of bytes is wanted instead.
std::size_t change_lines(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed);

}  // namespace korvane::fuzz
