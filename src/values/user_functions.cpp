#include "values/user_functions.h"

namespace korvane {

UserFunctions user_functions;

void forget_user_functions() {
    user_functions.count = 0;
    user_functions.names.clear();
}

UserFunction* find_user_function(const char* name) {
    if (!is_user_function_name(name)) return nullptr;
    const auto& names = user_functions.names;
    for (std::uint16_t i = names.first(name); i != names.none; i = names.next(i)) {
        UserFunction& function = user_functions.functions[i];
        if (same_name(function.name, name)) return &function;
    }
    return nullptr;
}

}  // namespace korvane
