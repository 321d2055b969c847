#include "fast/element_steps.h"

#include "fast/elements.h"
#include "fast/number_types.h"
#include "fast/text_sides.h"

namespace korvane::fast {
namespace {

template <Leaf leaf, int size, Subscripts subscripts>
double real_element(double, Token* at) {
    const std::uint8_t* element = find_element<size, subscripts>(at);
    if (element == nullptr) return no_number();
    KORVANE_JUMP return go_on(real_leaf<leaf>(element), at);
}

float single_element(float, Token* at) {
    const std::uint8_t* element = find_element<4, Subscripts::any>(at);
    if (element == nullptr) return static_cast<float>(no_number());
    KORVANE_JUMP return go_on_single(read<float>(element), at);
}

template <Leaf leaf, int size, Subscripts subscripts>
WholeResult whole_element(std::int64_t, Token* at) {
    const std::uint8_t* element = find_element<size, subscripts>(at);
    if (element == nullptr) return no_whole;
    KORVANE_JUMP return go_on_whole(whole_leaf<leaf>(element), at);
}

template <Subscripts subscripts>
Value text_element(Token* at) {
    const std::uint8_t* element = find_element<16, subscripts>(at);
    if (element == nullptr) return no_text();
    const auto descriptor = read<StringDescriptor>(element);
    return Value::of_string(descriptor.bytes, descriptor.length);
}

// ---- Which of them there are --------------------------------------------------------------------

// For each type, and for the frequent subscripts where they have steps of their own.
using RealStep = double (*)(double, Token*);
using WholeStep = WholeResult (*)(std::int64_t, Token*);

template <Type type, Subscripts subscripts>
constexpr RealStep real_step = real_element<leaf_of(type), storage_size(type), subscripts>;
template <Type type, Subscripts subscripts>
constexpr WholeStep whole_step = whole_element<leaf_of(type), storage_size(type), subscripts>;

RealStep choose_real(Type type, Subscripts subscripts) {
    if (type != Type::DOUBLE)
        return choose<Type::INTEGER, Type::LONG, Type::INT64, Type::SINGLE>(
            type, [](auto listed) { return real_step<listed(), Subscripts::any>; });
    return choose<Subscripts::one, Subscripts::two, Subscripts::any>(
        subscripts, [](auto listed) { return real_step<Type::DOUBLE, listed()>; });
}

WholeStep choose_whole(Type type, Subscripts subscripts) {
    if (type == Type::INTEGER && subscripts == Subscripts::one)
        return whole_step<Type::INTEGER, Subscripts::one>;
    return choose<Type::INTEGER, Type::LONG, Type::INT64>(
        type, [](auto listed) { return whole_step<listed(), Subscripts::any>; });
}

}  // namespace

std::uint8_t* text_element_address(const Token* bracket) {
    if (as<ElementRecord>(bracket).subscripts == Subscripts::one)
        return find_element<16, Subscripts::one>(bracket);
    return find_element<16, Subscripts::any>(bracket);
}

bool find_offset(const Token* bracket, const ArrayBlock* block, std::uint64_t& offset) {
    offset = 0;
    const std::int64_t* bound = block->bounds;
    for (const Token* mark = bracket; mark != nullptr; mark = as<MarkRecord>(mark).next_mark, ++bound) {
        std::uint64_t along;
        if (!subscript_offset(quick_right_index(mark), *bound, along)) return false;
        offset = offset * array_extent(*bound) + along;
    }
    return true;
}

std::uint8_t* element_address(const Token* bracket, Type type) {
    if (type == Type::STRING) return text_element_address(bracket);
    const ArrayBlock* block = as<ElementRecord>(bracket).array;
    std::uint64_t offset;
    if (!find_offset(bracket, block, offset)) return nullptr;
    return const_cast<ArrayBlock*>(block)->elements() + offset * storage_size(type);
}

void set_element_step(Token* bracket, Type type, Domain domain) {
    auto& element = as<ElementRecord>(bracket);
    StepFunction& step = element.function;
    switch (domain) {
        case Domain::real:
            step.real = choose_real(type, element.subscripts);
            break;
        case Domain::single:
            step.single = single_element;
            break;
        case Domain::whole:
            step.whole = choose_whole(type, element.subscripts);
            break;
        case Domain::text:
            step.text = element.subscripts == Subscripts::one ? text_element<Subscripts::one>
                                                              : text_element<Subscripts::any>;
            break;
    }
}

}  // namespace korvane::fast
