#pragma once

#include <span>
#include <string_view>

#include "explorer/command.h"

namespace korvane {

struct ExplorerCommand {
    char word[11];      // upper case
    char alias[10];     // a second word for it, or empty
    const char* help;   // its line in the help text
    const char* usage;  // printed on bad arguments; empty when it can have none
    CommandEnd (*run)(WordReader& arguments);
};

// Every command, in the order in which a word is compared with them.
std::span<const ExplorerCommand> explorer_commands();

// The command of a word in upper case, or null.
const ExplorerCommand* find_explorer_command(std::string_view word);

}  // namespace korvane
