// Picking one of a template's instances by a value that is known only when a statement is looked at: the
// lists of what there are steps and handlers for are written as the constants of these calls.
#pragma once

#include <type_traits>

namespace korvane::fast {

template <auto constant>
using Constant = std::integral_constant<decltype(constant), constant>;

// What `make` gives for the one of the constants that the value is, which it takes as a Constant; null when
// the value is none of them.
template <auto... constants, typename Value, typename Make>
auto choose(Value value, Make make) {
    std::common_type_t<decltype(make(Constant<constants>{}))...> chosen = nullptr;
    static_cast<void>(((value == constants && ((chosen = make(Constant<constants>{})), true)) || ...));
    return chosen;
}

}  // namespace korvane::fast
