// korvane-terminal: the interpreter's image in a terminal.
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>

#include <unistd.h>

#include "terminal_guard.h"
#include "terminal_options.h"

namespace korvane::host {
namespace {

constexpr std::string_view usage =
    "usage: korvane-terminal --image KORVANE.EFI [--volume FOLDER] [--present MIB] [PROGRAM.BAS]\n"
    "\n"
    "Opens the interpreter in the terminal; Ctrl-C leaves. FOLDER is its volume. With a program, that is "
    "loaded\n"
    "and started, and its folder is the volume. When standard input or output is no terminal, the lines of\n"
    "standard input are typed in and the screen that they lead to is printed. --present has so much of the\n"
    "machine's memory there before the start; the rest comes from the host when it is first touched.\n";

[[noreturn]] void fail(std::string_view message) {
    std::cerr << "korvane-terminal: " << message << '\n';
    std::exit(EXIT_FAILURE);
}

std::uint64_t parse_number(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) fail(std::string(text) + " is no number");
    return number;
}

TerminalOptions parse_options(int count, char** arguments) {
    TerminalOptions options;
    for (int i = 1; i < count; ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--help") {
            std::cout << usage;
            std::exit(EXIT_SUCCESS);
        }
        if ((argument == "--image" || argument == "--volume") && i + 1 < count) {
            (argument == "--image" ? options.image : options.volume) = arguments[++i];
        } else if (argument == "--present" && i + 1 < count) {
            options.present_mebibytes = parse_number(arguments[++i]);
        } else if (!argument.empty() && argument[0] != '-' && options.program.empty()) {
            const std::filesystem::path program = std::filesystem::absolute(argument);
            options.program = program.filename().string();
            options.volume = program.parent_path();
        } else {
            std::cerr << usage;
            std::exit(2);
        }
    }
    if (options.image.empty()) {
        std::cerr << usage;
        std::exit(2);
    }
    return options;
}

void check_options(const TerminalOptions& options) {
    if (!std::filesystem::is_regular_file(options.image)) fail("there is no image " + options.image.string());
    if (!options.volume.empty() && !std::filesystem::is_directory(options.volume))
        fail("there is no folder " + options.volume.string());
    if (!options.program.empty() && !std::filesystem::is_regular_file(options.volume / options.program))
        fail("there is no program " + (options.volume / options.program).string());
}

}  // namespace
}  // namespace korvane::host

int main(int count, char** arguments) {
    using namespace korvane::host;
    TerminalOptions options = parse_options(count, arguments);
    check_options(options);
    if (isatty(STDIN_FILENO) && isatty(STDOUT_FILENO)) return run_guarded(run_terminal_session, &options);
    return run_piped_session(options);
}
