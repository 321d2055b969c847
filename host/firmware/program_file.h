// Program files as people have them, and as the interpreter reads them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace korvane::host {

// A program file's text in code page 437.
struct ProgramText {
    std::string codes;
    // What LOAD will stop at, with the number of the line in the file: "line 3: Direct statement in file".
    // Empty when it takes the whole text.
    std::string fault;
    // What is read otherwise than it stands there, with the line's number: characters that
    // the code page lacks.
    std::string loss;
};

// Files beyond this size are taken as they are: no memory of the interpreter's holds such a program.
constexpr std::uint64_t largest_program_file = std::uint64_t{64} << 20;

// Takes UTF-8, with or without byte order mark, when all of the file is that; else its bytes are codes
// already. A tab counts as a blank, a line of nothing but blanks as an empty one; Ctrl-Z at the end is left
// out. UTF-16 is not taken: the fault says so, and nothing else is read.
ProgramText read_program(std::string_view bytes);

// Whether a file's name says that it is a program.
bool has_program_name(std::string_view name);

}  // namespace korvane::host
