// The program store: the stored lines as text, in ascending order of their numbers, with a sorted index and a
// cache of each line's token array.
//
// Line records are packed from CODEBASE upward:
//   offset 0   u32  line number
//   offset 4   u32  text length n, 0 to 244
//   offset 8   n    the text as typed, after its number and the blanks behind the number
//   offset 8+n 1    zero byte
//   ...             padding to a multiple of 4
// The token cache follows the last record, rounded up to a multiple of 8, and grows toward CODEEND. String
// tokens point into the line text, so every change of the program empties the whole cache; it fills again as
// lines run.
#pragma once

#include <cstdint>
#include <string_view>

#include "program/execution.h"
#include "program/positions.h"
#include "program/token.h"

namespace korvane {

inline constexpr std::uint32_t max_program_lines = 65536;
inline constexpr std::uint32_t max_line_text = 244;

inline constexpr std::uint32_t line_record_head = 8;

// What a line with a text of this length takes in the program arena.
constexpr std::uint32_t line_record_size(std::uint32_t text_length) {
    return (line_record_head + text_length + 1 + 3) & ~3U;
}

struct LineEntry {
    std::uint32_t number;
    std::uint8_t* record;       // line record in the program arena
    Token* tokens;              // cached token array, or null when not tokenized since the last change
    std::uint32_t token_count;  // records in it
};

struct ProgramStore {
    std::uint32_t count;        // stored lines
    std::uint8_t* write;        // first byte after the last record
    std::uint8_t* cache_start;  // token cache, or null until the first line is cached after a change
    std::uint8_t* cache_end;
    std::uint32_t cache_epoch;  // counts the times that the cache was emptied: program/positions.h
    std::uint32_t changes;      // counts the changes of the text; what is known about it is good for one
    LineEntry lines[max_program_lines];
};
extern ProgramStore program;

// Writes the record of a line, its zero byte and padding included.
void write_line_record(std::uint8_t* record, std::uint32_t number, std::string_view text);

// After memory has been written by other means than these functions: what is known about the text is known no
// more when it may lie there.
void note_written_program(std::uint64_t address, std::uint64_t size);

// The text of the line at `index`, without its number.
std::string_view line_text(std::uint32_t index);

// Inserts, replaces or, with an empty text, deletes a line. Raises "Line too long" or "Program too large"; a
// failed store leaves the program as it was. Clears can-continue.
void store_line(std::uint32_t number, std::string_view text);

// Removes the lines from index `first` up to, not including, `end` and empties the token cache.
// Clears can-continue.
void delete_lines(std::uint32_t first, std::uint32_t end);

// The index of the line with exactly this number, or direct_line when there is none.
std::uint32_t find_line(std::uint32_t number);

// The index of the first line whose number is at least `number`; program.count when there is none.
std::uint32_t first_line_from(std::uint64_t number);

// For statements that change the program and may stand in it, reached by a direct GOTO: ends the run, since
// the tokens being executed are no longer there. Nothing happens in a direct line.
void end_run_of_changed_program();

// Empties the program. Variables are not touched.
void clear_program();

// Drops every cached token array.
void empty_token_cache();

// For whoever has changed line_starts: writes it into the cached lines. Lines that are cached later follow by
// themselves.
void mark_line_starts();

// Whether the record stays where it is until the epoch ends: whether it lies in the token cache.
bool remembers_lines(const Token* at);

// The epoch of positions in the line that is being executed.
std::uint32_t epoch_here();

// Makes the token array of the line current (execution.tokens), from the cache or by tokenizing, and returns
// its number of records. A tokenizing error is raised with its line set to this line's number.
std::uint32_t prepare_line(std::uint32_t index);

// The statement at a position of the current epoch, colons and, where possible, the end of the line passed
// over; null when the line's tokens are not in the cache.
Token* cached_statement(Position position);

// Transfers control to the first statement of the line with this number. Raises "Undefined line number" when
// the number is above 4,294,967,294, negative, or not in the program.
void jump_to_line(std::int64_t number);

// Transfers control to a position that was taken in the epoch: makes its line current and sets the jumped
// flag. The direct line is a position like any other.
void jump_to_position(Position position, std::uint32_t epoch = no_epoch);

}  // namespace korvane
