// The variables that a CHAIN without ALL keeps, in the order of their COMMON statements.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

inline constexpr std::uint32_t max_common_entries = 512;

struct CommonEntry {
    char name[name_capacity];  // as the tokenizer gives it, type suffix included, zero-padded
    bool is_array;
};

struct CommonList {
    std::uint32_t count;
    CommonEntry entries[max_common_entries];
};
extern CommonList common_list;

// Empties the list; part of the clear operation.
void clear_common_list();

// Whether the list holds the scalar or the array of that name.
bool is_common(const char* name, bool is_array);

// Drops the variables that are not in the list; the others keep their order.
void keep_common_variables();

}  // namespace korvane
