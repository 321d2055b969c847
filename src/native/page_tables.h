// What the processor's own tables say about memory. Firmware that has no protocol for it lets nobody ask
// otherwise whether code may run there, and trying would end the machine.
#pragma once

#include <cstdint>

namespace korvane::native {

// How the processor translates addresses, as its control registers have it.
struct Translation {
    std::uint64_t root;               // the address of the topmost table, with flags in its low 12 bits
    std::uint32_t levels;             // of tables: 4, or 5 in a machine with very much memory
    bool refuses_user_pages = false;  // to execute what programs of the lowest privilege may use
};

// Of this processor. Only with the highest privilege.
Translation current_translation();

// True when whole pages may be written, and executed with the highest privilege, and each is translated to
// its own address. Whatever is not quite clear is no.
bool allows_code(const Translation& translation, std::uint64_t address, std::uint64_t bytes);

}  // namespace korvane::native
