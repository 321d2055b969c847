// Programs of the host by the names that LOAD would be given.
#pragma once

#include <filesystem>
#include <optional>

namespace korvane::host {

// The host's file for a name that LOAD would be given in this folder: the file itself, or the one with
// ".bas" behind the name, capitals or not. Nothing when there is none.
std::optional<std::filesystem::path> find_program(const std::filesystem::path& name);

}  // namespace korvane::host
