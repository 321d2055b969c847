// Cuts a line of text into token records.
#pragma once

#include <cstddef>
#include <cstdint>

#include "program/token.h"

namespace korvane {

struct Tokenizer {
    Execute first_handler;             // what Token::execute holds until the statement has been met; start-up
                                       // hands it over, for nothing here knows who executes tokens
    Token scratch[max_token_records];  // the last line tokenized; callers copy it
};
extern Tokenizer tokenizer;

// The characters of the token that a zero-terminated text begins with, which is neither at a blank nor at its
// end. Raises nothing: a character that begins no token counts as one, a string without its closing quote
// goes to the end.
std::size_t token_length(const std::uint8_t* text);

// Tokenizes a zero-terminated line (without its line number) into tokenizer.scratch and returns the number of
// records, the end record included. String tokens point into `text`, which must stay where it is for as long
// as the tokens are used. On a fault the error is raised, the end record follows the tokens made so far and
// their count is returned. Raises "Unterminated string", "Syntax Error", "Too many tokens" and the literal
// reader's errors.
int tokenize(const std::uint8_t* text);

}  // namespace korvane
