// Specialised GOTO, GOSUB and RETURN. A line number literal keeps the first token of its line.
#include "run/jumps.h"
#include "fast/links.h"
#include "fast/records.h"
#include "fast/statement.h"
#include "program/program_store.h"
#include "run/control_stacks.h"
#include "values/convert.h"

namespace korvane::fast {
namespace {

std::uint64_t goto_line(Token* at, std::uint64_t budget) {
    KORVANE_JUMP return jump(at[1].number.target, budget);
}

std::uint64_t gosub_line(Token* at, std::uint64_t budget) {
    if (control_stacks.gosub_count == max_gosub_depth) KORVANE_JUMP return execute_general(at, budget);
    const auto& gosub = as<GosubRecord>(at);
    control_stacks.gosubs[control_stacks.gosub_count++] = {.line = gosub.own.line,
                                                           .record = gosub.own.record,
                                                           .kind = GosubKind::GOSUB,
                                                           .timer = 0,
                                                           .epoch = program.cache_epoch,
                                                           .token = gosub.after};
    KORVANE_JUMP return jump(at[1].number.target, budget);
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

bool specialise_goto(Token* at) {
    if (!is_lone_literal(at + 1) || target_of(at + 1) == nullptr) return false;
    at->execute = goto_line;
    return true;
}

bool specialise_gosub(Token* at) {
    if (!is_lone_literal(at + 1) || target_of(at + 1) == nullptr) return false;
    auto& gosub = as<GosubRecord>(at);
    gosub.own = {execution.line, record_of(at + 2)};
    gosub.after = link_behind(at, at + 2);
    at->execute = gosub_line;
    return true;
}

bool specialise_return(Token* at) {
    at->execute = return_to_line;
    return true;
}

}  // namespace korvane::fast
