// korvane-terminal: the interpreter's image in a terminal.
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <system_error>

#include <unistd.h>

#include "image_loader.h"
#include "installation.h"
#include "program_file.h"
#include "program_search.h"
#include "standard_files.h"
#include "terminal_guard.h"
#include "terminal_look.h"
#include "terminal_options.h"

namespace korvane::host {
namespace {

// "@" stands for the program's name.
constexpr std::string_view usage =
    "usage: @ [--image KORVANE.EFI] [--volume FOLDER] [--size COLUMNSxROWS] [--present MIB]\n"
    "           [--code-memory refused|hidden] [--no-keys] [--no-rescue] [PROGRAM.BAS]\n"
    "       @ [--image KORVANE.EFI] [--size COLUMNSxROWS] --script PROGRAM.BAS [ARGUMENT...]\n"
    "       @ --version\n"
    "\n"
    "Opens the interpreter in the terminal; Ctrl-C at its prompt leaves. FOLDER is its volume. With a "
    "program, that is\n"
    "loaded and started, and its folder is the volume. When standard input or output is no terminal,\n"
    "the lines of standard input are typed in and the screen that they lead to is printed. --size is the\n"
    "first screen's, 40x15 to 256x128; else it is the terminal's, or without a terminal 80x128. --present\n"
    "has so much of the machine's memory there before the start; the rest comes from the host when it is\n"
    "first touched. --code-memory has the machine's firmware refuse memory for machine code, or hide that "
    "it\n"
    "has any, which costs speed. --no-keys leaves out the line above the screen that names the keys,\n"
    "--no-rescue the file in which a program that was not saved is kept for the next session.\n"
    "\n"
    "--script runs the program alone: its text goes to standard output, standard input is its keyboard, the\n"
    "arguments are in COMMANDLINEARG$. The status is 0 when it has ended and 1 when an error has ended it, "
    "which\n"
    "is told on standard error.\n"
    "\n"
    "Installed, the program finds its image itself, and without PROGRAM.BAS its volume is the folder\n"
    "korvane-files at home, which is made with the examples in it.\n";

[[noreturn]] void show_usage() {
    for (const char character : usage)
        if (character == '@')
            std::cout << program_name();
        else
            std::cout << character;
    std::exit(EXIT_SUCCESS);
}

[[noreturn]] void fail(std::string_view message) {
    std::cerr << program_name() << ": " << message << '\n';
    std::exit(EXIT_FAILURE);
}

std::uint64_t parse_number(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) fail(std::string(text) + " is no number");
    return number;
}

[[noreturn]] void fail_usage(std::string_view message) {
    std::cerr << program_name() << ": " << message << "; --help tells what there is\n";
    std::exit(2);
}

// Takes COLUMNSxROWS.
void parse_size(std::string_view text, TerminalOptions& options) {
    const std::size_t x = text.find('x');
    if (x == text.npos) fail("a size is COLUMNSxROWS, not " + std::string(text));
    const std::uint64_t columns = parse_number(text.substr(0, x));
    const std::uint64_t rows = parse_number(text.substr(x + 1));
    if (columns < least_columns || columns > most_columns || rows < least_rows || rows > most_rows)
        fail("a screen has 40x15 to 256x128 characters, not " + std::string(text));
    options.columns = static_cast<std::uint32_t>(columns);
    options.rows = static_cast<std::uint32_t>(rows);
}

CodeMemory parse_code_memory(std::string_view text) {
    if (text == "refused") return CodeMemory::refused;
    if (text == "hidden") return CodeMemory::hidden;
    fail("memory for code is refused or hidden, not " + std::string(text));
}

TerminalOptions parse_options(int count, char** arguments) {
    TerminalOptions options;
    for (int i = 1; i < count; ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--help") show_usage();
        if (argument == "--version") {
            std::cout << "Korvane BASIC " << version << '\n';
            std::exit(EXIT_SUCCESS);
        }
        const bool has_value = argument == "--image" || argument == "--volume" || argument == "--size" ||
                               argument == "--present" || argument == "--code-memory";
        if (has_value && i + 1 == count) fail_usage(std::string(argument) + " needs a value");
        if (argument == "--image" || argument == "--volume") {
            (argument == "--image" ? options.image : options.volume) = arguments[++i];
        } else if (argument == "--size") {
            parse_size(arguments[++i], options);
        } else if (argument == "--no-keys") {
            options.shows_keys = false;
        } else if (argument == "--no-rescue") {
            options.keeps_programs = false;
        } else if (argument == "--script") {
            options.script = true;
        } else if (argument == "--code-memory") {
            options.code_memory = parse_code_memory(arguments[++i]);
        } else if (argument == "--present") {
            options.present_mebibytes = parse_number(arguments[++i]);
        } else if (argument.starts_with('-')) {
            fail_usage("unknown option " + std::string(argument));
        } else if (argument.empty() || !options.program_file.empty()) {
            fail_usage("there is one program, and '" + std::string(argument) + "' is another");
        } else {
            options.program_file = argument;
            // Whatever follows a script belongs to it.
            if (options.script) options.arguments.assign(arguments + i + 1, arguments + count);
            if (options.script) break;
        }
    }
    if (options.image.empty()) options.image = installed_image();
    if (options.image.empty()) fail_usage("--image is missing");
    if (options.script && options.program_file.empty()) fail_usage("--script needs a program");
    return options;
}

// The program has to be there and to be understood as far as a glance tells; what else is wrong with it is
// told by LOAD in a session, and here for a script.
void check_program(TerminalOptions& options) {
    const auto file = find_program(options.program_file);
    if (!file) fail("there is no program " + options.program_file.string());
    std::error_code error;
    if (const auto size = std::filesystem::file_size(*file, error); !error && size > largest_program_file)
        fail("the program " + file->string() + " is too large");
    const auto bytes = read_file(*file);
    if (!bytes) fail("cannot read the program " + file->string());
    const ProgramText program = read_program(*bytes);
    const bool is_refused = !program.fault.empty() && (options.script || program.codes.empty());
    if (is_refused) fail(file->string() + ": " + program.fault);
    if (!program.loss.empty())
        std::cerr << program_name() << ": " << file->string() << ": " << program.loss << '\n';
    choose_program(options, *file);
}

void check_options(TerminalOptions& options) {
    std::error_code error;  // a folder on the way that cannot be looked into, for example
    if (!std::filesystem::is_regular_file(options.image, error))
        fail("there is no image " + options.image.string());
    if (!options.volume.empty() && !std::filesystem::is_directory(options.volume, error))
        fail("there is no folder " + options.volume.string());
    if (!options.program_file.empty()) check_program(options);
}

// Without a volume that was asked for, an installed terminal has the user's own.
void choose_volume(TerminalOptions& options) {
    if (!options.volume.empty() || options.image != installed_image()) return;
    try {
        options.volume = volume_at_home();
    } catch (const std::filesystem::filesystem_error& error) {
        fail(std::string("cannot make a volume at home: ") + error.what() + "; --volume names another");
    }
    if (options.volume.empty()) fail("HOME is not set; --volume names a folder");
}

}  // namespace
}  // namespace korvane::host

int main(int count, char** arguments) try {
    using namespace korvane::host;
    hold_closed_standard_files();
    TerminalOptions options = parse_options(count, arguments);
    check_options(options);
    choose_volume(options);
    if (options.script) return run_script_session(options);
    if (isatty(STDIN_FILENO) && isatty(STDOUT_FILENO) && has_control_sequences())
        return run_guarded(run_terminal_session, &options);
    return run_piped_session(options);
} catch (const std::exception& error) {
    korvane::host::fail(error.what());
}
