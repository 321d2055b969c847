#include "explorer/help_text.h"

#include <array>
#include <span>

#include "explorer/commands.h"
#include "explorer/report.h"

namespace korvane {
namespace {

constexpr std::array<const char*, 17> memory_commands = {"L", "M",    "M!",   "F", "C", ">", "A",   "H", "HA",
                                                         "T", "SAVE", "LOAD", "R", "W", "V", "MAP", "I"};
constexpr std::array<const char*, 11> storage_commands = {
    "DISKS", "DISK", "SECTOR", "PARTITIONS", "PARTITION", "VOLUMES", "DIRFS", "CAT", "HEXFILE", "BOOT", "OS"};
constexpr std::array<const char*, 2> general_commands = {"?", "X"};

void list_help(PagedReport& listing, std::span<const char* const> words) {
    for (const char* word : words) {
        const ExplorerCommand* command = find_explorer_command(word);
        if (command != nullptr && !listing.line(command->help)) return;
    }
}

}  // namespace

CommandEnd do_explorer_help(WordReader&) {
    PagedReport listing;
    listing.line("Korvane Machine Explorer commands:");
    list_help(listing, memory_commands);
    listing.line("Storage / boot inspection (read-only):");
    list_help(listing, storage_commands);
    list_help(listing, general_commands);
    listing.line("Monitor numbers are hex by default; use D:number for decimal.");
    return CommandEnd::done;
}

}  // namespace korvane
