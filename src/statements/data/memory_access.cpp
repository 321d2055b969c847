#include "statements/data/memory_access.h"

#include "platform/processor.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "screen/framebuffer.h"
#include "values/evaluator.h"
#include "values/variables.h"

namespace korvane {

namespace {

// What an address reads as that leads nowhere.
constexpr std::uint8_t nothing_there = 0xFF;

}  // namespace

std::uint64_t peek_memory(std::uint64_t address, std::uint32_t bytes) {
    bring_up_to_date();
    std::uint64_t value = 0;
    for (std::uint32_t i = 0; i < bytes; ++i) {
        // Memory may be a device's: every byte is read exactly once.
        const auto* place = reinterpret_cast<const volatile std::uint8_t*>(address + i);
        const std::uint8_t byte = is_addressable(address + i) ? *place : nothing_there;
        value |= std::uint64_t{byte} << (8 * i);
    }
    return value;
}

void poke_memory(std::uint64_t address, std::uint64_t value, std::uint32_t bytes) {
    bring_up_to_date();
    for (std::uint32_t i = 0; i < bytes; ++i)
        if (is_addressable(address + i))
            *reinterpret_cast<volatile std::uint8_t*>(address + i) =
                static_cast<std::uint8_t>(value >> (8 * i));
    note_written_memory(address, bytes);
    note_written_program(address, bytes);
}

namespace {

void poke_statement(Cursor& cursor, std::uint32_t bytes) {
    ++cursor;
    const std::int64_t address = evaluate_integer(cursor);
    if (error_pending() || !expect_comma(cursor)) return;
    const std::int64_t value = evaluate_integer(cursor);
    if (error_pending()) return;
    // Negative values of the narrow forms are refused, deliberately: they are written in their unsigned form.
    const auto bits = static_cast<std::uint64_t>(value);
    if (bytes < 8 && (bits >> (8 * bytes)) != 0) {
        raise(message::illegal_function_call);
        return;
    }
    poke_memory(static_cast<std::uint64_t>(address), bits, bytes);
}

}  // namespace

void do_poke(Cursor& cursor) {
    poke_statement(cursor, 1);
}

void do_poke16(Cursor& cursor) {
    poke_statement(cursor, 2);
}

void do_poke32(Cursor& cursor) {
    poke_statement(cursor, 4);
}

void do_poke64(Cursor& cursor) {
    poke_statement(cursor, 8);
}

}  // namespace korvane
