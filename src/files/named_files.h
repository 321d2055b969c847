// The one path from a BASIC file name to an open file.
#pragma once

#include <cstdint>
#include <string_view>

#include "files/file_handle.h"

namespace korvane {

enum class OpenMode : std::uint8_t {
    read,    // an existing file
    create,  // a new, empty file; an existing one is deleted first
    append,  // created when missing; positioned at its end
    update,  // created when missing; read and written from its start
};

// Opens a file relative to the base directory. The running image is never created anew. Empty on any failure;
// raises nothing.
FileHandle OpenFileByName(std::string_view name, OpenMode mode);

// True when the file could be opened for writing and deleted. Raises nothing.
bool DeleteFileByName(std::string_view name);

// Gives a file or directory a new name (at most 254 characters), by the firmware's own rules. Raises nothing.
bool RenameFileByName(std::string_view old_name, std::string_view new_name);

}  // namespace korvane
