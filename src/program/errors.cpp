#include "program/errors.h"

#include <string_view>

#include "program/execution.h"
#include "program/messages.h"
#include "screen/console.h"

namespace korvane {

ErrorState errors;

namespace {

struct ErrorNumber {
    const char* message;
    std::int64_t code;
};

// Searched in order; several messages may share a code. Every message not listed counts as 255.
constexpr ErrorNumber error_numbers[] = {
    {message::next_without_for, 1},
    {message::syntax_error_lower, 2},
    {message::syntax_error, 2},
    {message::return_without_gosub, 3},
    {message::out_of_data, 4},
    {message::illegal_function_call, 5},
    {message::overflow, 6},
    {message::out_of_memory, 7},
    {message::undefined_line_number, 8},
    {message::subscript_out_of_range, 9},
    {message::wrong_number_of_subscripts, 9},
    {message::duplicate_definition, 10},
    {message::division_by_zero, 11},
    {message::type_mismatch, 13},
    {message::out_of_string_space, 14},
    {message::string_too_long, 15},
    {message::undefined_user_function, 18},
    {message::cant_continue, 17},
    {message::bad_file_number, 52},
    {message::bad_file_name, 52},
    {message::file_not_found, 53},
    {message::bad_file_mode, 54},
};
static_assert(sizeof(error_numbers) / sizeof(error_numbers[0]) == 22);

constexpr std::int64_t unlisted_error_code = 255;

}  // namespace

void raise(const char* error_message) {
    if (errors.pending) return;
    errors.code = -1;
    errors.message = error_message;
    if (!execution.program_running) errors.line = 0;
    con_put_message(error_message);
    if (!execution.program_running) con_put_message("\r");
    errors.pending = true;
    errors.is_break = false;
}

void request_break() {
    if (errors.pending) return;
    errors.pending = true;
    errors.is_break = true;
}

std::int64_t error_code() {
    if (errors.code >= 0) return errors.code;
    if (errors.message == nullptr) return 0;
    for (const ErrorNumber& number : error_numbers)
        if (std::string_view(number.message) == errors.message) return number.code;
    return unlisted_error_code;
}

void forget_error() {
    errors.message = nullptr;
    errors.code = -1;
    errors.line = 0;
}

}  // namespace korvane
