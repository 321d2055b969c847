#include "program/positions.h"

#include "platform/memory.h"
#include "program/execution.h"
#include "program/keywords.h"

namespace korvane {

bool begins_statement(const Token* tokens, std::uint32_t record) {
    if (record == 0) return true;
    const std::uint8_t here = tokens[record].kind;
    const std::uint8_t before = tokens[record - 1].kind;
    return here == ':' || here == END_OF_LINE || before == ':' || before == KW_ELSE;
}

void run_from_copy(std::uint32_t count) {
    if (execution.tokens == execution_buffer.tokens) return;
    copy_bytes(execution_buffer.tokens, execution.tokens, count * sizeof(Token));
    execution.tokens = execution_buffer.tokens;
}

}  // namespace korvane
