#include "start_banner.h"

#include <array>
#include <cstdint>

#include "numbers/format.h"
#include "platform/characters.h"
#include "platform/firmware.h"
#include "program/arenas.h"
#include "screen/console.h"

namespace korvane {
namespace {

constexpr char group_separator = ',';

void print_line(const char* text) {
    con_put_string(text);
    con_put_char(carriage_return);
}

void print_grouped(std::uint64_t number) {
    const NumberText digits = format_unsigned(number);
    for (std::uint32_t i = 0; i < digits.size; ++i) {
        if (i > 0 && (digits.size - i) % 3 == 0) con_put_char(group_separator);
        con_put_char(static_cast<std::uint8_t>(digits.characters[i]));
    }
}

void print_wide(std::string_view text) {
    for (const char character : text) {
        const char16_t wide[] = {static_cast<char16_t>(character), 0};
        print_on_firmware_console(wide);
    }
}

std::array<char, 16> hexadecimal(std::uint64_t number) {
    std::array<char, 16> digits;
    for (std::size_t i = digits.size(); i-- > 0; number >>= 4)
        digits[i] = hex_digit(number);
    return digits;
}

}  // namespace

void announce_data_arena() {
    constexpr std::uint64_t mebibyte = 1048576;
    const auto address = hexadecimal(reinterpret_cast<std::uintptr_t>(arenas.LOMEM));
    const auto size = static_cast<std::uint64_t>(arenas.HIMEM - arenas.LOMEM);
    print_wide("Data segment:  0x");
    print_wide({address.data(), address.size()});
    print_wide(" (");
    print_wide(format_unsigned(size / mebibyte).view());
    print_wide(" MB)\r\n\r\n");
}

void print_banner() {
    print_line("\"That brain of mine is something more than merely mortal; as time will show.\"");
    print_line("    Ada Lovelace");
    con_put_char(carriage_return);
    print_line("Korvane BASIC v2.0");
    print_grouped(free_data_bytes());
    print_line(" bytes free.");
    con_put_char(carriage_return);
}

}  // namespace korvane
