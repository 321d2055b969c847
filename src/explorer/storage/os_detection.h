#pragma once

#include "explorer/command.h"

namespace korvane {

// `OS`: guesses by well-known files and boot entries which operating systems are installed.
CommandEnd do_os(WordReader& arguments);

}  // namespace korvane
