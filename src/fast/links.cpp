#include "fast/links.h"

#include "core/control_stacks.h"
#include "core/execution.h"
#include "core/keywords.h"
#include "fast/statement.h"

namespace korvane::fast {
namespace {

// The record behind the THEN part's only statement, or null when it has more or an IF among them.
const Token* end_of_only_statement(const Token* at) {
    for (; at->kind != END_OF_LINE && at->kind != KW_ELSE; ++at) {
        if (at->kind == ':' || at->kind == KW_IF) return nullptr;
    }
    return at;
}

}  // namespace

bool then_part_is_lone(const Token* at) {
    for (const Token* before = execution.tokens; before != at; ++before) {
        if (before->kind == KW_IF) return false;
    }
    const Token* end = end_of_only_statement(at + 1);
    if (end == nullptr || end->kind == END_OF_LINE) return end != nullptr;
    // An ELSE is looked for from the start of the statement.
    const Token* then = at + 1;
    while (then != end && then->kind != KW_THEN)
        ++then;
    const std::uint8_t first = then == end ? std::uint8_t{END_OF_LINE} : then[1].kind;
    if (first != IDENTIFIER && first != KW_LET && first != NUMBER) return false;
    const Token* last = end_of_only_statement(end + 1);
    return last != nullptr && last->kind == END_OF_LINE;
}

Token* link_to(Token* at) {
    return at->kind == END_OF_LINE && at->step.next != nullptr ? at->step.next : at;
}

Token* link_behind(Token* end) {
    end = following(end);
    if (end->kind != END_OF_LINE) return end;
    for (const Token* at = execution.tokens; at != end; ++at) {
        if (at->kind == KW_IF && !then_part_is_lone(at)) return end;
    }
    return link_to(end);
}

Token* link_behind_assignment(Token* end) {
    if (end->kind != KW_ELSE) return link_behind(end);
    const Token* first_if = execution.tokens;
    while (first_if->kind != KW_IF && first_if != end)
        ++first_if;
    if (first_if == end || !then_part_is_lone(first_if)) return end;
    return link_to(end_of_line(end));
}

// Whoever leads to the end of a line may lead to the next line at once, unless a THEN part ends there: then
// the end record has to say so.
void link_line(Token* end) {
    Token* next = end->step.next;
    bool after_if = false;
    for (Token* at = execution.tokens; at != end; ++at) {
        if (at->kind <= IDENTIFIER) continue;  // holds a value or a name
        if (at->kind == KW_IF) {
            after_if = after_if || !then_part_is_lone(at);
            if (at->step.left_inner == end) at->step.left_inner = next;
        } else if (!after_if && at->step.next == end) {
            at->step.next = next;
        }
    }
    for (std::uint32_t i = 0; i < control_stacks.for_count; ++i) {
        if (control_stacks.fors[i].loop_token == end) control_stacks.fors[i].loop_token = next;
    }
}

}  // namespace korvane::fast
