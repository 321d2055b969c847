#include "invariants.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "files/file_table.h"
#include "program/arenas.h"
#include "program/execution.h"
#include "program/program_store.h"
#include "program/token.h"
#include "run/breakpoints.h"
#include "run/control_stacks.h"
#include "run/event_timers.h"
#include "run/trace.h"
#include "run/traps.h"
#include "screen/console.h"
#include "screen/framebuffer.h"
#include "screen/graphics.h"
#include "screen/keyboard.h"
#include "screen/text_windows.h"
#include "statements/graphics/bitmaps.h"
#include "values/common_list.h"
#include "values/user_functions.h"
#include "values/variables.h"

namespace korvane::fuzz {

namespace {

using Bytes = const std::uint8_t*;

// Whether `size` bytes at a place lie between two others.
bool lies_in(const void* place, std::uint64_t size, const void* begin, const void* end) {
    const auto at = reinterpret_cast<std::uint64_t>(place);
    const auto from = reinterpret_cast<std::uint64_t>(begin);
    const auto to = reinterpret_cast<std::uint64_t>(end);
    return at >= from && at <= to && size <= to - at;
}

bool is_terminated(const char* name) {
    return std::find(name, name + name_capacity, '\0') != name + name_capacity;
}

class Inspection {
  public:
    std::vector<std::string> all() {
        inspect_arenas();
        if (!broken_.empty()) return broken_;
        inspect_program();
        inspect_token_cache();
        inspect_variables();
        inspect_stacks();
        inspect_lists();
        inspect_screen();
        inspect_files();
        return broken_;
    }

  private:
    void require(bool holds, std::string_view rule) {
        if (!holds) broken_.emplace_back(rule);
    }

    void inspect_arenas() {
        require(arenas.CODEBASE + program_arena_size == arenas.CODEEND, "the program arena has its size");
        require(arenas.VARTABLE == arenas.LOMEM, "the variable table stands at the data arena's start");
        require(arenas.LOMEM <= arenas.HIMEM, "the data arena ends behind its start");
        require(arenas.FREEBOT >= arenas.LOMEM + variable_table_size,
                "arrays stand behind the variable table");
        require(arenas.FREEBOT <= arenas.FREETOP, "arrays and strings do not overlap");
        require(arenas.FREETOP <= arenas.HIMEM, "strings stand in the data arena");
        require(reinterpret_cast<std::uint64_t>(arenas.FREEBOT) % 8 == 0, "arrays are aligned");
        require(program.count <= max_program_lines, "the program has no more lines than it may");
        require(lies_in(program.write, 0, arenas.CODEBASE, arenas.CODEEND),
                "the program's text stands in its arena");
        require(variables.count <= max_variables, "there are no more variables than there may be");
    }

    // Records are packed in the order of their numbers.
    void inspect_program() {
        Bytes expected = arenas.CODEBASE;
        for (std::uint32_t i = 0; i < program.count; ++i) {
            const LineEntry& line = program.lines[i];
            if (i != 0) require(program.lines[i - 1].number < line.number, "lines are sorted");
            require(line.number <= max_line_number, "line numbers are no larger than they may be");
            if (!lies_in(line.record, line_record_head, arenas.CODEBASE, program.write)) {
                require(false, "line records stand in the program's text");
                return;
            }
            const auto number = read_unaligned<std::uint32_t>(line.record);
            const auto length = read_unaligned<std::uint32_t>(line.record + 4);
            require(number == line.number, "a line's record has its number");
            require(line.record == expected, "line records are packed");
            if (length > max_line_text ||
                !lies_in(line.record, line_record_size(length), arenas.CODEBASE, program.write)) {
                require(false, "a line's text ends in the program's text");
                return;
            }
            require(length != 0 && line.record[line_record_head + length] == 0,
                    "a line's text ends with a zero");
            expected = line.record + line_record_size(length);
        }
        require(expected == program.write, "the program's text ends behind its last line");
    }

    void inspect_token_cache() {
        const auto* begin = program.cache_start;
        const auto* end = program.cache_end;
        if (begin != nullptr) {
            require(begin >= program.write && begin <= end && end <= arenas.CODEEND,
                    "the token cache stands behind the program's text");
            require(reinterpret_cast<std::uint64_t>(begin) % 8 == 0, "the token cache is aligned");
        }
        for (std::uint32_t i = 0; i < program.count; ++i) {
            const LineEntry& line = program.lines[i];
            if (line.tokens == nullptr) continue;
            if (begin == nullptr || line.token_count == 0 ||
                !lies_in(line.tokens, line.token_count * sizeof(Token), begin, end)) {
                require(false, "a line's tokens stand in the cache");
                continue;
            }
            require(line.token_count <= max_token_records, "a line has no more tokens than it may");
            require(line.tokens[line.token_count - 1].kind == END_OF_LINE, "a line's tokens have an end");
            inspect_literals(line);
        }
    }

    void inspect_literals(const LineEntry& line) {
        const auto length = read_unaligned<std::uint32_t>(line.record + 4);
        for (std::uint32_t i = 0; i < line.token_count; ++i) {
            const Token& token = line.tokens[i];
            if (token.kind != STRING_LITERAL) continue;
            require(lies_in(token.string.bytes, token.string.length, line.record + line_record_head,
                            line.record + line_record_head + length),
                    "a string literal stands in its line's text");
        }
    }

    void inspect_variables() {
        require(reinterpret_cast<Bytes>(variables.table) == arenas.VARTABLE,
                "the variable table has its place");
        require(variables.array_base == 0 || variables.array_base == 1, "OPTION BASE is 0 or 1");
        for (const Type type : variables.default_types)
            require(is_type(type), "names have a type by their first letter");
        for (std::uint32_t i = 0; i < variables.count; ++i) {
            VariableEntry& entry = variables.table[i];
            if (!is_terminated(entry.name) || !is_type(entry.type)) {
                require(false, "a variable has a name and a type");
                continue;
            }
            require(entry.flags <= 1, "a variable is an array or none");
            require(find_variable(entry.name, entry.is_array()) == &entry, "a variable is found by its name");
            if (entry.is_array())
                inspect_array(entry);
            else if (entry.type == Type::STRING)
                inspect_string(entry.storage);
        }
    }

    static bool is_type(Type type) {
        return static_cast<int>(type) >= static_cast<int>(Type::INTEGER) &&
               static_cast<int>(type) <= static_cast<int>(Type::STRING);
    }

    void inspect_array(const VariableEntry& entry) {
        Bytes blocks = arenas.LOMEM + variable_table_size;
        if (!lies_in(entry.array, sizeof(ArrayBlock), blocks, arenas.FREEBOT)) {
            require(false, "an array stands among the arrays");
            return;
        }
        const std::uint64_t dimensions = entry.array->dimensions;
        if (dimensions < 1 || dimensions > max_dimensions) {
            require(false, "an array has one to four dimensions");
            return;
        }
        std::uint64_t elements = 1;
        for (std::uint64_t i = 0; i < dimensions; ++i) {
            const std::uint64_t extent = array_extent(entry.array->bounds[i]);
            if (extent == 0 || extent > data_limit / elements) {
                require(false, "an array's bounds are those of an array that fits");
                return;
            }
            elements *= extent;
        }
        if (!lies_in(entry.array->elements(), elements * storage_size(entry.type), blocks, arenas.FREEBOT)) {
            require(false, "an array's elements stand among the arrays");
            return;
        }
        if (entry.type != Type::STRING) return;
        for (std::uint64_t i = 0; i < elements; ++i)
            inspect_string(entry.array->elements() + i * storage_size(entry.type));
    }

    // Texts of variables are in string space, or in the record of a file.
    void inspect_string(const std::uint8_t* storage) {
        const Value value = load({const_cast<std::uint8_t*>(storage), Type::STRING});
        if (value.length == 0) return;
        if (lies_in(value.bytes, value.length, arenas.FREETOP, arenas.HIMEM)) return;
        const bool in_record = std::any_of(
            std::begin(file_table.entries), std::end(file_table.entries), [&](const OpenFile& file) {
                return lies_in(value.bytes, value.length, file.record, file.record + max_record_length);
            });
        require(in_record, "a string stands in string space or in a record");
    }

    void inspect_stacks() {
        require(control_stacks.gosub_count <= max_gosub_depth, "GOSUB is no deeper than it may be");
        require(control_stacks.while_count <= max_while_depth, "WHILE is no deeper than it may be");
        require(traps.count <= max_trap_frames, "no more handlers run than may");
        if (control_stacks.for_count > max_for_depth) {
            require(false, "FOR is no deeper than it may be");
            return;
        }
        for (std::uint32_t i = 0; i < control_stacks.for_count; ++i) {
            const ForEntry& loop = control_stacks.fors[i];
            require(is_terminated(loop.name), "a loop's variable has a name");
            require(loop.step_sign >= -1 && loop.step_sign <= 1, "a loop's step has a sign");
            if (loop.generation != arenas.generation || loop.variable == nullptr) continue;
            require(loop.variable >= variables.table && loop.variable < variables.table + variables.count,
                    "a loop's variable is in the table");
        }
    }

    void inspect_lists() {
        require(breakpoints.count <= max_breakpoints, "there are no more breakpoints than there may be");
        require(trace.watch_count <= max_watches, "no more variables are watched than may be");
        require(user_functions.count <= max_user_functions, "there are no more functions than there may be");
        require(common_list.count <= max_common_entries, "COMMON names no more variables than it may");
        for (std::uint32_t i = 0; i < std::min(trace.watch_count, max_watches); ++i)
            require(is_terminated(trace.watches[i]), "a watched variable has a name");
        for (std::uint32_t i = 0; i < std::min(common_list.count, max_common_entries); ++i)
            require(is_terminated(common_list.entries[i].name), "a common variable has a name");
        for (std::uint32_t i = 0; i < std::min(user_functions.count, max_user_functions); ++i) {
            const UserFunction& function = user_functions.functions[i];
            require(is_terminated(function.name), "a function has a name");
            require(function.parameter_count >= 0 && function.parameter_count <= max_parameters,
                    "a function has no more parameters than it may");
            require(function.body_length >= 0 && function.body_length < max_token_records,
                    "a function's body fits");
        }
        for (const BitmapSlot& slot : bitmaps.slots) {
            if (!slot.loaded || slot.clears != arenas.clears) continue;
            const std::uint64_t pixels = std::uint64_t{slot.width} * slot.height;
            require(pixels <= data_limit / 4 &&
                        lies_in(slot.pixels, pixels * 4, arenas.LOMEM + variable_table_size, arenas.FREEBOT),
                    "a bitmap stands among the arrays");
        }
        std::uint8_t active = 0;
        for (int i = 0; i < event_timer_count; ++i) {
            const EventTimer& timer = event_timers.timers[i];
            if (timer.on && timer.interval != 0 && timer.handler != 0)
                active = static_cast<std::uint8_t>(active | 1 << i);
        }
        require(event_timers.active == active, "the timers that are on are known");
        require(keyboard.look_ahead >= no_key && keyboard.look_ahead <= break_pending,
                "the look-ahead holds a key or none");
    }

    void inspect_screen() {
        require(screen.addressable * 4 <= screen.framebuffer_size, "pixels lie in the framebuffer");
        require(!has_back_buffer() || screen.addressable <= screen.back_buffer_capacity,
                "pixels lie in the back buffer");
        require(console.cursor_row < max_text_rows && console.cursor_column <= max_text_columns,
                "the cursor is on the grid");
        require(text_columns() <= max_text_columns && text_rows() <= max_text_rows,
                "the grid holds the screen");
        for (const std::uint8_t flag : console.continuation)
            require(flag <= 1, "a row continues the one above or not");
        if (graphics.viewport_active) {
            const PixelRectangle& view = graphics.viewport;
            require(view.left >= 0 && view.top >= 0 && view.left < view.right && view.top < view.bottom &&
                        view.right < screen.width && view.bottom < screen.height,
                    "the viewport lies on the screen");
        }
    }

    void inspect_files() {
        for (const OpenFile& file : file_table.entries) {
            if (file.handle == nullptr) continue;
            require(file.pending >= 0 && file.pending <= static_cast<std::int32_t>(output_buffer_size),
                    "pending output fits its buffer");
            require(file.input_next <= file.input_count && file.input_count <= input_buffer_size,
                    "input fits its buffer");
            require(file.record_length <= max_record_length, "a record is no longer than it may be");
            require(file.buffer_position <= file.record_length, "a record's position lies in it");
            require((file.mode == FileMode::random) == (file.record_length != 0),
                    "random files have records, and no others");
        }
    }

    static constexpr std::uint64_t data_limit = std::uint64_t{1} << 40;

    std::vector<std::string> broken_;
};

}  // namespace

std::vector<std::string> broken_invariants() {
    return Inspection().all();
}

}  // namespace korvane::fuzz
