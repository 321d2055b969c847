#include "program/program_store.h"

#include "platform/memory.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/line_starts.h"
#include "program/messages.h"
#include "program/tokenizer.h"

namespace korvane {

ProgramStore program;

namespace {

// Tests make the token cache small, to fill it with a few lines.
#ifdef KORVANE_TOKEN_CACHE_LIMIT
constexpr std::uint64_t token_cache_limit = KORVANE_TOKEN_CACHE_LIMIT;
#else
constexpr std::uint64_t token_cache_limit = program_arena_size;
#endif

std::uint32_t stored_text_length(const std::uint8_t* record) {
    return read_unaligned<std::uint32_t>(record + 4);
}

// Takes out the lines from index `first` up to, not including, `end`.
void remove_lines(std::uint32_t first, std::uint32_t end) {
    std::uint8_t* start = program.lines[first].record;
    std::uint8_t* rest = end < program.count ? program.lines[end].record : program.write;
    const std::int64_t size = rest - start;
    move_bytes(start, rest, static_cast<std::size_t>(program.write - rest));
    program.write -= size;
    for (std::uint32_t from = end, to = first; from < program.count; ++from, ++to) {
        program.lines[to] = program.lines[from];
        program.lines[to].record -= size;
    }
    const std::uint32_t count = program.count - (end - first);
    fill_bytes(&program.lines[count], 0, (end - first) * sizeof(LineEntry));
    program.count = count;
    ++program.changes;
}

void insert_line(std::uint32_t index, std::uint32_t number, std::string_view text) {
    const std::uint32_t size = line_record_size(static_cast<std::uint32_t>(text.size()));
    std::uint8_t* record = index < program.count ? program.lines[index].record : program.write;
    move_bytes(record + size, record, static_cast<std::size_t>(program.write - record));
    program.write += size;
    write_line_record(record, number, text);
    for (std::uint32_t i = program.count; i > index; --i) {
        program.lines[i] = program.lines[i - 1];
        program.lines[i].record += size;
    }
    program.lines[index] = LineEntry{.number = number, .record = record, .tokens = nullptr, .token_count = 0};
    ++program.count;
    ++program.changes;
}

bool holds_line(std::uint32_t index, std::uint32_t number) {
    return index < program.count && program.lines[index].number == number;
}

// Room for a record of the size: what is free above the last record, and the space of the record it replaces.
bool has_room_for(std::uint32_t size, std::uint32_t index, bool replaces) {
    std::uint64_t available =
        arenas.CODEEND > program.write ? static_cast<std::uint64_t>(arenas.CODEEND - program.write) : 0;
    if (replaces) available += line_record_size(stored_text_length(program.lines[index].record));
    return size <= available && (replaces || program.count < max_program_lines);
}

// Copies the scratch tokens behind the last cached ones when the arena has room for them.
Token* cache_tokens(std::uint32_t count) {
    if (program.cache_start == nullptr) {
        const auto write = reinterpret_cast<std::uintptr_t>(program.write);
        program.cache_start = reinterpret_cast<std::uint8_t*>((write + 7) & ~std::uintptr_t{7});
        program.cache_end = program.cache_start;
    }
    const std::uint64_t size = std::uint64_t{count} * sizeof(Token);
    const auto used = static_cast<std::uint64_t>(program.cache_end - program.cache_start);
    if (program.cache_end > arenas.CODEEND ||
        size > static_cast<std::uint64_t>(arenas.CODEEND - program.cache_end) ||
        used + size > token_cache_limit)
        return nullptr;
    auto* tokens = reinterpret_cast<Token*>(program.cache_end);
    program.cache_end += size;
    copy_bytes(tokens, tokenizer.scratch, size);
    return tokens;
}

void forget_cache() {
    program.cache_start = nullptr;
    program.cache_end = nullptr;
    ++program.cache_epoch;
    ++arenas.generation;  // open loops remember tokens for one generation
    execution.kept_token = nullptr;
}

}  // namespace

void write_line_record(std::uint8_t* record, std::uint32_t number, std::string_view text) {
    write_unaligned(record, number);
    write_unaligned(record + 4, static_cast<std::uint32_t>(text.size()));
    copy_bytes(record + line_record_head, text.data(), text.size());
    // The zero byte and the padding, so that no stale bytes show in a memory dump.
    const std::uint32_t used = line_record_head + static_cast<std::uint32_t>(text.size());
    fill_bytes(record + used, 0, line_record_size(static_cast<std::uint32_t>(text.size())) - used);
}

void note_written_program(std::uint64_t address, std::uint64_t size) {
    const std::uint64_t offset = address - reinterpret_cast<std::uint64_t>(arenas.CODEBASE);
    if (offset < program_arena_size || offset + size < size) ++program.changes;
}

std::string_view line_text(std::uint32_t index) {
    const std::uint8_t* record = program.lines[index].record;
    return {reinterpret_cast<const char*>(record + line_record_head), stored_text_length(record)};
}

std::uint32_t first_line_from(std::uint64_t number) {
    std::uint32_t low = 0;
    std::uint32_t high = program.count;
    // A program is mostly entered and loaded in ascending order: look at the end first.
    if (high > 0 && program.lines[high - 1].number < number) return high;
    while (low < high) {
        const std::uint32_t middle = (low + high) / 2;
        if (program.lines[middle].number < number)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

std::uint32_t find_line(std::uint32_t number) {
    const std::uint32_t index = first_line_from(number);
    return holds_line(index, number) ? index : direct_line;
}

void store_line(std::uint32_t number, std::string_view text) {
    execution.can_continue = false;
    if (text.size() > max_line_text) {
        raise(message::line_too_long);
        return;
    }
    const std::uint32_t index = first_line_from(number);
    const bool replaces = holds_line(index, number);
    if (text.empty()) {
        if (replaces) delete_lines(index, index + 1);
        return;
    }
    if (!has_room_for(line_record_size(static_cast<std::uint32_t>(text.size())), index, replaces)) {
        raise(message::program_too_large);
        return;
    }
    empty_token_cache();
    if (replaces) remove_lines(index, index + 1);
    insert_line(index, number, text);
}

void delete_lines(std::uint32_t first, std::uint32_t end) {
    execution.can_continue = false;
    empty_token_cache();
    remove_lines(first, end);
}

void end_run_of_changed_program() {
    if (execution.line != direct_line) execution.stop = true;
}

void clear_program() {
    fill_bytes(program.lines, 0, program.count * sizeof(LineEntry));
    program.count = 0;
    program.write = arenas.CODEBASE;
    ++program.changes;
    forget_cache();
    execution.can_continue = false;
}

void empty_token_cache() {
    // Nothing cached means no entry holds a pointer: entering n lines must not walk the index n times.
    if (program.cache_start == nullptr) return;
    for (std::uint32_t i = 0; i < program.count; ++i) {
        program.lines[i].tokens = nullptr;
        program.lines[i].token_count = 0;
    }
    forget_cache();
}

void mark_line_starts() {
    // Native code leads to the first statement of a line without a look at its record.
    ++arenas.generation;
    for (std::uint32_t i = 0; i < program.count; ++i) {
        const LineEntry& line = program.lines[i];
        if (line.tokens == nullptr || is_watched(line.number) == begins_watched_line(line.tokens)) continue;
        line.tokens->execute = is_watched(line.number) ? line_starts.handler : tokenizer.first_handler;
    }
}

bool remembers_lines(const Token* at) {
    const void* record = at;
    return record >= program.cache_start && record < program.cache_end;
}

std::uint32_t epoch_here() {
    const bool stays = execution.tokens == execution_buffer.direct || remembers_lines(execution.tokens);
    return stays ? program.cache_epoch : no_epoch;
}

std::uint32_t prepare_line(std::uint32_t index) {
    LineEntry& line = program.lines[index];
    if (line.tokens != nullptr) {
        execution.tokens = line.tokens;
        return line.token_count;
    }
    const auto count = static_cast<std::uint32_t>(tokenize(line.record + line_record_head));
    if (error_pending()) {
        errors.line = line.number;
        return 0;
    }
    Token* tokens = cache_tokens(count);
    if (tokens == nullptr) {
        // No room left to keep them: the line runs from a buffer and is tokenized again next time.
        copy_bytes(execution_buffer.tokens, tokenizer.scratch, count * sizeof(Token));
        execution.tokens = execution_buffer.tokens;
        return count;
    }
    line.tokens = tokens;
    line.token_count = count;
    if (is_watched(line.number)) tokens->execute = line_starts.handler;
    tokens[count - 1].line_end.line = index;
    tokens[count - 1].line_end.record = count - 1;
    execution.tokens = tokens;
    return count;
}

Token* cached_statement(Position position) {
    Token* at = execution_buffer.direct + position.record;
    if (position.line != direct_line) {
        if (position.line >= program.count) return nullptr;
        const LineEntry& line = program.lines[position.line];
        if (line.tokens == nullptr || position.record >= line.token_count) return nullptr;
        at = line.tokens + position.record;
    }
    while (at->kind == ':')
        ++at;
    return at->kind == END_OF_LINE && at->line_end.next_line != nullptr ? at->line_end.next_line : at;
}

void jump_to_line(std::int64_t number) {
    const std::uint32_t index =
        number < 0 || number > max_line_number ? direct_line : find_line(static_cast<std::uint32_t>(number));
    if (index == direct_line) {
        raise(message::undefined_line_number);
        return;
    }
    jump_to_position({index, 0});
}

void jump_to_position(Position position, std::uint32_t epoch) {
    // A position may be older than the program: stacks survive an edit.
    const bool direct = position.line == direct_line;
    if (!direct && position.line >= program.count) {
        raise(message::undefined_line_number);
        return;
    }
    execution.line = position.line;
    execution.record = position.record;
    execution.jumped = true;
    std::uint32_t count = execution_buffer.direct_count;
    if (direct)
        execution.tokens = execution_buffer.direct;
    else
        count = prepare_line(position.line);
    if (!error_pending() && position.record >= count) raise(message::undefined_line_number);
    const bool known = epoch == program.cache_epoch;
    if (!known && !error_pending() && !begins_statement(execution.tokens, position.record))
        run_from_copy(count);
    // A line that cannot be tokenized has no statement to point at but its start.
    if (error_pending()) execution.statement_start = 0;
}

}  // namespace korvane
