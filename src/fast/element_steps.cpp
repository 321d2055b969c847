#include "fast/element_steps.h"

#include "fast/sides.h"
#include "values/variables.h"

namespace korvane::fast {
namespace {

// Where the bracket and the commas of an element keep what they need: the subscript is the token's right
// side; left_operand is the array block, left_inner the next comma, null at the last subscript.
const ArrayBlock* block_of(const Token* bracket) {
    return static_cast<const ArrayBlock*>(bracket->step.left_operand);
}

// A subscript; most are DOUBLE variables that hold small whole numbers.
inline Whole subscript_at(const Token* mark) {
    if (mark->right_kind == F64) return round_whole(read<double>(mark->step.operand));
    return right_whole(mark);
}

inline std::uint64_t offset_of(std::int64_t subscript) {
    return static_cast<std::uint64_t>(subscript) - static_cast<std::uint64_t>(variables.array_base);
}

template <int size>
inline std::uint8_t* address_in(const ArrayBlock* block, std::uint64_t dimensions, std::uint64_t offset) {
    return const_cast<std::uint8_t*>(reinterpret_cast<const std::uint8_t*>(block->bounds + dimensions)) +
           offset * static_cast<std::uint64_t>(size);
}

// One subscript.
inline bool vector_offset(const Token* bracket, const ArrayBlock* block, std::uint64_t& offset) {
    const Whole subscript = subscript_at(bracket);
    if (subscript.failed != 0 || subscript.value < variables.array_base ||
        subscript.value > block->bounds[0]) {
        return false;
    }
    offset = offset_of(subscript.value);
    return true;
}

// Any number of subscripts, row-major.
bool general_offset(const Token* bracket, const ArrayBlock* block, std::uint64_t& offset) {
    offset = 0;
    const std::int64_t* bound = block->bounds;
    for (const Token* mark = bracket; mark != nullptr; mark = mark->step.left_inner, ++bound) {
        const Whole subscript = subscript_at(mark);
        if (subscript.failed != 0 || subscript.value < variables.array_base || subscript.value > *bound)
            return false;
        offset = offset * (offset_of(*bound) + 1) + offset_of(subscript.value);
    }
    return true;
}

template <int size>
inline std::uint8_t* find_element(const Token* bracket) {
    const ArrayBlock* block = block_of(bracket);
    std::uint64_t offset;
    if (bracket->step.left_inner == nullptr) {
        if (!vector_offset(bracket, block, offset)) return nullptr;
        return address_in<size>(block, 1, offset);
    }
    if (!general_offset(bracket, block, offset)) return nullptr;
    return address_in<size>(block, block->dimensions, offset);
}

template <Leaf leaf, int size>
double real_element(double, Token* at) {
    const std::uint8_t* element = find_element<size>(at);
    return element == nullptr ? no_number() : go_on(real_leaf<leaf>(element), at);
}

float single_element(float, Token* at) {
    const std::uint8_t* element = find_element<4>(at);
    return element == nullptr ? static_cast<float>(no_number()) : go_on_single(read<float>(element), at);
}

template <Leaf leaf, int size>
Whole whole_element(std::int64_t, Token* at) {
    const std::uint8_t* element = find_element<size>(at);
    return element == nullptr ? Whole{0, 1} : go_on_whole(whole_leaf<leaf>(element), at);
}

Value text_element(Token* at) {
    const std::uint8_t* element = find_element<16>(at);
    if (element == nullptr) return Value::of_integer(0, Type::NONE);
    const auto descriptor = read<StringDescriptor>(element);
    return Value::of_string(descriptor.bytes, descriptor.length);
}

void set_real_element_step(Token* bracket, Type type) {
    switch (type) {
        case Type::INTEGER:
            bracket->step.real = real_element<I16, 2>;
            break;
        case Type::LONG:
            bracket->step.real = real_element<I32, 4>;
            break;
        case Type::INT64:
            bracket->step.real = real_element<I64, 8>;
            break;
        case Type::SINGLE:
            bracket->step.real = real_element<F32, 4>;
            break;
        default:
            bracket->step.real = real_element<F64, 8>;
            break;
    }
}

void set_whole_element_step(Token* bracket, Type type) {
    switch (type) {
        case Type::INTEGER:
            bracket->step.whole = whole_element<I16, 2>;
            break;
        case Type::LONG:
            bracket->step.whole = whole_element<I32, 4>;
            break;
        default:
            bracket->step.whole = whole_element<I64, 8>;
            break;
    }
}

}  // namespace

template <int size>
std::uint8_t* element_place(const Token* bracket) {
    return find_element<size>(bracket);
}
template std::uint8_t* element_place<2>(const Token*);
template std::uint8_t* element_place<4>(const Token*);
template std::uint8_t* element_place<8>(const Token*);
template std::uint8_t* element_place<16>(const Token*);

std::uint8_t* element_address(Token* at, Type type) {
    switch (storage_size(type)) {
        case 2:
            return element_place<2>(at);
        case 4:
            return element_place<4>(at);
        case 8:
            return element_place<8>(at);
        default:
            return element_place<16>(at);
    }
}

void set_element_step(Token* bracket, Type type, Domain domain) {
    switch (domain) {
        case Domain::REAL:
            set_real_element_step(bracket, type);
            break;
        case Domain::SINGLE:
            bracket->step.single = single_element;
            break;
        case Domain::WHOLE:
            set_whole_element_step(bracket, type);
            break;
        case Domain::TEXT:
            bracket->step.text = text_element;
            break;
    }
}

}  // namespace korvane::fast
