// In place of everything else in this folder when the image is built without specialised statements: what the
// rest of the interpreter calls of it. Then the run loop executes every statement by its general handler.
#include "run/specialised.h"
#include "values/held_arguments.h"

namespace korvane::fast {

Token* run(Token* at, std::uint64_t) {
    return at;
}

bool may_run() {
    return false;
}

}  // namespace korvane::fast

namespace korvane {

std::uint64_t execute_first(Token*, std::uint64_t budget) {
    return budget;
}

std::uint64_t leave_at_line_start(Token*, std::uint64_t budget) {
    return budget;
}

Value evaluate_argument(Cursor& cursor) {
    return evaluate_unheld(cursor);
}

}  // namespace korvane
