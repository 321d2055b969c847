#include "fast/function_steps.h"

#include "fast/sides.h"
#include "fast/text_sides.h"
#include "platform/stack.h"
#include "values/kernels.h"
#include "values/rounding.h"
#include "values/user_functions.h"
#include "values/variables.h"

namespace korvane::fast {
namespace {

using RealFunction = double (*)(double);

// A function of a finite double.
template <RealFunction function>
double real_function(double, Token* at) {
    const double x = right_real(at);
    return is_finite(x) ? go_on(function(x), at) : x;
}

// One that gives a SINGLE for a SINGLE.
template <RealFunction function>
float single_function(float, Token* at) {
    const double x = right_real(at);
    return is_finite(x) ? go_on_single(static_cast<float>(function(x)), at) : static_cast<float>(x);
}

double absolute(double x) {
    return __builtin_fabs(x);
}

Whole absolute_whole(std::int64_t, Token* at) {
    const Whole x = right_whole(at);
    if (x.failed != 0 || x.value == INT64_MIN) return {0, 1};
    return go_on_whole(x.value < 0 ? -x.value : x.value, at);
}

// INT and FIX of an integer, and CINT of any number: whole_side() rounds.
Whole same_whole(std::int64_t, Token* at) {
    const Whole x = right_whole(at);
    return x.failed != 0 ? x : go_on_whole(x.value, at);
}

Whole sign_of_real(std::int64_t, Token* at) {
    const double x = right_real(at);
    if (!is_finite(x)) return {0, 1};
    return go_on_whole((x > 0) - (x < 0), at);
}

Whole length_of_text(std::int64_t, Token* at) {
    const Value text = right_text(at);
    return text.type == Type::NONE ? Whole{0, 1} : go_on_whole(text.length, at);
}

Whole code_of_text(std::int64_t, Token* at) {
    const Value text = right_text(at);
    return text.type == Type::NONE || text.length == 0 ? Whole{0, 1} : go_on_whole(text.bytes[0], at);
}

// What the result's type is made of.
enum class ResultRule : std::uint8_t { DOUBLE, SAME, WHOLE };

struct FunctionRow {
    std::string_view name;
    bool of_text;  // takes a string
    ResultRule rule;
    double (*real)(double, Token*);
    float (*single)(float, Token*);
    Whole (*whole)(std::int64_t, Token*);
};

constexpr FunctionRow rows[] = {
    {"ABS", false, ResultRule::SAME, real_function<absolute>, single_function<absolute>, absolute_whole},
    {"INT", false, ResultRule::SAME, real_function<rounded_down>, single_function<rounded_down>, same_whole},
    {"FIX", false, ResultRule::SAME, real_function<truncated>, single_function<truncated>, same_whole},
    {"CINT", false, ResultRule::WHOLE, nullptr, nullptr, same_whole},
    {"SGN", false, ResultRule::WHOLE, nullptr, nullptr, sign_of_real},
    {"SQR", false, ResultRule::DOUBLE, real_function<kernel_sqrt>, nullptr, nullptr},
    {"SIN", false, ResultRule::DOUBLE, real_function<kernel_sin>, nullptr, nullptr},
    {"COS", false, ResultRule::DOUBLE, real_function<kernel_cos>, nullptr, nullptr},
    {"TAN", false, ResultRule::DOUBLE, real_function<kernel_tan>, nullptr, nullptr},
    {"ATN", false, ResultRule::DOUBLE, real_function<kernel_atan>, nullptr, nullptr},
    {"EXP", false, ResultRule::DOUBLE, real_function<kernel_exp>, nullptr, nullptr},
    {"LOG", false, ResultRule::DOUBLE, real_function<kernel_log>, nullptr, nullptr},
    {"LEN", true, ResultRule::WHOLE, nullptr, nullptr, length_of_text},
    {"ASC", true, ResultRule::WHOLE, nullptr, nullptr, code_of_text},
};

const FunctionRow* find_row(std::string_view name) {
    for (const FunctionRow& row : rows) {
        if (row.name == name) return &row;
    }
    return nullptr;
}

// A parameter's own value while a call uses its variable.
struct Saved {
    std::uint8_t* storage;
    std::int64_t bits;
};

// Writes an argument with conversion to the parameter's type; false when it does not fit.
bool bind(const VariableEntry& parameter, std::uint8_t* storage, const Token* mark) {
    if (is_integer(parameter.type)) {
        const Whole x = right_whole(mark);
        if (x.failed != 0) return false;
        std::int64_t bits = x.value;
        if (parameter.type == Type::INTEGER && static_cast<std::int16_t>(bits) != bits) return false;
        if (parameter.type == Type::LONG && static_cast<std::int32_t>(bits) != bits) return false;
        __builtin_memcpy(storage, &bits, storage_size(parameter.type));
        return true;
    }
    const double x = right_real(mark);
    if (!is_finite(x)) return false;
    if (parameter.type == Type::SINGLE) {
        const auto narrow = static_cast<float>(x);
        __builtin_memcpy(storage, &narrow, sizeof narrow);
    } else {
        __builtin_memcpy(storage, &x, sizeof x);
    }
    return true;
}

// The body's value with all parameters bound. Arguments are evaluated before any parameter is changed, so
// they are collected first; parameters are put back in reverse.
template <typename Body>
bool call(const Token* bracket, Body body) {
    auto* function = static_cast<UserFunction*>(const_cast<void*>(bracket->step.left_operand));
    if (stack_exhausted()) return false;
    std::uint8_t arguments[max_parameters][8];
    std::int32_t count = 0;
    for (const Token* mark = bracket; mark != nullptr; mark = mark->step.left_inner, ++count) {
        if (!bind(*function->entries[count], arguments[count], mark)) return false;
    }
    Saved saved[max_parameters];
    for (std::int32_t i = 0; i < count; ++i) {
        VariableEntry* entry = function->entries[i];
        saved[i].storage = entry->storage;
        saved[i].bits = read<std::int64_t>(entry->storage);
        __builtin_memcpy(entry->storage, arguments[i], storage_size(entry->type));
    }
    body(&function->head);
    while (count-- > 0)
        __builtin_memcpy(saved[count].storage, &saved[count].bits, sizeof saved[count].bits);
    return true;
}

double call_real(double, Token* at) {
    double result = no_number();
    call(at, [&result](const Token* head) { result = right_real(head); });
    return go_on(result, at);
}

// The frequent case: one DOUBLE parameter.
double call_real_with_one(double, Token* at) {
    auto* function = static_cast<UserFunction*>(const_cast<void*>(at->step.left_operand));
    const double argument = right_real(at);
    if (!is_finite(argument) || stack_exhausted()) return no_number();
    std::uint8_t* storage = function->entries[0]->storage;
    const double saved = read<double>(storage);
    __builtin_memcpy(storage, &argument, sizeof argument);
    const double result = right_real(&function->head);
    __builtin_memcpy(storage, &saved, sizeof saved);
    return go_on(result, at);
}

float call_single(float, Token* at) {
    double result = no_number();
    call(at, [&result](const Token* head) { result = right_real(head); });
    return go_on_single(static_cast<float>(result), at);
}

Whole call_whole(std::int64_t, Token* at) {
    Whole result{0, 1};
    call(at, [&result](const Token* head) { result = right_whole(head); });
    return result.failed != 0 ? result : go_on_whole(result.value, at);
}

}  // namespace

bool function_result(std::string_view name, Type argument, Type& result) {
    const FunctionRow* row = find_row(name);
    if (row == nullptr || row->of_text != (argument == Type::STRING)) return false;
    switch (row->rule) {
        case ResultRule::DOUBLE:
            result = Type::DOUBLE;
            break;
        case ResultRule::SAME:
            result = argument;
            break;
        case ResultRule::WHOLE:
            result = Type::INT64;
            break;
    }
    return true;
}

void set_function_step(Token* bracket, std::string_view name, Domain domain) {
    const FunctionRow* row = find_row(name);
    switch (domain) {
        case Domain::REAL:
            bracket->step.real = row->real;
            break;
        case Domain::SINGLE:
            bracket->step.single = row->single;
            break;
        default:
            bracket->step.whole = row->whole;
            break;
    }
}

void set_user_function_step(Token* bracket, UserFunction* function, Domain domain) {
    bracket->step.left_operand = function;
    switch (domain) {
        case Domain::REAL: {
            const bool simple = function->parameter_count == 1 && function->entries[0]->type == Type::DOUBLE;
            bracket->step.real = simple ? call_real_with_one : call_real;
            break;
        }
        case Domain::SINGLE:
            bracket->step.single = call_single;
            break;
        default:
            bracket->step.whole = call_whole;
            break;
    }
}

}  // namespace korvane::fast
