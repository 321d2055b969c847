// The names of files and directories in statements.
#pragma once

#include <cstdint>
#include <string_view>

#include "program/token.h"

namespace korvane {

inline constexpr std::uint32_t path_capacity = 512;  // bytes of a path argument with its terminating zero
inline constexpr std::uint32_t file_name_capacity = 128;  // the same of a file name argument

// A path argument, cut to 511 characters and zero-terminated. Raises "Type mismatch" and, for an empty text,
// "Path not found"; false after an error.
bool GetPathArgument(Cursor& cursor, char (&buffer)[path_capacity]);

// A file name argument of the statements that read and write contents, cut to 127 characters. An empty name
// raises nothing here. On error ("Type mismatch") the length is 0.
struct FileName {
    char text[file_name_capacity];  // zero-terminated
    std::uint32_t length;

    std::string_view view() const { return {text, length}; }

    // Appends ".ext" (given with its dot) when no dot follows the last "/", "\" or ":". Raises "Bad file
    // name" and gives false when the name would reach 128 characters.
    bool add_default_extension(std::string_view extension);
};
FileName read_file_name(Cursor& cursor);

}  // namespace korvane
