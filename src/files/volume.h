// The volume that everything is read from and written to, and its current directory.
//
// Every file that the interpreter touches lives on one volume: the volume from which its own image was
// loaded. There are no drive letters and no mounting; names that begin with a separator start at the volume's
// root, other names at the current directory when CHDIR has set one, else at the root, and the firmware
// resolves them.
//
// Both directories may go away while the interpreter runs: the current one may be deleted, and a stick may be
// pulled out and put back. Nobody tells, so when a name cannot be opened, it is asked whether its directory
// is still there; if not, the volume is looked for anew, and the current directory by its name.
#pragma once

#include <cstdint>

#include "files/file_handle.h"
#include "files/firmware_name.h"
#include "platform/uefi.h"

namespace korvane {

struct Volume {
    static constexpr std::uint32_t max_path = 511;  // characters

    uefi::FileProtocol* root;               // the volume's root, or null until first needed; never closed
    uefi::FileProtocol* current_directory;  // set by CHDIR; null also when it has gone
    // Where the current directory was when CHDIR found it: its name from the root. Empty means the root; a
    // name that is too long to be kept is replaced by "?", which is none.
    char16_t current_path[max_path + 1];
};
extern Volume volume;

// Start-up: no root yet, no current directory.
void initialize_volume();

// The root directory of the volume the image came from, or null; a failure is tried again on the next call.
uefi::FileProtocol* GetVolumeRoot();

// Where relative names start: the current directory, else the root; null when there is none or it has gone.
uefi::FileProtocol* base_directory();

// The same after a look whether it is still there.
uefi::FileProtocol* live_base_directory();

// Makes the directory, which was opened under `name`, current and closes the previous one.
void set_current_directory(FileHandle directory, const FirmwareName& name);

// As open_below() for a name from the user, from the root or the base directory; a directory that has gone is
// looked for anew.
FileHandle open_named(const FirmwareName& name, std::uint64_t firmware_mode, std::uint64_t attributes = 0);

// The same for a firmware name that starts at the root whether it begins with a separator or not.
FileHandle open_from_root(const char16_t* name, std::uint64_t firmware_mode, std::uint64_t attributes = 0);

}  // namespace korvane
