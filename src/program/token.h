// Token records: the unit of a tokenized line.
//
// A line of program text is cut once into an array of 64-byte records ending with an END_OF_LINE record;
// every statement handler and the evaluator walk these records, one record a step. The arrays live in the
// token cache of the program arena and can be looked at with PEEK, so kind, value type and payload stay as
// the tokenizer wrote them; the spare bytes, the unused part of a payload and the lookup cache carry what the
// interpreter has learned about the token (see the members). Most of it belongs to specialised statements,
// whose views of a record are in fast/records.h.
#pragma once

#include <cstdint>

#include "numbers/value.h"

namespace korvane {

// A place in the program or in the direct line.
struct Position {
    std::uint32_t line;    // index into the program's line index, or direct_line
    std::uint32_t record;  // token record within the line
};

// What a token is. Punctuation is its own character code; keywords are listed in program/keywords.h.
enum TokenKind : std::uint8_t {
    END_OF_LINE = 0,
    NUMBER = 1,
    STRING_LITERAL = 2,
    IDENTIFIER = 3,
};

inline constexpr int max_tokens_per_line = 127;  // the end record not counted
inline constexpr int max_token_records = max_tokens_per_line + 1;
inline constexpr int name_capacity = 40;              // bytes of a name with its terminating zero
inline constexpr int max_identifier_characters = 37;  // before the type suffix

// What an IDENTIFIER was found to be; says what `cached` points at.
enum Resolution : std::uint8_t {
    UNRESOLVED = 0,
    RESOLVED_SCALAR,    // a VariableEntry, while `generation` is current
    RESOLVED_ARRAY,     // a VariableEntry, while `generation` is current and no array has been removed
    RESOLVED_FUNCTION,  // a BuiltInFunction, for good
};

struct Token;

// Executes the statement at `at` and those that follow it, `budget` of them at most; gives how many of these
// are left when something stopped it (fast/statement.h).
using Execute = std::uint64_t (*)(Token* at, std::uint64_t budget);

struct Token {
    std::uint8_t kind;
    Type value_type;  // of a NUMBER
    union {
        std::uint8_t resolution;  // of an IDENTIFIER: a Resolution
        bool jump_known;          // of FOR, WHILE and IF: `jump` is set
    };
    std::uint8_t removals;  // of a RESOLVED_ARRAY: how many arrays had been removed (variables.h), modulo 256
    std::uint32_t generation;  // clear generation at which `cached` or `execute` was taken
    union {
        struct {
            union {
                struct {
                    union {
                        std::int64_t integer;
                        double real;
                    };
                    double as_double;  // a NUMBER's value as a double, whatever its type
                    Token* target;     // first token of the line with this number, once jumped to
                    std::uint32_t target_line;
                    float as_single;  // its value as a float, once needed
                } number;
                struct {
                    const std::uint8_t* bytes;  // first character, inside the line's own text
                    std::uint32_t length;
                } string;
                char name[name_capacity];  // upper case, with type suffix, zero-padded
                std::uint8_t payload[40];
            };
            // Lookup cache. The tokenizer clears it;
            // a reference in it is trusted only while `generation` is current.
            void* cached;
        };
        Position jump;  // of FOR, WHILE and IF: where a scan from it leads
        struct {
            std::uint32_t line;
            std::uint32_t record;  // its own, which is the line's last one
            void* unused[2];
            Token* next_line;  // its first token, once control has passed there
        } line_end;            // of a cached line's end record
    };
    union {
        Execute execute;  // of a statement's first token: how to execute the statement
        struct {
            std::uint32_t stamp;
            std::uint8_t side;
            std::uint8_t chain;
            std::uint8_t length;
            std::uint8_t state;  // 0 in front of it: no address of a function has so many bits
        } argument;  // of an argument's first token: what was made of it (values/held_arguments.h)
    };
};
static_assert(sizeof(Token) == 64);
static_assert(__builtin_offsetof(Token, payload) == 8);
static_assert(__builtin_offsetof(Token, cached) == 48);

// A position in a token array. Handlers and evaluator advance it past what they read.
using Cursor = Token*;

}  // namespace korvane
