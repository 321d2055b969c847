// The parts of a statement's expressions while it is being specialised. The parser (fast/parser.cpp) makes a
// node of each, with its static type; fast/plan.cpp decides in which domain each is computed and what side it
// becomes; then the statement chooses its handler, for it can see all that there will be; and last
// fast/expression.cpp makes the steps.
#pragma once

#include <array>
#include <cstdint>

#include "fast/step.h"
#include "platform/stack.h"
#include "program/token.h"

namespace korvane {
struct ArrayBlock;
struct BuiltInFunction;
struct UserFunction;
}  // namespace korvane

namespace korvane::fast {

// What a part of an expression is.
enum class Form : std::uint8_t {
    variable,
    literal,
    bare_call,  // of a built-in function without arguments
    bare_user_call,
    binary,
    relation,
    sign,
    complement,
    element,
    call,
    text_call,
    user_call,
    argument,  // or subscript
};

constexpr std::int16_t none = -1;
constexpr double unbounded = 1e300;

struct Node {
    Form form;
    Type type;
    Token* token;  // the operator, the literal, the bracket; of an argument, the mark in front of it
    union {
        const void* storage;              // of a variable; of any leaf, what it is read from
        const ArrayBlock* array;          // of an element
        UserFunction* function;           // of a user function's call
        const BuiltInFunction* built_in;  // of a built-in function's call
    };
    // Other nodes, or `none`.
    union {
        std::int16_t left;           // operand
        std::int16_t next_argument;  // of an argument
    };
    union {
        std::int16_t right;           // operand, also the only one
        std::int16_t first_argument;  // of an element or a call
        std::int16_t value;           // of an argument
    };
    bool exact;  // of an integer: doubles compute it exactly, and it is no negative zero there
    // What evaluating it takes and a failure gives back: string space, and random numbers.
    bool allocates;
    bool draws;
    double bound;  // of an integer: its magnitude is at most this
    // What has been planned.
    Domain domain;      // in which it is computed
    std::uint8_t kind;  // of the Side that it becomes
    bool with_care;     // of a relation of numbers (fast/comparison_steps.h)

    bool takes() const { return allocates || draws; }
    void take_too(const Node& part) {
        allocates |= part.allocates;
        draws |= part.draws;
    }
};

// The nodes of the statement being looked at, and how many. Definitions of user functions are finished before
// the statement goes on, so one pool serves them all; a line's tokens bound how many there can be.
struct NodePool {
    std::array<Node, 4 * max_token_records> nodes;

    struct Progress {
        std::int16_t count;
        int depth;    // levels of brackets, right operands, signs and calls that are open
        int deepest;  // the most there have been
    } progress;
};
extern NodePool pool;

// An expression of more levels than this is left to the general evaluator, which can be sure of the stack for
// as many. So whether the stack is enough for one that is deeper does not depend on how it is executed.
constexpr int max_depth = 64;
constexpr int levels_of_call = 3;  // a user function's call takes the stack of so many

// Notes so many levels within the open ones; false when they are too many.
inline bool note_levels(int levels) {
    if (pool.progress.depth + levels > pool.progress.deepest)
        pool.progress.deepest = pool.progress.depth + levels;
    return pool.progress.depth + levels <= max_depth && !stack_exhausted();
}

// A level of the descent, open for the life of this object.
class Level {
  public:
    Level() { ++pool.progress.depth; }
    ~Level() { --pool.progress.depth; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

    bool too_deep() const { return !note_levels(0); }
};

inline Node& node_at(std::int16_t index) {
    return pool.nodes[static_cast<std::size_t>(index)];
}

// Parses an expression whose operators bind at least as strongly as `minimum`, and moves `at` behind it.
// Gives its root, or `none` when some part of it has no specialised form.
std::int16_t parse_expression(Token*& at, int minimum);

// The same for an array element, whose name is at `at`.
std::int16_t parse_element(Token*& at);

// The same for whatever begins with the name at `at`, without an operator behind it.
std::int16_t parse_name(Token*& at);

// Plans a node and those under it, for a value wanted in a domain. False when it has no specialised form.
bool plan(std::int16_t index, Domain wanted);

// Plans the arguments of a call, or the subscripts of an element, each in the domain of its own type.
bool plan_arguments(const Node& node);

// Whether the accumulator carries the left operand of a planned operator: then its step goes on with the
// left operand's chain.
bool is_carried(const Node& node);

// Makes the steps of a planned node.
Side emit(std::int16_t index);

// Makes the side the right side of `host`, the token in front of it.
void hold(Token* host, const Side& side);

}  // namespace korvane::fast
