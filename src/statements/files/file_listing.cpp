#include "statements/files/file_listing.h"

#include <algorithm>
#include <string_view>

#include "files/directory_record.h"
#include "files/file_handle.h"
#include "files/firmware_name.h"
#include "files/volume.h"
#include "files/wildcard.h"
#include "platform/memory.h"
#include "program/errors.h"
#include "program/messages.h"
#include "program/parse.h"
#include "screen/console.h"
#include "screen/pager.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

constexpr std::uint8_t recurse = 0x01;
constexpr std::uint8_t wide = 0x02;
constexpr std::uint8_t paged = 0x04;

constexpr std::uint32_t max_depth = 64;
constexpr std::uint32_t pattern_capacity = 256;
constexpr std::uint32_t max_display_path = 511;
// Most records fit in the first of these, with names of up to 215 characters;
// the second one is for all others.
constexpr std::uint32_t usual_entry_size = 512;
constexpr std::uint32_t entry_buffer_size = 4096;
constexpr std::uint32_t max_entry_name = 255;

struct Listing {
    std::uint8_t flags;      // recurse, wide, paged
    bool aborted;            // Escape was pressed at a page prompt
    std::uint32_t lines;     // printed since the last page prompt
    std::uint32_t column;    // characters used on the current line of a wide listing
    std::uint32_t columns;   // width of the text area, at least 1
    std::uint32_t page;      // lines per page
    std::string_view names;  // wildcard pattern
    // One path and one entry serve all levels of a recursive listing, so that a level takes little stack.
    char path[max_display_path + 1];
    std::uint32_t path_length;
    alignas(8) std::uint8_t entry[entry_buffer_size];  // as the firmware filled it
    std::uint64_t entry_size;                          // bytes that it filled
    char name[max_entry_name];                         // the entry's name as 8-bit text
    std::uint32_t name_length;

    std::string_view entry_name() const { return {name, name_length}; }
    DirectoryRecord record() const { return DirectoryRecord({entry, entry_size}); }
};
Listing listing;

// Ends a line; with P, shows the prompt when the page is full. False when the listing was aborted.
bool end_line() {
    con_put_char(carriage_return);
    ++listing.lines;
    listing.column = 0;
    if ((listing.flags & paged) == 0 || listing.lines < listing.page) return true;
    listing.aborted = !pause_listing_or_abort();
    if (!listing.aborted) listing.lines = 0;
    return !listing.aborted;
}

// Reads the next entry of a directory into the first `room` bytes of the buffer.
uefi::Status read_record(uefi::FileProtocol* directory, std::uint64_t room) {
    listing.entry_size = room;
    const uefi::Status status = directory->Read(directory, &listing.entry_size, listing.entry);
    listing.entry_size = std::min(listing.entry_size, room);
    return status;
}

// Reads the next entry of a directory. False at its end and when the firmware fails.
bool read_entry(uefi::FileProtocol* directory) {
    uefi::Status status = read_record(directory, usual_entry_size);
    // The firmware stays at an entry that it has no room for.
    if (status == uefi::buffer_too_small) status = read_record(directory, entry_buffer_size);
    if (uefi::is_error(status) || listing.entry_size == 0) return false;

    listing.name_length = 0;
    for_each_unit(listing.record().name(), max_entry_name, [](char16_t unit) {
        listing.name[listing.name_length++] = static_cast<char>(unit & 0xFF);
    });
    return true;
}

// Reads on to the next entry that is worth a look: neither "." nor ".." nor a record without a name.
bool read_named_entry(uefi::FileProtocol* directory) {
    while (read_entry(directory)) {
        const std::string_view name = listing.entry_name();
        if (!name.empty() && name != "." && name != "..") return true;
    }
    return false;
}

std::uint32_t wide_column_width(std::uint32_t columns) {
    const std::uint32_t share = columns >= 64 ? columns / 4 : columns >= 36 ? columns / 2 : columns;
    return std::min(std::max(share, 8U), columns);
}

bool print_wide(std::string_view name, bool is_directory) {
    const std::uint32_t width = wide_column_width(listing.columns);
    if (listing.column != 0 && listing.column + width > listing.columns && !end_line()) return false;

    const std::uint32_t decoration = is_directory ? 3 : 1;
    const std::uint32_t room = width > decoration ? width - decoration : 1;
    const bool cut = name.size() > room;
    if (is_directory) con_put_char('[');
    con_put_glyphs(cut ? name.substr(0, room - 1) : name);
    if (cut) con_put_char('~');
    if (is_directory) con_put_char(']');
    const auto name_cells = static_cast<std::uint32_t>(cut ? room : name.size());
    for (std::uint32_t used = name_cells + (is_directory ? 2 : 0); used < width; ++used)
        con_put_char(' ');
    listing.column += width;
    return true;
}

bool print_entry(std::string_view name, bool is_directory) {
    if ((listing.flags & wide) != 0) return print_wide(name, is_directory);
    // The plain listing does not mark directories: deliberate, a program can read it back name by name.
    con_put_glyphs(name);
    return end_line();
}

bool print_directory_heading() {
    if (listing.column != 0 && !end_line()) return false;
    if (listing.lines != 0 && !end_line()) return false;
    con_put_string("Directory of ");
    con_put_glyphs(listing.path_length == 0 ? std::string_view(".")
                                            : std::string_view(listing.path, listing.path_length));
    return end_line();
}

// Prints the names of one directory that match. False when the listing was aborted.
bool print_names(uefi::FileProtocol* directory) {
    set_file_position(directory, 0);
    while (read_named_entry(directory)) {
        const std::string_view name = listing.entry_name();
        if (matches_wildcard(listing.names, name) && !print_entry(name, listing.record().is_directory()))
            return false;
    }
    return listing.column == 0 || end_line();
}

void append_to_path(std::string_view text) {
    const std::size_t length = std::min<std::size_t>(text.size(), max_display_path - listing.path_length);
    copy_bytes(listing.path + listing.path_length, text.data(), length);
    listing.path_length += static_cast<std::uint32_t>(length);
}

// Opens the directory of the current entry by the name that the firmware gave it.
FileHandle open_entry(uefi::FileProtocol* parent) {
    // The name may fill its record without a terminator.
    const std::uint64_t end = std::min<std::uint64_t>(listing.entry_size & ~1ULL, entry_buffer_size - 2);
    fill_bytes(listing.entry + end, 0, 2);
    const auto* name = reinterpret_cast<const char16_t*>(listing.entry + uefi::file_info_name_offset);
    return open_below(parent, name, uefi::file_mode_read);
}

void list_directory(uefi::FileProtocol* directory, std::uint32_t depth);

void list_subdirectories(uefi::FileProtocol* directory, std::uint32_t depth) {
    const std::uint32_t own_length = listing.path_length;
    set_file_position(directory, 0);
    while (!listing.aborted && read_named_entry(directory)) {
        if (!listing.record().is_directory()) continue;
        const FileHandle subdirectory = open_entry(directory);
        if (!subdirectory) continue;
        const char last = own_length == 0 ? '\\' : listing.path[own_length - 1];
        if (last != '\\' && last != '/') append_to_path("\\");
        append_to_path(listing.entry_name());
        list_directory(subdirectory.get(), depth + 1);
        listing.path_length = own_length;
    }
}

void list_directory(uefi::FileProtocol* directory, std::uint32_t depth) {
    if (listing.aborted || depth > max_depth) return;
    if ((listing.flags & recurse) != 0 && !print_directory_heading()) return;
    if (!print_names(directory)) return;
    if ((listing.flags & recurse) != 0) list_subdirectories(directory, depth);
}

void start_listing(std::uint8_t flags) {
    const CellRectangle area = con_text_area();
    const std::uint32_t rows = area.bottom >= area.top ? area.bottom - area.top + 1 : 0;
    listing.flags = flags;
    listing.aborted = false;
    listing.lines = 0;
    listing.column = 0;
    listing.columns = area.right >= area.left ? area.right - area.left + 1 : 1;
    listing.page = std::max(rows >= 3 ? rows - 1 : rows, 1U);
}

// Splits a pattern at its last separator into the display path and the pattern of the names.
void split_pattern(std::string_view pattern) {
    listing.path_length = 0;
    const std::size_t separator = pattern.find_last_of("\\/");
    if (separator == std::string_view::npos) {
        append_to_path(".");
        listing.names = pattern;
    } else {
        append_to_path(separator == 0 ? std::string_view("\\") : pattern.substr(0, separator));
        std::replace(listing.path, listing.path + listing.path_length, '/', '\\');
        listing.names = pattern.substr(separator + 1);
    }
    if (listing.names.empty()) listing.names = "*";
}

void list_files(std::string_view pattern, std::uint8_t flags) {
    if (GetVolumeRoot() == nullptr) return;
    split_pattern(pattern);
    start_listing(flags);
    const std::string_view path(listing.path, listing.path_length);
    if (path == ".") {
        if (uefi::FileProtocol* directory = live_base_directory()) list_directory(directory, 0);
        return;
    }
    const FileHandle directory = open_named(FirmwareName(path), uefi::file_mode_read);
    if (IsDirectory(directory.get())) list_directory(directory.get(), 0);
}

std::uint8_t option_flag(const Token* at) {
    if (is_word(at, "S")) return recurse;
    if (is_word(at, "W")) return wide;
    if (is_word(at, "P")) return paged;
    return 0;
}

// Reads ",S", ",W" and ",P" up to the end of the statement. False after an error.
bool read_options(Cursor& cursor, std::uint8_t& flags) {
    while (accept(cursor, ',')) {
        const std::uint8_t flag = option_flag(cursor);
        if (flag == 0) {
            raise(message::expected_s_w_or_p);
            return false;
        }
        flags |= flag;
        ++cursor;
    }
    if (at_statement_end(cursor)) return true;
    raise(message::syntax_error);
    return false;
}

}  // namespace

void do_files(Cursor& cursor) {
    ++cursor;
    char pattern[pattern_capacity] = "";
    if (!at_statement_end(cursor) && cursor->kind != ',') {
        evaluate_text(cursor, pattern, pattern_capacity);
        if (error_pending()) return;
    }
    std::uint8_t flags = 0;
    if (read_options(cursor, flags)) list_files(pattern, flags);
}

}  // namespace korvane
