#include "terminal_options.h"

#include <algorithm>
#include <string_view>

#include "fat_names.h"
#include "host_text.h"
#include "program_file.h"

namespace korvane::host {
namespace {

constexpr std::uint32_t cell_width = 8;
constexpr std::uint32_t cell_height = 16;

// 256 MiB apart from the firmware's other memory: the largest region, which becomes the data arena.
constexpr MemoryRegion spare_memory = {0x20000000, 0x10000, uefi::MemoryType::EfiConventionalMemory};

constexpr std::size_t longest_loaded_name = 127;

// True when LOAD finds a file of the volume by its own name.
bool can_load(const std::filesystem::path& file) {
    const std::string name = file.filename().string();
    const bool is_plain = std::all_of(name.begin(), name.end(), [](char c) { return c >= ' ' && c < 127; });
    return is_plain && is_legal_name(name) && has_program_name(name) && name.size() <= longest_loaded_name &&
           name.front() != ' ' && !std::filesystem::is_symlink(file);
}

// A name in ASCII that resembles the file's and that no file in its folder has.
std::string lent_name(const std::filesystem::path& file) {
    std::string stem;
    for (const char c : file.stem().string()) {
        const bool is_kept =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
        if (is_kept || !stem.ends_with('_')) stem += is_kept ? c : '_';
    }
    stem.resize(std::min<std::size_t>(stem.size(), 32));
    std::string name = stem + ".bas";
    for (int number = 2; Folder(file.parent_path()).find({}, name); ++number)
        name = stem + std::to_string(number) + ".bas";
    return name;
}

// The command line of an application: the program and its arguments, those with blanks in quotation marks.
std::u16string command_line(const TerminalOptions& options) {
    std::vector<std::string> words = options.arguments;
    words.insert(words.begin(), options.program_file.string());
    std::u16string line;
    for (const std::string& word : words) {
        std::u16string codes;
        for (std::string_view rest = word; !rest.empty();) {
            const HostCharacter character = first_character(rest);
            codes += static_cast<char16_t>(to_code(character));
            rest.remove_prefix(std::max<std::size_t>(character.bytes, 1));
        }
        const bool is_quoted = codes.empty() || codes.find_first_of(u" \t") != codes.npos;
        // There is no way to write a quotation mark into such an argument, or in front of another.
        if (is_quoted || codes.front() == u'"') std::replace(codes.begin(), codes.end(), u'"', u'\'');
        if (!line.empty()) line += u' ';
        line += is_quoted ? u'"' + codes + u'"' : codes;
    }
    return line;
}

}  // namespace

Config terminal_machine(const TerminalOptions& options, std::uint32_t columns, std::uint32_t rows) {
    Config config;
    MemoryRegion spare = spare_memory;
    spare.present_pages = std::min(spare.pages, options.present_mebibytes * 256);
    config.memory.push_back(spare);
    config.code_memory = options.code_memory;
    config.width = (options.columns ? options.columns : columns) * cell_width;
    config.height = (options.rows ? options.rows : rows) * cell_height;
    config.modes.insert(config.modes.begin(), {config.width, config.height, config.width});
    if (!options.volume.empty()) config.volumes.push_back({.folder = options.volume, .host_programs = true});
    if (options.script) config.load_options = command_line(options);
    return config;
}

void choose_program(TerminalOptions& options, const std::filesystem::path& file) {
    const std::filesystem::path absolute = std::filesystem::absolute(file);
    const std::string name = absolute.filename().string();
    options.program_file = absolute;
    options.volume = absolute.parent_path();
    options.lends_program = !can_load(absolute);
    options.program = options.lends_program ? lent_name(absolute) : name;
}

void lend_program(Machine& machine, const TerminalOptions& options) {
    if (!options.lends_program) return;
    machine.firmware().volumes().front()->lend({{options.program}, options.program_file, true});
}

std::string load_line(const TerminalOptions& options) {
    return "LOAD \"" + options.program + '"';
}

}  // namespace korvane::host
