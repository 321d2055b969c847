#include "screen/pager.h"

#include "screen/console.h"
#include "screen/keyboard.h"

namespace korvane {

namespace {

bool prompt_for_key(const char* prompt) {
    con_put_string(prompt);
    const bool goes_on = wait_for_any_key();
    end_console_line();
    return goes_on;
}

}  // namespace

void end_console_line() {
    if (console.cursor_column != con_text_area().left) con_put_char(carriage_return);
}

void pause_listing() {
    prompt_for_key(pause_prompt);
}

bool pause_listing_or_abort() {
    return prompt_for_key(pause_or_abort_prompt);
}

}  // namespace korvane
