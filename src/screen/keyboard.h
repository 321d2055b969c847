// Keys from the firmware's text input (ConIn), with a look-ahead of one key and the break key.
//
// Escape is the system's break key; no other key or combination stops a program. Keys typed while a program
// runs wait in the firmware's buffer, except one byte in the look-ahead slot. A key that carries only a scan
// code has character 0, and characters beyond 255 are cut to their low byte;
// both show in INKEY$ and are deliberate.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/uefi.h"

namespace korvane {

inline constexpr std::int32_t no_key = -1;
inline constexpr std::int32_t break_pending = 256;

struct Keyboard {
    // no_key when empty, 0 to 255 a waiting character, break_pending when Escape was read while a character
    // was asked for.
    std::int32_t look_ahead;
};
extern Keyboard keyboard;

void initialize_keyboard();

// One key stroke from the firmware without waiting; nothing when there is none or the read fails. The
// look-ahead slot is neither asked nor changed. Whoever asks for keys sees all that was printed before.
std::optional<uefi::InputKey> read_key();

// The next key stroke from the firmware, waited for on ConIn's event; a failed read waits again. The
// look-ahead slot is neither asked nor changed.
uefi::InputKey wait_for_key();

// The same for whoever shows that he waits: looks for a while, then sleeps between looks, so that a machine
// at the prompt stays cool. Where the firmware cannot wait, or ends the wait without a key,
// it goes on looking.
uefi::InputKey look_for_key();

inline bool is_escape(const uefi::InputKey& key) {
    return key.ScanCode == uefi::scan_escape;
}

// True when the break key was seen: a pending break is consumed, else one key is read. Another key is kept in
// the look-ahead slot, or dropped when the slot is taken.
bool key_break_check();

// The next character, 0 to 255, or no_key. Escape becomes a pending break and gives no_key, now and until
// key_break_check() has seen it.
std::int32_t key_get_nowait();

// Answers a prompt: waits for any key and consumes it. What waits in the look-ahead slot counts as that key.
// False when it was Escape or a pending break.
bool wait_for_any_key();

}  // namespace korvane
