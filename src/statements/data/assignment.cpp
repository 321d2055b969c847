#include "statements/data/assignment.h"

#include <algorithm>

#include "platform/clock.h"
#include "platform/memory.h"
#include "program/errors.h"
#include "program/messages.h"
#include "program/parse.h"
#include "values/evaluator.h"
#include "values/random.h"
#include "values/variables.h"

namespace korvane {
namespace {

// MID$(target$, start[, length]) = value$ overwrites part of a string in place and never changes its length.
void do_mid_statement(Cursor& cursor) {
    cursor += 2;
    const Reference target = resolve_reference(cursor);
    if (error_pending()) return;
    if (target.type != Type::STRING) {
        raise(message::type_mismatch);
        return;
    }
    if (!expect_comma(cursor)) return;
    const std::int64_t start = evaluate_integer(cursor);
    if (error_pending()) return;
    std::int64_t length = INT64_MAX;
    if (accept(cursor, ',')) length = evaluate_integer(cursor);
    if (error_pending() || !expect(cursor, ')', message::expected_right_parenthesis) ||
        !expect(cursor, '=', message::expected_equals))
        return;
    const Value value = evaluate_string(cursor);
    if (error_pending()) return;
    const Value text = load(target);
    if (start < 1 || start > text.length || length < 0) {
        raise(message::illegal_function_call);
        return;
    }
    const auto offset = static_cast<std::uint32_t>(start - 1);
    const std::int64_t room = std::min<std::int64_t>(length, text.length - offset);
    const auto count = static_cast<std::size_t>(std::min<std::int64_t>(room, value.length));
    // The value may be a piece of the target itself.
    move_bytes(const_cast<std::uint8_t*>(text.bytes) + offset, value.bytes, count);
}

}  // namespace

void do_let(Cursor& cursor) {
    ++cursor;
    do_assignment(cursor);
}

void do_assignment(Cursor& cursor) {
    if (cursor[0].kind == IDENTIFIER && cursor[1].kind == '(' && is_word(cursor, "MID$")) {
        do_mid_statement(cursor);
        return;
    }
    const Reference target = resolve_reference(cursor);
    if (error_pending() || !expect(cursor, '=', message::expected_equals)) return;
    const Value value = evaluate(cursor);
    if (!error_pending()) store(target, value);
}

void do_swap(Cursor& cursor) {
    ++cursor;
    const Reference first = resolve_reference(cursor);
    if (error_pending() || !expect_comma(cursor)) return;
    const Reference second = resolve_reference(cursor);
    if (error_pending()) return;
    if (first.type != second.type) {
        raise(message::type_mismatch);
        return;
    }
    std::uint8_t kept[sizeof(StringDescriptor)];
    const std::uint64_t size = storage_size(first.type);
    copy_bytes(kept, first.storage, size);
    // SWAP A, A exchanges a place with itself.
    move_bytes(first.storage, second.storage, size);
    copy_bytes(second.storage, kept, size);
}

void do_randomize(Cursor& cursor) {
    ++cursor;
    if (at_statement_end(cursor)) {
        const uefi::Time now = read_calendar();
        randomize((now.Hour * 60 + now.Minute) * 60 + now.Second);
        return;
    }
    const std::int64_t seed = evaluate_integer(cursor);
    if (!error_pending()) randomize(seed);
}

}  // namespace korvane
