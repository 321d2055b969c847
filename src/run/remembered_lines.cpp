#include "run/remembered_lines.h"

#include "program/execution.h"
#include "program/program_store.h"
#include "run/breakpoints.h"
#include "values/data_items.h"

namespace korvane {
namespace {

// Hands out the line index of every remembered place but that of READ, always in the same order.
template <typename Visitor>
void visit_lines(Visitor visit) {
    visit(execution.line);
    visit(breakpoints.passing_line);
    for (std::uint32_t i = 0; i < control_stacks.gosub_count; ++i)
        visit(control_stacks.gosubs[i].line);
    for (std::uint32_t i = 0; i < control_stacks.for_count; ++i)
        visit(control_stacks.fors[i].loop.line);
    for (std::uint32_t i = 0; i < control_stacks.while_count; ++i)
        visit(control_stacks.whiles[i].start.line);
    for (std::uint32_t i = 0; i < traps.count; ++i)
        visit(traps.frames[i].at.line);
}

// The number of READ's line, or when all lines have been read the first one behind them.
std::uint64_t data_number() {
    if (data_position.line < program.count) return program.lines[data_position.line].number;
    return program.count == 0 ? 0 : std::uint64_t{program.lines[program.count - 1].number} + 1;
}

}  // namespace

RememberedLines::RememberedLines()
    : changes_(program.changes), line_count_(program.count), data_number_(data_number()) {
    std::uint32_t* number = numbers_;
    visit_lines([&](std::uint32_t line) { *number++ = line < line_count_ ? program.lines[line].number : 0; });
}

void RememberedLines::follow_data_line() const {
    if (data_position.line == direct_line) return;
    const std::uint32_t index = first_line_from(data_number_);
    const bool was_there = data_position.line < line_count_;
    if (!was_there || index == program.count || program.lines[index].number != data_number_) {
        data_position.offset = 0;
        data_position.in_statement = false;
    }
    data_position.line = index;
}

void RememberedLines::follow() const {
    if (execution.line == direct_line || program.changes == changes_) return;
    const std::uint32_t* number = numbers_;
    visit_lines([&](std::uint32_t& line) {
        const std::uint32_t old_number = *number++;
        if (line == direct_line) return;
        const std::uint32_t index = line < line_count_ ? find_line(old_number) : direct_line;
        line = index == direct_line ? gone_line : index;
    });
    execution.gone_number = numbers_[0];
    follow_data_line();
}

}  // namespace korvane
