// The file that the running image was loaded from.
#pragma once

#include "files/file_handle.h"

namespace korvane {

// The file from which the firmware loaded the running image, opened for reading from the volume root whatever
// the current directory is. Empty when the device path does not name a file of at most 511 8-bit characters.
FileHandle open_own_image();

// True when the file, which was opened under `name`, is the running image's own. The volume's own spelling of
// its name, and of the directories up to the root, tells: the name may have been spelled in any way. A file
// of the same name whose directories the firmware does not show counts as the image, and so does every file
// while the firmware does not tell what the image is.
bool is_own_image(uefi::FileProtocol* file, const FirmwareName& name);

}  // namespace korvane
