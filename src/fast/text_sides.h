// Evaluating a side of the text domain: a variable, a literal, or a chain.
#pragma once

#include "fast/records.h"
#include "platform/memory.h"
#include "program/arenas.h"

namespace korvane::fast {

// What a failed evaluation gives: a Value of type NONE.
inline Value no_text() {
    return Value::of_integer(0, Type::NONE);
}
inline bool failed(const Value& text) {
    return __builtin_expect(text.type == Type::NONE, false);
}

inline Value text_side(std::uint8_t kind, const void* leaf, Token* chain) {
    if (kind == TEXT_VARIABLE) {
        const auto* descriptor = static_cast<const StringDescriptor*>(leaf);
        return Value::of_string(descriptor->bytes, descriptor->length);
    }
    if (kind == TEXT_LITERAL) {
        const auto* literal = static_cast<const Token*>(leaf);
        return Value::of_string(literal->string.bytes, literal->string.length);
    }
    return as<StepRecord>(chain).function.text(chain);
}
inline Value right_text(const Token* at) {
    const auto& holder = as<HolderRecord>(at);
    return text_side(holder.value_kind, holder.value_leaf, holder.value_chain);
}
inline Value left_text(const Token* at) {
    const auto& record = as<OperatorRecord>(at);
    return text_side(record.left_kind, record.left_leaf, record.left_chain);
}

// Room for a new string, or null when there is none; raises nothing.
inline std::uint8_t* take_string_space(std::uint64_t length) {
    if (__builtin_expect(static_cast<std::int64_t>(length) > arenas.FREETOP - arenas.FREEBOT, false))
        return nullptr;
    return arenas.FREETOP -= length;
}

// Copies a text; a single character, the most frequent one, without a call.
inline void copy_text(std::uint8_t* to, const std::uint8_t* bytes, std::uint64_t length) {
    if (length == 1)
        *to = *bytes;
    else
        copy_bytes(to, bytes, length);
}

// Writes the descriptor of a text that has string space of its own.
inline void write_text(std::uint8_t* place, const Value& text) {
    const StringDescriptor descriptor{
        .length = text.length, .zero = 0, .bytes = const_cast<std::uint8_t*>(text.bytes)};
    write_unaligned(place, descriptor);
}

// Copies the text to new string space and makes it the content of a variable; false when there is no room.
inline bool store_text(std::uint8_t* place, const Value& text) {
    std::uint8_t* bytes = take_string_space(text.length);
    if (bytes == nullptr) return false;
    copy_text(bytes, text.bytes, text.length);
    write_text(place, Value::of_string(bytes, text.length));
    return true;
}

}  // namespace korvane::fast
