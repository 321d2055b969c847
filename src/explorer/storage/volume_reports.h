#pragma once

#include "explorer/command.h"

namespace korvane {

inline constexpr std::string_view volume_not_found = "Volume not found.";

// `VOLUMES`: every volume with its sizes, label and device path.
CommandEnd do_volumes(WordReader& arguments);

// `DIRFS v [path]`: a directory, the root unless a path follows.
CommandEnd do_directory(WordReader& arguments);

}  // namespace korvane
