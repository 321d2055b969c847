// Keys that wait until the image asks for them: pasted text, and lines read from a file.
#pragma once

#include <deque>

#include "keyboard.h"
#include "platform/uefi.h"

namespace korvane::host {

// A program that runs drops all but one of the keys that come in; text that was not typed by a person at
// that moment is therefore handed out a line at a time, whenever the image waits for a key.
class HeldKeys {
  public:
    void add(uefi::InputKey key) { keys_.push_back(key); }
    void clear() { keys_.clear(); }
    bool empty() const { return keys_.empty(); }

    // Presses the held keys up to the next Enter.
    void press_line(Keyboard& keyboard);

  private:
    std::deque<uefi::InputKey> keys_;
};

}  // namespace korvane::host
