#include "fast/function_steps.h"

#include <algorithm>
#include <type_traits>

#include "fast/number_types.h"
#include "fast/records.h"
#include "fast/sides.h"
#include "fast/text_sides.h"
#include "numbers/kernels.h"
#include "numbers/rounding.h"
#include "screen/graphics.h"
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

// VAL of what is a DOUBLE, as all that has no prefix.
double number_in_text(double, Token* at) {
    const Value text = right_text(at);
    if (failed(text)) return no_number();
    const Value number = longest_number(text.text());
    if (number.type != Type::DOUBLE) return no_number();
    KORVANE_JUMP return go_on(number.real, at);
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

// POINT of a place whose pixel is no overflow. Apart, because a step with the address of a local would call
// its successor.
[[gnu::noinline]] Whole pixel_at(const CallRecord& call, double x, double y) {
    if (!gfx_is_near(x, y)) return {0, 1};
    const Value place[] = {Value::of_real(x), Value::of_real(y)};
    return {call.built_in->several(place, 2).integer, 0};
}

WholeResult pixel(std::int64_t, Token* at) {
    const double x = right_real(at);
    const Whole colour = pixel_at(as<CallRecord>(at), x, right_real(as<MarkRecord>(at).next_mark));
    if (colour.failed != 0) return no_whole;
    KORVANE_JUMP return go_on_whole(colour.value, at);
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
    {"POINT", pixel},
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

// What a parameter's variable holds.
struct Content {
    std::uint8_t bytes[sizeof(VariableEntry::storage)];
};

// Makes an argument the content of a parameter, converted to its type; false when it does not fit. A text
// still is where the argument has it.
bool take_argument(Type type, Content& content, const Token* mark) {
    if (type == Type::DOUBLE) return store_number<double>(content.bytes, quick_right_real(mark));
    if (type == Type::STRING) {
        const Value text = right_text(mark);
        write_text(content.bytes, text);
        return !failed(text);
    }
    if (!is_integer(type)) return store_number(type, content.bytes, right_real(mark));
    const Whole x = right_whole(mark);
    return x.failed == 0 && store_number(type, content.bytes, x.value);
}

// Copies the texts among the contents to string space.
bool copy_texts(const UserFunction& function, Content* contents) {
    for (std::int32_t i = 0; i < function.parameter_count; ++i) {
        if (function.entries[i]->type != Type::STRING) continue;
        const auto text = read_unaligned<StringDescriptor>(contents[i].bytes);
        if (!store_text(contents[i].bytes, Value::of_string(text.bytes, text.length))) return false;
    }
    return true;
}

// Binds the parameters to the arguments of a call, and keeps what they held; false when nothing is bound.
// Arguments are evaluated before any parameter is changed, so they are collected first, and texts are copied
// when all are there.
[[gnu::noinline]] bool bind(const Token* bracket, Content* contents) {
    const UserFunction& function = *as<CallRecord>(bracket).callee;
    if (!may_call_user()) return false;
    bool any_text = false;
    VariableEntry* const* entry = function.entries;
    Content* content = contents;
    for (const Token* mark = bracket; mark != nullptr; mark = as<MarkRecord>(mark).next_mark) {
        const Type type = (*entry)->type;
        *content = read_unaligned<Content>((*entry++)->storage);
        if (!take_argument(type, *content++, mark)) return false;
        any_text |= type == Type::STRING;
    }
    if (any_text && !copy_texts(function, contents)) return false;
    for (std::int32_t i = 0; i < function.parameter_count; ++i) {
        const auto before = read_unaligned<Content>(function.entries[i]->storage);
        write_unaligned(function.entries[i]->storage, contents[i]);
        contents[i] = before;
    }
    return true;
}

// In reverse, so that of two parameters with one name the older content comes back. Of a text only the
// variable's storage is put back, which takes no string space.
void put_back(const Token* bracket, const Content* contents) {
    const UserFunction& function = *as<CallRecord>(bracket).callee;
    for (std::int32_t i = function.parameter_count; i-- > 0;)
        write_unaligned(function.entries[i]->storage, contents[i]);
}

// The body's value with all parameters bound; `failed` when they cannot be.
template <typename Result, typename Evaluate>
inline Result call(const Token* bracket, Result failed, Evaluate evaluate) {
    Content contents[max_parameters];
    if (!bind(bracket, contents)) return failed;
    const Result result = evaluate(&as<CallRecord>(bracket).callee->head);
    put_back(bracket, contents);
    return result;
}

double call_real(double, Token* at) {
    KORVANE_JUMP return go_on(call(at, no_number(), right_real), at);
}

// The frequent case: one DOUBLE parameter.
double call_real_with_one(double, Token* at) {
    const UserFunction* function = as<CallRecord>(at).callee;
    const double argument = quick_right_real(at);
    if (!is_finite(argument) || !may_call_user()) return no_number();
    std::uint8_t* storage = function->entries[0]->storage;
    const double saved = read<double>(storage);
    __builtin_memcpy(storage, &argument, sizeof argument);
    const double result = quick_right_real(&function->head);
    __builtin_memcpy(storage, &saved, sizeof saved);
    KORVANE_JUMP return go_on(result, at);
}

float call_single(float, Token* at) {
    KORVANE_JUMP return go_on_single(static_cast<float>(call(at, no_number(), right_real)), at);
}

WholeResult call_whole(std::int64_t, Token* at) {
    const Whole result = call(at, no_whole, right_whole);
    if (result.failed != 0) return result;
    KORVANE_JUMP return go_on_whole(result.value, at);
}

Value call_text(Token* at) {
    return call(at, no_text(), right_text);
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
        case Domain::text:
            call.function.text = call_text;
            break;
        default:
            call.function.whole = call_whole;
            break;
    }
}

}  // namespace korvane::fast
