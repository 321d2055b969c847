#include "fast/places.h"

#include "fast/expression.h"
#include "values/functions.h"
#include "values/variables.h"

namespace korvane::fast {

bool bind_place(Token* host, Token*& at) {
    if (at->kind != IDENTIFIER || is_system_variable(at->name)) return false;
    auto& place = as<PlaceRecord>(host);
    Token* name = at;
    if (name[1].kind == '(') {
        Specialised element;
        if (!specialise_element(name, element)) return false;
        place.bracket = name + 1;
        place.type = element.side.type;
        place.is_element = true;
        at = element.end;
        return true;
    }
    VariableEntry* entry = find_variable(name->name, false);
    if (entry == nullptr) return false;
    place.storage = entry->storage;
    place.type = entry->type;
    place.is_element = false;
    ++at;
    return true;
}

}  // namespace korvane::fast
