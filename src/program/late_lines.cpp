#include "program/late_lines.h"

#include <algorithm>

#include "platform/memory.h"
#include "program/arenas.h"
#include "program/program_store.h"

namespace korvane {
namespace {

// A record to be sorted: the line number above, and below it how far into the arena it lies, which of two
// lines of the same number tells the one that came later.
using Key = std::uint64_t;

Key key_of(const std::uint8_t* record) {
    return Key{read_unaligned<std::uint32_t>(record)} << 32 | static_cast<Key>(record - arenas.CODEBASE);
}

std::uint32_t number_of(Key key) {
    return static_cast<std::uint32_t>(key >> 32);
}

std::uint32_t text_length(const std::uint8_t* record) {
    return read_unaligned<std::uint32_t>(record + 4);
}

}  // namespace

bool LateLines::takes(std::uint32_t number, std::string_view text) const {
    const std::uint32_t lines = program.count + count_;
    if (lines == 0 || lines == max_program_lines || text.size() > max_line_text) return false;
    if (count_ == 0 && number > program.lines[program.count - 1].number) return false;
    const auto used = static_cast<std::uint64_t>(program.write - arenas.CODEBASE) +
                      line_record_size(static_cast<std::uint32_t>(text.size()));
    const auto available = static_cast<std::uint64_t>(arenas.CODEEND - arenas.CODEBASE);
    return 2 * used + (lines + 2) * sizeof(Key) <= available;
}

void LateLines::store(std::uint32_t number, std::string_view text) {
    if (!takes(number, text)) {
        settle();
        store_line(number, text);
        return;
    }
    if (count_++ == 0) {
        execution.can_continue = false;
        empty_token_cache();
        first_ = program.write;
    }
    write_line_record(program.write, number, text);
    program.write += line_record_size(static_cast<std::uint32_t>(text.size()));
}

void LateLines::settle() {
    if (count_ == 0) return;
    const auto write = reinterpret_cast<std::uintptr_t>(program.write);
    auto* const keys = reinterpret_cast<Key*>((write + 7) & ~std::uintptr_t{7});
    Key* end = keys;
    for (std::uint32_t i = 0; i < program.count; ++i)
        *end++ = key_of(program.lines[i].record);
    for (const std::uint8_t* record = first_; record < program.write;
         record += line_record_size(text_length(record)))
        *end++ = key_of(record);
    std::make_heap(keys, end);
    std::sort_heap(keys, end);

    // A copy in order, of which each record already knows where it will lie.
    auto* const copy = reinterpret_cast<std::uint8_t*>(end);
    std::uint32_t count = 0;
    std::uint64_t size = 0;
    for (const Key* key = keys; key != end; ++key) {
        const std::uint8_t* record = arenas.CODEBASE + static_cast<std::uint32_t>(*key);
        const std::uint32_t length = text_length(record);
        const bool replaced = key + 1 != end && number_of(key[1]) == number_of(*key);
        if (replaced || length == 0) continue;
        copy_bytes(copy + size, record, line_record_size(length));
        program.lines[count++] = LineEntry{
            .number = number_of(*key), .record = arenas.CODEBASE + size, .tokens = nullptr, .token_count = 0};
        size += line_record_size(length);
    }
    move_bytes(arenas.CODEBASE, copy, size);
    if (count < program.count)
        fill_bytes(&program.lines[count], 0, (program.count - count) * sizeof(LineEntry));
    program.count = count;
    program.write = arenas.CODEBASE + size;
    ++program.changes;
    count_ = 0;
}

}  // namespace korvane
