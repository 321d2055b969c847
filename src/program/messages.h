// Every error message of the language, spelled exactly once.
//
// raise() takes one of these; the table in program/errors.cpp gives some of them their numbers. Two spellings
// of the syntax error are in use, each by its own statements, and programs can tell them apart on the screen:
// statements in general say "Syntax Error",
// while the ON forms, EDIT and the expression parser say "Syntax error".
#pragma once

namespace korvane::message {

inline constexpr char syntax_error[] = "Syntax Error";
inline constexpr char syntax_error_lower[] = "Syntax error";
inline constexpr char illegal_function_call[] = "Illegal function call";
inline constexpr char type_mismatch[] = "Type mismatch";
inline constexpr char expected_comma[] = "Expected ,";
inline constexpr char expected_right_parenthesis[] = "Expected )";
inline constexpr char expected_left_parenthesis[] = "Expected (";
inline constexpr char expected_equals[] = "Expected =";
inline constexpr char expected_dash[] = "Expected -";
inline constexpr char expected_at[] = "Expected @";
inline constexpr char expected_as[] = "Expected AS";
inline constexpr char expected_to[] = "Expected TO";
inline constexpr char expected_variable[] = "Expected variable";
inline constexpr char expected_name[] = "Expected name";
inline constexpr char expected_array[] = "Expected array";
inline constexpr char expected_letter[] = "Expected letter";
inline constexpr char expected_parameter[] = "Expected parameter";
inline constexpr char expected_fn_name[] = "Expected FN name";
inline constexpr char expected_line_number[] = "Expected line number";
inline constexpr char expected_line_range[] = "Expected line range";
inline constexpr char expected_simple_or_full[] = "Expected SIMPLE or FULL";
inline constexpr char expected_s_w_or_p[] = "Expected S, W or P";
inline constexpr char overflow[] = "Overflow";
inline constexpr char division_by_zero[] = "Division by zero";
inline constexpr char out_of_memory[] = "Out of memory";
inline constexpr char out_of_string_space[] = "Out of string space";
inline constexpr char out_of_data[] = "Out of DATA";
inline constexpr char array_not_dimensioned[] = "Array not dimensioned";
inline constexpr char duplicate_definition[] = "Duplicate definition";
inline constexpr char subscript_out_of_range[] = "Subscript out of range";
inline constexpr char wrong_number_of_subscripts[] = "Wrong number of subscripts";
inline constexpr char too_many_dimensions[] = "Too many dimensions";
inline constexpr char illegal_dimension[] = "Illegal dimension";
inline constexpr char too_many_variables[] = "Too many variables";
inline constexpr char too_many_tokens[] = "Too many tokens";
inline constexpr char unterminated_string[] = "Unterminated string";
inline constexpr char undefined_line_number[] = "Undefined line number";
inline constexpr char undefined_line[] = "Undefined line";
inline constexpr char line_number_too_large[] = "Line number too large";
inline constexpr char line_too_long[] = "Line too long";
inline constexpr char program_too_large[] = "Program too large";
inline constexpr char no_error_line[] = "No error line";
inline constexpr char next_without_for[] = "NEXT without FOR";
inline constexpr char return_without_gosub[] = "RETURN without GOSUB";
inline constexpr char wend_without_while[] = "WEND without WHILE";
inline constexpr char resume_without_error[] = "RESUME without error";
inline constexpr char too_many_nested_handlers[] = "Too many nested handlers";
inline constexpr char user_defined_error[] = "User-defined error";
inline constexpr char cant_continue[] = "Can't continue";
inline constexpr char illegal_direct[] = "Illegal direct";
inline constexpr char too_many_breakpoints[] = "Too many breakpoints";
inline constexpr char trace_supports_scalar_variables[] = "TRACE supports scalar variables";
inline constexpr char undefined_user_function[] = "Undefined user function";
inline constexpr char too_many_def_fn[] = "Too many DEF FN";
inline constexpr char too_many_params[] = "Too many params";
inline constexpr char too_many_args[] = "Too many args";
inline constexpr char wrong_number_of_args[] = "Wrong number of args";
inline constexpr char def_fn_too_long[] = "DEF FN too long";
inline constexpr char string_too_long[] = "String too long";
inline constexpr char unknown_landmark[] = "Unknown landmark";
inline constexpr char window_not_defined[] = "Window not defined";
inline constexpr char file_not_found[] = "File not found";
inline constexpr char path_not_found[] = "Path not found";
inline constexpr char path_file_access_error[] = "Path/File access error";
inline constexpr char bad_file_name[] = "Bad file name";
inline constexpr char bad_file_number[] = "Bad file number";
inline constexpr char bad_file_mode[] = "Bad file mode";
inline constexpr char file_already_open[] = "File already open";
inline constexpr char bad_record_length[] = "Bad record length";
inline constexpr char bad_record_number[] = "Bad record number";
inline constexpr char field_overflow[] = "Field overflow";
inline constexpr char input_past_end[] = "Input past end";
inline constexpr char disk_i_o_error[] = "Disk I/O error";
inline constexpr char direct_statement_in_file[] = "Direct statement in file";
inline constexpr char no_program[] = "No program";

}  // namespace korvane::message
