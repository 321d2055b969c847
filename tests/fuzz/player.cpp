#include "player.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <sstream>

#include "complaint.h"
#include "files/file_table.h"
#include "files/volume.h"
#include "invariants.h"
#include "platform/memory_map.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/program_store.h"
#include "run/control_stacks.h"
#include "run/traps.h"
#include "screen/console.h"
#include "screen/graphics.h"
#include "steps.h"
#include "value_text.h"
#include "values/data_items.h"
#include "values/variables.h"

namespace korvane::fuzz {

Counts counts;

namespace {

constexpr std::size_t most_lines = 256;  // of a session
constexpr char enter = 10;
constexpr char escape = 27;
constexpr char escape_at_look = 28;
constexpr char fail_service = 29;
constexpr char heal_services = 30;
constexpr char pull_stick = 31;
constexpr char delete_key = 127;

constexpr std::array<uefi::Status, 10> statuses = {
    uefi::device_error,     uefi::not_found,         uefi::out_of_resources, uefi::no_media,
    uefi::media_changed,    uefi::volume_full,       uefi::write_protected,  uefi::access_denied,
    uefi::buffer_too_small, uefi::invalid_parameter,
};

// Pool blocks that the interpreter keeps for good: the memory map by which it took its arenas, and the
// machine explorer's.
std::size_t kept_blocks() {
    if (arenas.LOMEM == nullptr) return 0;
    return memory_map_cache.taken ? 2 : 1;
}

std::size_t kept_at_moment = 0;
bool any_service_failed = false;
bool pulled = false;

uefi::InputKey key_of(char c) {
    const auto code = static_cast<unsigned char>(c);
    if (c == escape) return {uefi::scan_escape, 0};
    if (c == delete_key) return {uefi::scan_delete, 0};
    if (code >= 32 || c == '\b' || c == '\t' || c == '\r') return {0, code};
    return {code, 0};  // scan codes 1 to 20 are keys; the others nobody has
}

bool run_to_next_key() {
    const Stop why = machine->go_on();
    counts.most_steps = std::max(counts.most_steps, most_steps());
    return why == Stop::waits;
}

bool finish_line() {
    ++counts.lines;
    machine->firmware().press({0, u'\r'});
    return run_to_next_key();
}

}  // namespace

void note_moment() {
    kept_at_moment = kept_blocks();
}

void begin_input() {
    ++counts.inputs;
    any_service_failed = pulled = false;
    machine->put_back();
}

bool type(std::string_view line) {
    machine->firmware().begin_line();
    for (const char c : line)
        machine->firmware().press(key_of(c));
    return finish_line();
}

bool type_session(std::string_view text) {
    Firmware& firmware = machine->firmware();
    firmware.begin_line();
    const auto next = [&] {
        if (text.empty()) return 0U;
        const unsigned value = static_cast<unsigned char>(text.front());
        text.remove_prefix(1);
        return value;
    };
    std::size_t lines = 0;
    while (!text.empty() && lines < most_lines) {
        const char c = static_cast<char>(next());
        switch (c) {
            case enter:
                ++lines;
                if (!finish_line()) return false;
                firmware.begin_line();
                break;
            case escape_at_look:
                firmware.press_escape_at_look(next() % 64 + 1);
                break;
            case fail_service: {
                const auto service = static_cast<host::Service>(next() % host::service_count);
                const std::uint64_t first = next() % 64 + 1;
                const unsigned times = next();
                any_service_failed = true;
                firmware.faults().arm({{service, first, times < 200 ? times % 8 + 1 : ~std::uint64_t{0} / 2,
                                        statuses[times % statuses.size()]}});
                break;
            }
            case heal_services:
                firmware.faults().arm({});
                break;
            case pull_stick:
                pulled = true;
                firmware.volume().pull();
                break;
            default:
                firmware.press(key_of(c));
                break;
        }
    }
    return lines >= most_lines || finish_line();
}

bool is_on_screen(std::string_view text) {
    for (std::uint32_t row = 0; row < text_rows(); ++row) {
        std::string_view shown(reinterpret_cast<const char*>(console.grid[row]), text_columns());
        const std::size_t end = shown.find_last_not_of(' ');
        if (shown.substr(0, end == std::string_view::npos ? 0 : end + 1) == text) return true;
    }
    return false;
}

std::string describe_state() {
    std::ostringstream out;
    for (std::uint32_t row = 0; row < text_rows(); ++row)
        out << std::string_view(reinterpret_cast<const char*>(console.grid[row]), text_columns()) << '\n';
    out << "cursor " << console.cursor_row << ' ' << console.cursor_column << " colours "
        << console.foreground << ' ' << console.background << " point " << graphics.last_point.x << ' '
        << graphics.last_point.y << '\n';
    for (std::uint32_t i = 0; i < program.count; ++i)
        out << program.lines[i].number << ' ' << line_text(i) << '\n';
    for (std::uint32_t i = 0; i < variables.count; ++i) {
        VariableEntry& entry = variables.table[i];
        out << entry.name << (entry.is_array() ? "() = " : " = ");
        const std::uint64_t count = entry.is_array() ? std::min<std::uint64_t>(element_count(entry), 100) : 0;
        if (!entry.is_array()) put_value(out, entry.storage, entry.type);
        for (std::uint64_t n = 0; n < count; ++n) {
            out << ' ';
            put_value(out, entry.array->elements() + n * storage_size(entry.type), entry.type);
        }
        out << '\n';
    }
    out << "free from " << arenas.FREEBOT - arenas.LOMEM << " to " << arenas.HIMEM - arenas.FREETOP
        << " error " << errors.code << " in " << errors.line << " stacks " << control_stacks.gosub_count
        << ' ' << control_stacks.for_count << ' ' << control_stacks.while_count << " traps "
        << traps.error_target << ' ' << traps.break_target << ' ' << traps.count << " data "
        << data_position.line << ':' << data_position.offset << '\n';
    return out.str();
}

std::string resources_left(bool stick_pulled, bool pool_kept) {
    Firmware& firmware = machine->firmware();
    // A list that waits for a key in its midst holds more.
    if (!firmware.editor_waits()) return "";
    if (!pool_kept && firmware.pool_blocks() != kept_blocks() - kept_at_moment) return "pool blocks are left";
    // One handle for each open file, the root and the current directory.
    std::size_t expected =
        (volume.root != nullptr ? 1U : 0U) + (volume.current_directory != nullptr ? 1U : 0U);
    for (const OpenFile& file : file_table.entries)
        if (file.handle != nullptr) ++expected;
    if (!stick_pulled && firmware.volume().open_handles() != expected) return "files are left open";
    return "";
}

void check() {
    for (const std::string& rule : broken_invariants())
        complain("this does not hold: " + rule);
    const std::string left = resources_left(pulled, any_service_failed);
    if (!left.empty()) complain(left);
}

}  // namespace korvane::fuzz
