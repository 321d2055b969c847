#include "fast/element_steps.h"

#include "fast/elements.h"
#include "fast/text_sides.h"

namespace korvane::fast {
namespace {

template <Leaf leaf, int size, Subscripts subscripts>
double real_element(double, Token* at) {
    const std::uint8_t* element = find_element<size, subscripts>(at);
    return element == nullptr ? no_number() : go_on(real_leaf<leaf>(element), at);
}

template <Subscripts subscripts>
float single_element(float, Token* at) {
    const std::uint8_t* element = find_element<4, subscripts>(at);
    return element == nullptr ? static_cast<float>(no_number()) : go_on_single(read<float>(element), at);
}

template <Leaf leaf, int size, Subscripts subscripts>
Whole whole_element(std::int64_t, Token* at) {
    const std::uint8_t* element = find_element<size, subscripts>(at);
    return element == nullptr ? Whole{0, 1} : go_on_whole(whole_leaf<leaf>(element), at);
}

template <Subscripts subscripts>
Value text_element(Token* at) {
    const std::uint8_t* element = find_element<16, subscripts>(at);
    if (element == nullptr) return no_text();
    const auto descriptor = read<StringDescriptor>(element);
    return Value::of_string(descriptor.bytes, descriptor.length);
}

using RealStep = double (*)(double, Token*);

RealStep choose_double(Subscripts subscripts) {
    switch (subscripts) {
        case Subscripts::ONE:
            return real_element<F64, 8, Subscripts::ONE>;
        case Subscripts::TWO:
            return real_element<F64, 8, Subscripts::TWO>;
        default:
            return real_element<F64, 8, Subscripts::ANY>;
    }
}

void set_real_element_step(Token* bracket, Type type) {
    switch (type) {
        case Type::INTEGER:
            bracket->step.real = real_element<I16, 2, Subscripts::ANY>;
            break;
        case Type::LONG:
            bracket->step.real = real_element<I32, 4, Subscripts::ANY>;
            break;
        case Type::INT64:
            bracket->step.real = real_element<I64, 8, Subscripts::ANY>;
            break;
        case Type::SINGLE:
            bracket->step.real = real_element<F32, 4, Subscripts::ANY>;
            break;
        default:
            bracket->step.real = choose_double(subscripts_of(bracket));
            break;
    }
}

void set_whole_element_step(Token* bracket, Type type) {
    const bool one = subscripts_of(bracket) == Subscripts::ONE;
    switch (type) {
        case Type::INTEGER:
            bracket->step.whole =
                one ? whole_element<I16, 2, Subscripts::ONE> : whole_element<I16, 2, Subscripts::ANY>;
            break;
        case Type::LONG:
            bracket->step.whole = whole_element<I32, 4, Subscripts::ANY>;
            break;
        default:
            bracket->step.whole = whole_element<I64, 8, Subscripts::ANY>;
            break;
    }
}

void set_single_element_step(Token* bracket) {
    const bool one = subscripts_of(bracket) == Subscripts::ONE;
    bracket->step.single = one ? single_element<Subscripts::ONE> : single_element<Subscripts::ANY>;
}

}  // namespace

template <int size>
std::uint8_t* element_place(const Token* bracket) {
    if (subscripts_of(bracket) == Subscripts::ONE) return find_element<size, Subscripts::ONE>(bracket);
    return find_element<size, Subscripts::ANY>(bracket);
}
template std::uint8_t* element_place<2>(const Token*);
template std::uint8_t* element_place<4>(const Token*);
template std::uint8_t* element_place<8>(const Token*);
template std::uint8_t* element_place<16>(const Token*);

bool find_offset(const Token* bracket, const ArrayBlock* block, std::uint64_t& offset) {
    offset = 0;
    const std::int64_t* bound = block->bounds;
    for (const Token* mark = bracket; mark != nullptr; mark = mark->step.left_inner, ++bound) {
        std::uint64_t along;
        if (!subscript_offset(quick_right_index(mark), *bound, along)) return false;
        offset = offset * (static_cast<std::uint64_t>(*bound - variables.array_base) + 1) + along;
    }
    return true;
}

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
            set_single_element_step(bracket);
            break;
        case Domain::WHOLE:
            set_whole_element_step(bracket, type);
            break;
        case Domain::TEXT:
            bracket->step.text = subscripts_of(bracket) == Subscripts::ONE ? text_element<Subscripts::ONE>
                                                                           : text_element<Subscripts::ANY>;
            break;
    }
}

}  // namespace korvane::fast
