#include "statements/data/data_statements.h"

#include <string_view>

#include "program/errors.h"
#include "program/execution.h"
#include "program/messages.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "values/data_items.h"
#include "values/evaluator.h"
#include "values/item_value.h"
#include "values/variables.h"

namespace korvane {

void do_data(Cursor& cursor) {
    while (cursor->kind != END_OF_LINE && cursor->kind != ':')
        ++cursor;
}

void do_read(Cursor& cursor) {
    ++cursor;
    const DataPosition start = data_position;
    do {
        const Reference target = resolve_reference(cursor);
        // Executed again after a break, the statement reads the same items.
        if (break_requested()) data_position = start;
        if (error_pending()) return;
        std::string_view item;
        if (!next_data_item(item)) {
            raise(message::out_of_data);
            return;
        }
        if (!store_item(target, item) && !error_pending()) raise(message::type_mismatch);
    } while (!error_pending() && accept(cursor, ','));
}

void do_restore(Cursor& cursor) {
    ++cursor;
    if (at_statement_end(cursor)) {
        reset_data_position();
        return;
    }
    const std::int64_t number = evaluate_line_number(cursor);
    if (error_pending()) return;
    const std::uint32_t index =
        number > max_line_number ? direct_line : find_line(static_cast<std::uint32_t>(number));
    if (index == direct_line) {
        raise(message::undefined_line_number);
        return;
    }
    move_data_position(index);
}

}  // namespace korvane
