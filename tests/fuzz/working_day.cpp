#include "working_day.h"

#include <utility>

namespace korvane::fuzz {

namespace {

using std::string;
using std::string_view;

uefi::InputKey key_of(char c) {
    return {0, static_cast<char16_t>(static_cast<unsigned char>(c))};
}

Action typed(string_view line, bool runs = false) {
    Action action;
    for (const char c : line)
        action.keys.push_back(key_of(c));
    action.keys.push_back(key_of('\r'));
    action.runs = runs;
    return action;
}

}  // namespace

std::string WorkingDay::pick(std::initializer_list<string_view> choices) {
    return string(choices.begin()[below(static_cast<std::uint32_t>(choices.size()))]);
}

// With mistakes, which are put right at once.
void WorkingDay::type_line(string_view line, bool runs) {
    for (const char c : line) {
        if (below(50) == 0) {
            pending_.push_back(key_of(static_cast<char>('a' + below(26))));
            pending_.push_back(key_of('\b'));
        }
        pending_.push_back(key_of(c));
    }
    pending_.push_back(key_of('\r'));
    actions_.push_back({std::exchange(pending_, {}), runs});
}

void WorkingDay::press(std::uint16_t scan_code, std::uint32_t times) {
    for (std::uint32_t i = 0; i < times; ++i)
        pending_.push_back({scan_code, 0});
}

std::string WorkingDay::expression() {
    switch (below(8)) {
        case 0:
            return std::to_string(below(1000));
        case 1:
            return variable();
        case 2:
            return variable() + "+" + std::to_string(below(9));
        case 3:
            return "(" + expression() + ")*" + variable();
        case 4:
            return "INT(RND*100)";
        case 5:
            return "SIN(" + variable() + ")";
        case 6:
            return "LEN(" + text() + ")";
        default:
            return expression() + "-" + expression();
    }
}

std::string WorkingDay::statement() {
    switch (below(20)) {
        case 0:
        case 1:
        case 2:
            return variable() + "=" + expression();
        case 3:
            return "A$=" + text() + "+" + text();
        case 4:
        case 5:
            return "PRINT " + expression() + ";" + text();
        case 6:
            return "IF " + expression() + ">" + expression() + " THEN " + statement();
        case 7:
            return "GOTO " + number();
        case 8:
            return "GOSUB " + number();
        case 9:
            return "RETURN";
        case 10:
            return "FOR I=1 TO " + std::to_string(below(20)) + ":" + statement() + ":NEXT I";
        case 11:
            return "PSET (" + expression() + "," + expression() + ")";
        case 12:
            return "LINE (" + expression() + "," + expression() + ")-(300,200)," + std::to_string(below(16));
        case 13:
            return "PRINT USING \"###.##\";" + expression();
        case 14:
            return "DATA 1,two,3";
        case 15:
            return "READ A$";
        case 16:
            return "ON ERROR GOTO " + number();
        case 17:
            return "RESUME NEXT";
        case 18:
            return "DIM X(" + std::to_string(below(50)) + "):X(3)=" + expression() + ":ERASE X";
        default:
            return "REM " + text();
    }
}

void WorkingDay::write_program() {
    for (std::uint32_t i = 5 + below(15); i != 0; --i)
        type_line(number() + " " + statement() + (below(3) == 0 ? ":" + statement() : ""));
}

void WorkingDay::edit_lines() {
    switch (below(5)) {
        case 0:
            type_line("EDIT " + number());
            press(uefi::scan_right, below(20));
            if (below(2) == 0) press(uefi::scan_insert);
            type_line(pick({"X", "1", ":PRINT 5", "\"", ")"}));
            break;
        case 1:
            press(uefi::scan_up, below(6));
            press(uefi::scan_right, below(30));
            press(uefi::scan_delete, below(4));
            press(uefi::scan_end, below(2));
            type_line(pick({"", ":END", "+1"}));
            break;
        case 2:
            type_line("AUTO " + number());
            type_line(statement());
            type_line(statement());
            press(uefi::scan_escape);
            actions_.push_back({std::exchange(pending_, {}), false});
            break;
        case 3:
            type_line(pick({"RENUM", "RENUM 100", "RENUM 10,,5"}));
            break;
        default:
            type_line("DELETE " + number() + "-" + number());
    }
}

void WorkingDay::run_program() {
    if (below(4) == 0)
        type_line(pick({"TRON", "TROFF", "BREAK " + number(), "BREAK CLEAR", "TRACE I,A$", "TRACE OFF"}));
    type_line("RUN", true);
    if (below(2) == 0) type_line("CONT", true);
    if (below(3) == 0) type_line("GOTO " + number(), true);
    if (below(5) == 0) type_line(pick({"VARINFO", "ARRAYINFO", "PRINT ERR;ERL"}));
}

void WorkingDay::keep_files() {
    const string name = file();
    type_line("SAVE \"" + name + "\"");
    switch (below(6)) {
        case 0:
            type_line("LOAD \"" + name + "\"");
            break;
        case 1:
            type_line("MERGE \"" + file() + "\"");
            break;
        case 2:
            type_line("NAME \"" + name + "\" AS \"OTHER.BAS\"");
            type_line("KILL \"OTHER.BAS\"");
            break;
        case 3:
            type_line(pick({"FILES", "DIR \"*.BAS\",W", "FILES ,S"}));
            break;
        case 4:
            type_line("CHDIR \"SUB\":FILES:CHDIR \"..\"");
            break;
        default:
            type_line("CHAIN \"" + file() + "\",,ALL", true);
    }
}

void WorkingDay::write_data() {
    if (below(2) == 0) {
        type_line("OPEN \"DATA.TXT\" FOR " + pick({"OUTPUT", "APPEND"}) + " AS 1");
        type_line(
            "FOR I=1 TO " + std::to_string(below(60)) + ":PRINT #1,I;SQR(I):WRITE #1,\"x\",I:NEXT:CLOSE 1",
            true);
        type_line("OPEN \"DATA.TXT\" FOR INPUT AS 1:WHILE NOT EOF(1):LINE INPUT #1,L$:WEND:CLOSE 1:PRINT L$",
                  true);
    } else {
        type_line("OPEN \"RECORDS\" AS 2 LEN=32:FIELD 2,20 AS N$,12 AS P$");
        type_line("LSET N$=" + text() + ":RSET P$=\"12\":PUT 2," + std::to_string(1 + below(40)));
        type_line("GET 2," + std::to_string(1 + below(40)) + ":PRINT N$;P$;LOF(2)");
        if (below(4) != 0) type_line("CLOSE 2");  // else NEW or the end of the day closes it
    }
}

void WorkingDay::draw() {
    if (below(3) == 0) type_line(pick({"SCREEN 800,600", "SCREEN 640,480", "SCREEN 1024,768"}));
    type_line(
        pick({"CLS", "COLOR 14,1:CLS", "VIEW (10,10)-(200,150),2", "WINDOW (0,0)-(1,1)", "VIEW:WINDOW"}));
    type_line("FOR I=0 TO 90 STEP 9:CIRCLE (150,100),I,I/6:NEXT", true);
    type_line("LINE (10,10)-(250,180)," + std::to_string(below(16)) + pick({"", ",B", ",BF"}) +
              ":PAINT (100,100)," + std::to_string(below(16)));
    type_line(pick({"DRAW \"U20R20D20L20\"", "DRAW \"TA30NU50R9\"",
                    "DIM P&(500):GET (0,0)-(19,19),P&:PUT (30,30),P&:ERASE P&", "TXTWINDOW 5,5,30,12",
                    "TXTWINDOW", "TXTWINDOW @1,40,2,60,9:PRINT @1,\"THERE\"",
                    "PRINT WRAP 30,\"words that are wrapped at thirty columns\""}));
}

void WorkingDay::calculate() {
    for (std::uint32_t i = 1 + below(4); i != 0; --i)
        type_line(pick({"PRINT ", "?", "A=", "PRINT HEX$(", "X="}) + expression());
    if (below(3) == 0) type_line("FOR I=1 TO 500:T=T+I*I:NEXT:PRINT T", true);
    if (below(4) == 0)
        type_line("A$=\"\":FOR I=1 TO 200:A$=A$+CHR$(65+I MOD 26):NEXT:PRINT LEN(A$);FRE(0)", true);
}

void WorkingDay::explore() {
    type_line("KORVANE");
    for (std::uint32_t i = 1 + below(4); i != 0; --i)
        type_line(pick({"L", "MAP", "I", "M VARTABLE 40", "M", "W LOMEM", "R CODEBASE", "V FREEBOT", "DISKS",
                        "VOLUMES", "DIRFS 0", "CAT 0 DATA.TXT", "HEXFILE 0 ONE.BAS", "BOOT", "OS",
                        "H LOMEM FREEBOT 41 42", "?"}));
    // Each page of a long list waits for a key; an empty line does nothing.
    for (int page = 0; page < 40; ++page)
        actions_.push_back(typed(""));
    type_line("X");
}

void WorkingDay::look_around() {
    type_line(pick({"LIST NOWAIT", "LIST 100-200", "HELP PRINT", "FIND \"PRINT\"", "PRINT FRE(0)",
                    "PRINT TIME$", "LIST", "HELP"}));
    press(uefi::scan_escape);  // a list may wait for a key
    actions_.push_back({std::exchange(pending_, {}), false});
}

void WorkingDay::clear_up() {
    // On to the end of whatever waits for keys, and to an empty row at the bottom of the screen: elsewhere
    // old text would become part of what is typed.
    for (int turn = 0; turn < 2; ++turn) {
        press(uefi::scan_escape);
        press(uefi::scan_down, 80);
        press(uefi::scan_escape);
        actions_.push_back({std::exchange(pending_, {}), false});
    }
    for (const char* line :
         {"X", "TROFF", "NEW", "SCREEN 640,480", "COLOR 15,0:TXTWINDOW", "CHDIR \"\\\"", "KILL \"DATA.TXT\"",
          "KILL \"RECORDS\"", "KILL \"OTHER.BAS\"", "KILL \"ONE.BAS\"", "KILL \"TWO.BAS\"",
          "KILL \"SUB\\THREE.BAS\"", "KILL \"M.BIN\"", "CLS"})
        actions_.push_back(typed(line));
}

std::vector<Action> WorkingDay::actions() {
    using Part = void (WorkingDay::*)();
    constexpr Part parts[] = {&WorkingDay::write_program, &WorkingDay::edit_lines, &WorkingDay::run_program,
                              &WorkingDay::keep_files,    &WorkingDay::write_data, &WorkingDay::draw,
                              &WorkingDay::calculate,     &WorkingDay::explore,    &WorkingDay::look_around,
                              &WorkingDay::run_program,   &WorkingDay::edit_lines};
    actions_.clear();
    write_program();
    for (std::uint32_t i = 30 + below(30); i != 0; --i)
        (this->*parts[below(std::size(parts))])();
    clear_up();
    return std::exchange(actions_, {});
}

std::vector<Action> WorkingDay::yardstick() {
    std::vector<Action> actions;
    for (const char* line : {"NEW",
                             "10 FOR I=1 TO 300:A(I MOD 9)=A(I MOD 9)+I:A$=STR$(I):NEXT",
                             "5 DIM A(9)",
                             "20 PRINT A(3);A$",
                             "RUN",
                             "LIST NOWAIT",
                             "RENUM",
                             "SAVE \"Y.BAS\"",
                             "LOAD \"Y\"",
                             "RUN",
                             "FILES \"Y*\"",
                             "OPEN \"Y.TXT\" FOR OUTPUT AS 1:FOR I=1 TO 99:PRINT #1,I:NEXT:CLOSE 1",
                             "OPEN \"Y.TXT\" FOR INPUT AS 1:WHILE NOT EOF(1):INPUT #1,X:WEND:CLOSE 1:PRINT X",
                             "DIM B%(99):BSAVE \"Y.BIN\",VARPTR(B%(0)),200:BLOAD \"Y.BIN\",VARPTR(B%(0))",
                             "CREATEEFI \"Y\"",
                             "SCREEN 1024,768",
                             "SCREEN 800,600",
                             "SCREEN 640,480",
                             "CIRCLE (99,99),50:PAINT (99,99),3",
                             "KORVANE",
                             "M LOMEM 40",
                             "MAP",
                             "",
                             "",
                             "VOLUMES",
                             "OS",
                             "X",
                             "KILL \"Y.EFI\"",
                             "KILL \"Y.TXT\"",
                             "KILL \"Y.BIN\"",
                             "KILL \"Y.BAS\"",
                             "HELP GOTO",
                             "NEW",
                             "CLS"})
        actions.push_back(typed(line, true));
    return actions;
}

}  // namespace korvane::fuzz
