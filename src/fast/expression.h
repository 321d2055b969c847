// Turning an expression into a Side: parsing it once more, with the types of its variables known.
#pragma once

#include <cstdint>

#include "fast/step.h"

namespace korvane::fast {

// What a part of an expression is.
enum class Form : std::uint8_t {
    VARIABLE,
    LITERAL,
    BINARY,
    RELATION,
    SIGN,
    NOT,
    ELEMENT,
    CALL,
    TEXT_CALL,
    USER
};

// An expression that has been looked at.
struct Specialised {
    Side side;
    Form form;         // of the whole expression
    Token* operation;  // its operator, where it is BINARY or a RELATION
    Token* end;        // the token behind the expression
    bool allocates;    // evaluating it takes string space
};

// Specialises the expression at `start`. With `wanted` REAL a number is prepared to be taken as a double,
// otherwise it stays in the domain of its own type. False when some part of it has no specialised form, among
// them names that no variable exists for yet; nothing is lost then but time.
bool specialise(Token* start, Domain wanted, Specialised& result);

// The same for an array element to be assigned to, whose name is at `name`: binds its bracket and gives the
// token behind it.
bool specialise_element(Token* name, Specialised& result);

// Makes the expression the right side of `host`, the token in front of it.
void hold(Token* host, const Side& side);

// The domain of a numeric type or of STRING.
Domain domain_of(Type type);

}  // namespace korvane::fast
