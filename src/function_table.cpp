// The table of built-in functions and system variables: the one place that knows them all.
#include <algorithm>
#include <array>
#include <span>

#include "platform/memory.h"
#include "statements/files/file_functions.h"
#include "statements/functions/device_functions.h"
#include "statements/functions/system_functions.h"
#include "values/functions.h"
#include "values/numeric_functions.h"
#include "values/string_functions.h"

namespace korvane {
namespace {

using Form = BuiltInFunction::Form;

// A row with its name only.
constexpr BuiltInFunction named(std::string_view name, Form form) {
    BuiltInFunction row{.name = {}, .form = form, .bare = nullptr};
    std::copy(name.begin(), name.end(), row.name);
    return row;
}

constexpr BuiltInFunction bare(std::string_view name, Value (*function)()) {
    BuiltInFunction row = named(name, Form::bare);
    row.bare = function;
    return row;
}
constexpr BuiltInFunction unary(std::string_view name, Value (*function)(const Value&)) {
    BuiltInFunction row = named(name, Form::unary);
    row.unary = function;
    return row;
}
constexpr BuiltInFunction call(std::string_view name, Value (*function)(Cursor&)) {
    BuiltInFunction row = named(name, Form::call);
    row.call = function;
    return row;
}

// Names without "(".
constexpr std::array bare_functions{
    bare("TIMER", function_timer_bare),
    bare("TIME$", function_time),
    bare("DATE$", function_date),
    bare("INKEY$", function_inkey),
    bare("CSRLIN", function_csrlin),
    bare("RND", function_rnd_bare),
    bare("ERR", function_err),
    bare("ERL", function_erl),
    bare("COMMANDLINEARG$", function_commandlinearg_bare),
    bare("COMMANDLINEARGC", function_commandlineargc),
};

// Names without "(" that assignment refuses.
constexpr std::array system_variables{
    bare("LOMEM", variable_lomem),       bare("HIMEM", variable_himem),     bare("FREEBOT", variable_freebot),
    bare("FREETOP", variable_freetop),   bare("GRAMAXX", variable_gramaxx), bare("GRAMAXY", variable_gramaxy),
    bare("GRAPITCH", variable_grapitch), bare("SCRNADR", variable_scrnadr), bare("TXTMAXX", variable_txtmaxx),
    bare("TXTMAXY", variable_txtmaxy),
};

// Names in front of "(".
constexpr std::array called_functions{
    // numbers
    unary("ABS", function_abs),
    unary("ATN", function_atn),
    unary("CDBL", function_cdbl),
    unary("CINT", function_cint),
    unary("COS", function_cos),
    unary("CSNG", function_csng),
    unary("EXP", function_exp),
    unary("FIX", function_fix),
    unary("INT", function_int),
    unary("LOG", function_log),
    unary("RND", function_rnd),
    unary("SGN", function_sgn),
    unary("SIN", function_sin),
    unary("SQR", function_sqr),
    unary("TAN", function_tan),
    // strings
    unary("ASC", function_asc),
    unary("CHR$", function_chr),
    unary("CVD", function_cvd),
    unary("CVI", function_cvi),
    unary("CVS", function_cvs),
    unary("HEX$", function_hex),
    call("INSTR", function_instr),
    unary("LCASE$", function_lcase),
    call("LEFT$", function_left),
    unary("LEN", function_len),
    call("MID$", function_mid),
    unary("MKD$", function_mkd),
    unary("MKI$", function_mki),
    unary("MKS$", function_mks),
    unary("OCT$", function_oct),
    call("RIGHT$", function_right),
    unary("SPACE$", function_space),
    unary("STR$", function_str),
    call("STRING$", function_string),
    unary("UCASE$", function_ucase),
    unary("VAL", function_val),
    // screen, keyboard and files
    call("EOF", function_eof),
    call("INPUT$", function_input_string),
    call("LOC", function_loc),
    call("LOF", function_lof),
    call("POINT", function_point),
    unary("POS", function_pos),
    unary("SPC", function_spc),
    unary("TAB", function_tab),
    // system
    unary("COMMANDLINEARG$", function_commandlinearg),
    unary("FRE", function_fre),
    unary("PEEK", function_peek),
    unary("PEEK16", function_peek16),
    unary("PEEK32", function_peek32),
    unary("PEEK64", function_peek64),
    unary("TIMER", function_timer),
    call("VARPTR", function_varptr),
    unary("KORVANEADR", function_korvaneadr),
};

bool has_name(const BuiltInFunction& function, std::string_view name) {
    constexpr std::size_t longest = sizeof function.name;
    return name.size() <= longest && compare_bytes(function.name, name.data(), name.size()) == 0 &&
           (name.size() == longest || function.name[name.size()] == 0);
}

const BuiltInFunction* find(std::span<const BuiltInFunction> table, std::string_view name) {
    for (const BuiltInFunction& function : table) {
        // Most names differ in their first letters; asking for these first costs no call.
        if (function.name[0] == name[0] && has_name(function, name)) return &function;
    }
    return nullptr;
}

}  // namespace

const BuiltInFunction* find_bare_function(std::string_view name) {
    const BuiltInFunction* function = find(bare_functions, name);
    return function != nullptr ? function : find(system_variables, name);
}

const BuiltInFunction* find_called_function(std::string_view name) {
    return find(called_functions, name);
}

bool is_system_variable(std::string_view name) {
    return find(system_variables, name) != nullptr;
}

}  // namespace korvane
