#include "program_file.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "fat_names.h"
#include "files/program_text.h"
#include "host_text.h"
#include "program/execution.h"
#include "program/messages.h"
#include "program/program_store.h"
#include "unicode.h"

namespace korvane::host {
namespace {

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
constexpr char control_z = 26;
constexpr std::string_view extension = ".bas";

// Programs begin with a digit or a blank: a zero byte beside it is the other half of the character.
bool is_utf16(std::string_view bytes) {
    if (bytes.size() < 2) return false;
    return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF") ||
           (bytes[0] == 0) != (bytes[1] == 0);
}

bool is_utf8(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size();)
        if (!decode_utf8(bytes, at)) return false;
    return true;
}

void append_loss(std::string& loss, std::size_t line, std::string_view character) {
    if (!loss.empty()) return;
    loss = "line " + std::to_string(line) + ": '" + std::string(character) +
           "' is not in code page 437 and is read as '?'";
}

// A line of UTF-8 in the code page.
std::string convert_line(std::string_view line, std::size_t number, std::string& loss) {
    std::string codes;
    while (!line.empty()) {
        const HostCharacter character = first_character(line);
        const unsigned char code = to_code(character);
        if (code == '?' && character.character != U'?')
            append_loss(loss, number, line.substr(0, character.bytes));
        codes += static_cast<char>(code);
        line.remove_prefix(character.bytes);
    }
    return codes;
}

// What LOAD says about a line, or nothing.
std::string_view line_fault(std::string_view line) {
    line = line.substr(0, max_file_line);
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number);
    if (error == std::errc::invalid_argument) return message::direct_statement_in_file;
    if (error != std::errc{} || number > max_line_number) return message::line_number_too_large;
    line.remove_prefix(static_cast<std::size_t>(end - line.data()));
    if (line.starts_with(' ')) line.remove_prefix(1);
    return line.size() > max_line_text ? std::string_view(message::line_too_long) : std::string_view{};
}

}  // namespace

ProgramText read_program(std::string_view bytes) {
    ProgramText program;
    if (is_utf16(bytes)) {
        program.fault = "it is in UTF-16, which is not understood: save it as UTF-8";
        return program;
    }
    if (bytes.starts_with(byte_order_mark)) bytes.remove_prefix(byte_order_mark.size());
    while (bytes.ends_with(control_z))
        bytes.remove_suffix(1);
    const bool converts = is_utf8(bytes);
    std::size_t number = 1;
    while (!bytes.empty()) {
        const std::size_t length = std::min(bytes.find_first_of("\r\n"), bytes.size());
        std::string line(bytes.substr(0, length));
        bytes.remove_prefix(length);
        if (converts) line = convert_line(line, number, program.loss);
        std::replace(line.begin(), line.end(), '\t', ' ');
        if (line.find_first_not_of(' ') == line.npos) line.clear();
        const std::string_view fault = line.empty() ? std::string_view{} : line_fault(line);
        if (!fault.empty() && program.fault.empty())
            program.fault = "line " + std::to_string(number) + ": " + std::string(fault);
        program.codes += line;
        const std::size_t line_end = bytes.empty() ? 0 : bytes.starts_with("\r\n") ? 2 : 1;
        program.codes += bytes.substr(0, line_end);
        bytes.remove_prefix(line_end);
        ++number;
    }
    return program;
}

bool has_program_name(std::string_view name) {
    return name.size() > extension.size() &&
           same_name(name.substr(name.size() - extension.size()), extension);
}

}  // namespace korvane::host
