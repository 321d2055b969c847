// The expressions of a statement that is being specialised: they are read, all of them; then the statement
// chooses its handler by what they are; and then their steps are made, once.
#pragma once

#include <cstdint>

#include "fast/nodes.h"
#include "fast/records.h"

namespace korvane::fast {

// An expression that has been read and planned.
struct Expression {
    std::int16_t root;
    Token* end;  // the token behind the expression

    const Node& node() const { return node_at(root); }
};

// Forgets the expressions of the last statement.
void begin_statement();

// Reads the expression at `start`. With `wanted` real a number is prepared to be taken as a double, otherwise
// it stays in the domain of its own type. False when some part of it has no specialised form, among them
// names that no variable exists for yet; nothing is lost then but time.
bool read_expression(Token* start, Domain wanted, Expression& result);

// The same for an array element to be written, whose name is at `name`.
bool read_element(Token* name, Expression& result);

// Makes the expression's steps, and the expression the right side of `host`, the token in front of it.
void hold(Token* host, const Expression& expression);

// Binds the bracket of an element to its array and subscripts.
void bind_element(const Node& element);

// What subscripts a planned element has.
Subscripts subscripts_of(const Node& element);

}  // namespace korvane::fast
