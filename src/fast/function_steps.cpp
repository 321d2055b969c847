#include "fast/function_steps.h"

#include <algorithm>
#include <type_traits>

#include "fast/number_types.h"
#include "fast/records.h"
#include "fast/sides.h"
#include "fast/text_sides.h"
#include "numbers/kernels.h"
#include "numbers/rounding.h"
#include "platform/stack.h"
#include "screen/keyboard.h"
#include "values/functions.h"
#include "values/random.h"
#include "values/string_functions.h"
#include "values/text_number.h"
#include "values/user_functions.h"
#include "values/variables.h"

namespace korvane::fast {
namespace {

using RealFunction = double (*)(double);

// A function of a finite double.
template <RealFunction function>
double real_function(double, Token* at) {
    const double x = quick_right_real(at);
    if (!is_finite(x)) return x;
    KORVANE_JUMP return go_on(function(x), at);
}

// One that gives a SINGLE for a SINGLE.
template <RealFunction function>
float single_function(float, Token* at) {
    const double x = right_real(at);
    if (!is_finite(x)) return static_cast<float>(x);
    KORVANE_JUMP return go_on_single(static_cast<float>(function(x)), at);
}

double absolute(double x) {
    return __builtin_fabs(x);
}

WholeResult absolute_whole(std::int64_t, Token* at) {
    const Whole x = right_whole(at);
    if (x.failed != 0 || x.value == INT64_MIN) return no_whole;
    KORVANE_JUMP return go_on_whole(x.value < 0 ? -x.value : x.value, at);
}

// INT and FIX of an integer, and CINT of any number: whole_side() rounds.
WholeResult same_whole(std::int64_t, Token* at) {
    const Whole x = right_whole(at);
    if (x.failed != 0) return x;
    KORVANE_JUMP return go_on_whole(x.value, at);
}

WholeResult sign_of_real(std::int64_t, Token* at) {
    const double x = right_real(at);
    if (!is_finite(x)) return no_whole;
    KORVANE_JUMP return go_on_whole((x > 0) - (x < 0), at);
}

WholeResult length_of_text(std::int64_t, Token* at) {
    const Value text = right_text(at);
    if (failed(text)) return no_whole;
    KORVANE_JUMP return go_on_whole(text.length, at);
}

WholeResult code_of_text(std::int64_t, Token* at) {
    const Value text = right_text(at);
    if (failed(text) || text.length == 0) return no_whole;
    KORVANE_JUMP return go_on_whole(text.bytes[0], at);
}

WholeResult position_in_text(std::int64_t, Token* at) {
    const Token* mark = at;
    const Token* second = as<MarkRecord>(at).next_mark;
    Whole start{1, 0};
    if (as<MarkRecord>(second).next_mark != nullptr) {
        start = right_whole(at);
        if (start.failed != 0 || start.value < 1) return no_whole;
        mark = second;
    }
    const Value text = right_text(mark);
    if (failed(text)) return no_whole;
    const Value wanted = right_text(as<MarkRecord>(mark).next_mark);
    if (failed(wanted)) return no_whole;
    KORVANE_JUMP return go_on_whole(find_text(text, wanted, start.value), at);
}

// VAL of what is certainly a DOUBLE.
double number_in_text(double, Token* at) {
    const Value text = right_text(at);
    if (failed(text)) return no_number();
    const std::string_view characters = text.text();
    if (!cannot_overflow(characters)) return no_number();
    KORVANE_JUMP return go_on(longest_number(characters).real, at);
}

double same(double x) {
    return x;
}

// RND with an argument of which the general handler has nothing to say.
float random_number(float, Token* at) {
    const double x = right_real(at);
    if (!(__builtin_fabs(x) <= exact_integers)) return static_cast<float>(no_number());
    KORVANE_JUMP return go_on_single(static_cast<float>(random_for(Value::of_real(x)).real), at);
}

// What any integer is an argument for: the function itself is called.
WholeResult function_of_integer(std::int64_t, Token* at) {
    const auto& call = as<CallRecord>(at);
    if (call.last_argument == Type::STRING) return no_whole;
    const Whole x = quick_right_index(at);
    if (x.failed != 0) return x;
    KORVANE_JUMP return go_on_whole(call.built_in->unary(Value::of_integer(x.value)).integer, at);
}

// The bytes of a number in a text, which must be so many.
Value image_value(const Token* at, std::uint32_t size) {
    const Value image = right_text(at);
    return failed(image) || image.length < size ? no_text() : as<CallRecord>(at).built_in->unary(image);
}

WholeResult integer_image(std::int64_t, Token* at) {
    const Value value = image_value(at, 2);
    if (failed(value)) return no_whole;
    KORVANE_JUMP return go_on_whole(value.integer, at);
}
float single_image(float, Token* at) {
    const Value value = image_value(at, 4);
    if (failed(value)) return static_cast<float>(no_number());
    KORVANE_JUMP return go_on_single(static_cast<float>(value.real), at);
}
double double_image(double, Token* at) {
    const Value value = image_value(at, 8);
    if (failed(value)) return no_number();
    KORVANE_JUMP return go_on(value.real, at);
}

// A step of a function, in the domain that the step's type says. Functions with steps in several domains keep
// their argument's type.
struct FunctionRow {
    template <typename Result, typename Number>
    constexpr FunctionRow(std::string_view text, Result (*function)(Number, Token*)) {
        std::copy(text.begin(), text.end(), name);
        if constexpr (std::is_same_v<Result, double>) {
            domain = Domain::real;
            step.real = function;
        } else if constexpr (std::is_same_v<Result, float>) {
            domain = Domain::single;
            step.single = function;
        } else {
            domain = Domain::whole;
            step.whole = function;
        }
    }

    char name[7] = {};  // zero-padded
    Domain domain = Domain::real;
    StepFunction step{};
};
static_assert(sizeof(FunctionRow) == 16);

constexpr FunctionRow rows[] = {
    {"ABS", real_function<absolute>},
    {"ABS", single_function<absolute>},
    {"ABS", absolute_whole},
    {"INT", real_function<rounded_down>},
    {"INT", single_function<rounded_down>},
    {"INT", same_whole},
    {"FIX", real_function<truncated>},
    {"FIX", single_function<truncated>},
    {"FIX", same_whole},
    {"CINT", same_whole},
    {"SGN", sign_of_real},
    {"SQR", real_function<kernel_sqrt>},
    {"SIN", real_function<kernel_sin>},
    {"COS", real_function<kernel_cos>},
    {"TAN", real_function<kernel_tan>},
    {"ATN", real_function<kernel_atan>},
    {"EXP", real_function<kernel_exp>},
    {"LOG", real_function<kernel_log>},
    {"LEN", length_of_text},
    {"ASC", code_of_text},
    {"INSTR", position_in_text},
    {"VAL", number_in_text},
    {"RND", random_number},
    {"CDBL", real_function<same>},
    {"CSNG", single_function<same>},
    {"CVI", integer_image},
    {"CVS", single_image},
    {"CVD", double_image},
    {"PEEK", function_of_integer},
    {"PEEK16", function_of_integer},
    {"PEEK32", function_of_integer},
    {"PEEK64", function_of_integer},
    {"POS", function_of_integer},
    {"FRE", function_of_integer},
};

bool has_name(const FunctionRow& row, std::string_view name) {
    return name.size() < sizeof row.name && std::equal(name.begin(), name.end(), row.name) &&
           row.name[name.size()] == 0;
}

// The function's row, that in the domain if there is one; null for functions without a step.
const FunctionRow* find_row(std::string_view name, Domain domain) {
    const FunctionRow* found = nullptr;
    for (const FunctionRow& row : rows)
        if (has_name(row, name) && (found == nullptr || row.domain == domain)) found = &row;
    return found;
}

// A parameter's own value while a call uses its variable.
struct Saved {
    std::uint8_t* storage;
    std::int64_t bits;
};

// Writes an argument with conversion to the parameter's type; false when it does not fit.
bool bind(const VariableEntry& parameter, std::uint8_t* storage, const Token* mark) {
    if (!is_integer(parameter.type)) return store_number(parameter.type, storage, right_real(mark));
    const Whole x = right_whole(mark);
    return x.failed == 0 && store_number(parameter.type, storage, x.value);
}

// Notes a call, as every call is. When Escape ends the statement, what is specialised gives up: the general
// handler, which executes the statement anew, finds the Escape that is pending and can break.
bool may_call_on() {
    if (may_call()) return true;
    keyboard.look_ahead = break_pending;
    return false;
}

// The body's value with all parameters bound. Arguments are evaluated before any parameter is changed, so
// they are collected first; parameters are put back in reverse.
template <typename Body>
bool call(const Token* bracket, Body body) {
    UserFunction* function = as<CallRecord>(bracket).callee;
    if (stack_exhausted() || !may_call_on()) return false;
    std::uint8_t arguments[max_parameters][8];
    std::int32_t count = 0;
    for (const Token* mark = bracket; mark != nullptr; mark = as<MarkRecord>(mark).next_mark, ++count)
        if (!bind(*function->entries[count], arguments[count], mark)) return false;
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
    KORVANE_JUMP return go_on(result, at);
}

// The frequent case: one DOUBLE parameter.
double call_real_with_one(double, Token* at) {
    const UserFunction* function = as<CallRecord>(at).callee;
    const double argument = quick_right_real(at);
    if (!is_finite(argument) || stack_exhausted() || !may_call_on()) return no_number();
    std::uint8_t* storage = function->entries[0]->storage;
    const double saved = read<double>(storage);
    __builtin_memcpy(storage, &argument, sizeof argument);
    const double result = quick_right_real(&function->head);
    __builtin_memcpy(storage, &saved, sizeof saved);
    KORVANE_JUMP return go_on(result, at);
}

float call_single(float, Token* at) {
    double result = no_number();
    call(at, [&result](const Token* head) { result = right_real(head); });
    KORVANE_JUMP return go_on_single(static_cast<float>(result), at);
}

WholeResult call_whole(std::int64_t, Token* at) {
    Whole result = no_whole;
    call(at, [&result](const Token* head) { result = right_whole(head); });
    if (result.failed != 0) return result;
    KORVANE_JUMP return go_on_whole(result.value, at);
}

}  // namespace

bool FunctionArguments::take(Type type) {
    if (!rest.empty() && rest.front() == '?') {
        rest.remove_prefix(1);
        // Optional arguments are numbers; a text belongs to the next one.
        if (type == Type::STRING) rest.remove_prefix(1);
    }
    if (rest.empty()) return false;
    const char taken = rest.front();
    rest.remove_prefix(1);
    return taken == 'a' || (taken == 't') == (type == Type::STRING);
}

bool gives_number(std::string_view name) {
    return find_row(name, Domain::whole) != nullptr;
}

Type function_result(std::string_view name, Type argument) {
    const Domain domain = find_row(name, domain_of(argument))->domain;
    if (find_row(name, Domain::real) != find_row(name, Domain::whole)) return argument;
    if (domain == Domain::real) return Type::DOUBLE;
    return domain == Domain::single ? Type::SINGLE : Type::INT64;
}

Type bare_function_result(std::string_view name) {
    if (name.back() == '$') return Type::STRING;
    if (name == "RND") return Type::SINGLE;
    return name == "TIMER" ? Type::DOUBLE : Type::INT64;
}

bool draws_random(std::string_view name) {
    return name == "RND";
}

void set_function_step(Token* bracket, const BuiltInFunction& function, Type last, Domain domain) {
    auto& call = as<CallRecord>(bracket);
    call.last_argument = last;
    call.built_in = &function;
    call.function = find_row(bracket[-1].name, domain)->step;
}

void set_user_function_step(Token* bracket, UserFunction* function, Domain domain) {
    auto& call = as<CallRecord>(bracket);
    call.callee = function;
    switch (domain) {
        case Domain::real: {
            const bool simple = function->parameter_count == 1 && function->entries[0]->type == Type::DOUBLE;
            call.function.real = simple ? call_real_with_one : call_real;
            break;
        }
        case Domain::single:
            call.function.single = call_single;
            break;
        default:
            call.function.whole = call_whole;
            break;
    }
}

}  // namespace korvane::fast
