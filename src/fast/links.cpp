#include "fast/links.h"

#include "fast/records.h"
#include "fast/statement.h"
#include "fast/statement_end.h"
#include "program/execution.h"
#include "program/keywords.h"
#include "run/control_stacks.h"

namespace korvane::fast {
namespace {

// Follows, from token to token of a line, whether a THEN part is open that an end record would have to close.
inline void follow_then_part(const Token* at, bool& open) {
    if (at->kind == KW_IF) open = !then_part_is_lone(at);
    if (at->kind == KW_ELSE) open = false;
}

}  // namespace

Token* link_to(Token* at) {
    if (at->kind != END_OF_LINE || as<EndRecord>(at).next_line == nullptr) return at;
    return as<EndRecord>(at).next_line;
}

Token* link_behind(Token* end) {
    end = following(end);
    if (end->kind != END_OF_LINE) return end;
    bool open = false;
    for (const Token* at = execution.tokens; at != end; ++at)
        follow_then_part(at, open);
    return open ? end : link_to(end);
}

Token* link_behind_assignment(const Token* at, Token* end) {
    return is_lone_assignment(at) ? link_to(end_of_line(end)) : link_behind(end);
}

// Whoever leads to the end of a line may lead to the next line at once, unless a THEN part ends there: then
// the end record has to say so.
void link_line(Token* end) {
    Token* next = as<EndRecord>(end).next_line;
    bool open = false;
    for (Token* at = execution.tokens; at != end; ++at) {
        if (at->kind <= IDENTIFIER) continue;  // holds a value or a name
        follow_then_part(at, open);
        if (at->kind == KW_IF) {
            if (as<IfRecord>(at).when_false == end) as<IfRecord>(at).when_false = next;
        } else if (!open && as<LeadRecord>(at).after == end) {
            as<LeadRecord>(at).after = next;
        }
    }
    for (std::uint32_t i = 0; i < control_stacks.for_count; ++i) {
        if (control_stacks.fors[i].loop_token == end) control_stacks.fors[i].loop_token = next;
    }
}

}  // namespace korvane::fast
