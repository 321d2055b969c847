// Evaluating a side of the text domain: a variable, a literal, or a chain.
#pragma once

#include "fast/step.h"
#include "platform/memory.h"

namespace korvane::fast {

// What a failed evaluation gives: a Value of type NONE.
inline Value no_text() {
    return Value::of_integer(0, Type::NONE);
}
inline bool failed(const Value& text) {
    return __builtin_expect(text.type == Type::NONE, false);
}

inline Value text_side(std::uint8_t kind, const void* operand, Token* inner) {
    if (kind == TEXT_VARIABLE) {
        const auto* descriptor = static_cast<const StringDescriptor*>(operand);
        return Value::of_string(descriptor->bytes, descriptor->length);
    }
    if (kind == TEXT_LITERAL) {
        const auto* literal = static_cast<const Token*>(operand);
        return Value::of_string(literal->string.bytes, literal->string.length);
    }
    return inner->step.text(inner);
}
inline Value right_text(const Token* at) {
    return text_side(at->right_kind, at->step.operand, at->step.inner);
}
inline Value left_text(const Token* at) {
    return text_side(at->left_kind, at->step.left_operand, at->step.left_inner);
}

}  // namespace korvane::fast
