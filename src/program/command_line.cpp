#include "program/command_line.h"

#include <string_view>

#include "platform/characters.h"
#include "platform/firmware.h"
#include "platform/memory.h"

namespace korvane {

CommandArguments command_arguments;

namespace {

// Takes the argument at `position`; arguments beyond the table's end are read and dropped.
void take_argument(std::u16string_view options, std::size_t& position) {
    const bool quoted = options[position] == '"';
    if (quoted) ++position;
    char* slot = command_arguments.count < max_command_arguments
                     ? command_arguments.arguments[command_arguments.count]
                     : nullptr;
    std::uint32_t length = 0;
    while (position < options.size() && (quoted ? options[position] != '"' : !is_blank(options[position]))) {
        // Only the low byte of a character is kept.
        const char character = static_cast<char>(options[position++]);
        if (slot != nullptr && length < command_argument_capacity - 1) slot[length++] = character;
    }
    if (quoted && position < options.size()) ++position;
    if (slot == nullptr) return;
    slot[length] = 0;
    ++command_arguments.count;
}

// The options as text, up to their first zero character.
std::u16string_view load_options() {
    const uefi::LoadedImageProtocol* image = loaded_image();
    if (image == nullptr || image->LoadOptions == nullptr || image->LoadOptionsSize < sizeof(char16_t))
        return {};
    std::u16string_view options(static_cast<const char16_t*>(image->LoadOptions),
                                image->LoadOptionsSize / sizeof(char16_t));
    return options.substr(0, options.find(u'\0'));
}

}  // namespace

void read_command_line() {
    fill_bytes(&command_arguments, 0, sizeof command_arguments);
    const std::u16string_view options = load_options();
    for (std::size_t position = 0; position < options.size();)
        if (is_blank(options[position]))
            ++position;
        else
            take_argument(options, position);
}

}  // namespace korvane
