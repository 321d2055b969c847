#pragma once

#include "explorer/command.h"

namespace korvane {

// `F start end byte`: fills a range with one byte.
CommandEnd do_fill(WordReader& arguments);

// `> address hex...`: writes bytes given as numbers, each as soon as it is read.
CommandEnd do_enter_bytes(WordReader& arguments);

// `A address text...`: writes the rest of the line, from its first character that is no blank.
CommandEnd do_enter_text(WordReader& arguments);

// `T start end dest`: copies a range, also onto a place that overlaps it.
CommandEnd do_transfer(WordReader& arguments);

}  // namespace korvane
