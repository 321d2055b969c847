#include "screen/keyboard.h"

#include "platform/firmware.h"
#include "platform/processor.h"
#include "screen/noted_cells.h"
#include "screen/pixel_order.h"

namespace korvane {

Keyboard keyboard;

namespace {

// The editor looks so many times before it sleeps: whoever types gets an answer at once, and a wait that
// fails or ends without a key leaves it looking nearly all the time.
constexpr int looks_before_sleep = 2000;

std::optional<uefi::InputKey> ask_for_key() {
    show_drawn_pixels_if_due();
    uefi::SimpleTextInputProtocol* input = firmware.system_table->ConIn;
    uefi::InputKey key{};
    if (uefi::is_error(input->ReadKeyStroke(input, &key))) return std::nullopt;
    return key;
}

std::int32_t low_byte(const uefi::InputKey& key) {
    return key.UnicodeChar & 0xFF;
}

}  // namespace

void initialize_keyboard() {
    keyboard.look_ahead = no_key;
}

std::optional<uefi::InputKey> read_key() {
    bring_up_to_date();
    return ask_for_key();
}

uefi::InputKey wait_for_key() {
    bring_up_to_date();
    show_drawn_pixels();
    for (;;) {
        // The event may be signalled for a key that yields no key stroke, and firmware without the event
        // refuses to wait; both end in another try.
        std::uint64_t index = 0;
        firmware.boot->WaitForEvent(1, &firmware.system_table->ConIn->WaitForKey, &index);
        if (const auto key = read_key()) return *key;
    }
}

uefi::InputKey look_for_key() {
    bring_up_to_date();
    show_drawn_pixels();
    for (;;) {
        for (int i = 0; i < looks_before_sleep; ++i) {
            if (const auto key = read_key()) return *key;
            processor_pause();
        }
        std::uint64_t index = 0;
        firmware.boot->WaitForEvent(1, &firmware.system_table->ConIn->WaitForKey, &index);
    }
}

bool key_break_check() {
    if (keyboard.look_ahead == break_pending) {
        keyboard.look_ahead = no_key;
        return true;
    }
    // Running programs come by all the time: what they print may wait a little longer.
    draw_cells_if_due();
    const auto key = ask_for_key();
    if (!key) return false;
    if (is_escape(*key)) return true;
    if (keyboard.look_ahead == no_key) keyboard.look_ahead = low_byte(*key);
    return false;
}

std::int32_t key_get_nowait() {
    if (keyboard.look_ahead == break_pending) return no_key;
    if (keyboard.look_ahead != no_key) {
        const std::int32_t waiting = keyboard.look_ahead;
        keyboard.look_ahead = no_key;
        return waiting;
    }
    const auto key = read_key();
    if (!key) return no_key;
    if (is_escape(*key)) {
        keyboard.look_ahead = break_pending;
        return no_key;
    }
    return low_byte(*key);
}

bool wait_for_any_key() {
    const std::int32_t waiting = keyboard.look_ahead;
    keyboard.look_ahead = no_key;
    if (waiting != no_key) return waiting != break_pending;
    return !is_escape(wait_for_key());
}

}  // namespace korvane
