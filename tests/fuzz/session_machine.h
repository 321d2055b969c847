// The machine that random sessions are typed into, and how they are typed.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>

#include "machine.h"

namespace korvane::fuzz {

// A machine at its first prompt, with a screen of many rows, one small volume and a clock that stands.
inline std::unique_ptr<host::Machine> start_session_machine(const host::ImageSource& image,
                                                            const std::filesystem::path& volume,
                                                            std::chrono::milliseconds patience) {
    host::Config config;
    config.width = 640;
    config.height = 2048;
    config.volumes.resize(1);
    config.volumes[0].folder = volume;
    config.volumes[0].capacity = 1 << 20;
    config.time = uefi::Time{};
    config.time->Year = 2024;
    config.time->Month = config.time->Day = 1;
    auto machine = std::make_unique<host::Machine>(std::move(config), image);
    machine->run(patience);
    machine->learn_waiting_place();
    return machine;
}

inline void press_text(host::Machine& machine, std::string_view text) {
    for (const char c : text)
        machine.firmware().keyboard().press({0, static_cast<char16_t>(static_cast<unsigned char>(c))});
}

// Escape, soon and again and again: the key of somebody who loses patience `polls` looks for a key after
// those that take the `keys` pressed.
inline void press_escape_after(host::Machine& machine, std::uint64_t keys, std::uint64_t polls) {
    constexpr uefi::InputKey escape{23, 0};
    for (std::uint64_t n = polls; n < 4000; n += n / 2)
        machine.firmware().keyboard().press_at_poll(keys + n, escape);
}

}  // namespace korvane::fuzz
