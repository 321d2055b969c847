#include "fast/links.h"

#include "fast/records.h"
#include "fast/statement.h"
#include "fast/statement_end.h"
#include "program/execution.h"
#include "program/keywords.h"

namespace korvane::fast {
namespace {

// Whether a THEN part is open at the end of the current line that the end record would have to close.
bool then_part_ends_at(const Token* end) {
    bool open = false;
    for (const Token* at = execution.tokens; at != end; ++at) {
        if (at->kind == KW_IF) open = !then_part_is_lone(at);
        if (at->kind == KW_ELSE) open = false;
    }
    return open;
}

}  // namespace

Token* link_to(const Token* from, Token* to) {
    if (to->kind != END_OF_LINE) return to;
    auto& end = as<EndRecord>(to);
    if (end.next_line != nullptr) return end.next_line;
    const std::uint32_t record = record_of(from);
    end.waiting[record / 64] |= std::uint64_t{1} << record % 64;
    return to;
}

Token* link_behind(const Token* from, Token* end) {
    end = following(end);
    return end->kind == END_OF_LINE && then_part_ends_at(end) ? end : link_to(from, end);
}

Token* link_behind_assignment(const Token* at, const Token* equals, Token* end) {
    return is_lone_assignment(at) ? link_to(equals, end_of_line(end)) : link_behind(equals, end);
}

void link_line(Token* at) {
    const auto& end = as<EndRecord>(at);
    for (std::uint32_t record = 0; record != record_of(at); ++record) {
        if ((end.waiting[record / 64] >> record % 64 & 1) == 0) continue;
        Token* from = execution.tokens + record;
        (from->kind == KW_IF ? as<IfRecord>(from).when_false : as<LeadRecord>(from).after) = end.next_line;
    }
}

}  // namespace korvane::fast
