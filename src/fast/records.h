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
// Some of the views are of no role, but of what roles have in common: a HolderRecord holds a value, a
// StepRecord is a step of a chain, a LeadRecord leads on to a statement, a ConditionRecord holds a condition.
// What works with any of these takes them so.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fast/step.h"
#include "program/token.h"

namespace korvane {
struct ArrayBlock;
struct BuiltInFunction;
struct ForEntry;
struct UserFunction;
struct VariableEntry;
}  // namespace korvane

namespace korvane::fast {

// ---- Parts of expressions -----------------------------------------------------------------------

// Whatever holds a value as its right or only side.
struct HolderRecord {
    std::uint8_t kind;
    Type value_type;
    std::uint8_t unused_kind;
    std::uint8_t value_kind;
    std::uint32_t generation;
    void* unused;
    const void* value_leaf;
    Token* value_chain;
    void* unused_next;
    void* unused_left[2];
    Execute execute;
};

// Whatever is a step of a chain.
struct StepRecord {
    std::uint8_t kind;
    Type value_type;
    std::uint8_t unused_kinds[2];
    std::uint32_t generation;
    StepFunction function;
    void* unused_value[2];
    Token* next;  // step; null at the chain's end
    void* unused_left[2];
    Execute execute;
};

// An operator, a sign or NOT. The left side is there where the accumulator does not carry it.
struct OperatorRecord {
    std::uint8_t kind;
    Type value_type;
    std::uint8_t left_kind;
    std::uint8_t right_kind;
    std::uint32_t generation;
    StepFunction function;
    const void* right_leaf;
    Token* right_chain;
    Token* next;
    const void* left_leaf;
    Token* left_chain;
    Execute execute;
};

// "(" of an element, a call or a user function's call, and each "," behind it: they hold a subscript or an
// argument each.
struct MarkRecord {
    std::uint8_t kind;
    Type value_type;
    std::uint8_t unused_kind;
    std::uint8_t value_kind;
    std::uint32_t generation;
    void* unused;
    const void* value_leaf;
    Token* value_chain;
    void* unused_next;
    void* unused_left;
    Token* next_mark;  // the next ","; null at the last one
    Execute execute;
};

// The subscripts of an element; the frequent forms are one or two, each a DOUBLE variable or literal.
enum class Subscripts : std::uint8_t { one, two, any };

// "(" of an array element.
struct ElementRecord {
    std::uint8_t kind;
    Type value_type;
    Subscripts subscripts;
    std::uint8_t value_kind;
    std::uint32_t generation;
    StepFunction function;
    const void* value_leaf;
    Token* value_chain;
    union {
        Token* next;    // step
        Token* equals;  // of an element that is assigned to
    };
    const ArrayBlock* array;
    Token* next_mark;
    Execute execute;
};

// "(" of a call.
struct CallRecord {
    std::uint8_t kind;
    Type value_type;
    Type last_argument;  // the type of the last argument, where the function asks
    std::uint8_t value_kind;
    std::uint32_t generation;
    StepFunction function;
    const void* value_leaf;
    Token* value_chain;
    union {
        Token* next;    // step
        Token* equals;  // of MID$ as a statement
    };
    union {
        UserFunction* callee;
        const BuiltInFunction* built_in;
    };
    Token* next_mark;
    Execute execute;
};

// ---- Statements ---------------------------------------------------------------------------------

// "=" of an assignment, which holds the value.
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
    union {
        std::uint8_t* storage;  // of a scalar
        Token* bracket;         // of an element
    };
    void* unused_chain;
    Execute execute;
};

// Whatever statement, or "=", has a fixed one behind it.
struct LeadRecord {
    std::uint8_t kind;
    Type value_type;
    std::uint8_t unused_kinds[2];
    std::uint32_t generation;
    void* unused[3];
    Token* after;
    void* unused_left[2];
    Execute execute;
};

// IF or WHILE in front of its condition, which it holds; or, when that compares two leaves, it holds these.
struct ConditionRecord {
    std::uint8_t kind;
    Type value_type;
    bool jump_known;
    std::uint8_t condition_kind;
    std::uint32_t generation;
    void* unused;
    const void* right_leaf;
    union {
        Token* chain;
        std::uint8_t literal[8];  // that is compared with a variable
    };
    Token* unused_next;
    const void* left_leaf;
    void* unused_chain;
    Execute execute;
};

// IF. The condition is a ConditionRecord's.
struct IfRecord {
    std::uint8_t kind;
    Type value_type;
    bool jump_known;
    std::uint8_t condition_kind;  // and lone_then_part
    std::uint32_t generation;
    std::uint32_t most_statements;  // that it may take to the end of the THEN part
    std::uint32_t else_record;      // the general handler's, when jump_known
    void* condition[2];
    Token* when_true;  // where it goes on; null for a line that has not been tokenized yet
    void* more_of_condition;
    Token* when_false;
    Execute execute;

    // A flag of condition_kind, which needs the lower bits only: see then_part_is_lone.
    static constexpr std::uint8_t lone_then_part = 0x80;
};

// WHILE. The condition is a ConditionRecord's.
struct WhileRecord {
    std::uint8_t kind;
    Type value_type;
    bool jump_known;
    std::uint8_t condition_kind;
    std::uint32_t generation;
    Position wend;  // the general handler's, when jump_known
    void* condition[2];
    Token* after;
    void* more_of_condition;
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

// A word of FOR, which holds the number behind it.
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

// ON with a list of lines, which holds the number that chooses among them.
struct OnRecord {
    std::uint8_t kind;
    Type value_type;
    std::uint8_t count;  // of the lines
    std::uint8_t value_kind;
    std::uint32_t generation;
    Token* lines;  // the literal of the first one; the others follow behind a comma each
    const void* value_leaf;
    Token* value_chain;
    Token* after;
    void* unused_leaf;
    Position own;  // of a GOSUB, where it returns to
    Execute execute;
};

// The end of a cached line.
struct EndRecord {
    std::uint8_t kind;
    Type value_type;
    std::uint8_t unused_kinds[2];
    std::uint32_t generation;
    std::uint32_t line;
    std::uint32_t record;      // its own
    std::uint64_t waiting[2];  // a bit for each record of the line that leads here meanwhile
    Token* next_line;          // its first token, once control has passed there
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

// ---- The record in one of its roles -------------------------------------------------------------

template <typename Record>
inline constexpr bool fits_token = sizeof(Record) == sizeof(Token) &&
                                   offsetof(Record, kind) == offsetof(Token, kind) &&
                                   offsetof(Record, generation) == offsetof(Token, generation) &&
                                   offsetof(Record, execute) == offsetof(Token, execute);

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

// ---- What is at the same place ------------------------------------------------------------------

// Those that hold a value.
template <typename Record>
inline constexpr bool is_holder = offsetof(Record, value_kind) == offsetof(HolderRecord, value_kind) &&
                                  offsetof(Record, value_leaf) == offsetof(HolderRecord, value_leaf) &&
                                  offsetof(Record, value_chain) == offsetof(HolderRecord, value_chain);
static_assert(is_holder<MarkRecord>);
static_assert(is_holder<ElementRecord>);
static_assert(is_holder<CallRecord>);
static_assert(is_holder<AssignmentRecord>);
static_assert(is_holder<BoundRecord>);
static_assert(is_holder<OnRecord>);
static_assert(offsetof(OperatorRecord, right_kind) == offsetof(HolderRecord, value_kind));
static_assert(offsetof(OperatorRecord, right_leaf) == offsetof(HolderRecord, value_leaf));
static_assert(offsetof(OperatorRecord, right_chain) == offsetof(HolderRecord, value_chain));
static_assert(offsetof(ConditionRecord, condition_kind) == offsetof(HolderRecord, value_kind));
static_assert(offsetof(ConditionRecord, right_leaf) == offsetof(HolderRecord, value_leaf));
static_assert(offsetof(ConditionRecord, chain) == offsetof(HolderRecord, value_chain));

// The steps.
template <typename Record>
inline constexpr bool is_step = offsetof(Record, function) == offsetof(StepRecord, function) &&
                                offsetof(Record, next) == offsetof(StepRecord, next);
static_assert(is_step<OperatorRecord>);
static_assert(is_step<ElementRecord>);
static_assert(is_step<CallRecord>);

// Brackets as marks.
static_assert(offsetof(ElementRecord, next_mark) == offsetof(MarkRecord, next_mark));
static_assert(offsetof(CallRecord, next_mark) == offsetof(MarkRecord, next_mark));

// Conditions, and what the general handlers remember.
template <typename Record>
inline constexpr bool has_condition =
    offsetof(Record, condition_kind) == offsetof(ConditionRecord, condition_kind) &&
    offsetof(Record, condition) == offsetof(ConditionRecord, right_leaf) &&
    offsetof(Record, condition) + sizeof(Record::condition) ==
        offsetof(ConditionRecord, chain) + sizeof(ConditionRecord::literal) &&
    offsetof(Record, more_of_condition) == offsetof(ConditionRecord, left_leaf) &&
    offsetof(Record, jump_known) == offsetof(Token, jump_known);
static_assert(has_condition<IfRecord>);
static_assert(has_condition<WhileRecord>);
static_assert(offsetof(ForRecord, jump_known) == offsetof(Token, jump_known));
static_assert(offsetof(IfRecord, else_record) == offsetof(Token, jump.record));
static_assert(offsetof(WhileRecord, wend) == offsetof(Token, jump));
static_assert(offsetof(ForRecord, next) == offsetof(Token, jump));
static_assert(offsetof(EndRecord, line) == offsetof(Token, line_end.line));
static_assert(offsetof(EndRecord, record) == offsetof(Token, line_end.record));
static_assert(sizeof(EndRecord::waiting) * 8 >= max_tokens_per_line);
static_assert(offsetof(EndRecord, next_line) == offsetof(Token, line_end.next_line));

// The statement to go on with.
template <typename Record>
inline constexpr bool leads_on = offsetof(Record, after) == offsetof(LeadRecord, after);
static_assert(leads_on<AssignmentRecord>);
static_assert(leads_on<PlaceRecord>);
static_assert(leads_on<WhileRecord>);
static_assert(leads_on<ForRecord>);
static_assert(leads_on<NextRecord>);
static_assert(leads_on<GosubRecord>);
static_assert(leads_on<OnRecord>);
static_assert(offsetof(OnRecord, own) == offsetof(GosubRecord, own));

}  // namespace korvane::fast
