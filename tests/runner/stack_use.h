// How deep the image's stack has ever been used: what nobody has written to is still zero.
#pragma once

#include <algorithm>
#include <cstddef>

#include "firmware.h"

namespace korvane::test {

// Of the 128 KiB that firmware promises, what the interpreter and the hosted services beneath it may use.
inline constexpr std::size_t most_stack = 100 * 1024;

inline std::size_t stack_used(host::Firmware& firmware) {
    const auto bytes = firmware.stack().bytes();
    const auto used = std::find_if(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte != 0; });
    return static_cast<std::size_t>(bytes.end() - used);
}

}  // namespace korvane::test
