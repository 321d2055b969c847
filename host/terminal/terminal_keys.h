// What a terminal sends, as the key strokes of the firmware's text input.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "platform/uefi.h"

namespace korvane::host {

// A key stroke; `pasted` when it came inside a bracketed paste and may wait until it is asked for.
struct TerminalKey {
    uefi::InputKey key;
    bool pasted;
};

// How long after an ESC byte a terminal may take to send the rest of a key's sequence. A lone ESC is the
// Escape key once this has passed.
constexpr int escape_delay_ms = 50;

// Decodes the byte stream of a terminal in UTF-8: characters, the control keys, the cursor and editing keys'
// escape sequences of the common terminals (CSI and SS3 forms, modifiers ignored) and bracketed paste.
// Unknown sequences are swallowed whole. A character that code page 437 lacks becomes a question mark.
class TerminalKeys {
  public:
    void feed(std::string_view bytes);

    // True while an ESC byte waits for what may follow it.
    bool waits_for_escape() const { return !pending_.empty(); }

    // Declares that nothing follows: what waits is taken as the keys it would be by itself.
    void flush();

    std::optional<TerminalKey> next();

  private:
    std::size_t decode(bool at_end);
    std::size_t decode_control_sequence(bool at_end);
    std::size_t decode_character(bool at_end);
    void finish_control_sequence(std::string_view parameters, char final_byte);
    void add(std::uint16_t scan_code, std::uint16_t character);
    void add_control(std::uint8_t byte);

    std::string pending_;           // bytes not yet decoded
    std::deque<TerminalKey> keys_;  // decoded, not yet taken
    bool pasting_ = false;          // between the brackets of a paste
    bool return_pasted_ = false;    // the last byte of the paste was a carriage return
};

}  // namespace korvane::host
