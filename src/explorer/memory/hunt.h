#pragma once

#include "explorer/command.h"

namespace korvane {

// `H start end hex...`: finds every place in a range where the given bytes stand.
CommandEnd do_hunt(WordReader& arguments);

// `HA start end text...`: the same for the rest of the line, from its first character that is no blank.
CommandEnd do_hunt_text(WordReader& arguments);

}  // namespace korvane
