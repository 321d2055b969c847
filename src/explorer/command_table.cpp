#include "explorer/commands.h"

#include <array>

#include "explorer/help_text.h"
#include "explorer/memory/compare.h"
#include "explorer/memory/dump.h"
#include "explorer/memory/hunt.h"
#include "explorer/memory/memory_edit.h"
#include "explorer/memory/memory_files.h"
#include "explorer/memory/typed_view.h"
#include "explorer/reports.h"
#include "explorer/storage/boot_entries.h"
#include "explorer/storage/disk_reports.h"
#include "explorer/storage/file_reports.h"
#include "explorer/storage/os_detection.h"
#include "explorer/storage/partitions.h"
#include "explorer/storage/volume_reports.h"

namespace korvane {
namespace {

CommandEnd do_leave(WordReader&) {
    return CommandEnd::leave;
}

// The help lines align their texts in one column; SECTOR's stands one further right, deliberately. Help lines
// and usage messages name some arguments differently ("n" and "disk"), deliberately too.
// clang-format off
constexpr std::array<ExplorerCommand, 30> commands = {{
    {"X", "EXIT", "X                         return to BASIC", "", do_leave},
    {"?", "HELP", "? / HELP                  this help", "", do_explorer_help},
    {"L", "LANDMARKS", "L                         landmarks", "", do_landmarks},
    {"MAP", "MEMMAP", "MAP                       platform memory map", "", do_memory_map},
    {"I", "INFO", "I                         machine information", "", do_machine_information},
    {"M", "", "M [address [length]]      hex/ASCII dump; M alone continues", "", do_dump},
    {"M!", "", "M! address [length]       force UEFI read of protected region", "", do_forced_dump},
    {"F", "", "F start end byte          fill memory", "Usage: F start end byte", do_fill},
    {"C", "", "C start1 end1 start2      compare memory blocks", "Usage: C start1 end1 start2", do_compare},
    {">", "", "> address hex...          enter hexadecimal bytes", "Usage: > address hex...", do_enter_bytes},
    {"A", "", "A address text...         enter ASCII bytes", "Usage: A address text...", do_enter_text},
    {"H", "", "H start end hex...        hunt byte sequence", "Usage: H start end hex...", do_hunt},
    {"HA", "", "HA start end text...      hunt ASCII text", "Usage: HA start end text...", do_hunt_text},
    {"T", "", "T start end dest          transfer/copy memory", "Usage: T start end dest", do_transfer},
    {"SAVE", "", "SAVE file start end       save raw memory to file", "Usage: SAVE filename start end", do_save_memory},
    {"LOAD", "", "LOAD file address         load raw file into memory", "Usage: LOAD filename address", do_load_memory},
    {"R", "", "R address                 describe containing memory region", "Usage: R address", do_region},
    {"W", "", "W address                 nearest landmark + region", "Usage: W address", do_where},
    {"V", "", "V address                 view BYTE/WORD/DWORD/QWORD and typed values", "Usage: V address", do_view},
    {"DISKS", "", "DISKS                     enumerate whole-media Block I/O devices", "", do_disks},
    {"DISK", "", "DISK n                    disk/media details", "Usage: DISK n", do_disk},
    {"SECTOR", "", "SECTOR n lba [count]       raw sector hex/ASCII dump", "Usage: SECTOR disk lba [count]", do_sector},
    {"PARTITIONS", "", "PARTITIONS n              GPT/MBR partition table", "Usage: PARTITIONS disk", do_partitions},
    {"PARTITION", "", "PARTITION n p             details for partition p", "Usage: PARTITION disk partition", do_partition},
    {"VOLUMES", "", "VOLUMES                   EFI Simple File System volumes", "", do_volumes},
    {"DIRFS", "", "DIRFS v [path]            directory on volume v", "Usage: DIRFS volume [path]", do_directory},
    {"CAT", "", "CAT v file                display file as text", "Usage: CAT volume file", do_cat},
    {"HEXFILE", "", "HEXFILE v file            display file as hex/ASCII", "Usage: HEXFILE volume file", do_hex_file},
    {"BOOT", "", "BOOT                      UEFI BootOrder / Boot#### entries", "", do_boot},
    {"OS", "", "OS                        best-effort installed OS detection", "", do_os},
}};
// clang-format on

}  // namespace

std::span<const ExplorerCommand> explorer_commands() {
    return commands;
}

const ExplorerCommand* find_explorer_command(std::string_view word) {
    for (const ExplorerCommand& command : commands)
        if (command.word == word || (command.alias[0] != 0 && command.alias == word)) return &command;
    return nullptr;
}

}  // namespace korvane
