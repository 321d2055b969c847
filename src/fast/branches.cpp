// Specialised IF, GOTO, GOSUB and RETURN. IF holds its condition as its right side; next is the statement to
// which a true one leads, left_inner that to which a false one does; step.jump.line is how many statements it
// may take to the end of the THEN part. A line number literal keeps the first token of its line.
#include "fast/conditions.h"
#include "fast/expression.h"
#include "fast/links.h"
#include "fast/sides.h"
#include "fast/statement.h"
#include "fast/statement_end.h"
#include "program/keywords.h"
#include "program/parse.h"
#include "run/conditions.h"
#include "run/control_stacks.h"
#include "values/convert.h"

namespace korvane::fast {
namespace {

// Finds the line of a literal; false when it does not exist or does not stay in the token cache.
bool resolve_line(Token* literal) {
    const double number = literal->number.as_double;
    if (!(number >= 0 && number <= max_line_number)) return false;
    // The general handler rounds a broken number.
    if (number != static_cast<double>(static_cast<std::uint32_t>(number))) return false;
    const std::uint32_t line = find_line(static_cast<std::uint32_t>(number));
    Token* tokens = cached_tokens(line);
    if (tokens == nullptr) {
        // The general handler is about to tokenize it, if it exists.
        state.target_not_ready = true;
        return false;
    }
    literal->number.target = tokens;
    literal->number.target_line = line;
    return true;
}

std::uint64_t fall_back_if(Token* at, std::uint64_t budget, std::uint8_t* string_top) {
    arenas.FREETOP = string_top;
    return execute_general_if(at, budget);
}

// Fewer statements are left than the THEN part may take: as the keyboard is not looked at inside it, that is
// done now. An IF within a THEN part has been counted by the one around it.
std::uint64_t pause_before(Token* at, std::uint64_t budget, std::uint8_t* string_top) {
    if (execution.then_part) return fall_back_if(at, budget, string_top);
    arenas.FREETOP = string_top;
    return pause(at);
}

// Goes on behind THEN. The first statement there keeps the start of its IF, and of the IF around that.
// Nothing behind one that is the whole THEN part could ask whether there was one.
inline std::uint64_t enter_then_part(Token* at, std::uint64_t budget, std::uint8_t* string_top) {
    if (budget < at->step.jump.line) return pause_before(at, budget, string_top);
    execution.then_part = (at->right_kind & lone_then_part) == 0;
    if (execution.kept_token != at) execution.kept_start = at;
    execution.kept_token = at->step.next;
    return at->step.next->execute(at->step.next, budget - 1);
}

// A branch to a line that has not been tokenized, for which null stands: the general handler goes there, and
// the statement is looked at again.
std::uint64_t branch_first(Token* at, std::uint64_t budget, std::uint8_t* string_top) {
    at->execute = execute_first;
    return fall_back_if(at, budget, string_top);
}

template <typename Condition, bool to_line>
std::uint64_t if_then(Current at, std::uint64_t budget) {
    std::uint8_t* string_top = arenas.FREETOP;
    const Truth truth = Condition::of(at);
    if (truth == Truth::FAILED) return fall_back_if(at, budget, string_top);
    if (!to_line && truth == Truth::TRUE) return enter_then_part(at, budget, string_top);
    Token* target = truth == Truth::TRUE ? at->step.next : at->step.left_inner;
    return target == nullptr ? branch_first(at, budget, string_top) : jump(target, budget);
}

template <typename Condition>
struct IfThenLine {
    static constexpr Execute execute = guarded<if_then<Condition, true>>;
};
template <typename Condition>
struct IfThenStatements {
    static constexpr Execute execute = guarded<if_then<Condition, false>>;
};

// The first ELSE of the line, or its end.
Token* find_else(Token* at) {
    while (at->kind != KW_ELSE && at->kind != END_OF_LINE)
        ++at;
    return at;
}

// The first token of the line that a literal names; null when it is not known or left to the general handler.
Token* target_of(Token* literal) {
    return resolve_line(literal) ? literal->number.target : nullptr;
}

// Where a false condition leads. "ELSE :" is an empty statement; only a number right behind ELSE is a line.
Token* false_target(Token* behind_condition) {
    Token* target = find_else(behind_condition);
    if (target->kind != KW_ELSE) return link_to(target);
    return target[1].kind == NUMBER ? target_of(target + 1) : link_to(following(target + 1));
}

std::uint64_t goto_line(Token* at, std::uint64_t budget) {
    return jump(at[1].number.target, budget);
}

// GOSUB keeps where it returns to: the position in own and the statement in next.
std::uint64_t gosub_line(Token* at, std::uint64_t budget) {
    if (control_stacks.gosub_count == max_gosub_depth) return execute_general(at, budget);
    control_stacks.gosubs[control_stacks.gosub_count++] = {.line = at->step.own.line,
                                                           .record = at->step.own.record,
                                                           .kind = GosubKind::GOSUB,
                                                           .timer = 0,
                                                           .epoch = program.cache_epoch,
                                                           .token = at->step.next};
    return jump(at[1].number.target, budget);
}

std::uint64_t return_to_line(Token* at, std::uint64_t budget) {
    if (control_stacks.gosub_count == 0) return execute_general(at, budget);
    const GosubEntry& entry = control_stacks.gosubs[control_stacks.gosub_count - 1];
    if (entry.kind != GosubKind::GOSUB || entry.epoch != program.cache_epoch)
        return execute_general(at, budget);
    --control_stacks.gosub_count;
    return jump(entry.token, budget);
}

bool is_lone_literal(const Token* at) {
    return at->kind == NUMBER && at_statement_end(at + 1);
}

}  // namespace

bool specialise_if(Token* at) {
    Specialised condition;
    if (!specialise(at + 1, Domain::WHOLE, condition) || condition.side.type == Type::STRING) return false;
    hold(at, condition.side);
    Token* then = condition.end;
    if (then->kind == KW_THEN || then->kind == KW_GOTO) ++then;
    const bool to_line = then->kind == NUMBER;
    at->step.next = to_line ? target_of(then) : following(then);
    at->step.left_inner = false_target(condition.end);
    at->execute = to_line ? handler_for<IfThenLine>(at) : handler_for<IfThenStatements>(at);
    const bool lone = then_part_is_lone(at);
    if (lone) at->right_kind |= lone_then_part;
    // The IF, the statement and perhaps the ELSE behind it.
    at->step.jump.line = lone ? 3 : statements_of_if(at);
    return true;
}

bool specialise_goto(Token* at) {
    if (!is_lone_literal(at + 1) || !resolve_line(at + 1)) return false;
    at->execute = goto_line;
    return true;
}

bool specialise_gosub(Token* at) {
    if (!is_lone_literal(at + 1) || !resolve_line(at + 1)) return false;
    at->step.own = {execution.line, record_of(at + 2)};
    at->step.next = link_behind(at + 2);
    at->execute = gosub_line;
    return true;
}

bool specialise_return(Token* at) {
    at->execute = return_to_line;
    return true;
}

}  // namespace korvane::fast
