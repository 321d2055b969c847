// What the JavaScript around the module does for it (web/machine/machine.js). Texts are UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>

#define KORVANE_IMPORT(name) __attribute__((import_module("machine"), import_name(name)))
#define KORVANE_EXPORT(name) __attribute__((export_name(name)))

namespace korvane::web {

extern "C" {

// Nanoseconds, at an even pace, from any beginning.
KORVANE_IMPORT("ticks") double import_ticks();

// Milliseconds since 1970, UTC, and the minutes that local time is ahead of UTC at such a moment.
KORVANE_IMPORT("now") double import_now();
KORVANE_IMPORT("minutes_ahead") double import_minutes_ahead(double milliseconds);

// Waits; the event loop goes on meanwhile.
KORVANE_IMPORT("stall") void import_stall(double microseconds);

// Comes back when a key is pressed (press_key).
KORVANE_IMPORT("wait_for_key") void import_wait_for_key();

// The image has looked for a key in passing, and `soon` after the look before; `clock` is not 0 where only
// the program looks at the ticks. Not 0 when it is time to let the event loop have a turn, which
// import_turn() does.
KORVANE_IMPORT("is_turn_due") std::int32_t import_is_turn_due(std::uint32_t soon, std::uint32_t clock);
KORVANE_IMPORT("turn") void import_turn();

// A file or folder of the volume is new or changed, or it has gone. `modified` as import_now().
KORVANE_IMPORT("tell_file")
void import_tell_file(const char* path, std::size_t length, const void* bytes, std::size_t size,
                      double modified);
KORVANE_IMPORT("tell_folder") void import_tell_folder(const char* path, std::size_t length, double modified);
KORVANE_IMPORT("tell_gone") void import_tell_gone(const char* path, std::size_t length);

// The machine cannot go on. Does not come back.
KORVANE_IMPORT("fail") void import_fail(const char* reason, std::size_t length);

}  // extern "C"

}  // namespace korvane::web
