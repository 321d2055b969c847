#include "statements/data/array_statements.h"

#include "platform/memory.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "values/evaluator.h"
#include "values/variables.h"

namespace korvane {

namespace {

constexpr std::uint64_t block_head_size(std::uint64_t dimensions) {
    return 8 + 8 * dimensions;
}

struct Bounds {
    std::int64_t values[max_dimensions];
    std::uint64_t count;
};

// The bounds behind "(" up to and including ")".
bool read_bounds(Cursor& cursor, Bounds& bounds) {
    bounds.count = 0;
    do {
        const std::int64_t bound = evaluate_integer(cursor);
        if (error_pending()) return false;
        if (bound < variables.array_base) {
            raise(message::illegal_dimension);
            return false;
        }
        if (bounds.count == max_dimensions) {
            raise(message::too_many_dimensions);
            return false;
        }
        bounds.values[bounds.count++] = bound;
    } while (accept(cursor, ','));
    return expect(cursor, ')', message::expected_right_parenthesis);
}

// Takes the block of an array from the data arena; null when it does not fit or its size does not
// fit in 64 bits.
ArrayBlock* allocate_block(const Bounds& bounds, Type type) {
    std::uint64_t elements = 1;
    std::uint64_t data = 0;
    std::uint64_t size = 0;
    for (std::uint64_t i = 0; i < bounds.count; ++i) {
        const std::uint64_t along = array_extent(bounds.values[i]);
        if (along == 0 || __builtin_mul_overflow(elements, along, &elements)) return nullptr;
    }
    if (__builtin_mul_overflow(elements, storage_size(type), &data) ||
        __builtin_add_overflow(data, block_head_size(bounds.count), &size))
        return nullptr;
    std::uint8_t* memory = allocate_low(size);
    if (memory == nullptr) return nullptr;
    auto* block = reinterpret_cast<ArrayBlock*>(memory);
    block->dimensions = bounds.count;
    copy_bytes(block->bounds, bounds.values, 8 * bounds.count);
    fill_bytes(block->elements(), 0, data);
    return block;
}

// One item of DIM. Clearing its elements takes far longer than reading it: its size matters, not its speed.
[[gnu::cold]] void dimension_array(Cursor& cursor) {
    if (cursor->kind != IDENTIFIER) {
        raise(message::expected_name);
        return;
    }
    const Token* name = cursor++;
    if (find_variable(name->name, true) != nullptr) {
        raise(message::duplicate_definition);
        return;
    }
    Bounds bounds;
    if (!expect(cursor, '(', message::expected_left_parenthesis) || !read_bounds(cursor, bounds)) return;
    if (variables.count >= max_variables) {
        raise(message::too_many_variables);
        return;
    }
    ArrayBlock* block = allocate_block(bounds, type_of_name(name->name));
    if (block == nullptr) {
        raise(message::out_of_memory);
        return;
    }
    create_variable(name->name, true)->array = block;
}

bool any_array_exists() {
    for (std::uint32_t i = 0; i < variables.count; ++i)
        if (variables.table[i].is_array()) return true;
    return false;
}

// The arrays that a DIM made before a break: executed again it makes them once more. They are those from
// entry `first` on, and their blocks begin at `bottom`.
[[gnu::cold]] void forget_arrays(std::uint32_t first, std::uint8_t* bottom) {
    for (std::uint32_t i = variables.count; i-- > first;)
        if (variables.table[i].is_array()) remove_array(&variables.table[i]);
    arenas.FREEBOT = bottom;
}

}  // namespace

void do_dim(Cursor& cursor) {
    ++cursor;
    const std::uint32_t first = variables.count;
    std::uint8_t* const bottom = arenas.FREEBOT;
    // Items dimensioned before one that fails stay dimensioned.
    do {
        dimension_array(cursor);
    } while (!error_pending() && accept(cursor, ','));
    if (break_requested()) forget_arrays(first, bottom);
}

void do_erase(Cursor& cursor) {
    ++cursor;
    do {
        if (cursor->kind != IDENTIFIER) {
            raise(message::expected_array);
            return;
        }
        VariableEntry* entry = find_variable(cursor->name, true);
        ++cursor;
        if (entry == nullptr) {
            raise(message::illegal_function_call);
            return;
        }
        // The block's memory is not given back; only a clear reclaims the arena (deliberate).
        remove_array(entry);
    } while (accept(cursor, ','));
}

void do_option(Cursor& cursor) {
    ++cursor;
    if (!expect(cursor, KW_BASE, message::syntax_error)) return;
    if (cursor->kind != NUMBER) {
        raise(message::syntax_error);
        return;
    }
    const double base = cursor->number.as_double;
    ++cursor;
    if (base != 0 && base != 1)
        raise(message::illegal_function_call);
    else if (any_array_exists())
        raise(message::duplicate_definition);
    else
        variables.array_base = base == 0 ? 0 : 1;
}

}  // namespace korvane
