#include "fast/statement_end.h"

#include "program/execution.h"
#include "program/keywords.h"
#include "values/operator_strength.h"
#include "values/relations.h"

namespace korvane::fast {
namespace {

// Each of these gives the token behind what it passes, or null, and takes null for what is already wrong.

const Token* pass(const Token* at, std::uint8_t kind) {
    return at != nullptr && at->kind == kind ? at + 1 : nullptr;
}

const Token* pass_brackets(const Token* at) {
    int open = 0;
    do {
        if (at->kind == END_OF_LINE) return nullptr;
        if (at->kind == '(') ++open;
        if (at->kind == ')') --open;
        ++at;
    } while (open != 0);
    return at;
}

const Token* pass_primary(const Token* at) {
    switch (at->kind) {
        case NUMBER:
        case STRING_LITERAL:
            return at + 1;
        case '(':
            return pass_brackets(at);
        case IDENTIFIER:
        case KW_SCREEN:
            return at[1].kind == '(' ? pass_brackets(at + 1) : at + 1;
        default:
            return nullptr;
    }
}

// The token behind the binary operator at `at`, or null when there is none.
const Token* pass_operator(const Token* at) {
    if (at->kind != '^' && operator_strengths[at->kind] == 0) return nullptr;
    if (operator_strengths[at->kind] != relational_strength) return at + 1;
    read_relation(at);
    return at;
}

const Token* pass_expression(const Token* at) {
    while (at != nullptr) {
        while (at->kind == '+' || at->kind == '-' || at->kind == KW_NOT)
            ++at;
        at = pass_primary(at);
        const Token* operand = at == nullptr ? nullptr : pass_operator(at);
        if (operand == nullptr) break;
        at = operand;
    }
    return at;
}

const Token* pass_place(const Token* at) {
    return at->kind == IDENTIFIER ? pass_primary(at) : nullptr;
}

const Token* pass_places(const Token* at) {
    do {
        at = pass_place(at + 1);
    } while (at != nullptr && at->kind == ',');
    return at;
}

const Token* pass_assignment(const Token* at) {
    return pass_expression(pass(pass_place(at), '='));
}

const Token* pass_for(const Token* at) {
    const Token* end = pass_expression(pass(pass_assignment(at + 1), KW_TO));
    return end != nullptr && end->kind == KW_STEP ? pass_expression(end + 1) : end;
}

template <typename AnyToken>
AnyToken* behind_colons(AnyToken* at) {
    while (at->kind == ':')
        ++at;
    return at;
}

}  // namespace

const Token* end_of_statement(const Token* at) {
    switch (at->kind) {
        case KW_LET:
            return pass_assignment(at + 1);
        case IDENTIFIER:
            return pass_assignment(at);
        case KW_GOTO:
        case KW_GOSUB:
        case KW_WHILE:
            return pass_expression(at + 1);
        case KW_RETURN:
        case KW_WEND:
            return at + 1;
        case KW_NEXT:
            return at[1].kind == IDENTIFIER ? at + 2 : at + 1;
        case KW_FOR:
            return pass_for(at);
        case KW_READ:
        case KW_SWAP:
            return pass_places(at);
        default:
            return nullptr;
    }
}

bool then_part_is_lone(const Token* at) {
    const Token* first = pass_expression(at + 1);
    if (first == nullptr) return false;
    const bool has_word = first->kind == KW_THEN;
    if (has_word || first->kind == KW_GOTO) ++first;
    const Token* end = end_of_statement(behind_colons(first));
    if (end == nullptr) return false;
    end = behind_colons(end);
    return end->kind == END_OF_LINE || (end->kind == KW_ELSE && has_word && is_lone_assignment(first));
}

bool is_lone_assignment(const Token* at) {
    if (at->kind != IDENTIFIER && at->kind != KW_LET) return false;
    const Token* end = end_of_statement(at);
    if (end == nullptr || behind_colons(end)->kind != KW_ELSE) return false;
    if (at != execution.tokens && at[-1].kind == KW_LET) --at;
    return at != execution.tokens && at[-1].kind == KW_THEN;
}

}  // namespace korvane::fast
