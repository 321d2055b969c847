#include "run/event_timers.h"

#include <algorithm>

#include "platform/clock.h"
#include "platform/memory.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "run/control_stacks.h"
#include "values/evaluator.h"

namespace korvane {

EventTimers event_timers;

namespace {

void start(EventTimer& timer) {
    timer.on = true;
    timer.pending = false;
    timer.due = clock_milliseconds() + timer.interval;
}

// Gives the due time of the next timer, of those that could call their handlers.
std::uint64_t mark_due_timers() {
    const std::uint64_t now = clock_milliseconds();
    std::uint64_t next_due = ~std::uint64_t{0};
    for (int n = 0; n < event_timer_count; ++n) {
        EventTimer& timer = event_timers.timers[n];
        if ((event_timers.active >> n & 1) == 0 || timer.busy) continue;
        if (now >= timer.due) {
            timer.pending = true;
            timer.due = now + timer.interval;
        }
        next_due = std::min(next_due, timer.due);
    }
    return next_due;
}

// Calls the handler; false when it could not be called, with an error pending.
bool fire(int number, std::uint32_t record) {
    EventTimer& timer = event_timers.timers[number];
    if (!push_gosub({.line = execution.line,
                     .record = record,
                     .kind = GosubKind::TIMER,
                     .timer = static_cast<std::uint8_t>(number),
                     .epoch = epoch_here(),
                     .token = nullptr}))
        return false;
    timer.busy = true;
    timer.pending = false;
    jump_to_line(timer.handler);
    if (!error_pending()) return true;
    pop_gosub();
    timer.busy = false;
    return false;
}

void set_interval(EventTimer& timer, Cursor& cursor) {
    const std::int64_t interval = evaluate_integer(cursor);
    if (error_pending()) return;
    if (interval < 1) {
        raise(message::illegal_function_call);
        return;
    }
    timer.interval = static_cast<std::uint64_t>(interval);
    if (timer.on) start(timer);
}

void switch_on(EventTimer& timer) {
    if (timer.interval == 0) {
        raise(message::illegal_function_call);
        return;
    }
    start(timer);
}

}  // namespace

void clear_event_timers() {
    fill_bytes(&event_timers, 0, sizeof event_timers);
}

void update_active_timers() {
    unsigned active = 0;
    for (int n = 0; n < event_timer_count; ++n) {
        const EventTimer& timer = event_timers.timers[n];
        if (timer.on && timer.interval != 0 && timer.handler != 0) active |= 1U << n;
    }
    event_timers.active = static_cast<std::uint8_t>(active);
    event_timers.next_call = 0;
}

void end_timer_handler(int number) {
    event_timers.timers[number].busy = false;
    event_timers.next_call = 0;
}

EventTimer* parse_event_timer(Cursor& cursor) {
    if (!expect(cursor, '(', message::expected_left_parenthesis)) return nullptr;
    const std::int64_t number = evaluate_integer(cursor);
    if (error_pending() || !expect(cursor, ')', message::expected_right_parenthesis)) return nullptr;
    if (number < 0 || number >= event_timer_count) {
        raise(message::illegal_function_call);
        return nullptr;
    }
    return &event_timers.timers[number];
}

bool poll_event_timers(std::uint32_t record) {
    const std::uint64_t next_due = mark_due_timers();
    for (int n = 0; n < event_timer_count; ++n) {
        const EventTimer& timer = event_timers.timers[n];
        // The active ones are on and have a handler, or the mask would not name them.
        if ((event_timers.active >> n & 1) != 0 && timer.pending && !timer.busy) {
            event_timers.next_call = 0;
            return fire(n, record);
        }
    }
    event_timers.next_call = time_stamp_at(next_due);
    return false;
}

void do_timer(Cursor& cursor) {
    ++cursor;
    EventTimer* timer = parse_event_timer(cursor);
    if (timer == nullptr) return;
    if (accept(cursor, '=')) {
        set_interval(*timer, cursor);
    } else if (accept(cursor, KW_ON)) {
        switch_on(*timer);
    } else if (accept_word(cursor, "OFF")) {
        timer->on = false;
        timer->pending = false;
    } else {
        raise(message::syntax_error);
    }
    update_active_timers();
}

void do_on_timer(Cursor& cursor) {
    ++cursor;
    EventTimer* timer = parse_event_timer(cursor);
    if (timer == nullptr || !expect(cursor, KW_GOSUB, message::syntax_error_lower)) return;
    const std::int64_t handler = evaluate_line_number(cursor);
    if (error_pending()) return;
    if (handler > max_line_number) {
        raise(message::undefined_line_number);
        return;
    }
    timer->handler = static_cast<std::uint32_t>(handler);
    timer->pending = false;
    update_active_timers();
}

}  // namespace korvane
