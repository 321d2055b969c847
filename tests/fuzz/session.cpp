#include "session.h"

#include <array>
#include <random>
#include <span>
#include <string_view>

namespace korvane::fuzz {
namespace {

using std::string;
using std::string_view;

constexpr string_view numeric_names[] = {"A", "B", "I", "J", "N%", "L&", "Q&&", "S!", "D#"};
constexpr string_view string_names[] = {"A$", "B$", "C$"};
constexpr string_view numbers[] = {"0",           "1",
                                   "2",           "3",
                                   "7",           "10",
                                   ".5",          "1.5",
                                   "-1",          "255",
                                   "256",         "32767",
                                   "32768",       "40000",
                                   "2147483647&", "9223372036854775807&&",
                                   "1E38",        "1E39",
                                   "1D308",       "1E-30",
                                   "&HFF",        "&HFFFFFFFFFFFFFFFF",
                                   "3%",          "2.5!",
                                   "1E300",       "123456789"};
constexpr string_view texts[] = {"\"\"",    "\"A\"",   "\"HELLO\"",        "\"12\"",       "\"a,b\"",
                                 "\"1E5\"", "CHR$(0)", "STRING$(3,\"*\")", "SPACE$(2000)", "\"##.##^^^^\""};
constexpr string_view operators[] = {"+", "+", "-",  "*",  "/",     "\\",   "^",    " MOD ", "=",
                                     "<", ">", "<=", ">=", " AND ", " OR ", "<>",   " XOR ", " EQV ",
                                     "+", "*", "-",  "<>", "=",     "<",    " IMP "};
constexpr string_view numeric_functions[] = {"ABS(", "INT(", "FIX(", "SGN(",  "SQR(",  "SIN(",  "COS(",
                                             "EXP(", "LOG(", "ATN(", "CINT(", "CSNG(", "CDBL(", "FNA("};
constexpr string_view words[] = {
    "MOD",    "DEFINT",  "END",    "FOR",       "NEXT",    "DATA",      "INPUT",  "DIM",     "READ",
    "LET",    "GOTO",    "RUN",    "IF",        "RESTORE", "GOSUB",     "RETURN", "REM",     "STOP",
    "PRINT",  "CLEAR",   "LIST",   "NEW",       "AND",     "OR",        "NOT",    "XOR",     "RANDOMIZE",
    "SWAP",   "PSET",    "PRESET", "LINE",      "ELSE",    "CIRCLE",    "PAINT",  "GET",     "PUT",
    "SCREEN", "CLS",     "COLOR",  "LOCATE",    "OPEN",    "CLOSE",     "AS",     "OUTPUT",  "APPEND",
    "KILL",   "WHILE",   "WEND",   "FILES",     "LOAD",    "SAVE",      "WRITE",  "USING",   "ON",
    "DEF",    "EDIT",    "BITBLT", "TXTWINDOW", "ERROR",   "BREAK",     "RESUME", "AUTO",    "RENUM",
    "CHDIR",  "MKDIR",   "RMDIR",  "TO",        "STEP",    "THEN",      "OPTION", "BASE",    "ERASE",
    "NAME",   "MERGE",   "DELETE", "TRON",      "TROFF",   "WINDOW",    "LSET",   "RSET",    "FIELD",
    "VIEW",   "DRAW",    "CONT",   "CHAIN",     "HELP",    "COMMON",    "TRACE",  "VARINFO", "ARRAYINFO",
    "FIND",   "TIMER",   "DIR",    "TAB(",      "SPC(",    "MID$(",     "INSTR(", "LEFT$(",  "VARPTR(",
    "POINT(", "EOF(",    "LOC(",   "LOF(",      "INPUT$(", "STR$(",     "VAL(",   "HEX$(",   "CVI(",
    "MKD$(",  "FNA(",    "#1",     "#",         "(",       ")",         ",",      ";",       ":",
    "=",      "<",       ">",      "+",         "-",       "*",         "/",      "\\",      "^",
    "@",      "\"",      "'",      "&H",        ".",       "A",         "B$",     "M(1)",    "T$(2)",
    "10",     "20",      "0",      "-1",        "\"X\"",   "FULL",      "OFF",    "NOWAIT",  "ERL",
    "WRAP",   "JUSTIFY", "STEP(",  "BF",        "1E30",    "9999999999"};

class Author {
  public:
    Author(std::uint64_t seed, Taste taste) : random_(seed), taste_(taste) {}

    Session session() {
        Session lines;
        lines.emplace_back("DIM M(5),K%(3,3),T$(4):DEF FNA(X)=X*2+A");
        const std::uint64_t count = 15 + below(40);
        for (std::uint64_t i = 0; i < count; ++i)
            lines.push_back(typed_line());
        lines.emplace_back("RUN");
        return lines;
    }

  private:
    std::uint64_t below(std::uint64_t limit) { return random_() % limit; }
    bool chance(std::uint64_t percent) { return below(100) < percent; }
    string pick(std::span<const string_view> from) { return string(from[below(from.size())]); }
    // In what is compared most jumps lead ahead, so that most programs end by themselves.
    string target() {
        if (taste_ == Taste::anything || chance(5)) return line_number();
        return std::to_string(current_ + 10 * (1 + below(4)));
    }
    string line_number() { return std::to_string(10 * (1 + below(15))); }

    string element() {
        switch (below(4)) {
            case 0:
                return "K%(" + small() + "," + small() + ")";
            case 1:
                return "K%(I,J)";
            default:
                return "M(" + (chance(50) ? small() : number(1)) + ")";
        }
    }
    string small() { return std::to_string(below(5)); }
    string variable() { return chance(75) ? pick(numeric_names) : element(); }
    string text_variable() { return chance(80) ? pick(string_names) : "T$(" + small() + ")"; }

    string number(int depth) {
        if (depth <= 0 || chance(25)) return chance(50) ? variable() : pick(numbers);
        switch (below(12)) {
            case 0:
                return "(" + number(depth - 1) + ")";
            case 1:
                return pick(numeric_functions) + number(depth - 1) + ")";
            case 2:
                return "-" + number(depth - 1);
            case 3:
                return "NOT " + number(depth - 1);
            case 4:
                return "LEN(" + text(depth - 1) + ")";
            case 5:
                return "(" + text(depth - 1) + pick(std::array<string_view, 4>{"=", "<", ">=", "<>"}) +
                       text(depth - 1) + ")";
            case 6:
                return "VAL(" + text(depth - 1) + ")";
            case 7:
                return "INSTR(" + text(depth - 1) + "," + text(depth - 1) + ")";
            default:
                return number(depth - 1) + pick(operators) + number(depth - 1);
        }
    }

    string text(int depth) {
        if (depth <= 0 || chance(30)) return chance(60) ? text_variable() : pick(texts);
        switch (below(6)) {
            case 0:
                return "LEFT$(" + text(depth - 1) + "," + number(1) + ")";
            case 1:
                return "MID$(" + text(depth - 1) + "," + small() + "," + small() + ")";
            case 2:
                return "STR$(" + number(depth - 1) + ")";
            case 3:
                return "CHR$(" + number(1) + ")";
            default:
                return text(depth - 1) + "+" + text(depth - 1);
        }
    }

    string assignment() {
        if (chance(30)) return text_variable() + "=" + text(2);
        return (chance(10) ? "LET " : "") + variable() + "=" + number(3);
    }

    string condition() {
        return chance(70)
                   ? variable() + pick(std::array<string_view, 5>{"<", ">", "=", "<=", "<>"}) + number(1)
                   : number(2);
    }

    string branch() {
        if (chance(40)) return target();
        return statements(1 + below(2), 1);
    }

    string if_statement() {
        string line = "IF " + condition() + " THEN " + branch();
        if (chance(50)) line += " ELSE " + branch();
        return line;
    }

    string for_statement() {
        string line = "FOR " + pick(std::array<string_view, 6>{"I", "J", "N%", "L&", "S!", "A"}) + "=" +
                      (chance(70) ? small() : number(1)) + " TO " + (chance(70) ? small() : number(1));
        if (chance(30)) line += " STEP " + (chance(60) ? string(chance(50) ? "-1" : "2") : number(1));
        return line;
    }

    string flow() {
        switch (below(14)) {
            case 0:
                return "GOTO " + (chance(80) ? target() : number(1));
            case 1:
            case 2:
                return "GOSUB " + target();
            case 3:
                return "RETURN";
            case 4:
            case 5:
                return for_statement();
            case 6:
                return "NEXT";
            case 7:
                return "NEXT " + pick(std::array<string_view, 4>{"I", "J", "N%", "A"});
            case 8: {
                const string name = pick(std::array<string_view, 3>{"I", "N%", "S!"});
                if (taste_ == Taste::anything || chance(10)) return "WHILE " + condition();
                return "WHILE " + name + "<" + small() + ":" + name + "=" + name + "+1";
            }
            case 9:
                return "WEND";
            case 10:
                return "ON " + number(1) + (chance(50) ? " GOTO " : " GOSUB ") + target() + "," + target();
            case 11:
                return "ON ERROR GOTO " + (chance(70) ? target() : "0");
            case 12:
                return "RESUME" + (chance(taste_ == Taste::anything ? 60 : 95) ? string(" NEXT")
                                   : chance(50)                                ? string()
                                                                               : " " + target());
            default:
                return if_statement();
        }
    }

    string rare_statement() {
        switch (below(24)) {
            case 0:
                return "SWAP " + variable() + "," + variable();
            case 1:
                return "SWAP " + text_variable() + "," + text_variable();
            case 2:
                return "READ " + variable() + "," + text_variable();
            case 3:
                return "DATA 1,2.5,\"x:y\", text ,1E9";
            case 4:
                return "RESTORE" + (chance(50) ? " " + line_number() : "");
            case 5:
                return "DEF FNA(" + pick(numeric_names) + ")=" + number(2);
            case 6:
                return "ERASE M:DIM M(" + small() + ")";
            case 7:
                return "CLEAR";
            case 8:
                return "STOP";
            case 9:
                return "END";
            case 10:
                return "ERROR " + number(1);
            case 11:
                return "MID$(" + text_variable() + "," + small() + ")=" + text(1);
            case 12:
                return "DEFINT " + pick(std::array<string_view, 4>{"I", "A-B", "J", "I-J"});
            case 13:
                return chance(50) ? "TRON" : "TROFF";
            case 14:
                return "DIM " + pick(std::array<string_view, 3>{"M", "T$", "K%"}) + "(" + small() + ")";
            case 15:
                return "RANDOMIZE " + small() + ":A=RND";
            case 16:
                return "PRINT USING " + text(1) + ";" + number(1);
            case 17:
                return "ERASE " + pick(std::array<string_view, 3>{"M", "T$", "K%"});
            case 18:
                return "OPTION BASE " + small();
            case 19:
                return "CONT";
            case 20:
                return "REM " + text(1);
            case 21:
                return "PRINT VARPTR(" + variable() + ")-LOMEM";
            case 22:
                return "NEW";
            default:
                return "PRINT ERR;ERL";
        }
    }

    // What draws, asks, waits or goes to the volume.
    string device_statement() {
        switch (below(25)) {
            case 20:
                return "SAVE \"P\"";
            case 21:
                return "LOAD \"P\"";
            case 22:
                return "MERGE \"P\"";
            case 23:
                return "CHAIN MERGE \"P\"," + line_number() + ",ALL,DELETE 10-" + line_number();
            case 24:
                return "DELETE " + line_number();
            case 0:
                return "PSET(" + number(1) + "," + number(1) + ")";
            case 1:
                return "LINE(" + number(1) + "," + number(1) + ")-(" + number(1) + "," + number(1) + ")" +
                       (chance(50) ? ",4,BF" : "");
            case 2:
                return "CIRCLE(" + number(1) + "," + number(1) + ")," + number(1);
            case 3:
                return "PAINT(" + number(1) + "," + number(1) + ")," + small();
            case 4:
                return "DRAW " + text(1);
            case 5:
                return "LOCATE " + number(1) + "," + number(1);
            case 6:
                return "COLOR " + number(1) + "," + number(1);
            case 7:
                return "OPEN \"F\" FOR " + pick(std::array<string_view, 3>{"OUTPUT", "INPUT", "APPEND"}) +
                       " AS " + small();
            case 8:
                return "PRINT #1," + number(1);
            case 9:
                return "INPUT #1,A";
            case 10:
                return "CLOSE " + small();
            case 11:
                return "INPUT A,B$";
            case 12:
                return "VIEW (" + number(1) + "," + number(1) + ")-(" + number(1) + "," + number(1) + ")";
            case 13:
                return "WINDOW (" + number(1) + "," + number(1) + ")-(" + number(1) + "," + number(1) + ")";
            case 14:
                return "TIMER(1)=1:ON TIMER(1) GOSUB " + line_number() + ":TIMER(1) ON";
            case 15:
                return "ON BREAK GOTO " + line_number();
            case 16:
                return "A$=INKEY$";
            case 17:
                return "OPEN \"R\" AS 2 LEN=" + number(1) + ":FIELD 2," + small() + " AS A$," + small() +
                       " AS B$";
            case 18:
                return "LSET A$=" + text(1) + ":PUT 2," + number(1);
            default:
                return "GET 2," + number(1);
        }
    }

    string statement(int depth) {
        const std::uint64_t kind = below(100);
        if (kind < 35) return assignment();
        if (kind < 65 && depth < 2) return flow();
        if (kind < 80) return "PRINT " + (chance(75) ? number(2) : text(2));
        if (kind < 90 || taste_ == Taste::repeatable) return rare_statement();
        return device_statement();
    }

    string statements(std::uint64_t count, int depth) {
        string line = statement(depth);
        while (--count != 0)
            line += ":" + statement(depth);
        return line;
    }

    string nonsense() {
        string line;
        const std::uint64_t count = 1 + below(12);
        for (std::uint64_t i = 0; i < count; ++i)
            line += pick(words) + (chance(70) ? " " : "");
        return line;
    }

    string bytes() {
        string line;
        const std::uint64_t count = below(80);
        for (std::uint64_t i = 0; i < count; ++i)
            line += static_cast<char>(32 + below(223));
        return line;
    }

    string command() {
        switch (below(12)) {
            case 0:
                return "CONT";
            case 1:
                return "LIST NOWAIT";
            case 2:
                return "RENUM " + line_number();
            case 3:
                return "DELETE " + line_number();
            case 4:
                return "BREAK " + line_number();
            case 5:
                return "BREAK CLEAR";
            case 6:
                return line_number();
            case 7:
                return flow();
            default:
                return "RUN";
        }
    }

    string typed_line() {
        const std::uint64_t kind = below(100);
        string line;
        if (kind < 60) {
            current_ = 10 * (1 + below(15));
            line = std::to_string(current_) + " " + statements(1 + below(3), 0);
        } else if (kind < 80) {
            current_ = 0;
            line = command();
        } else if (kind < 90 || taste_ == Taste::repeatable) {
            line = statements(1 + below(2), 0);
        } else if (kind < 98) {
            line = (chance(30) ? line_number() + " " : "") + nonsense();
        } else {
            line = bytes();
        }
        return line.substr(0, 240);
    }

    std::mt19937_64 random_;
    Taste taste_;
    std::uint64_t current_ = 0;  // number of the program line being written, 0 for a direct line
};

// Words that by their nature may do anything to the machine, or that leave the language.
bool is_harmful(const string& line) {
    for (const string_view word : {"POKE", "PEEK", "BLOAD", "BSAVE", "KORVANE", "LOADBMP"})
        if (line.find(word) != string::npos) return true;
    return false;
}

}  // namespace

Session make_session(std::uint64_t seed, Taste taste) {
    Session session = Author(seed, taste).session();
    std::erase_if(session, is_harmful);
    return session;
}

}  // namespace korvane::fuzz
