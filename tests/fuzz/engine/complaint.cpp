#include "complaint.h"

#include <cstdio>
#include <cstdlib>

namespace korvane::fuzz {

void complain(std::string_view what) {
    std::fprintf(stderr, "FOUND: %.*s\n", static_cast<int>(what.size()), what.data());
    std::abort();
}

}  // namespace korvane::fuzz
