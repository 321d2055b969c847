// The interpreter without specialised statements, beside the fuzzer (companion.h).
#include <cstdio>

#include "companion.h"
#include "machine.h"
#include "targets.h"

int main(int count, char** words) {
    using namespace korvane::fuzz;
    const Target* target = count == 2 ? find_target(words[1]) : nullptr;
    if (target == nullptr) {
        std::fputs("usage: korvane-companion TARGET\n", stderr);
        return 2;
    }
    static Machine the_machine;
    prepare(*target);
    return serve_companion();
}
