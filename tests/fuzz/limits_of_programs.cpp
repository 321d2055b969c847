#include <algorithm>

#include "limit_table.h"
#include "player.h"
#include "program/arenas.h"
#include "program/program_store.h"

namespace korvane::fuzz {

namespace {

using std::string;

constexpr std::string_view illegal = "Illegal function call";
constexpr std::string_view no_line = "Undefined line number";
constexpr std::string_view no_memory = "Out of memory";

Volume& volume() {
    return machine->firmware().volume();
}

// ---- What must come of it

template <std::int64_t limit>
string shows_at_most(std::int64_t n) {
    return ' ' + std::to_string(std::min(n, limit));
}

// The last of so many characters is there.
template <std::int64_t limit>
string shows_seven(std::int64_t n) {
    return n <= limit ? " 7" : "! 7";
}

// ---- What is typed

// All but the last of so many statements, `per_line` on a line; then the last one, whatever it is.
string many(std::int64_t count, int per_line, string (*statement)(std::int64_t), const string& last) {
    string typed;
    for (std::int64_t i = 1; i < count; ++i) {
        typed += statement(i);
        typed += i % per_line == 0 || i == count - 1 ? '\n' : ':';
    }
    return typed + last;
}

string assignment(std::int64_t i) {
    return 'V' + std::to_string(i) + "=1";
}

// So many variables are there, the last of them made by the statement that is typed.
void make_variables(std::int64_t n) {
    const string typed = many(n, 24, assignment, "");
    for (std::size_t at = 0; at < typed.size();) {
        const std::size_t end = typed.find('\n', at);
        type(std::string_view(typed).substr(at, end - at));
        at = end + 1;
    }
}

void make_variables_with_file(std::int64_t n) {
    type("OPEN \"T.TXT\" FOR INPUT AS 1");
    make_variables(n);
}

void make_functions(std::int64_t n) {
    for (std::int64_t i = 1; i < n; ++i)
        type("DEF FN" + string(1, static_cast<char>('A' + i % 26)) + std::to_string(i) + "=1");
}

// On all lines but one.
void set_breakpoints(std::int64_t n) {
    for (std::int64_t i = 1; i <= n; ++i)
        type(std::to_string(i) + " REM");
    for (std::int64_t i = 1; i < n; ++i)
        type("BREAK " + std::to_string(i));
}

void make_common(std::int64_t n) {
    for (std::int64_t i = 1; i < n; ++i)
        type("COMMON V" + std::to_string(i));
}

void lay_program(std::int64_t lines, std::int64_t text) {
    string file;
    file.reserve(static_cast<std::size_t>(lines * (text + 8)));
    for (std::int64_t i = 1; i <= lines; ++i) {
        file += std::to_string(i) + ' ';
        file.append(static_cast<std::size_t>(text), '\'');
        file += "\r\n";
    }
    volume().put_file("F.BAS", file);
}

string line_of(std::int64_t n) {
    return string(static_cast<std::size_t>(n - 6), ' ') + "10 A=7\r\n";
}

}  // namespace

std::vector<Limit> limits_of_programs() {
    return {
        // ---- Lines and programs
        {"a line's number",
         4294967294,
         {{"{n} REM", "Line number too large"},
          {"LIST {n}", "Line number too large"},
          {"LIST 1-{n}", "Line number too large"},
          {"EDIT {n}", "Line number too large"},
          {"FIND \"A\",1-{n}", "Line number too large"},
          {"{n} REM\nDELETE {n}", illegal},
          {"{n} REM\nBREAK {n}", "Line number too large"},
          {"{n} REM\nBREAK DELETE {n}", "Line number too large"},
          {"TRON {n}", illegal},
          {"AUTO {n}", illegal},
          {"NEW\n10 REM\nRENUM {n}", illegal},
          {"NEW\n10 REM\n{n} REM\nGOTO {n}", no_line},
          {"NEW\n10 REM\n{n} RETURN\nGOSUB {n}", no_line},
          {"NEW\n10 REM\n{n} REM\nON 1 GOTO {n}", no_line},
          {"NEW\n10 REM\n{n} DATA 1\nRESTORE {n}", no_line},
          {"NEW\n10 ON ERROR GOTO 30\n20 ERROR 1\n30 RESUME {n}\n{n} END\nRUN", no_line,
           "User-defined error"},
          {"LOAD \"F\"", "Line number too large", "", false, "{n} REM\r\n"},
          {"MERGE \"F.BAS\"", "Line number too large", "", false, "{n} REM\r\n"},
          {"CHAIN MERGE \"F.BAS\"", "Line number too large", "", false, "{n} END\r\n5 END\r\n"},
          {"CHAIN \"F.BAS\",{n}", "Undefined line", "", false, "4294967293 REM\r\n4294967294 REM\r\n"}}},
        {"the last line's number after RENUM", 10, {{"NEW\n10 REM\n20 REM\nRENUM 4294967284,,{n}", illegal}}},
        {"RENUM's increment", 1, {{"10 REM\nRENUM 10,,{n}", illegal, "", true}}},
        {"AUTO's increment", 1, {{"AUTO 10,{n}", illegal, "", true}}},
        {"characters of a line's text",
         244,
         {{"10 {*'}", "Line too long"},
          {"LOAD \"F\"", "Line too long", "", false, "10 {*'}\r\n"},
          {"MERGE \"F.BAS\"", "Line too long", "", false, "10 {*'}\r\n"},
          {"CHAIN \"F.BAS\"", "Line too long", "", false, "10 {*'}\r\n"},
          {"NEW\n10 GOTO 10:{-10*'}\nRENUM 1000", "Line too long"}}},
        {"characters of a line in a file",
         299,
         {{"LOAD \"F\"", "", "", false, "", [](std::int64_t n) { volume().put_file("F.BAS", line_of(n)); },
           nullptr, nullptr, [](std::int64_t n) { return line_text(0) == (n <= 299 ? "A=7" : "A="); }}}},
        {"lines of a program",
         65536,
         {{"LOAD \"F\"", "Program too large", "", false, "", [](std::int64_t n) { lay_program(n, 1); }},
          {"NEW\nMERGE \"F.BAS\"", "Program too large", "", false, "",
           [](std::int64_t n) { lay_program(n, 1); }},
          {"LOAD \"F\"\n99999 END", "Program too large", "", false, "",
           [](std::int64_t n) { lay_program(n - 1, 1); }}}},
        // 65,536 lines of 244 characters fill the program arena to its last byte.
        {"bytes of a program's text",
         244,
         {{"LOAD \"F\"", "Line too long", "", false, "", [](std::int64_t n) { lay_program(65536, n); },
           nullptr, nullptr,
           [](std::int64_t n) { return (n == 244) == (program.write == arenas.CODEEND); }}}},
        {"tokens of a line",
         127,
         {{"{*:}", "Too many tokens"},
          {"NEW\n10 {*:}\nRUN", "Too many tokens"},
          {"DEF FNA=-{-4*-}", "Too many tokens"}}},
        {"letters of a name that count",
         37,
         {{"{-1*A}B=1:{-1*A}C=2:PRINT {-1*A}B", "", "", false, "", nullptr, nullptr,
           [](std::int64_t n) { return string(n <= 37 ? " 1" : " 2"); }},
          {"DIM {-1*A}B(1):DIM {-1*A}C(1)", "", "", false, "", nullptr,
           [](std::int64_t n) { return string(n <= 37 ? "" : "Duplicate definition"); }}}},
        {"characters of a typed line",
         255,
         {{"PRINT{-6* }7", "", "", false, "", nullptr, nullptr, shows_seven<255>}}},
        {"characters of a reply",
         255,
         {{"INPUT A$\n{*X}\nPRINT LEN(A$)", "", "", false, "", nullptr, nullptr, shows_at_most<255>},
          {"LINE INPUT A$\n{*X}\nPRINT LEN(A$)", "", "", false, "", nullptr, nullptr, shows_at_most<255>}}},
        {"characters of a prompt",
         127,
         {{"LINE INPUT \"{*P}\";A$\nZ", "", "", false, "", nullptr, nullptr,
           [](std::int64_t n) {
               return string(static_cast<std::size_t>(std::min<std::int64_t>(n, 127)) - 120, 'P') + 'Z';
           }},
          {"INPUT \"{*P}\",A$\nZ", "", "", false, "", nullptr, nullptr,
           [](std::int64_t n) {
               return string(static_cast<std::size_t>(std::min<std::int64_t>(n, 127)) - 120, 'P') + 'Z';
           }}}},
        {"variables of an INPUT", 16, {{"INPUT {,A%}", "Syntax Error"}}},

        // ---- Levels and lists of the run loop
        {"GOSUB levels",
         128,
         {{"NEW\n10 IF N<{n} THEN N=N+1:GOSUB 10\nRUN", no_memory},
          {"NEW\n10 IF N<{n} THEN N=N+1:ON 1 GOSUB 10\nRUN", no_memory},
          // The last level is the timer's.
          {"NEW\n10 IF N<{n}-1 THEN N=N+1:GOSUB 10\n20 ON TIMER(0) GOSUB 40:TIMER(0)=1:TIMER(0) ON\n"
           "30 GOTO 30\n40 PRINT \"T\":END\nRUN",
           no_memory, "", false, "", [](std::int64_t) { machine->firmware().be_patient_for(1'000'000); },
           nullptr, [](std::int64_t n) { return string(n <= 128 ? "T" : "!T"); }}}},
        {"FOR levels", 64, {{"NEW\n10 IF N<{n} THEN N=N+1:FOR I=1 TO 9:GOTO  10\nRUN", no_memory}}},
        {"WHILE levels", 64, {{"NEW\n10 IF N<{n} THEN N=N+1:WHILE 1:GOTO 10\nRUN", no_memory}}},
        {"handlers in handlers",
         8,
         {},
         "one error and one break at a time can be handled, so two are the most"},
        {"breakpoints", 64, {{"BREAK {n}", "Too many breakpoints", "", false, "", set_breakpoints}}},
        {"watched variables", 32, {{"TRACE {,A%}", "Too many variables"}}},
        {"a timer's number",
         7,
         {{"TIMER({n})=1", illegal},
          {"TIMER({n}) OFF", illegal},
          {"PRINT TIMER({n})", illegal},
          {"NEW\n10 ON TIMER({n}) GOSUB 10\nRUN", illegal}}},
        {"a timer's number, least",
         0,
         {{"TIMER({n})=1", illegal, "", true}, {"TIMER({n}) OFF", illegal, "", true}}},
        {"a timer's interval", 1, {{"TIMER(0)={n}", illegal, "", true}}},
        {"an error's number", 255, {{"ERROR {n}", illegal, "User-defined error"}}},
        {"an error's number, least", 1, {{"ERROR {n}", illegal, "User-defined error", true}}},
        {"parameters of a function", 8, {{"DEF FNA({,A%})=1", "Too many params"}}},
        {"arguments of a call",
         8,
         {{"DEF FNA({,A%})=1\nDEF FNA(A,B,C,D,E,F,G,H)=1\nPRINT FNA({,%})", "", "", false, "", nullptr,
           [](std::int64_t n) {
               return string(n < 8 ? "Wrong number of args" : n == 8 ? "" : "Too many args");
           }}}},
        {"functions", 64, {{"DEF FNZ=1", "Too many DEF FN", "", false, "", make_functions}}},

        // ---- Variables and values
        {"variables",
         4096,
         {{"Z=1", "Too many variables", "", false, "", make_variables},
          {"LET Z$=\"\"", "Too many variables", "", false, "", make_variables},
          {"DIM Z(1)", "Too many variables", "", false, "", make_variables},
          {"FOR Z=1 TO 2", "Too many variables", "", false, "", make_variables},
          // Before anything is asked.
          {"INPUT Z", "Too many variables", "", false, "", make_variables, nullptr,
           [](std::int64_t n) { return string(n <= 4096 ? "?" : "!?"); }},
          {"LINE INPUT Z$", "Too many variables", "", false, "", make_variables},
          {"INPUT V1,Z\n6,7\nPRINT Z", "", "", false, "", make_variables, nullptr,
           [](std::int64_t n) { return string(n <= 4096 ? " 7" : " 0"); }},
          {"INPUT #1,Z", "Too many variables", "", false, "", make_variables_with_file},
          {"LINE INPUT #1,Z$", "Too many variables", "", false, "", make_variables_with_file},
          {"SWAP V1,Z", "Too many variables", "", false, "", make_variables},
          {"X=VARPTR(Z)", "Too many variables", "", false, "",
           [](std::int64_t n) {
               type("X=1");
               make_variables(n - 1);
           }},
          {"READ Z", "Too many variables", "", false, "",
           [](std::int64_t n) {
               type("10 DATA 1");
               make_variables(n);
           }},
          {"PRINT FNA(1)", "Too many variables", "", false, "",
           [](std::int64_t n) {
               type("DEF FNA(Z)=Z");
               make_variables(n);
           }},
          {"FIELD 1,2 AS Z$", "Too many variables", "", false, "",
           [](std::int64_t n) {
               type("OPEN \"R\" AS 1");
               make_variables(n);
           }}}},
        {"dimensions", 4, {{"DIM A({,1})", "Too many dimensions"}}},
        {"an array's upper bound, least",
         0,
         {{"DIM A({n})", "Illegal dimension", "", true}, {"DIM A(3,{n})", "Illegal dimension", "", true}}},
        {"an array's upper bound from base 1, least",
         1,
         {{"OPTION BASE 1\nDIM A({n})", "Illegal dimension", "", true}}},
        {"a subscript",
         5,
         {{"DIM A(5)\nA({n})=1", "Subscript out of range"},
          {"DIM A(5)\nPRINT A({n})", "Subscript out of range"},
          {"DIM A(9,5)\nSWAP A(1,{n}),A(0,0)", "Subscript out of range"},
          {"DIM A(5)\nX=VARPTR(A({n}))", "Subscript out of range"}}},
        {"a subscript, least",
         0,
         {{"DIM A(5)\nA({n})=1", "Subscript out of range", "", true},
          {"DIM A(5)\nPRINT A({n})", "Subscript out of range", "", true}}},
        {"a subscript from base 1, least",
         1,
         {{"OPTION BASE 1\nDIM A(5)\nA({n})=1", "Subscript out of range", "", true}}},
        {"the array base", 1, {{"OPTION BASE {n}", illegal}}},
        {"bytes of arrays", 0, {{"DIM A%((FRE(0)-16)\\2-1+{n})", no_memory}}},
        {"bytes of a text",
         0,
         {{"PRINT LEN(SPACE$(FRE(0)+{n}))", "Out of string space"},
          {"A$=SPACE$(FRE(0)\\2+{n})", "Out of string space"},
          {"A$=\"x\"\nB$=SPACE$(FRE(0)\\3+1)\nPRINT LEN(STRING$(FRE(0)+{n},65))", "Out of string space"}}},
        {"names of COMMON",
         512,
         {{"COMMON Z", "Too many variables", "", false, "", make_common},
          {"COMMON Z()", "Too many variables", "", false, "", make_common}}},
        {"an INTEGER",
         32767,
         {{"A%={n}", "Overflow"},
          {"FOR A%={n} TO 1", "Overflow"},
          {"READ A%", "Overflow", "", false, "",
           [](std::int64_t n) { type("10 DATA " + std::to_string(n)); }},
          {"PRINT LEN(MKI$({n}))", "Overflow"},
          {"X={n}%", "Overflow"}}},
        {"an INTEGER, least",
         -32768,
         {{"A%={n}", "Overflow", "", true}, {"PRINT LEN(MKI$({n}))", "Overflow", "", true}}},
        {"a LONG", 2147483647, {{"A&={n}", "Overflow"}, {"X={n}&", "Overflow"}}},
        {"a LONG, least", -2147483648, {{"A&={n}", "Overflow", "", true}}},
        {"an INT64, beyond its largest but one", 1, {{"A&&=9223372036854775806&&+{n}", "Overflow"}}},
        {"hexadecimal digits of a number", 16, {{"A&&=&H{*F}", "Overflow"}}},
        {"bits of an octal number", 21, {{"A&&=&O1{*7}", "Overflow"}}},
        {"an exponent that is multiplied out", 65536, {{"PRINT (-1)^{n}", illegal}}},
        {"a character's code",
         255,
         {{"PRINT LEN(CHR$({n}))", illegal}, {"PRINT LEN(STRING$(1,{n}))", illegal}}},
        {"a character's code, least",
         0,
         {{"PRINT LEN(CHR$({n}))", illegal, "", true}, {"PRINT LEN(STRING$(1,{n}))", illegal, "", true}}},
        {"a count of characters, least",
         0,
         {{"PRINT STRING$({n},65)", illegal, "", true},
          {"PRINT SPACE$({n})", illegal, "", true},
          {"PRINT LEFT$(\"abc\",{n})", illegal, "", true},
          {"PRINT RIGHT$(\"abc\",{n})", illegal, "", true},
          {"PRINT MID$(\"abc\",1,{n})", illegal, "", true}}},
        {"a place in a text, least",
         1,
         {{"PRINT MID$(\"abc\",{n})", illegal, "", true},
          {"PRINT INSTR({n},\"abc\",\"b\")", illegal, "", true},
          {"A$=\"abc\"\nMID$(A$,{n})=\"x\"", illegal, "", true}}},
        {"a place for the MID$ statement", 3, {{"A$=\"abc\"\nMID$(A$,{n})=\"x\"", illegal}}},
        {"characters for ASC", 1, {{"PRINT ASC(STRING$({n},65))", illegal, "", true}}},
        {"characters for CVI", 2, {{"PRINT CVI(STRING$({n},65))", illegal, "", true}}},
        {"characters for CVS", 4, {{"PRINT CVS(STRING$({n},65))", illegal, "", true}}},
        {"characters for CVD", 8, {{"PRINT CVD(STRING$({n},65))", illegal, "", true}}},
        {"SQR's argument, least", 0, {{"PRINT SQR({n})", illegal, "", true}}},
        {"LOG's argument, least", 1, {{"PRINT LOG({n})", illegal, "", true}}},
        {"what POKE writes", 255, {{"A&&=0\nPOKE VARPTR(A&&),{n}", illegal}}},
        {"what POKE16 writes", 65535, {{"A&&=0\nPOKE16 VARPTR(A&&),{n}", illegal}}},
        {"what POKE32 writes", 4294967295, {{"A&&=0\nPOKE32 VARPTR(A&&),{n}", illegal}}},
        {"what POKE writes, least",
         0,
         {{"A&&=0\nPOKE VARPTR(A&&),{n}", illegal, "", true},
          {"A&&=0\nPOKE16 VARPTR(A&&),{n}", illegal, "", true},
          {"A&&=0\nPOKE32 VARPTR(A&&),{n}", illegal, "", true}}},
        {"a listing's mode", 1, {{"VARINFO {n}", illegal}, {"ARRAYINFO {n}", illegal}}},
    };
}

}  // namespace korvane::fuzz
