// What the interpreter tells a host program that runs it as a part of itself.
//
// A screen does not tell where a line of output ended, who printed it, or whether a program still runs. A
// host that has to know offers this protocol of ours among the firmware's, as host/ does for its terminal.
// Firmware of real machines does not, and then nothing is told. BASIC programs cannot notice the difference:
// nothing ever comes back.
#pragma once

#include <cstdint>

#include "platform/uefi.h"

namespace korvane {

enum class Happening : std::uint32_t {
    // The interpreter has started; the value is the address of its ProgramStore (program/program_store.h).
    starts,
    // A statement puts a character on the console, which is the value's low byte; the byte above it is 0, or
    // the number of the text window that it goes to. 13 ends the line. What the keyboard's input echoes is
    // not told.
    text,
    // The same for what the system says by itself: errors and breaks.
    message,
    // A statement moves the cursor: the value is its column in the text area, and `another_row` is added
    // when the row changes, too.
    moves,
    // The rows of a text area as wide as the screen are about to move up; the value is the row
    // that will be lost.
    scrolls,
    // The program is now what a file holds: it was loaded or saved.
    keeps,
    // The line editor begins to wait for a line; the value is 1 when the line before failed, or what it ran.
    prompts,
    // A line has been read and is about to be handled.
    handles,
};

struct ListenerProtocol {
    void(EFIAPI* tell)(ListenerProtocol* self, Happening happening, std::uint64_t value);
};

inline constexpr uefi::Guid listener_guid{
    0x6d0fd4b1, 0x3c1e, 0x4a57, {0x9b, 0x26, 0x51, 0x8e, 0xc0, 0x7a, 0x14, 0xf3}};

inline constexpr std::uint64_t another_row = std::uint64_t{1} << 32;

struct Listener {
    ListenerProtocol* protocol;  // null when nobody listens
};
extern Listener listener;

// Looks for the protocol.
void find_listener();

void tell_listener(Happening happening, std::uint64_t value);

// Tells what happens to whoever listens.
inline void tell(Happening happening, std::uint64_t value = 0) {
    if (__builtin_expect(listener.protocol != nullptr, false)) tell_listener(happening, value);
}

}  // namespace korvane
