#include "give_up.h"

#include <cstdio>
#include <cstdlib>

namespace korvane::host {

void give_up(std::string_view reason) {
    std::fprintf(stderr, "hosted firmware: %.*s\n", static_cast<int>(reason.size()), reason.data());
    std::exit(71);
}

}  // namespace korvane::host
