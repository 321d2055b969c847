#include "interpreter_memory.h"

#include <cstdio>
#include <cstdlib>

#include "files/file_table.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/program_store.h"
#include "program/tokenizer.h"
#include "run/control_stacks.h"
#include "screen/console.h"
#include "screen/keyboard.h"
#include "values/user_functions.h"
#include "values/variables.h"

extern "C" char fuzz_data_begin[], fuzz_data_end[], fuzz_bss_begin[], fuzz_bss_end[];

namespace korvane::fuzz {

std::vector<SavedMemory> interpreter_memory() {
    const void* known[] = {&console,   &program, &variables, &execution,      &errors,         &arenas,
                           &tokenizer, &screen,  &keyboard,  &control_stacks, &user_functions, &file_table};
    for (const void* variable : known) {
        const auto* at = static_cast<const char*>(variable);
        const bool inside =
            (at >= fuzz_data_begin && at < fuzz_data_end) || (at >= fuzz_bss_begin && at < fuzz_bss_end);
        if (inside) continue;
        std::fprintf(stderr, "a variable of the interpreter lies outside of its marks: %p\n", variable);
        std::exit(71);
    }
    return {SavedMemory(fuzz_data_begin, fuzz_data_end), SavedMemory(fuzz_bss_begin, fuzz_bss_end)};
}

}  // namespace korvane::fuzz
