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

// A row with its name and what it takes only.
constexpr BuiltInFunction named(std::string_view name, ArgumentList arguments) {
    BuiltInFunction row{.name = {}, .arguments = arguments, .bare = nullptr};
    std::copy(name.begin(), name.end(), row.name);
    return row;
}

constexpr BuiltInFunction bare(std::string_view name, Value (*function)()) {
    BuiltInFunction row = named(name, ArgumentList(""));
    row.bare = function;
    return row;
}
constexpr BuiltInFunction taking(ArgumentList arguments, std::string_view name,
                                 Value (*function)(const Value&)) {
    BuiltInFunction row = named(name, arguments);
    row.unary = function;
    return row;
}
constexpr BuiltInFunction taking(ArgumentList arguments, std::string_view name,
                                 Value (*function)(const Value*, int)) {
    BuiltInFunction row = named(name, arguments);
    row.several = function;
    return row;
}
constexpr BuiltInFunction call(std::string_view name, Value (*function)(Cursor&)) {
    BuiltInFunction row = named(name, ArgumentList("*"));
    row.call = function;
    return row;
}

constexpr ArgumentList number("n");
constexpr ArgumentList text("t");
constexpr ArgumentList either("a");

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
    taking(number, "ABS", function_abs),
    taking(number, "ATN", function_atn),
    taking(number, "CDBL", function_cdbl),
    taking(number, "CINT", function_cint),
    taking(number, "COS", function_cos),
    taking(number, "CSNG", function_csng),
    taking(number, "EXP", function_exp),
    taking(number, "FIX", function_fix),
    taking(number, "INT", function_int),
    taking(number, "LOG", function_log),
    taking(number, "RND", function_rnd),
    taking(number, "SGN", function_sgn),
    taking(number, "SIN", function_sin),
    taking(number, "SQR", function_sqr),
    taking(number, "TAN", function_tan),
    // strings
    taking(text, "ASC", function_asc),
    taking(number, "CHR$", function_chr),
    taking(text, "CVD", function_cvd),
    taking(text, "CVI", function_cvi),
    taking(text, "CVS", function_cvs),
    taking(number, "HEX$", function_hex),
    taking(ArgumentList("?ntt"), "INSTR", function_instr),
    taking(text, "LCASE$", function_lcase),
    taking(ArgumentList("tn"), "LEFT$", function_left),
    taking(text, "LEN", function_len),
    taking(ArgumentList("tn?n"), "MID$", function_mid),
    taking(number, "MKD$", function_mkd),
    taking(number, "MKI$", function_mki),
    taking(number, "MKS$", function_mks),
    taking(number, "OCT$", function_oct),
    taking(ArgumentList("tn"), "RIGHT$", function_right),
    taking(number, "SPACE$", function_space),
    taking(number, "STR$", function_str),
    taking(ArgumentList("na"), "STRING$", function_string),
    taking(text, "UCASE$", function_ucase),
    taking(text, "VAL", function_val),
    // screen, keyboard and files
    call("EOF", function_eof),
    call("INPUT$", function_input_string),
    call("LOC", function_loc),
    call("LOF", function_lof),
    taking(ArgumentList("nn"), "POINT", function_point),
    taking(either, "POS", function_pos),
    taking(number, "SPC", function_spc),
    taking(number, "TAB", function_tab),
    // system
    taking(number, "COMMANDLINEARG$", function_commandlinearg),
    taking(either, "FRE", function_fre),
    taking(number, "PEEK", function_peek),
    taking(number, "PEEK16", function_peek16),
    taking(number, "PEEK32", function_peek32),
    taking(number, "PEEK64", function_peek64),
    taking(number, "TIMER", function_timer),
    call("VARPTR", function_varptr),
    taking(text, "KORVANEADR", function_korvaneadr),
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

bool is_system_variable(const char* name) {
    // Most names begin with other letters.
    constexpr std::uint32_t first_letters = [] {
        std::uint32_t letters = 0;
        for (const BuiltInFunction& variable : system_variables)
            letters |= 1U << (variable.name[0] & 31);
        return letters;
    }();
    return (first_letters >> (name[0] & 31) & 1) != 0 && find(system_variables, name) != nullptr;
}

}  // namespace korvane
