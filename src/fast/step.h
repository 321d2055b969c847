// Specialised execution: what most statements of most programs are made of, decided once and then run from
// the unused bytes of the statement's own token records.
//
// A variable's type never changes while its entry lives, so the types in an expression are known when the
// statement is first met. fast/expression.cpp turns the expression into a chain of steps; each step is a
// function pointer with its operands, kept in the record of an operator, an opening bracket, a comma, "=" or
// a keyword, whose payload nothing else uses. A chain carries an accumulator of one domain from step to step
// by tail calls:
//
//   X = Y * Z + W    "=" holds the leaf Y and the first step; "*" multiplies by Z; "+" adds W.
//
//   X = Y + Z * W    "+" holds the leaf Z and an inner chain of one step, "*".
//
// Domains: real (DOUBLE, a double), single (SINGLE, a float), whole (the integer types, an int64) and text.
// Every operand is a Side: a leaf (a variable or a literal in memory, or a function without arguments), a
// leaf followed by a chain, or a chain that begins with a computed value (an array element, a call, a sign).
//
// Specialised code raises nothing. A result that is no finite number, an integer that does not fit in 64
// bits, a subscript out of range and the like only say "failed"; the statement is then executed from its
// start by the general handlers, which find the same fault and raise it, or find that there is none (an
// overflowing integer sum becomes a DOUBLE). So an expression is specialised only when evaluating it twice
// cannot be noticed.
//
// The layouts of the records are in fast/records.h. Addresses in them are good for one clear generation;
// every statement compares its own first (fast/statement.h).
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane::fast {

enum class Domain : std::uint8_t { real, single, whole, text };

// The domain of a numeric type or of STRING.
constexpr Domain domain_of(Type type) {
    if (type == Type::STRING) return Domain::text;
    if (type == Type::DOUBLE) return Domain::real;
    return type == Type::SINGLE ? Domain::single : Domain::whole;
}

// What a leaf in memory is.
enum Leaf : std::uint8_t {
    F64 = 0,            // a DOUBLE variable, or the double copy of a literal
    F32 = 1,            // a SINGLE variable, or the float copy of a literal
    I16 = 2,            // an INTEGER variable
    I32 = 3,            // a LONG variable
    I64 = 4,            // an INT64 variable, or an integer literal
    COMPUTED = 5,       // no leaf: the chain makes its own beginning
    FUNCTION = 6,       // a built-in function without arguments: its row
    USER_FUNCTION = 7,  // the same, a user function
    // Of the text domain.
    TEXT_VARIABLE = 6,
    TEXT_LITERAL = 7,
};

// A Side's kind in one byte: the leaf in the low bits, then whether a chain follows, then the chain's domain.
inline constexpr std::uint8_t leaf_mask = 7;
inline constexpr std::uint8_t has_chain = 8;
inline constexpr int domain_shift = 4;

constexpr Domain domain_of_kind(std::uint8_t kind) {
    return static_cast<Domain>(kind >> domain_shift & 3);
}

constexpr std::uint8_t side_kind(Leaf leaf, bool chain, Domain domain) {
    return static_cast<std::uint8_t>(leaf | (chain ? has_chain : 0) |
                                     (static_cast<std::uint8_t>(domain) << domain_shift));
}

// The kind of a chain that begins with a value of its own.
constexpr std::uint8_t computed_kind(Domain domain) {
    return side_kind(COMPUTED, true, domain);
}

// A value as whoever holds it keeps it.
struct Side {
    std::uint8_t kind;
    const void* leaf;
    Token* chain;  // its first step
    Token* last;   // last step of the chain, to which more can be appended
};

// A value of the whole domain; when `failed` is not 0 it is none, and the general evaluator has to say why.
struct Whole {
    std::int64_t value;
    std::uint64_t failed;
};

// A value of the whole domain as steps return it. Two words would go through memory in WebAssembly: there one
// is returned, and a failure, which is rare, is told beside it until the result is looked at.
#ifdef __wasm__
class WholeResult {
  public:
    WholeResult(const Whole& whole) : value_(whole.value) {
        if (__builtin_expect(whole.failed != 0, false)) has_failed_ = true;
    }
    operator Whole() const {
        if (__builtin_expect(!has_failed_, true)) return {value_, 0};
        has_failed_ = false;
        return {0, 1};
    }

  private:
    static inline bool has_failed_ = false;  // of the one result that is under way

    std::int64_t value_;
};
#else
using WholeResult = Whole;
#endif

// The function of a step: it is called with the accumulator and its own record, and hands its result to the
// next step. Texts do not travel: a chain of that domain is one step long.
union StepFunction {
    double (*real)(double accumulator, Token* at);
    float (*single)(float accumulator, Token* at);
    WholeResult (*whole)(std::int64_t accumulator, Token* at);
    Value (*text)(Token* at);
};

inline bool is_finite(double x) {
    constexpr std::uint64_t exponent_mask = 0x7FF0000000000000;
    return (__builtin_bit_cast(std::uint64_t, x) & exponent_mask) != exponent_mask;
}

// Doubles hold every integer up to 2^53; but one of 2^53 may be 2^53 + 1 that was rounded.
inline constexpr double exact_integers = 9007199254740991.0;

// Where the sides without a leaf have it: a zero in every numeric type, so that they can be read like a leaf
// in front of a chain.
inline constexpr std::int64_t no_leaf = 0;

// What a failed evaluation gives in the real and single domains, and in the whole domain.
inline double no_number() {
    return __builtin_nan("");
}
inline constexpr Whole no_whole{0, 1};

}  // namespace korvane::fast
