// Finding an array element from its bracket: each mark, the bracket or a comma, holds the subscript behind it
// as its right side (MarkRecord).
#pragma once

#include "fast/records.h"
#include "fast/sides.h"
#include "values/variables.h"

namespace korvane::fast {

// A subscript counted from the lower bound; false when it is out of range.
inline bool subscript_offset(const Whole& subscript, std::int64_t bound, std::uint64_t& offset) {
    const std::int64_t base = variables.array_base;
    offset = static_cast<std::uint64_t>(subscript.value) - static_cast<std::uint64_t>(base);
    return subscript.failed == 0 && subscript.value >= base && subscript.value <= bound;
}

// Any number of subscripts, row-major.
bool find_offset(const Token* bracket, const ArrayBlock* block, std::uint64_t& offset);

// The address of the element; null when a subscript is out of range or no number. `size`:
// bytes of an element.
template <int size, Subscripts subscripts>
inline std::uint8_t* find_element(const Token* bracket) {
    const ArrayBlock* block = as<ElementRecord>(bracket).array;
    const std::int64_t* elements = block->bounds + (subscripts == Subscripts::one   ? 1
                                                    : subscripts == Subscripts::two ? 2
                                                                                    : block->dimensions);
    std::uint64_t offset;
    if constexpr (subscripts == Subscripts::any) {
        if (!find_offset(bracket, block, offset)) return nullptr;
    } else {
        if (!subscript_offset(round_whole(read<double>(as<MarkRecord>(bracket).value_leaf)), block->bounds[0],
                              offset))
            return nullptr;
    }
    if constexpr (subscripts == Subscripts::two) {
        std::uint64_t column;
        const Whole second =
            round_whole(read<double>(as<MarkRecord>(as<MarkRecord>(bracket).next_mark).value_leaf));
        if (!subscript_offset(second, block->bounds[1], column)) return nullptr;
        offset = offset * array_extent(block->bounds[1]) + column;
    }
    auto* bytes = reinterpret_cast<std::uint8_t*>(const_cast<std::int64_t*>(elements));
    return bytes + offset * static_cast<std::uint64_t>(size);
}

}  // namespace korvane::fast
