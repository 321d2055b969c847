#include "text_syntax.h"

#include <charconv>
#include <cstdio>
#include <utility>

#include "code_page.h"
#include "unicode.h"

namespace korvane::transcript {

namespace {

constexpr std::pair<std::string_view, uefi::InputKey> key_names[] = {
    {"ESC", {uefi::scan_escape, 0}},
    {"UP", {uefi::scan_up, 0}},
    {"DOWN", {uefi::scan_down, 0}},
    {"LEFT", {uefi::scan_left, 0}},
    {"RIGHT", {uefi::scan_right, 0}},
    {"HOME", {uefi::scan_home, 0}},
    {"END", {uefi::scan_end, 0}},
    {"INS", {uefi::scan_insert, 0}},
    {"DEL", {uefi::scan_delete, 0}},
    {"PGUP", {uefi::scan_page_up, 0}},
    {"PGDN", {uefi::scan_page_down, 0}},
    {"BS", {0, 8}},
    {"TAB", {0, 9}},
    {"ENTER", {0, 13}},
    {"LBRACE", {0, u'{'}},
};

std::optional<std::uint64_t> parse_digits(std::string_view text, int base) {
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<uefi::InputKey> find_key(std::string_view name) {
    for (const auto& [key_name, key] : key_names)
        if (key_name == name) return key;
    if (name.size() < 2) return std::nullopt;
    if (name.front() == 'F') {
        const auto number = parse_digits(name.substr(1), 10);
        if (!number || *number < 1 || *number > 10) return std::nullopt;
        return uefi::InputKey{static_cast<std::uint16_t>(uefi::scan_f1 + *number - 1), 0};
    }
    const auto code = parse_digits(name.substr(1), 16);
    if (!code || *code > 0xFFFF) return std::nullopt;
    if (name.front() == 'x') return uefi::InputKey{0, static_cast<char16_t>(*code)};
    if (name.front() == 's') return uefi::InputKey{static_cast<std::uint16_t>(*code), 0};
    return std::nullopt;
}

}  // namespace

std::optional<std::uint64_t> parse_number(std::string_view text) {
    std::uint64_t factor = 1;
    if (!text.empty() && (text.back() == 'K' || text.back() == 'M')) {
        factor = text.back() == 'K' ? 1024 : 1024 * 1024;
        text.remove_suffix(1);
    }
    const bool hexadecimal = text.starts_with("0x");
    const auto value = parse_digits(hexadecimal ? text.substr(2) : text, hexadecimal ? 16 : 10);
    if (!value) return std::nullopt;
    return *value * factor;
}

std::optional<std::uint32_t> parse_colour(std::string_view text) {
    const auto value = text.size() == 6 ? parse_digits(text, 16) : std::nullopt;
    if (!value) return std::nullopt;
    return static_cast<std::uint32_t>(*value);
}

std::optional<std::string> unescape(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            plain += text[i];
            continue;
        }
        if (++i == text.size()) return std::nullopt;
        switch (text[i]) {
            case '\\':
                plain += '\\';
                break;
            case 'r':
                plain += '\r';
                break;
            case 'n':
                plain += '\n';
                break;
            case 't':
                plain += '\t';
                break;
            case '0':
                plain += '\0';
                break;
            case 'x': {
                const auto code =
                    i + 2 < text.size() ? parse_digits(text.substr(i + 1, 2), 16) : std::nullopt;
                if (!code) return std::nullopt;
                plain += static_cast<char>(*code);
                i += 2;
                break;
            }
            default:
                return std::nullopt;
        }
    }
    return plain;
}

std::optional<std::string> parse_hex_bytes(std::string_view text) {
    std::string bytes;
    for (const std::string& word : split_words(text)) {
        if (word.size() % 2 != 0) return std::nullopt;
        for (std::size_t i = 0; i < word.size(); i += 2) {
            const auto byte = parse_digits(std::string_view(word).substr(i, 2), 16);
            if (!byte) return std::nullopt;
            bytes += static_cast<char>(*byte);
        }
    }
    return bytes;
}

std::optional<std::vector<uefi::InputKey>> typed_keys(std::string_view text) {
    std::vector<uefi::InputKey> keys;
    for (std::size_t position = 0; position < text.size();) {
        const auto character = host::decode_utf8(text, position);
        const auto code = character ? host::unicode_to_code(*character) : std::nullopt;
        if (!code) return std::nullopt;
        keys.push_back({0, *code});
    }
    return keys;
}

std::optional<std::vector<uefi::InputKey>> named_keys(std::string_view text) {
    std::vector<uefi::InputKey> keys;
    while (!text.empty()) {
        if (text.front() == '{') {
            const std::size_t end = text.find('}');
            if (end == std::string_view::npos) return std::nullopt;
            const auto key = find_key(text.substr(1, end - 1));
            if (!key) return std::nullopt;
            keys.push_back(*key);
            text.remove_prefix(end + 1);
            continue;
        }
        const std::size_t end = std::min(text.find('{'), text.size());
        const auto typed = typed_keys(text.substr(0, end));
        if (!typed) return std::nullopt;
        keys.insert(keys.end(), typed->begin(), typed->end());
        text.remove_prefix(end);
    }
    return keys;
}

std::optional<uefi::Time> parse_time(std::string_view text) {
    unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    const std::string terminated(text);
    int length = 0;
    if (std::sscanf(terminated.c_str(), "%u-%u-%u %u:%u:%u%n", &year, &month, &day, &hour, &minute, &second,
                    &length) != 6 ||
        static_cast<std::size_t>(length) != text.size())
        return std::nullopt;
    uefi::Time time{};
    time.Year = static_cast<std::uint16_t>(year);
    time.Month = static_cast<std::uint8_t>(month);
    time.Day = static_cast<std::uint8_t>(day);
    time.Hour = static_cast<std::uint8_t>(hour);
    time.Minute = static_cast<std::uint8_t>(minute);
    time.Second = static_cast<std::uint8_t>(second);
    time.TimeZone = 0x7FF;
    return time;
}

std::vector<std::string> split_words(std::string_view text) {
    std::vector<std::string> words;
    while (true) {
        const std::size_t begin = text.find_first_not_of(' ');
        if (begin == std::string_view::npos) return words;
        text.remove_prefix(begin);
        const std::size_t end = std::min(text.find(' '), text.size());
        words.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
    }
}

std::string without_trailing_blanks(std::string text) {
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

}  // namespace korvane::transcript
