#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>

#include "explorer/command_line.h"

namespace korvane {

// How a command ended.
enum class CommandEnd : std::uint8_t {
    done,           // it ran, or printed why it did not
    bad_arguments,  // its usage message is still to be printed
    leave,          // back to BASIC
};

inline constexpr std::string_view bad_address = "Bad address or landmark.";
inline constexpr std::string_view bad_length = "Bad length.";

// An address as a word of a command line: a landmark's name or a number. Nothing when it is neither.
std::optional<std::uint64_t> parse_address(std::string_view word);

// Reads address words into the given places. Nothing when all were read; otherwise the outcome with which
// the command ends: bad_arguments for a missing word, done after "Bad address or landmark.".
std::optional<CommandEnd> read_addresses(WordReader& arguments,
                                         std::initializer_list<std::uint64_t*> addresses);

// Reads the next word as a byte. Nothing at the end of the line, and after "Bad hex byte: " for a word that
// is none, which sets `bad`.
std::optional<std::uint8_t> next_byte(WordReader& arguments, bool& bad);

// Reads number words (disks, volumes, partitions). False when one is missing or is no number.
bool read_numbers(WordReader& arguments, std::initializer_list<std::uint64_t*> numbers);

}  // namespace korvane
