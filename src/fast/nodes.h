// The parts of an expression being specialised: nodes with their static types, made by the parser
// (fast/parser.cpp) and turned into steps by fast/expression.cpp.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "fast/step.h"
#include "platform/stack.h"
#include "program/token.h"

namespace korvane {
struct UserFunction;
}

namespace korvane::fast {

struct Node {
    Form form;
    Type type;
    Token* token;           // the operator, the bracket or the literal
    const void* operand;    // a variable's storage
    std::string_view name;  // of a called function
    UserFunction* function;
    std::int16_t left;  // nodes of the operands; the only operand of a sign is the right one
    std::int16_t right;
    double bound;              // of an integer: its magnitude is at most this
    bool exact = false;        // of an integer: doubles compute it exactly, and it is no negative zero there
    bool keeps_order = false;  // of a relation: both operands take string space, one after the other
};

constexpr std::int16_t none = -1;
constexpr double unbounded = 1e300;
// Doubles hold every integer up to 2^53; but a bound of 2^53 may be one of 2^53 + 1 that was rounded itself.
constexpr double exact_integers = 9007199254740991.0;

// The nodes of the expression being looked at, and how many. Expressions inside brackets are finished before
// the outer ones go on, so one pool serves them all; a line's tokens bound how many there can be.
struct NodePool {
    std::array<Node, 4 * max_token_records> nodes;

    struct Progress {
        std::int16_t count;
        bool allocates;  // evaluating what has been looked at takes string space
        int depth;       // levels of brackets, right operands, signs and calls that are open
        int deepest;     // the most there have been
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

inline const Node& node_at(std::int16_t index) {
    return pool.nodes[static_cast<std::size_t>(index)];
}

// Parses an expression whose operators bind at least as strongly as `minimum`, and moves `at` behind it.
// Gives its root, or `none` when some part of it has no specialised form.
std::int16_t parse_expression(Token*& at, int minimum);

// An array element: binds its bracket to the array and its subscripts, and moves `at` from the
// name to behind it.
bool bind_element(Token* name, Token*& at, Type& type);

// Makes the steps of a node, for a value wanted in a domain, and describes it as a side.
bool emit(std::int16_t index, Domain wanted, Side& side);

}  // namespace korvane::fast
