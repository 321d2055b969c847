// References: the variable or array element that a statement names.
#include "program/arenas.h"
#include "program/errors.h"
#include "program/messages.h"
#include "values/functions.h"
#include "values/variables.h"

namespace korvane {

Reference resolve_reference(Cursor& cursor) {
    // A name that was found as a variable or an array before is known to be none of these.
    if (cursor->kind == IDENTIFIER && cursor->resolution == UNRESOLVED && is_system_variable(cursor->name)) {
        raise(message::illegal_function_call);
        return {nullptr, Type::NONE};
    }
    return resolve_place(cursor);
}

Reference resolve_place(Cursor& cursor) {
    if (cursor->kind != IDENTIFIER) {
        raise(message::expected_variable);
        return {nullptr, Type::NONE};
    }
    if (cursor[1].kind == '(') {
        VariableEntry* array = find_array(*cursor++);
        if (array == nullptr) {
            raise(message::array_not_dimensioned);
            return {nullptr, Type::NONE};
        }
        return {element_address(*array, cursor), array->type};
    }
    VariableEntry* scalar = find_or_create_scalar(cursor);
    if (scalar == nullptr) return {nullptr, Type::NONE};
    return {scalar->storage, scalar->type};
}

VariableEntry* find_or_create_scalar(Cursor& cursor) {
    Token& name = *cursor++;
    if (name.resolution == RESOLVED_SCALAR && name.generation == arenas.generation)
        return static_cast<VariableEntry*>(name.cached);
    if (is_system_variable(name.name)) {
        raise(message::illegal_function_call);
        return nullptr;
    }
    VariableEntry* entry = find_variable(name.name, false);
    if (entry == nullptr) entry = create_variable(name.name, false);
    if (entry != nullptr) remember_variable(name, entry);
    return entry;
}

}  // namespace korvane
