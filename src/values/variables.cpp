#include "values/variables.h"

#include "platform/characters.h"
#include "platform/memory.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/line_starts.h"
#include "program/messages.h"
#include "program/parse.h"
#include "program/tokenizer.h"
#include "values/array_keepers.h"
#include "values/name_index.h"

namespace korvane {

Variables variables;

namespace {

constexpr std::uint8_t array_flag = 1;

NameIndex<max_variables> names;

// Makes the index from the table, so that of equal names the first one is found.
[[gnu::cold, gnu::noinline]] void rebuild_index() {
    names.clear();
    for (std::uint32_t i = variables.count; i-- > 0;)
        names.add(variables.table[i].name, static_cast<std::uint16_t>(i));
    variables.index_stale = false;
}

inline void refresh_index() {
    if (__builtin_expect(variables.index_stale, false)) rebuild_index();
}

}  // namespace

void reset_default_types() {
    for (Type& type : variables.default_types)
        type = Type::DOUBLE;
}

void clear_variables() {
    variables.table = reinterpret_cast<VariableEntry*>(arenas.VARTABLE);
    variables.count = 0;
    variables.array_base = 0;
    variables.index_stale = false;
    names.clear();
    variables.absent_names = 0;
    reset_default_types();
}

Type type_of_name(const char* name) {
    int length = 0;
    while (length < name_capacity && name[length] != 0)
        ++length;
    switch (length == 0 ? '\0' : name[length - 1]) {
        case '%':
            return Type::INTEGER;
        case '&':
            return length > 1 && name[length - 2] == '&' ? Type::INT64 : Type::LONG;
        case '!':
            return Type::SINGLE;
        case '#':
            return Type::DOUBLE;
        case '$':
            return Type::STRING;
        default:
            return is_upper_letter(name[0]) ? variables.default_types[name[0] - 'A'] : Type::DOUBLE;
    }
}

VariableEntry* find_variable(const char* name, bool is_array) {
    refresh_index();
    for (std::uint16_t i = names.first(name); i != names.none; i = names.next(i)) {
        VariableEntry& entry = variables.table[i];
        if (entry.is_array() == is_array && same_name(entry.name, name)) return &entry;
    }
    return nullptr;
}

void note_written_table(std::uint64_t offset, std::uint64_t size) {
    // A variable's value may be written as often as one likes.
    const std::uint64_t in_entry = offset % sizeof(VariableEntry);
    const bool value_only =
        in_entry >= __builtin_offsetof(VariableEntry, storage) && in_entry + size <= sizeof(VariableEntry);
    if (!value_only) note_written_names();
}

static std::uint64_t bit_of_name(const char* name) {
    return std::uint64_t{1} << names.slot(name) % 64;
}

void assume_absence(const char* name) {
    variables.absent_names |= bit_of_name(name);
}

void forget_absence() {
    if (variables.absent_names == 0) return;
    variables.absent_names = 0;
    ++arenas.generation;
}

VariableEntry* create_variable(const char* name, bool is_array) {
    if (variables.count >= max_variables) {
        raise(message::too_many_variables);
        return nullptr;
    }
    if (!is_array && (variables.absent_names & bit_of_name(name)) != 0) forget_absence();
    refresh_index();
    VariableEntry& entry = variables.table[variables.count++];
    fill_bytes(&entry, 0, sizeof entry);
    copy_bytes(entry.name, name, name_capacity);
    entry.name[name_capacity - 1] = 0;
    entry.type = type_of_name(entry.name);
    entry.flags = is_array ? array_flag : 0;
    names.add(entry.name, static_cast<std::uint16_t>(variables.count - 1));
    return &entry;
}

void remove_array(VariableEntry* entry) {
    refresh_index();
    VariableEntry* end = variables.table + variables.count;
    const ArrayBlock* array = entry->array;
    const VariableEntry* scalar = entry;
    while (scalar != end && scalar->is_array())
        ++scalar;
    names.remove(entry->name, static_cast<std::uint16_t>(entry - variables.table), variables.count);
    move_bytes(entry, entry + 1, static_cast<std::size_t>(end - (entry + 1)) * sizeof(VariableEntry));
    --variables.count;
    // Names tell the removals from one another modulo 256.
    if (++variables.removals % 256 == 0 || scalar != end || !forget_array_keepers(array)) ++arenas.generation;
}

void remember_variable(Token& name, VariableEntry* entry) {
    // A specialised statement that begins with this name belongs to the generation that ends here.
    if (name.generation != arenas.generation && !begins_watched_line(&name)) {
        name.argument = {};
        name.execute = tokenizer.first_handler;
    }
    name.resolution = entry->is_array() ? RESOLVED_ARRAY : RESOLVED_SCALAR;
    name.generation = arenas.generation;
    name.removals = static_cast<std::uint8_t>(variables.removals);
    name.cached = entry;
}

VariableEntry* find_array(Token& name) {
    if (name.resolution == RESOLVED_ARRAY && name.generation == arenas.generation &&
        name.removals == static_cast<std::uint8_t>(variables.removals))
        return static_cast<VariableEntry*>(name.cached);
    VariableEntry* entry = find_variable(name.name, true);
    if (entry != nullptr) remember_variable(name, entry);
    return entry;
}

Value load(const Reference& reference) {
    const std::uint8_t* storage = reference.storage;
    switch (reference.type) {
        case Type::INTEGER:
            return Value::of_integer(read_unaligned<std::int16_t>(storage), Type::INTEGER);
        case Type::LONG:
            return Value::of_integer(read_unaligned<std::int32_t>(storage), Type::LONG);
        case Type::INT64:
            return Value::of_integer(read_unaligned<std::int64_t>(storage), Type::INT64);
        case Type::SINGLE:
            return Value::of_real(read_unaligned<float>(storage), Type::SINGLE);
        case Type::DOUBLE:
            return Value::of_real(read_unaligned<double>(storage), Type::DOUBLE);
        case Type::STRING: {
            const auto descriptor = read_unaligned<StringDescriptor>(storage);
            return Value::of_string(descriptor.bytes, descriptor.length);
        }
        case Type::NONE:
            break;
    }
    return Value::nothing();
}

}  // namespace korvane
