// Specialised IF.
#include "run/conditions.h"
#include "fast/expression.h"
#include "fast/links.h"
#include "fast/records.h"
#include "fast/sides.h"
#include "fast/statement.h"
#include "fast/statement_end.h"
#include "fast/truth.h"
#include "program/keywords.h"

namespace korvane::fast {
namespace {

[[gnu::noinline]] std::uint64_t fall_back_if(Token* at, std::uint64_t budget, std::uint8_t* string_top) {
    give_back(at, string_top);
    return execute_general_if(at, budget);
}

// Fewer statements are left than the THEN part may take: as the keyboard is not looked at inside it, that is
// done now. An IF within a THEN part has been counted by the one around it.
[[gnu::noinline]] std::uint64_t pause_before(Token* at, std::uint64_t budget, std::uint8_t* string_top) {
    if (execution.then_part) return fall_back_if(at, budget, string_top);
    give_back(at, string_top);
    return pause(at);
}

// Gives the statement behind THEN, which goes on. It keeps the start of its IF, and of the IF around that.
// Nothing behind one that is the whole THEN part could ask whether there was one.
inline Token* enter_then_part(Token* at) {
    const auto& record = as<IfRecord>(at);
    execution.then_part = (record.condition_kind & IfRecord::lone_then_part) == 0;
    if (execution.kept_token != at) execution.kept_start = at;
    Token* first = record.when_true;
    execution.kept_token = first;
    return first;
}

// A branch to a line that has not been tokenized, for which null stands: the general handler goes there, and
// the statement is looked at again.
[[gnu::noinline]] std::uint64_t branch_first(Token* at, std::uint64_t budget, std::uint8_t* string_top) {
    at->execute = execute_first;
    return fall_back_if(at, budget, string_top);
}

template <typename Condition, bool to_line>
std::uint64_t if_then(Current at, std::uint64_t budget) {
    std::uint8_t* string_top = arenas.FREETOP;
    const Truth truth = Condition::of(at);
    if (truth == Truth::failed) return fall_back_if(at, budget, string_top);
    if (!to_line && truth == Truth::is_true) {
        if (budget < as<IfRecord>(at).most_statements) return pause_before(at, budget, string_top);
        Token* first = enter_then_part(at);
        KORVANE_JUMP return first->execute(first, budget - 1);
    }
    Token* target = truth == Truth::is_true ? as<IfRecord>(at).when_true : as<IfRecord>(at).when_false;
    if (target == nullptr) return branch_first(at, budget, string_top);
    KORVANE_JUMP return jump(target, budget);
}

template <bool to_line>
Execute if_handler(Token* at, const Expression& condition) {
    return hold_condition(
        at, condition, [](auto form) -> Execute { return guarded<if_then<decltype(form), to_line>>; });
}

// Where a false condition of the IF at `at` leads. "ELSE :" is an empty statement; only a number right behind
// ELSE is a line.
Token* false_target(const Token* at, Token* behind_condition) {
    Token* target = find_else(behind_condition);
    if (target->kind != KW_ELSE) return link_to(at, target);
    return target[1].kind == NUMBER ? target_of(target + 1) : link_to(at, following(target + 1));
}

}  // namespace

[[gnu::cold]] bool specialise_if(Token* at) {
    Expression condition;
    if (!read_expression(at + 1, Domain::whole, condition)) return false;
    Token* then = condition.end;
    if (then->kind == KW_THEN || then->kind == KW_GOTO) ++then;
    const bool to_line = then->kind == NUMBER;
    auto& record = as<IfRecord>(at);
    record.when_true = to_line ? target_of(then) : following(then);
    record.when_false = false_target(at, condition.end);
    const bool leads_on = record.when_true != nullptr && record.when_false != nullptr;
    // A direct line finds its way to the program each time.
    if (!leads_on && execution.line == direct_line) return false;
    at->execute = to_line ? if_handler<true>(at, condition) : if_handler<false>(at, condition);
    if (condition.node().draws) keep_random(at);
    const bool lone = then_part_is_lone(at);
    if (lone) record.condition_kind |= IfRecord::lone_then_part;
    // The IF, the statement and perhaps the ELSE behind it.
    record.most_statements = lone ? 3 : statements_of_if(at);
    return true;
}

}  // namespace korvane::fast
