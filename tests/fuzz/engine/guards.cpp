// What a session may do to any byte of a real machine stays within the machine here: the linker leads calls
// of these functions to the ones below (-Wl,--wrap), whose own names have "__wrap_" in front.
#include "machine.h"
#include "platform/uefi.h"
#include "program/errors.h"
#include "program/messages.h"
#include "program/token.h"
#include "screen/keyboard.h"
#include "statements/data/memory_access.h"

namespace korvane::fuzz {
bool memory_files_allowed = false;
bool memory_writes_allowed = false;
}  // namespace korvane::fuzz

extern "C" {

// Memory that nobody owns reads as zero.
std::uint64_t __real__ZN7korvane11peek_memoryEmj(std::uint64_t address, std::uint32_t bytes);
std::uint64_t __wrap__ZN7korvane11peek_memoryEmj(std::uint64_t address, std::uint32_t bytes) {
    if (!korvane::fuzz::machine->firmware().owns(address, bytes)) return 0;
    return __real__ZN7korvane11peek_memoryEmj(address, bytes);
}

#define KORVANE_REFUSE(name)                                         \
    void __real_##name(korvane::Cursor& cursor);                     \
    void __wrap_##name(korvane::Cursor& cursor) {                    \
        if (korvane::fuzz::memory_writes_allowed)                    \
            __real_##name(cursor);                                   \
        else                                                         \
            korvane::raise(korvane::message::illegal_function_call); \
    }
KORVANE_REFUSE(_ZN7korvane7do_pokeERPNS_5TokenE)
KORVANE_REFUSE(_ZN7korvane9do_poke16ERPNS_5TokenE)
KORVANE_REFUSE(_ZN7korvane9do_poke32ERPNS_5TokenE)
KORVANE_REFUSE(_ZN7korvane9do_poke64ERPNS_5TokenE)

void __real__ZN7korvane8do_bloadERPNS_5TokenE(korvane::Cursor& cursor);
void __wrap__ZN7korvane8do_bloadERPNS_5TokenE(korvane::Cursor& cursor) {
    if (korvane::fuzz::memory_files_allowed)
        __real__ZN7korvane8do_bloadERPNS_5TokenE(cursor);
    else
        korvane::raise(korvane::message::illegal_function_call);
}
void __real__ZN7korvane8do_bsaveERPNS_5TokenE(korvane::Cursor& cursor);
void __wrap__ZN7korvane8do_bsaveERPNS_5TokenE(korvane::Cursor& cursor) {
    if (korvane::fuzz::memory_files_allowed)
        __real__ZN7korvane8do_bsaveERPNS_5TokenE(cursor);
    else
        korvane::raise(korvane::message::illegal_function_call);
}

// The line editor looks for a key thousands of times before it sleeps; here it sleeps at once.
korvane::uefi::InputKey __real__ZN7korvane12look_for_keyEv();
korvane::uefi::InputKey __wrap__ZN7korvane12look_for_keyEv() {
    korvane::fuzz::machine->firmware().editor_waits(true);
    const korvane::uefi::InputKey key = __real__ZN7korvane12look_for_keyEv();
    korvane::fuzz::machine->firmware().editor_waits(false);
    return key;
}

}  // extern "C"
