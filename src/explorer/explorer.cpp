#include "explorer/explorer.h"

#include <array>

#include "explorer/commands.h"
#include "explorer/memory/dump.h"
#include "explorer/report.h"
#include "explorer/reports.h"
#include "platform/memory_map.h"
#include "program/arenas.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "screen/line_editor.h"
#include "values/variables.h"

namespace korvane {
namespace {

// Reads a command line behind the prompt and executes it. False when the explorer is to be left.
bool read_and_execute() {
    // The editor hands over the whole screen line: the prompt, the command and a terminator.
    std::array<std::uint8_t, explorer_prompt.size() + command_line_length + 1> buffer{};
    print_line();
    print(explorer_prompt);
    const std::int32_t length = edit_screen_line(buffer);
    if (length < 0) {
        print_line();
        return false;
    }
    const std::string_view line(reinterpret_cast<const char*>(buffer.data()),
                                static_cast<std::size_t>(length));
    return execute_explorer_line(without_prompt(line)) != CommandEnd::leave;
}

void run_explorer() {
    print_line();
    print_line("Korvane Machine Explorer v2.0");
    print_line("64-bit flat-memory navigator. ? for help, X to return.");
    while (read_and_execute()) {
    }
}

}  // namespace

void initialize_explorer() {
    initialize_memory_map();
    initialize_dump();
}

CommandEnd execute_explorer_line(std::string_view line) {
    CommandLine parts = split_command_line(line);
    if (parts.command.empty()) return CommandEnd::done;
    const ExplorerCommand* command = find_explorer_command(parts.command.view());
    if (command == nullptr) {
        print_line("Unknown monitor command. Type ?");
        return CommandEnd::done;
    }
    const CommandEnd outcome = command->run(parts.arguments);
    if (outcome != CommandEnd::bad_arguments) return outcome;
    print_line(command->usage);
    return CommandEnd::done;
}

void do_korvane(Cursor& cursor) {
    ++cursor;
    if (at_statement_end(cursor)) {
        run_explorer();
        // It can write memory by many means.
        note_written_names();
        note_written_program(reinterpret_cast<std::uint64_t>(arenas.CODEBASE), 1);
        return;
    }
    const Token* word = cursor++;
    const bool is_alone = at_statement_end(cursor);
    if (is_alone && is_word(word, "LANDMARKS"))
        print_landmarks();
    else if (is_alone && (is_word(word, "MEMMAP") || is_word(word, "MAP")))
        print_memory_map();
    else if (is_alone && is_word(word, "INFO"))
        print_machine_information();
    else
        raise(message::syntax_error);
}

}  // namespace korvane
