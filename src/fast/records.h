// What specialised code keeps in the records of a line: the layouts of all roles that a record can have.
//
// A token record has 64 bytes. The tokenizer's own are the kind, the type of a number, and the payload of
// names and literals; everything else is free, and in the records of keywords, operators and brackets that is
// nearly all of it. Each role has a view of its own over the same bytes; a field is at the same place in all
// views in which it is the same thing:
//
//   at  bytes
//    0   1     kind                           the tokenizer's
//    1   1     value_type                     the tokenizer's, but for FOR's words (BoundRecord)
//    2   1     of an operator, what its left side is; of FOR, WHILE and IF, whether the general handler knows
//              where they skip to (Token::jump_known)
//    3   1     what the right side is
//    4   4     generation                     when the statement was specialised (fast/statement.h)
//    8   8     the step's function, or what the general handler of FOR, WHILE or IF remembers
//   16   8     right side: its leaf
//   24   8     right side: its chain
//   32   8     the next step, or the statement to go on with
//   40   8     left side: its leaf; or a place to be written
//   48   8     left side: its chain; or the next mark, or a position to be stacked
//   56   8     execute                        of a statement's first token
//
// Operators are used as they are in program/token.h (Step). Their right and left sides are read by
// fast/sides.h, and so is the right side of every record that has one here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "program/token.h"

namespace korvane {
struct ForEntry;
struct VariableEntry;
}  // namespace korvane

namespace korvane::fast {

// "(" of an element, a call or a user function's call, and each "," behind it: a subscript or argument as the
// right side.
struct MarkRecord {
    std::uint8_t kind;
    Type value_type;
    Type last_argument;  // of a bracket: the type of the call's last argument, where the function asks
    std::uint8_t value_kind;
    std::uint32_t generation;
    void* function;  // of a bracket that begins a chain: the step's
    const void* value_leaf;
    Token* value_chain;
    Token* next;       // of a bracket: the next step; the "=" of the element that is assigned to
    void* callee;      // of a bracket: the array's block, or the UserFunction
    Token* next_mark;  // the next ","; null at the last one
    Execute execute;
};

// "=" of an assignment: the value as the right side.
struct AssignmentRecord {
    std::uint8_t kind;
    Type value_type;
    std::uint8_t unused_kind;
    std::uint8_t value_kind;
    std::uint32_t generation;
    void* unused;
    const void* value_leaf;
    Token* value_chain;
    Token* after;         // the statement that follows
    std::uint8_t* place;  // storage of the scalar that is assigned to
    void* unused_chain;
    Execute execute;
};

// A place to be written: READ or SWAP, and each "," behind it.
struct PlaceRecord {
    std::uint8_t kind;
    Type value_type;
    Type type;  // of the place
    bool is_element;
    std::uint32_t generation;
    void* unused;
    void* unused_leaf;
    Token* next_place;  // the next "," with a place
    Token* after;       // of the keyword: the statement that follows
    void* place;        // storage of a scalar, or the bracket of an element
    void* unused_chain;
    Execute execute;
};

// IF: the condition as the right side, or, when it compares two leaves, those (fast/truth.h).
struct IfRecord {
    std::uint8_t kind;
    Type value_type;
    bool jump_known;
    std::uint8_t condition_kind;  // and lone_then_part
    std::uint32_t generation;
    std::uint32_t most_statements;  // that it may take to the end of the THEN part
    std::uint32_t else_record;      // the general handler's, when jump_known
    const void* right_leaf;
    union {
        Token* chain;
        std::uint8_t literal[8];  // that is compared with a variable
    };
    Token* when_true;  // where it goes on; null for a line that has not been tokenized yet
    const void* left_leaf;
    Token* when_false;
    Execute execute;

    // A flag of condition_kind, which needs the lower bits only: see then_part_is_lone.
    static constexpr std::uint8_t lone_then_part = 0x80;
};

// WHILE: the condition like IF's.
struct WhileRecord {
    std::uint8_t kind;
    Type value_type;
    bool jump_known;
    std::uint8_t condition_kind;
    std::uint32_t generation;
    Position wend;  // the general handler's, when jump_known
    const void* right_leaf;
    union {
        Token* chain;
        std::uint8_t literal[8];
    };
    Token* after;
    const void* left_leaf;
    Position own;  // of the WHILE itself
    Execute execute;
};

// FOR. Its "=", TO and STEP are BoundRecords.
struct ForRecord {
    std::uint8_t kind;
    Type value_type;
    bool jump_known;
    std::uint8_t unused_kind;
    std::uint32_t generation;
    Position next;  // the general handler's, when jump_known
    VariableEntry* variable;
    Token* to;
    Token* after;  // the first statement of the body
    void* unused;
    Position own;  // of the body
    Execute execute;
};

// A word of FOR, with the number behind it as the right side.
struct BoundRecord {
    std::uint8_t kind;
    Type type;  // of the number
    std::uint8_t unused_kind;
    std::uint8_t value_kind;
    std::uint32_t generation;
    void* unused;
    const void* value_leaf;
    Token* value_chain;
    void* unused_next;
    void* unused_leaf;
    Token* step;  // of TO: STEP, or null
    Execute execute;
};

// NEXT, made for a variable and for the depth at which its loop is open.
struct NextRecord {
    std::uint8_t kind;
    Type value_type;
    std::uint8_t unused_kind;
    std::uint8_t depth;  // how many loops are open, the one that it ends counted
    std::uint32_t generation;
    void* unused;
    ForEntry* entry;
    void* unused_chain;
    Token* after;  // the statement behind a loop that is done
    VariableEntry* variable;
    void* unused_left;
    Execute execute;
};

// GOSUB: where it returns to.
struct GosubRecord {
    std::uint8_t kind;
    Type value_type;
    std::uint8_t unused_kinds[2];
    std::uint32_t generation;
    void* unused[3];
    Token* after;
    void* unused_leaf;
    Position own;
    Execute execute;
};

// The end of a cached line.
struct EndRecord {
    std::uint8_t kind;
    Type value_type;
    std::uint8_t unused_kinds[2];
    std::uint32_t generation;
    std::uint32_t line;
    std::uint32_t unused_record;
    void* unused[2];
    Token* next_line;  // its first token, once control has passed there
    void* unused_left[2];
    Execute execute;
};

// A statement that could not be specialised.
struct GeneralRecord {
    std::uint8_t kind;
    Type value_type;
    std::uint8_t unused_kind;
    std::uint8_t variables_seen;  // how many there were, modulo 256
    std::uint32_t generation;
    void* unused[6];
    Execute execute;
};

template <typename Record>
inline constexpr bool fits_token = sizeof(Record) == sizeof(Token) &&
                                   offsetof(Record, kind) == offsetof(Token, kind) &&
                                   offsetof(Record, generation) == offsetof(Token, generation) &&
                                   offsetof(Record, execute) == offsetof(Token, execute);

// The record in one of its roles.
template <typename Record>
inline Record& as(Token* at) {
    static_assert(fits_token<Record>);
    return *reinterpret_cast<Record*>(at);
}
template <typename Record>
inline const Record& as(const Token* at) {
    static_assert(fits_token<Record>);
    return *reinterpret_cast<const Record*>(at);
}

// What several views share, and share with Step.
static_assert(offsetof(MarkRecord, value_kind) == offsetof(Token, right_kind));
static_assert(offsetof(MarkRecord, value_leaf) == offsetof(Token, step.operand));
static_assert(offsetof(MarkRecord, value_chain) == offsetof(Token, step.inner));
static_assert(offsetof(AssignmentRecord, value_kind) == offsetof(Token, right_kind));
static_assert(offsetof(AssignmentRecord, value_leaf) == offsetof(Token, step.operand));
static_assert(offsetof(AssignmentRecord, value_chain) == offsetof(Token, step.inner));
static_assert(offsetof(BoundRecord, value_kind) == offsetof(Token, right_kind));
static_assert(offsetof(BoundRecord, value_leaf) == offsetof(Token, step.operand));
static_assert(offsetof(BoundRecord, value_chain) == offsetof(Token, step.inner));
static_assert(offsetof(IfRecord, condition_kind) == offsetof(Token, right_kind));
static_assert(offsetof(IfRecord, right_leaf) == offsetof(Token, step.operand));
static_assert(offsetof(IfRecord, chain) == offsetof(Token, step.inner));
static_assert(offsetof(WhileRecord, condition_kind) == offsetof(Token, right_kind));
static_assert(offsetof(WhileRecord, right_leaf) == offsetof(Token, step.operand));
static_assert(offsetof(WhileRecord, chain) == offsetof(Token, step.inner));
static_assert(offsetof(MarkRecord, next) == offsetof(Token, step.next));
static_assert(offsetof(AssignmentRecord, after) == offsetof(Token, step.next));
static_assert(offsetof(PlaceRecord, after) == offsetof(Token, step.next));
static_assert(offsetof(IfRecord, when_true) == offsetof(Token, step.next));
static_assert(offsetof(WhileRecord, after) == offsetof(Token, step.next));
static_assert(offsetof(ForRecord, after) == offsetof(Token, step.next));
static_assert(offsetof(NextRecord, after) == offsetof(Token, step.next));
static_assert(offsetof(GosubRecord, after) == offsetof(Token, step.next));
static_assert(offsetof(EndRecord, next_line) == offsetof(Token, step.next));
static_assert(offsetof(IfRecord, left_leaf) == offsetof(Token, step.left_operand));
static_assert(offsetof(WhileRecord, left_leaf) == offsetof(Token, step.left_operand));
static_assert(offsetof(IfRecord, literal) == offsetof(Token, step.literal));
static_assert(offsetof(WhileRecord, literal) == offsetof(Token, step.literal));
static_assert(offsetof(IfRecord, jump_known) == offsetof(Token, jump_known));
static_assert(offsetof(WhileRecord, jump_known) == offsetof(Token, jump_known));
static_assert(offsetof(ForRecord, jump_known) == offsetof(Token, jump_known));
static_assert(offsetof(IfRecord, else_record) == offsetof(Token, step.jump.record));
static_assert(offsetof(WhileRecord, wend) == offsetof(Token, step.jump));
static_assert(offsetof(ForRecord, next) == offsetof(Token, step.jump));
static_assert(offsetof(EndRecord, line) == offsetof(Token, step.jump.line));
static_assert(offsetof(WhileRecord, own) == offsetof(Token, step.own));
static_assert(offsetof(ForRecord, own) == offsetof(Token, step.own));
static_assert(offsetof(GosubRecord, own) == offsetof(Token, step.own));
static_assert(offsetof(MarkRecord, next_mark) == offsetof(Token, step.left_inner));
static_assert(offsetof(MarkRecord, callee) == offsetof(Token, step.left_operand));
static_assert(offsetof(MarkRecord, last_argument) == offsetof(Token, left_kind));

}  // namespace korvane::fast
