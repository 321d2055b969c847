#include "terminal_keys.h"

#include <array>
#include <charconv>

#include "code_page.h"

namespace korvane::host {
namespace {

constexpr char escape = '\x1b';
constexpr std::uint16_t backspace = 8;
constexpr std::uint16_t enter = 13;

struct NamedKey {
    int code;
    std::uint16_t scan_code;
};

// Keys of the form ESC [ letter or ESC O letter.
constexpr std::array letter_keys = {
    NamedKey{'A', uefi::scan_up},     NamedKey{'B', uefi::scan_down},   NamedKey{'C', uefi::scan_right},
    NamedKey{'D', uefi::scan_left},   NamedKey{'H', uefi::scan_home},   NamedKey{'F', uefi::scan_end},
    NamedKey{'P', uefi::scan_f1},     NamedKey{'Q', uefi::scan_f1 + 1}, NamedKey{'R', uefi::scan_f1 + 2},
    NamedKey{'S', uefi::scan_f1 + 3},
};

// Keys of the form ESC [ number ~.
constexpr std::array number_keys = {
    NamedKey{1, uefi::scan_home},     NamedKey{2, uefi::scan_insert},   NamedKey{3, uefi::scan_delete},
    NamedKey{4, uefi::scan_end},      NamedKey{5, uefi::scan_page_up},  NamedKey{6, uefi::scan_page_down},
    NamedKey{7, uefi::scan_home},     NamedKey{8, uefi::scan_end},      NamedKey{11, uefi::scan_f1},
    NamedKey{12, uefi::scan_f1 + 1},  NamedKey{13, uefi::scan_f1 + 2},  NamedKey{14, uefi::scan_f1 + 3},
    NamedKey{15, uefi::scan_f1 + 4},  NamedKey{17, uefi::scan_f1 + 5},  NamedKey{18, uefi::scan_f1 + 6},
    NamedKey{19, uefi::scan_f1 + 7},  NamedKey{20, uefi::scan_f1 + 8},  NamedKey{21, uefi::scan_f1 + 9},
    NamedKey{23, uefi::scan_f1 + 10}, NamedKey{24, uefi::scan_f1 + 11},
};

constexpr int paste_begin = 200;
constexpr int paste_end = 201;

// Bytes of an escape sequence that no terminal exceeds; a longer one is noise.
constexpr std::size_t longest_sequence = 64;

bool is_final_byte(char byte) {
    return byte >= 0x40 && byte <= 0x7E;
}

int first_number(std::string_view parameters) {
    int number = 0;
    std::from_chars(parameters.data(), parameters.data() + parameters.size(), number);
    return number;
}

// The number of bytes of the UTF-8 sequence that a byte begins, 0 when it begins none.
std::size_t utf8_length(std::uint8_t byte) {
    if (byte >= 0xC2 && byte <= 0xDF) return 2;
    if (byte >= 0xE0 && byte <= 0xEF) return 3;
    return byte >= 0xF0 && byte <= 0xF4 ? 4 : 0;
}

}  // namespace

void TerminalKeys::feed(std::string_view bytes) {
    pending_ += bytes;
    while (const std::size_t used = decode(false))
        pending_.erase(0, used);
}

void TerminalKeys::flush() {
    while (const std::size_t used = decode(true))
        pending_.erase(0, used);
}

std::optional<TerminalKey> TerminalKeys::next() {
    if (keys_.empty()) return std::nullopt;
    const TerminalKey key = keys_.front();
    keys_.pop_front();
    return key;
}

// Decodes what stands first in pending_ and returns its length;
// 0 when nothing is there, or not all of it yet.
std::size_t TerminalKeys::decode(bool at_end) {
    if (pending_.empty()) return 0;
    const auto byte = static_cast<std::uint8_t>(pending_[0]);
    if (pending_[0] == escape) return decode_control_sequence(at_end);
    if (byte >= 0x80) return decode_character(at_end);
    if (byte >= 0x20 && byte < 0x7F)
        add(uefi::scan_none, byte);
    else
        add_control(byte);
    return_pasted_ = pasting_ && byte == '\r';
    return 1;
}

std::size_t TerminalKeys::decode_control_sequence(bool at_end) {
    const auto lone_escape = [this] {
        // The Escape key cannot be pasted: it would break the program that the paste is meant for.
        if (!pasting_) add(uefi::scan_escape, 0);
        return std::size_t{1};
    };
    if (pending_.size() == 1) return at_end ? lone_escape() : 0;
    if (pending_[1] == 'O') {
        if (pending_.size() == 2) return at_end ? lone_escape() : 0;
        finish_control_sequence({}, pending_[2]);
        return 3;
    }
    if (pending_[1] != '[') return lone_escape();
    for (std::size_t i = 2; i < pending_.size(); ++i) {
        if (is_final_byte(pending_[i])) {
            finish_control_sequence(std::string_view(pending_).substr(2, i - 2), pending_[i]);
            return i + 1;
        }
        if (static_cast<std::uint8_t>(pending_[i]) < 0x20 || i >= longest_sequence) return lone_escape();
    }
    return at_end ? lone_escape() : 0;
}

void TerminalKeys::finish_control_sequence(std::string_view parameters, char final_byte) {
    const int number = first_number(parameters);
    if (final_byte == '~' && (number == paste_begin || number == paste_end)) {
        pasting_ = number == paste_begin;
        return_pasted_ = false;
        return;
    }
    if (final_byte == '~') {
        for (const NamedKey& key : number_keys)
            if (key.code == number) add(key.scan_code, 0);
        return;
    }
    for (const NamedKey& key : letter_keys)
        if (key.code == final_byte) add(key.scan_code, 0);
}

std::size_t TerminalKeys::decode_character(bool at_end) {
    const std::size_t length = utf8_length(static_cast<std::uint8_t>(pending_[0]));
    char32_t character = length == 0 ? 0 : static_cast<std::uint8_t>(pending_[0]) & (0x7FU >> length);
    std::size_t used = 1;
    while (used < length && used < pending_.size()) {
        const auto byte = static_cast<std::uint8_t>(pending_[used]);
        if ((byte & 0xC0) != 0x80) break;
        character = character << 6 | (byte & 0x3FU);
        ++used;
    }
    if (used < length && used == pending_.size() && !at_end) return 0;
    const auto code = used == length ? unicode_to_code(character) : std::nullopt;
    add(uefi::scan_none, code.value_or('?'));
    return used;
}

void TerminalKeys::add_control(std::uint8_t byte) {
    switch (byte) {
        case '\r':
            add(uefi::scan_none, enter);
            break;
        case '\n':
            // A pasted line end may come as CR LF; one Enter is meant.
            if (!return_pasted_) add(uefi::scan_none, enter);
            break;
        case '\b':
        case 0x7F:
            if (!pasting_) add(uefi::scan_none, backspace);
            break;
        case '\t':
            add(uefi::scan_none, pasting_ ? ' ' : '\t');
            break;
        default:
            if (!pasting_ && byte != 0) add(uefi::scan_none, byte);
            break;
    }
}

void TerminalKeys::add(std::uint16_t scan_code, std::uint16_t character) {
    keys_.push_back({{scan_code, static_cast<char16_t>(character)}, pasting_});
}

}  // namespace korvane::host
