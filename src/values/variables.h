// Variables and arrays: one table of at most 4096 entries in creation order, found by name through an index
// beside it. Of two entries with one name, which only POKE can make, the first one counts.
//
// Scalars and arrays are separate name spaces. Reading never creates an entry; assignment, INPUT, READ, FOR
// and the like do. Only ERASE and CHAIN remove entries.
#pragma once

#include <cstdint>

#include "numbers/value.h"
#include "program/arenas.h"
#include "program/token.h"

namespace korvane {

inline constexpr std::uint32_t max_variables = 4096;
inline constexpr int max_dimensions = 4;

struct VariableEntry {
    char name[name_capacity];  // with its type suffix, at most 39 characters, zero-padded
    Type type;                 // fixed at creation
    std::uint8_t flags;        // bit 0: array
    std::uint8_t reserved[6];
    union {
        std::uint8_t storage[16];  // a scalar's value in its stored width
        struct ArrayBlock* array;
    };

    bool is_array() const { return (flags & 1) != 0; }
};
static_assert(sizeof(VariableEntry) == 64);
static_assert(__builtin_offsetof(VariableEntry, storage) == 48);

// An array block in the data arena: this head, `dimensions` upper bounds,
// then the elements in row-major order.
struct ArrayBlock {
    std::uint64_t dimensions;  // 1 to 4
    std::int64_t bounds[];     // upper bound of each dimension, in the order written in DIM

    std::uint8_t* elements() { return reinterpret_cast<std::uint8_t*>(bounds + dimensions); }
};
static_assert(sizeof(ArrayBlock) == 8);

struct Variables {
    VariableEntry* table;  // VARTABLE
    std::uint32_t count;
    std::int64_t array_base;  // 0 or 1
    bool index_stale;         // names in the table have changed without the index
    // Of names without a variable that specialised statements read: a bit for each 64th of all names
    // (forget_absence).
    std::uint64_t absent_names;
    std::uint32_t removals;  // arrays that have been removed, ever
    Type default_types[26];  // of unsuffixed names, by first letter
};
extern Variables variables;

// A place that holds a datum: a scalar's storage or an array element.
struct Reference {
    std::uint8_t* storage;  // null after an error
    Type type;
};

// Empties the table at VARTABLE and sets default types and array base back;
// values/clear.h is the whole operation.
void clear_variables();

// The type of a variable of this name: by suffix, else by first letter.
Type type_of_name(const char* name);

// All default types back to DOUBLE.
void reset_default_types();

VariableEntry* find_variable(const char* name, bool is_array);

// After entries have been moved, or memory been written by other means than these functions: anywhere, or at
// an address. Also what is written in front of the table may reach into it.
inline void note_written_names() {
    variables.index_stale = true;
}
void note_written_table(std::uint64_t offset, std::uint64_t size);
inline void note_written_memory(std::uint64_t address, std::uint64_t size) {
    const std::uint64_t offset = address - reinterpret_cast<std::uint64_t>(variables.table);
    if (offset < variable_table_size || offset + size < size) note_written_table(offset, size);
}

// Notes that a specialised statement reads the name as one without a variable.
void assume_absence(const char* name);

// Ends what was specialised on the assumption that names have no variable: before one of them gets one, or
// the types of unset names change.
void forget_absence();

// Appends an entry; raises "Too many variables" and gives null when the table is full.
VariableEntry* create_variable(const char* name, bool is_array);

// Takes an array out of the table; later entries move down a place. Names of arrays are found anew, and
// statements that keep the array's address are specialised anew; the clear generation ends only when scalars
// move, or when it is not known what keeps the address (values/array_keepers.h).
void remove_array(VariableEntry* entry);

// The scalar of the name at the cursor, found or created; skips the name. Null after an error.
VariableEntry* find_or_create_scalar(Cursor& cursor);

// What stays the same for as long as no array is removed and no clear generation ends.
inline std::uint32_t array_stamp() {
    return arenas.generation + variables.removals;
}

// Remembers in a name token what it resolved to, until the next clear generation; an array until one is
// removed.
void remember_variable(Token& name, VariableEntry* entry);

// The array of a name token, remembered from the last time if that is still good; null when there is none.
VariableEntry* find_array(Token& name);

// Elements along one dimension. Bounds are at least the base, so only the largest INT64 can wrap: to 0.
inline std::uint64_t array_extent(std::int64_t bound) {
    return static_cast<std::uint64_t>(bound) - static_cast<std::uint64_t>(variables.array_base) + 1;
}

// Elements of an array entry, and the bytes of its data area.
std::uint64_t element_count(const VariableEntry& entry);

// Parses "(" subscripts ")" and gives the element's address, or null after an error.
std::uint8_t* element_address(VariableEntry& entry, Cursor& cursor);

// The array named at the cursor (a bare name), as PUT, GET and the like take it. Raises "Expected array" when
// there is no name and "Array not dimensioned" when there is no such array. Skips the name.
VariableEntry* expect_array(Cursor& cursor);

// A variable or array element to be written: a new scalar is created. Raises "Expected variable", "Array not
// dimensioned", subscript errors, "Too many variables"; a system variable's name is "Illegal function call".
Reference resolve_reference(Cursor& cursor);

// The same for a place that is only looked at: the elements of an array may have a system variable's name.
Reference resolve_place(Cursor& cursor);

// The datum at a place. A STRING refers to the variable's own bytes.
Value load(const Reference& reference);

// Stores with conversion to the place's type. Raises "Overflow", "Type mismatch", "Out of string space"; a
// failed store leaves the place unchanged. A string's bytes are copied into fresh string space.
void store(const Reference& reference, const Value& value);

// The string half of store(): copies the bytes into string space and writes the descriptor.
void store_string(std::uint8_t* storage, const Value& value);

}  // namespace korvane
