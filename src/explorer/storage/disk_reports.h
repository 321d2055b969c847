#pragma once

#include "explorer/command.h"

namespace korvane {

inline constexpr std::string_view disk_not_found = "Disk not found.";

// `DISKS`: the whole-media block devices, one line each.
CommandEnd do_disks(WordReader& arguments);

// `DISK n`: one disk and its medium.
CommandEnd do_disk(WordReader& arguments);

// `SECTOR n lba [count]`: a raw dump of 1 to 64 blocks.
CommandEnd do_sector(WordReader& arguments);

}  // namespace korvane
