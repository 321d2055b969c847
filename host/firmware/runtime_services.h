// The functions of the runtime-services table: clock and variables.
#pragma once

#include "firmware.h"
#include "platform/uefi.h"

namespace korvane::host {

struct RuntimeServiceFunctions {
    // The functions act on this firmware from now on.
    static void fill(uefi::RuntimeServices& table, Firmware& firmware);
};

}  // namespace korvane::host
