#include "fast/places.h"

#include "values/functions.h"
#include "values/variables.h"

namespace korvane::fast {

bool read_place(Token* name, Place& place) {
    if (name->kind != IDENTIFIER || is_system_variable(name->name)) return false;
    place.is_element = name[1].kind == '(';
    if (place.is_element) {
        if (!read_element(name, place.element) || place.element.node().draws) return false;
        place.type = place.element.node().type;
        place.end = place.element.end;
        return true;
    }
    VariableEntry* entry = find_variable(name->name, false);
    if (entry == nullptr) return false;
    place.storage = entry->storage;
    place.type = entry->type;
    place.end = name + 1;
    return true;
}

void hold_place(Token* host, const Place& place) {
    auto& record = as<PlaceRecord>(host);
    record.type = place.type;
    record.is_element = place.is_element;
    if (place.is_element) {
        bind_element(place.element.node());
        record.bracket = host + 2;
    } else {
        record.storage = place.storage;
    }
}

}  // namespace korvane::fast
