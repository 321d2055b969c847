// The image's command line, cut into arguments for COMMANDLINEARG$.
#pragma once

#include <cstdint>

namespace korvane {

inline constexpr std::uint32_t max_command_arguments = 32;
inline constexpr std::uint32_t command_argument_capacity = 256;  // with the terminating zero

struct CommandArguments {
    std::uint32_t count;
    char arguments[max_command_arguments][command_argument_capacity];
};
extern CommandArguments command_arguments;

// Reads the load options of the running image: words separated by blanks and tabs, double quotes keep them
// together. An argument is cut at 255 characters, arguments after the 32nd are dropped. Without options there
// are no arguments.
void read_command_line();

}  // namespace korvane
