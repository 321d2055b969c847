// Statements with every place in which an expression may stand, for tests that break off in each of them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvane::test {

// A statement as it is typed, its arguments in braces: {5} and {"TEXT"} are what is asked from the keyboard
// instead when the place is tried. A "+" in front, {+5}, marks a later item of a list, before which the
// statement has already dealt with the earlier ones.
struct InterruptedStatement {
    std::string_view text;
    std::string_view setup = "";  // statements to be executed before
    std::string_view reply = "";  // typed when the statement itself asks for a line or a key
    bool only_typed = false;      // a command, or not allowed in a program
};

const std::vector<InterruptedStatement>& interrupted_statements();

// What begins a statement but never evaluates an expression.
const std::vector<std::string_view>& words_without_expressions();

// The statement with one of its places asking the keyboard.
struct Interruption {
    std::string statement;
    std::string answer;       // what has to be typed for the place
    bool later_item = false;  // earlier items of a list come before it
};

// One interruption for each place.
std::vector<Interruption> interruptions_of(const InterruptedStatement& statement);

}  // namespace korvane::test
