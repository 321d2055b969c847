// The volume that the running image came from: its root directory, also after its stick was pulled out and
// put back.
#pragma once

#include "files/file_handle.h"

namespace korvane {

// Start-up: nothing is known of the volume.
void forget_boot_volume();

// Opens the root directory of the volume that this handle offers. Empty on any failure.
FileHandle open_root(uefi::Handle device);

// Opens the root directory on the device that the image was loaded from, and notes what tells this volume
// from others. Empty on any failure.
FileHandle open_boot_volume();

// Opens the root directory wherever the firmware offers the noted volume now: on the image's device, or on a
// new one that stands for the same partition or, where there are no partitions, for the same place. Empty
// when there is none.
FileHandle find_boot_volume();

}  // namespace korvane
