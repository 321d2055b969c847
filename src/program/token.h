// Token records: the unit of a tokenized line.
//
// A line of program text is cut once into an array of 64-byte records ending with an END_OF_LINE record;
// every statement handler and the evaluator walk these records, one record a step. The arrays live in the
// token cache of the program arena and can be looked at with PEEK, so kind, value type and payload stay as
// the tokenizer wrote them; the spare bytes, the unused part of a payload and the lookup cache carry what the
// interpreter has learned about the token (see the members).
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
    RESOLVED_ARRAY,     // a VariableEntry, while `generation` is current
    RESOLVED_FUNCTION,  // a BuiltInFunction, for good
};

struct Token;

// An integer result of a specialised evaluation; when `failed` is not 0 it is none, and the general evaluator
// has to say why.
struct Whole {
    std::int64_t value;
    std::uint64_t failed;
};

// A specialised piece of evaluation, kept in the unused bytes of an operator, a bracket, "=" or a keyword;
// fast/step.h explains it, and fast/records.h tells what else is kept in these bytes.
struct Step {
    union {
        double (*real)(double accumulator, Token* at);
        float (*single)(float accumulator, Token* at);
        Whole (*whole)(std::int64_t accumulator, Token* at);
        Value (*text)(Token* at);
        Position jump;  // of a keyword: where a scan from it leads; of a cached line's end record: its line
    };
    const void* operand;  // leaf of the right operand
    union {
        Token* inner;             // first step of the right operand
        std::uint8_t literal[8];  // of IF and WHILE: a literal that is compared with a variable
    };
    Token* next;  // next step of the chain; of a statement: the statement that follows; of a cached line's
                  // end record: the next line's first token, once control has passed there
    const void* left_operand;  // the same for the left operand, where the accumulator does not carry it
    union {
        Token* left_inner;
        Position own;  // of a keyword that stacks a position: that position
    };
};
static_assert(sizeof(Step) == 48);

// Executes the statement at `at` and those that follow it, `budget` of them at most; gives how many of these
// are left when something stopped it (fast/statement.h).
using Execute = std::uint64_t (*)(Token* at, std::uint64_t budget);

struct Token {
    std::uint8_t kind;
    Type value_type;  // of a NUMBER
    union {
        std::uint8_t resolution;  // of an IDENTIFIER: a Resolution
        std::uint8_t left_kind;   // of an operator: what its left operand is
        bool jump_known;          // of FOR, WHILE and IF: step.jump is set
    };
    std::uint8_t right_kind;   // of the right or only operand of `step`
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
        Step step;
    };
    Execute execute;  // of a statement's first token: how to execute the statement
};
static_assert(sizeof(Token) == 64);
static_assert(__builtin_offsetof(Token, payload) == 8);
static_assert(__builtin_offsetof(Token, cached) == 48);
static_assert(__builtin_offsetof(Token, step) == 8);

// A position in a token array. Handlers and evaluator advance it past what they read.
using Cursor = Token*;

}  // namespace korvane
