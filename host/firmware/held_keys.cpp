#include "held_keys.h"

namespace korvane::host {

void HeldKeys::press_line(Keyboard& keyboard) {
    while (!keys_.empty()) {
        const uefi::InputKey key = keys_.front();
        keys_.pop_front();
        keyboard.press(key);
        if (key.UnicodeChar == u'\r') return;
    }
}

}  // namespace korvane::host
