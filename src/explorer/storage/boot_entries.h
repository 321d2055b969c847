#pragma once

#include <cstdint>

#include "explorer/command.h"
#include "explorer/report.h"

namespace korvane {

// `BOOT`: the boot order and every boot entry with its flags, description and device path.
CommandEnd do_boot(WordReader& arguments);

// The short form used by operating-system detection: one line for every readable entry, its number and
// description. Returns how many there were.
std::uint64_t list_boot_descriptions(PagedReport& listing);

}  // namespace korvane
