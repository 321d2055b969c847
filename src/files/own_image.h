// The file that the running image was loaded from.
#pragma once

#include <string_view>

#include "files/volume.h"

namespace korvane {

// The file from which the firmware loaded the running image, opened for reading from the volume root whatever
// the current directory is. Empty when the device path does not name a file of at most 511 8-bit characters.
FileHandle open_own_image();

// True when a name means the running image's own file, as far as names tell: one that is relative to a
// current directory never does.
bool names_own_image(std::string_view name);

}  // namespace korvane
