// Specialised GOTO, GOSUB, RETURN and ON with a list of lines. A line number literal keeps the first token of
// its line.
#include "run/jumps.h"
#include "fast/expression.h"
#include "fast/links.h"
#include "fast/records.h"
#include "fast/sides.h"
#include "fast/statement.h"
#include "program/keywords.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "run/control_stacks.h"
#include "values/convert.h"

namespace korvane::fast {
namespace {

std::uint64_t goto_line(Token* at, std::uint64_t budget) {
    KORVANE_JUMP return jump(at[1].number.target, budget);
}

// Stacks where the GOSUB at `at`, or that behind the ON, returns to.
inline void push_return(const Token* at) {
    const auto& gosub = as<GosubRecord>(at);
    control_stacks.gosubs[control_stacks.gosub_count++] = {.line = gosub.own.line,
                                                           .record = gosub.own.record,
                                                           .kind = GosubKind::GOSUB,
                                                           .timer = 0,
                                                           .epoch = program.cache_epoch,
                                                           .token = gosub.after};
}

std::uint64_t gosub_line(Token* at, std::uint64_t budget) {
    if (control_stacks.gosub_count == max_gosub_depth) KORVANE_JUMP return execute_general(at, budget);
    push_return(at);
    KORVANE_JUMP return jump(at[1].number.target, budget);
}

std::uint64_t on_number(Current at, std::uint64_t budget) {
    const auto& on = as<OnRecord>(at);
    std::uint8_t* string_top = arenas.FREETOP;
    const Whole number = right_whole(at);
    if (number.failed != 0 || number.value < 0) return fall_back(at, budget, string_top);
    if (number.value == 0 || number.value > on.count) KORVANE_JUMP return proceed(on.after, budget);
    Token* target = listed_line(on.lines + 2 * (number.value - 1));
    if (target == nullptr) return fall_back(at, budget, string_top);
    if (on.lines[-1].kind == KW_GOSUB) {
        if (control_stacks.gosub_count == max_gosub_depth) return fall_back(at, budget, string_top);
        push_return(at);
    }
    KORVANE_JUMP return jump(target, budget);
}

std::uint64_t return_to_line(Token* at, std::uint64_t budget) {
    if (control_stacks.gosub_count == 0) KORVANE_JUMP return execute_general(at, budget);
    const GosubEntry& entry = control_stacks.gosubs[control_stacks.gosub_count - 1];
    if (entry.kind != GosubKind::GOSUB || entry.epoch != program.cache_epoch)
        KORVANE_JUMP return execute_general(at, budget);
    --control_stacks.gosub_count;
    KORVANE_JUMP return jump(entry.token, budget);
}

}  // namespace

Token* listed_line(Token* literal) {
    if (literal->number.target == nullptr) return target_of(literal);
    return cached_tokens(literal->number.target_line);
}

Token* target_of(Token* literal) {
    // A direct line remembers no lines of the program, which it may change.
    if (!remembers_lines(literal)) return nullptr;
    const double number = literal->number.as_double;
    if (!(number >= 0 && number <= max_line_number)) return nullptr;
    // The general handler rounds a broken number.
    if (number != static_cast<double>(static_cast<std::uint32_t>(number))) return nullptr;
    const std::uint32_t line = find_line(static_cast<std::uint32_t>(number));
    Token* tokens = cached_tokens(line);
    if (tokens == nullptr) {
        // The general handler is about to tokenize it, if it exists.
        state.target_not_ready = true;
        return nullptr;
    }
    literal->number.target = tokens;
    literal->number.target_line = line;
    return tokens;
}

[[gnu::cold]] bool specialise_goto(Token* at) {
    if (!is_lone_literal(at + 1) || target_of(at + 1) == nullptr) return false;
    at->execute = goto_line;
    return true;
}

[[gnu::cold]] bool specialise_gosub(Token* at) {
    if (!is_lone_literal(at + 1) || target_of(at + 1) == nullptr) return false;
    auto& gosub = as<GosubRecord>(at);
    gosub.own = {execution.line, record_of(at + 2)};
    gosub.after = link_behind(at, at + 2);
    at->execute = gosub_line;
    return true;
}

[[gnu::cold]] bool specialise_on(Token* at) {
    Expression number;
    // What a direct line jumps to, it does not keep.
    if (execution.line == direct_line || (is_word(at + 1, "TIMER") && at[2].kind == '(') ||
        !read_expression(at + 1, Domain::whole, number))
        return false;
    Token* word = number.end;
    if (word->kind != KW_GOTO && word->kind != KW_GOSUB) return false;
    Token* end = word;
    do {
        if (end[1].kind != NUMBER) return false;
        end += 2;
    } while (end->kind == ',');
    auto& on = as<OnRecord>(at);
    on.count = static_cast<std::uint8_t>((end - word) / 2);
    on.lines = word + 1;
    on.own = {execution.line, record_of(end)};
    on.after = link_behind(at, end);
    hold(at, number);
    at->execute = guarded<on_number>;
    if (number.node().draws) keep_random(at);
    return true;
}

bool specialise_return(Token* at) {
    at->execute = return_to_line;
    return true;
}

}  // namespace korvane::fast
