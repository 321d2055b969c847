// Arrays: their subscripts.
#include "program/errors.h"
#include "program/messages.h"
#include "program/parse.h"
#include "values/evaluator.h"
#include "values/variables.h"

namespace korvane {

std::uint64_t element_count(const VariableEntry& entry) {
    std::uint64_t elements = 1;
    for (std::uint64_t i = 0; i < entry.array->dimensions; ++i)
        elements *= array_extent(entry.array->bounds[i]);
    return elements;
}

std::uint8_t* element_address(VariableEntry& entry, Cursor& cursor) {
    if (!expect(cursor, '(', message::expected_left_parenthesis)) return nullptr;
    ArrayBlock& block = *entry.array;
    const Type type = entry.type;
    std::uint64_t offset = 0;
    std::uint64_t given = 0;
    do {
        const std::int64_t subscript = evaluate_integer(cursor);
        if (error_pending()) return nullptr;
        if (given == block.dimensions) {
            raise(message::wrong_number_of_subscripts);
            return nullptr;
        }
        const std::int64_t bound = block.bounds[given++];
        if (subscript < variables.array_base || subscript > bound) {
            raise(message::subscript_out_of_range);
            return nullptr;
        }
        offset = offset * array_extent(bound) +
                 (static_cast<std::uint64_t>(subscript) - static_cast<std::uint64_t>(variables.array_base));
    } while (accept(cursor, ','));
    if (!expect(cursor, ')', message::expected_right_parenthesis)) return nullptr;
    if (given < block.dimensions) {
        raise(message::wrong_number_of_subscripts);
        return nullptr;
    }
    return block.elements() + storage_size(type) * offset;
}

VariableEntry* expect_array(Cursor& cursor) {
    if (cursor->kind != IDENTIFIER) {
        raise(message::expected_array);
        return nullptr;
    }
    VariableEntry* entry = find_array(*cursor++);
    if (entry == nullptr) raise(message::array_not_dimensioned);
    return entry;
}

}  // namespace korvane
