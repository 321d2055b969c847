#include "statements/colour_argument.h"

#include "program/errors.h"
#include "program/messages.h"

namespace korvane {

std::uint32_t require_colour(std::optional<std::uint32_t> colour) {
    if (!colour) raise(message::illegal_function_call);
    return colour.value_or(0);
}

}  // namespace korvane
