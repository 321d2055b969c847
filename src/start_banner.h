// What the interpreter says when it starts.
#pragma once

namespace korvane {

// On the firmware's console: where the data arena lies and how large it is.
void announce_data_arena();

// On our own: the quotation, the name and the free bytes.
void print_banner();

}  // namespace korvane
