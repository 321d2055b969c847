#include "explorer/command.h"

#include "explorer/number_syntax.h"
#include "explorer/report.h"
#include "program/landmarks.h"

namespace korvane {

std::optional<std::uint64_t> parse_address(std::string_view word) {
    std::uint64_t address = 0;
    if (find_landmark(word, address)) return address;
    return parse_number(word);
}

std::optional<CommandEnd> read_addresses(WordReader& arguments,
                                         std::initializer_list<std::uint64_t*> addresses) {
    for (std::uint64_t* place : addresses) {
        const Word word = arguments.next();
        if (word.empty()) return CommandEnd::bad_arguments;
        const auto address = parse_address(word.view());
        if (!address) {
            print_line(bad_address);
            return CommandEnd::done;
        }
        *place = *address;
    }
    return std::nullopt;
}

std::optional<std::uint8_t> next_byte(WordReader& arguments, bool& bad) {
    const Word word = arguments.next(byte_word_length);
    if (word.empty()) return std::nullopt;
    const auto byte = parse_byte(word.view());
    bad = !byte;
    if (bad) print_line(LineText().put("Bad hex byte: ").put(word.view()));
    return byte;
}

bool read_numbers(WordReader& arguments, std::initializer_list<std::uint64_t*> numbers) {
    for (std::uint64_t* place : numbers) {
        const auto number = parse_number(arguments.next().view());
        if (!number) return false;
        *place = *number;
    }
    return true;
}

}  // namespace korvane
