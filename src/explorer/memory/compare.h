#pragma once

#include "explorer/command.h"

namespace korvane {

// `C start1 end1 start2`: lists the differences between two blocks of equal length.
CommandEnd do_compare(WordReader& arguments);

}  // namespace korvane
