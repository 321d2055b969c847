#include "session_state.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

#include "files/file_table.h"
#include "files/volume.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/program_store.h"
#include "run/control_stacks.h"
#include "run/event_timers.h"
#include "run/trace.h"
#include "run/traps.h"
#include "screen/console.h"
#include "screen/graphics.h"
#include "screen/keyboard.h"
#include "screen/text_windows.h"
#include "statements/graphics/bitmaps.h"
#include "value_text.h"
#include "values/common_list.h"
#include "values/data_items.h"
#include "values/random.h"
#include "values/user_functions.h"
#include "values/variables.h"

namespace korvane::test {
namespace {

void describe_variables(std::ostream& out) {
    for (std::uint32_t i = 0; i < variables.count; ++i) {
        VariableEntry& entry = variables.table[i];
        out << entry.name;
        if (!entry.is_array()) {
            out << " = ";
            fuzz::put_value(out, entry.storage, entry.type);
        } else {
            out << "()";
            const std::uint64_t count = element_count(entry);
            for (std::uint64_t n = 0; n < count; ++n) {
                out << ' ';
                fuzz::put_value(out, entry.array->elements() + n * storage_size(entry.type), entry.type);
            }
        }
        out << '\n';
    }
    out << "base " << variables.array_base << '\n'
        << "free from " << arenas.FREEBOT - arenas.LOMEM << " to " << arenas.HIMEM - arenas.FREETOP << '\n'
        << "random " << random_state.seed << ' ' << random_state.last << '\n'
        << "functions " << user_functions.count << " common " << common_list.count << '\n';
}

void describe_course(std::ostream& out) {
    for (std::uint32_t i = 0; i < program.count; ++i)
        out << program.lines[i].number << ' ' << line_text(i) << '\n';
    out << "error " << (errors.message == nullptr ? "none" : errors.message) << ' ' << errors.code << " in "
        << errors.line << '\n'
        << "gosubs";
    for (std::uint32_t i = 0; i < control_stacks.gosub_count; ++i)
        out << ' ' << control_stacks.gosubs[i].line << ':' << control_stacks.gosubs[i].record;
    out << "\nloops";
    for (std::uint32_t i = 0; i < control_stacks.for_count; ++i)
        out << ' ' << control_stacks.fors[i].name << ' ' << control_stacks.fors[i].limit_as_double;
    out << "\nwhiles " << control_stacks.while_count << "\ntraps " << traps.error_target << ' '
        << traps.break_target << '\n'
        << "data " << data_position.line << ':' << data_position.offset << ' ' << data_position.in_statement
        << '\n';
    for (const EventTimer& timer : event_timers.timers) {
        out << "timer " << timer.interval << ' ' << timer.handler << ' ' << timer.on << timer.busy
            << timer.pending << '\n';
    }
    out << "trace " << trace.lines_on << ' ' << trace.watch_count << '\n';
    out << "key " << keyboard.look_ahead << '\n';
}

void describe_settings(std::ostream& out) {
    out << "colours " << console.foreground << ' ' << console.background << '\n';
    if (console.text_window_active) {
        const CellRectangle& window = console.text_window;
        out << "window " << window.left << ' ' << window.top << ' ' << window.right << ' ' << window.bottom
            << '\n';
    }
    if (console.view_print_active)
        out << "rows " << console.view_print_top << ' ' << console.view_print_bottom << '\n';
    for (const TextWindow& window : text_windows.windows) {
        if (window.defined == 0) continue;
        out << "@ " << window.left << ' ' << window.top << ' ' << window.right << ' ' << window.bottom << ' '
            << window.cursor_column << ' ' << window.cursor_row << ' ' << window.foreground << ' '
            << window.background << '\n';
    }
    out << "point " << graphics.last_point.x << ' ' << graphics.last_point.y << '\n';
    if (graphics.viewport_active) {
        out << "view " << graphics.viewport_screen << graphics.viewport.left << ' ' << graphics.viewport.top
            << ' ' << graphics.viewport.right << ' ' << graphics.viewport.bottom << '\n';
    }
    if (graphics.logical_active) {
        out << "logical " << graphics.logical_screen << ' ' << graphics.logical_x1 << ' '
            << graphics.logical_y1 << ' ' << graphics.logical_x2 << ' ' << graphics.logical_y2 << '\n';
    }
    for (const BitmapSlot& slot : bitmaps.slots)
        out << slot.loaded;
    out << '\n';
}

void describe_files(std::ostream& out, const std::filesystem::path& folder) {
    for (const OpenFile& file : file_table.entries) {
        if (file.handle == nullptr) continue;
        out << "file " << &file - file_table.entries + 1 << " mode " << static_cast<int>(file.mode)
            << " column " << file.column << " written " << file.written << " consumed " << file.consumed
            << " record " << file.last_record << ' ' << file.record_counter << ' ' << file.buffer_position
            << ' ' << file.end_of_file << " of " << file.record_length << ": "
            << std::string_view(reinterpret_cast<const char*>(file.output),
                                static_cast<std::size_t>(file.pending))
            << '|' << std::string_view(reinterpret_cast<const char*>(file.record), file.record_length)
            << '\n';
    }
    out << "directory " << (volume.current_directory == nullptr ? "none" : "set") << '\n';
    std::vector<std::filesystem::path> paths(std::filesystem::recursive_directory_iterator(folder), {});
    std::sort(paths.begin(), paths.end());
    for (const std::filesystem::path& path : paths) {
        out << path.lexically_relative(folder).string() << ": ";
        if (std::filesystem::is_regular_file(path)) {
            std::ifstream file(path, std::ios::binary);
            out << std::string(std::istreambuf_iterator<char>(file), {});
        }
        out << '\n';
    }
}

}  // namespace

std::string describe_state(const LinkedSession& session) {
    std::ostringstream out;
    describe_variables(out);
    describe_course(out);
    describe_settings(out);
    describe_files(out, session.folder());
    return out.str();
}

std::string describe_screen() {
    std::uint64_t sum = 14695981039346656037U;
    for (std::uint32_t y = 0; y < screen.height; ++y)
        for (const std::uint32_t pixel : pixel_row(0, y, screen.width))
            sum = (sum ^ pixel) * 1099511628211U;
    std::ostringstream out;
    out << "cursor " << console.cursor_row << ' ' << console.cursor_column << " pixels " << sum << '\n';
    return out.str();
}

}  // namespace korvane::test
