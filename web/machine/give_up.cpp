#include "give_up.h"

#include "imports.h"

namespace korvane::host {

void give_up(std::string_view reason) {
    web::import_fail(reason.data(), reason.size());
    __builtin_trap();
}

}  // namespace korvane::host
