#include "run/conditions.h"

#include "program/errors.h"
#include "program/execution.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "run/dispatch.h"
#include "run/jumps.h"
#include "values/evaluator.h"

namespace korvane {
namespace {

void skip_to_line_end(Cursor& cursor) {
    while (cursor->kind != END_OF_LINE)
        ++cursor;
}

void take_then_part(Cursor& cursor) {
    execution.then_part = true;
    while (cursor->kind == ':')
        ++cursor;
    // The first statement keeps the start of its IF, so RESUME evaluates the condition again; the run loop
    // executes the others.
    if (cursor->kind != END_OF_LINE) dispatch_statement(cursor);
}

void take_else_part(Token& opener, Cursor& cursor) {
    execution.then_part = false;
    if (!opener.jump_known) {
        opener.jump.record = record_of(find_else(cursor));
        opener.jump_known = true;
    }
    cursor = execution.tokens + opener.jump.record;
    if (!accept(cursor, KW_ELSE)) return;
    if (cursor->kind == NUMBER) jump_to_literal(*cursor);
}

}  // namespace

std::uint32_t statements_of_if(const Token* opener) {
    // Each takes a token at least, and so does the condition.
    return static_cast<std::uint32_t>(find_else(opener) - opener);
}

void do_if(Cursor& cursor) {
    Token& opener = *cursor++;
    const bool truth = evaluate_truth(cursor);
    if (error_pending()) return;
    if (cursor->kind == KW_THEN || cursor->kind == KW_GOTO) ++cursor;
    if (!truth)
        take_else_part(opener, cursor);
    else if (cursor->kind == NUMBER)
        jump_to_literal(*cursor);
    else
        take_then_part(cursor);
}

void do_else(Cursor& cursor) {
    if (execution.then_part)
        skip_to_line_end(cursor);
    else
        raise(message::syntax_error);
}

}  // namespace korvane
