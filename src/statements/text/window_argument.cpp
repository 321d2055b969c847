#include "statements/text/window_argument.h"

#include "program/parse.h"
#include "values/evaluator.h"

namespace korvane {

TextWindow* parse_window_to_define(Cursor& cursor) {
    if (!expect(cursor, '@', message::expected_at)) return nullptr;
    const std::int64_t number = evaluate_integer(cursor);
    if (error_pending()) return nullptr;
    if (number < 0 || number >= std::int64_t{text_window_count}) {
        raise(message::illegal_function_call);
        return nullptr;
    }
    return &text_windows.windows[static_cast<std::size_t>(number)];
}

TextWindow* parse_window(Cursor& cursor) {
    TextWindow* const window = parse_window_to_define(cursor);
    if (window != nullptr && window->defined == 0) {
        raise(message::window_not_defined);
        return nullptr;
    }
    return window;
}

}  // namespace korvane
