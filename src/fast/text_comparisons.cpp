#include "fast/text_comparisons.h"

#include <algorithm>

#include "fast/choose.h"
#include "fast/sides.h"
#include "fast/text_sides.h"
#include "platform/memory.h"
#include "program/arenas.h"
#include "values/relations.h"

namespace korvane::fast {
namespace {

// What a comparison of which a side failed gives: no outcome makes any relation true.
constexpr std::uint8_t no_outcome = 0;

// The first eight bytes of a text as a number that orders like them; a shorter text is filled up with zeros.
inline std::uint64_t leading_bytes(const std::uint8_t* bytes, std::uint32_t length) {
    if (length == 0) return 0;
    std::uint64_t word;
    // Eight bytes that lie in one page can be read wherever the text ends.
    if (__builtin_expect((reinterpret_cast<std::uintptr_t>(bytes) & (page_size - 1)) <= page_size - 8,
                         true)) {
        word = read_unaligned<std::uint64_t>(bytes);
    } else {
        word = 0;
        copy_bytes(&word, bytes, std::min(length, 8U));
    }
    const unsigned unused_bits = length >= 8 ? 0 : 64 - 8 * length;
    return __builtin_bswap64(word) >> unused_bits << unused_bits;
}

// The sides of the comparison at `at`.
std::uint8_t order_of_sides(const Token* at) {
    const Value left = left_text(at);
    if (failed(left)) return no_outcome;
    const Value right = right_text(at);
    if (failed(right)) return no_outcome;
    return order_of_texts(left, right);
}

template <unsigned relation>
WholeResult compare_texts(std::int64_t, Token* at) {
    const std::uint8_t outcome = order_of_sides(at);
    if (__builtin_expect(outcome == no_outcome, false)) return no_whole;
    KORVANE_JUMP return go_on_whole((outcome & relation) != 0 ? -1 : 0, at);
}

}  // namespace

// A text that is the beginning of the other one comes first.
std::uint8_t order_of_texts(Value left, Value right) {
    const std::uint64_t left_word = leading_bytes(left.bytes, left.length);
    const std::uint64_t right_word = leading_bytes(right.bytes, right.length);
    if (left_word != right_word) return left_word < right_word ? LESS : GREATER;
    const std::uint32_t shorter = std::min(left.length, right.length);
    if (shorter > 8) {
        const int order = compare_bytes(left.bytes + 8, right.bytes + 8, shorter - 8);
        if (order != 0) return order < 0 ? LESS : GREATER;
    }
    if (left.length == right.length) return EQUAL;
    return left.length < right.length ? LESS : GREATER;
}

void set_text_comparison_step(Token* at) {
    StepFunction& function = as<OperatorRecord>(at).function;
    const Token* operation = at;
    function.whole = choose<LESS, EQUAL, LESS | EQUAL, GREATER, LESS | GREATER, GREATER | EQUAL>(
        read_relation(operation), [](auto listed) { return compare_texts<listed()>; });
}

}  // namespace korvane::fast
