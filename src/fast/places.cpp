#include "fast/places.h"

#include "fast/expression.h"
#include "values/functions.h"
#include "values/variables.h"

namespace korvane::fast {

bool bind_place(Token* host, Token*& at) {
    if (at->kind != IDENTIFIER || is_system_variable(at->name)) return false;
    Token* name = at;
    if (name[1].kind == '(') {
        Specialised element;
        if (!specialise_element(name, element)) return false;
        host->step.left_operand = name + 1;
        host->left_kind = static_cast<std::uint8_t>(element.side.type);
        host->right_kind = 1;
        at = element.end;
        return true;
    }
    const VariableEntry* entry = find_variable(name->name, false);
    if (entry == nullptr) return false;
    host->step.left_operand = entry->storage;
    host->left_kind = static_cast<std::uint8_t>(entry->type);
    host->right_kind = 0;
    ++at;
    return true;
}

}  // namespace korvane::fast
