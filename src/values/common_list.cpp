#include "values/common_list.h"

#include "platform/memory.h"
#include "program/arenas.h"
#include "values/variables.h"

namespace korvane {

CommonList common_list;

void clear_common_list() {
    common_list.count = 0;
}

bool is_common(const char* name, bool is_array) {
    for (std::uint32_t i = 0; i < common_list.count; ++i) {
        const CommonEntry& entry = common_list.entries[i];
        if (entry.is_array == is_array && compare_bytes(entry.name, name, name_capacity) == 0) return true;
    }
    return false;
}

void keep_common_variables() {
    std::uint32_t kept = 0;
    for (std::uint32_t i = 0; i < variables.count; ++i) {
        const VariableEntry entry = variables.table[i];
        if (is_common(entry.name, entry.is_array())) variables.table[kept++] = entry;
    }
    variables.count = kept;
    note_written_names();
    // Entries have moved: cached references must not find them.
    ++arenas.generation;
}

}  // namespace korvane
