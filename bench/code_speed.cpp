// code_speed [--rounds N] IMAGE: what it takes to make a piece of machine code, with all that is looked at
// for it.
//
// A program that ends a generation at each turn has new code made for all of its statements in the image that
// makes it at once. What it takes longer there than without native code is divided by the number of pieces:
// for each of them the firmware is asked twice to change what memory may be used for. Both images are
// variants beside IMAGE.
#include <cstdlib>
#include <string>
#include <vector>

#include "rounds.h"
#include "session.h"

namespace korvane::bench {
namespace {

constexpr int turns = 1000;
constexpr int statements = 5;

struct Work {
    double seconds;
    std::uint64_t pieces;
};

Work work_of(const std::filesystem::path& image) {
    std::string turn = "DEF FNA(Y) = Y + 1: FOR I = 1 TO 3";
    for (int i = 0; i < statements; ++i)
        turn += ": A(1) = A(2) + X";
    Session session(image, 640, 480);
    WaitingProgram program(session, repeating_program({"DIM A(9): X = 1: I = 0"}, turn + ": NEXT", turns));
    const auto changes = [&] {
        return session.machine().firmware().faults().uses(host::Service::MemoryAttributesSet);
    };
    program.seconds();
    const std::uint64_t before = changes();
    const double seconds = program.seconds();
    return {seconds, (changes() - before) / 2};
}

void measure(const Options& options) {
    const auto image = [&](const char* variant) {
        return options.image.parent_path() / variant / "korvane.efi";
    };
    const Table table("work", "none", microseconds);
    table.row("making a piece of machine code",
              take_turns(options.rounds,
                         [&] {
                             const Work making = work_of(image("native-at-once"));
                             if (making.pieces < turns) give_up("the image made no code at some turns");
                             return (making.seconds - work_of(image("without-native")).seconds) /
                                    static_cast<double>(making.pieces);
                         },
                         {}));
}

}  // namespace
}  // namespace korvane::bench

int main(int count, char** arguments) {
    korvane::bench::measure(korvane::bench::parse_options(count, arguments));
    return EXIT_SUCCESS;
}
