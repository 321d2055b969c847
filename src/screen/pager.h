// The two prompts of paged listings, shared by LIST, VARINFO, ARRAYINFO, FILES and the machine explorer.
//
// A listing counts its own lines, because each has its own rule for when a page is full.
#pragma once

namespace korvane {

inline constexpr char pause_prompt[] = "-- press any key --";
inline constexpr char pause_or_abort_prompt[] = "-- press any key; ESC aborts --";

// Ends the console line, unless the cursor stands at the left edge of the text area.
void end_console_line();

// Shows "-- press any key --", waits for one key (Escape included), and ends the prompt's line unless the
// cursor is at the left edge already.
void pause_listing();

// Shows "-- press any key; ESC aborts --" and waits for one key; ends the prompt's line the same way. False
// when the key was Escape or a break was pending: the listing ends.
bool pause_listing_or_abort();

}  // namespace korvane
