#include "statements/functions/system_functions.h"

#include <array>
#include <string_view>

#include "platform/clock.h"
#include "program/arenas.h"
#include "program/command_line.h"
#include "program/errors.h"
#include "program/landmarks.h"
#include "program/messages.h"
#include "program/parse.h"
#include "run/event_timers.h"
#include "screen/console.h"
#include "screen/framebuffer.h"
#include "statements/data/memory_access.h"
#include "values/convert.h"
#include "values/functions.h"
#include "values/variables.h"

namespace korvane {
namespace {

Value address_value(const void* address) {
    return Value::of_integer(static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(address)));
}

Value peek(const Value& address, std::uint32_t bytes, Type type) {
    const auto at = static_cast<std::uint64_t>(to_integer(address));
    if (error_pending()) return Value::nothing();
    return Value::of_integer(static_cast<std::int64_t>(peek_memory(at, bytes)), type);
}

// The last digits of a number, with leading zeros.
template <std::size_t Size>
void put_digits(std::array<char, Size>& text, std::size_t start, std::size_t count, unsigned number) {
    for (std::size_t i = start + count; i-- > start; number /= 10)
        text[i] = static_cast<char>('0' + number % 10);
}

}  // namespace

Value function_peek(const Value& address) {
    return peek(address, 1, Type::INTEGER);
}

Value function_peek16(const Value& address) {
    const Value value = peek(address, 2, Type::INT64);
    return narrowest_integer(value.integer);
}

Value function_peek32(const Value& address) {
    const Value value = peek(address, 4, Type::INT64);
    return narrowest_integer(value.integer);
}

Value function_peek64(const Value& address) {
    return peek(address, 8, Type::INT64);
}

Value function_fre(const Value&) {
    return Value::of_integer(static_cast<std::int64_t>(free_data_bytes()));
}

Value function_varptr(Cursor& cursor) {
    ++cursor;
    const Reference place = resolve_place(cursor);
    if (error_pending() || !expect(cursor, ')', message::expected_right_parenthesis)) return Value::nothing();
    return address_value(place.storage);
}

Value function_korvaneadr(const Value& name) {
    if (name.type != Type::STRING) return fail(message::type_mismatch);
    std::uint64_t address = 0;
    if (!find_landmark(name.text(), address)) return fail(message::unknown_landmark);
    return Value::of_integer(static_cast<std::int64_t>(address));
}

Value variable_lomem() {
    return address_value(arenas.LOMEM);
}
Value variable_himem() {
    return address_value(arenas.HIMEM);
}
Value variable_freebot() {
    return address_value(arenas.FREEBOT);
}
Value variable_freetop() {
    return address_value(arenas.FREETOP);
}
Value variable_gramaxx() {
    return narrowest_integer(screen.width);
}
Value variable_gramaxy() {
    return narrowest_integer(screen.height);
}
Value variable_grapitch() {
    return narrowest_integer(screen.pitch);
}
Value variable_scrnadr() {
    return address_value(screen.framebuffer);
}
Value variable_txtmaxx() {
    return narrowest_integer(text_columns());
}
Value variable_txtmaxy() {
    return narrowest_integer(text_rows());
}

Value function_timer_bare() {
    return Value::of_real(clock_seconds());
}

Value function_timer(const Value& number) {
    const std::int64_t timer = to_integer(number);
    if (error_pending()) return Value::nothing();
    if (timer < 0 || timer >= event_timer_count) return fail(message::illegal_function_call);
    return Value::of_integer(static_cast<std::int64_t>(event_timers.timers[timer].interval));
}

Value function_time() {
    const uefi::Time now = read_calendar();
    std::array<char, 8> text{'0', '0', ':', '0', '0', ':', '0', '0'};
    put_digits(text, 0, 2, now.Hour);
    put_digits(text, 3, 2, now.Minute);
    put_digits(text, 6, 2, now.Second);
    return new_string_of(text.data(), text.size());
}

Value function_date() {
    const uefi::Time now = read_calendar();
    std::array<char, 10> text{'0', '0', '-', '0', '0', '-', '0', '0', '0', '0'};
    put_digits(text, 0, 2, now.Month);
    put_digits(text, 3, 2, now.Day);
    put_digits(text, 6, 4, now.Year);
    return new_string_of(text.data(), text.size());
}

Value function_err() {
    return narrowest_integer(error_code());
}
Value function_erl() {
    return narrowest_integer(errors.line);
}

Value function_commandlineargc() {
    return narrowest_integer(command_arguments.count);
}

Value function_commandlinearg(const Value& number) {
    const std::int64_t index = to_integer(number);
    if (error_pending()) return Value::nothing();
    if (index < 0) return fail(message::illegal_function_call);
    if (index >= command_arguments.count) return new_string_of(nullptr, 0);
    const std::string_view argument(command_arguments.arguments[index]);
    return new_string_of(argument.data(), argument.size());
}

Value function_commandlinearg_bare() {
    std::uint64_t length = 0;
    for (std::uint32_t i = 0; i < command_arguments.count; ++i)
        length += std::string_view(command_arguments.arguments[i]).size() + (i > 0);
    const NewString joined = new_string(length);
    if (error_pending()) return Value::nothing();
    std::uint8_t* at = joined.bytes;
    for (std::uint32_t i = 0; i < command_arguments.count; ++i) {
        if (i > 0) *at++ = ' ';
        for (const char character : std::string_view(command_arguments.arguments[i]))
            *at++ = static_cast<std::uint8_t>(character);
    }
    return joined.value;
}

}  // namespace korvane
