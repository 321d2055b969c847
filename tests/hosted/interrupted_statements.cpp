#include "interrupted_statements.h"

namespace korvane::test {
namespace {

// A piece of a statement: text as it is, or a place.
struct Piece {
    std::string text;
    bool is_place;
    bool later_item;
};

std::vector<Piece> pieces_of(std::string_view text) {
    std::vector<Piece> pieces;
    while (!text.empty()) {
        const bool is_place = text.front() == '{';
        std::string_view piece = text.substr(0, text.find(is_place ? '}' : '{'));
        text.remove_prefix(piece.size() + (is_place ? 1 : 0));
        if (is_place) piece.remove_prefix(1);
        const bool later_item = is_place && piece.front() == '+';
        if (later_item) piece.remove_prefix(1);
        pieces.push_back({std::string(piece), is_place, later_item});
    }
    return pieces;
}

}  // namespace

std::vector<Interruption> interruptions_of(const InterruptedStatement& statement) {
    const std::vector<Piece> pieces = pieces_of(statement.text);
    std::vector<Interruption> all;
    for (const Piece& place : pieces) {
        if (!place.is_place) continue;
        const bool is_text = place.text.front() == '"';
        Interruption one;
        one.later_item = place.later_item;
        one.answer = is_text ? place.text.substr(1, place.text.size() - 2) : place.text;
        const std::string question = "INPUT$(" + std::to_string(one.answer.size()) + ")";
        for (const Piece& piece : pieces) {
            const bool asks = &piece == &place;
            one.statement += !asks ? piece.text : is_text ? question : "VAL(" + question + ")";
        }
        all.push_back(std::move(one));
    }
    return all;
}

const std::vector<std::string_view>& words_without_expressions() {
    static const std::vector<std::string_view> words = {
        "END",    "STOP",   "CLEAR",  "NEW",    "NEXT",   "WEND",   "ELSE", "RETURN",  "TRON",   "TROFF",
        "TRACE",  "CONT",   "DELETE", "EDIT",   "HELP",   "DATA",   "DEF",  "ERASE",   "OPTION", "DEFINT",
        "DEFLNG", "DEFI64", "DEFSNG", "DEFDBL", "DEFSTR", "COMMON", "REM",  "KORVANE",
    };
    return words;
}

const std::vector<InterruptedStatement>& interrupted_statements() {
    static const std::vector<InterruptedStatement> statements = {
        // the program's course
        {.text = R"(FOR I={1} TO {3} STEP {2}:NEXT)"},
        {.text = R"(FOR I={5} TO {3}:NEXT)"},
        {.text = R"(WHILE {0}:WEND)"},
        {.text = R"(WHILE B<5+{1}:B=B+9:WEND)"},
        {.text = R"(IF {1} THEN A=7 ELSE A=8)"},
        {.text = R"(IF {0} THEN A=7 ELSE A=8)"},
        {.text = R"(IF {1} THEN 50 ELSE 51)"},
        {.text = R"(IF {0} THEN 50 ELSE 51)"},
        {.text = R"(IF {1} GOTO 50)"},
        {.text = R"(IF {1}=1 THEN IF {2}=2 THEN A={6})"},
        {.text = R"(IF 1 THEN A={5} ELSE A=8)"},
        {.text = R"(IF 0 THEN A=7 ELSE A={5})"},
        {.text = R"(IF 1 THEN GOTO {50})"},
        {.text = R"(GOTO {50})"},
        {.text = R"(GOSUB {50})"},
        {.text = R"(GOTO {5}*10)"},
        {.text = R"(ON {2} GOTO 50,51)"},
        {.text = R"(ON {2} GOSUB 50,51)"},
        {.text = R"(ON {9} GOTO 50,51)"},
        {.text = R"(ON ERROR GOTO {50})"},
        {.text = R"(ON BREAK GOTO {50})"},
        {.text = R"(ON TIMER({3}) GOSUB {50})"},
        {.text = R"(TIMER({3})={60000})"},
        {.text = R"(TIMER({3}) ON)", .setup = "TIMER(3)=60000:ON TIMER(3) GOSUB 50"},
        {.text = R"(TIMER({3}) OFF)", .setup = "TIMER(3)=60000:ON TIMER(3) GOSUB 50:TIMER(3) ON"},
        {.text = R"(ERROR {9})"},
        {.text = R"(RESUME {50})", .setup = "ON ERROR GOTO 19:ERROR 5"},
        // values
        {.text = R"(A={5})"},
        {.text = R"(LET A={5})"},
        {.text = R"(N%({1})={5})"},
        {.text = R"(P(1,{1})={5})", .setup = "DIM P(2,2)"},
        {.text = R"(A$({1})={"x"})"},
        {.text = R"(A$({1})="q"+{"x"}+"r")"},
        {.text = R"(MID$(A$({1}),{2},{1})={"Q"})", .setup = "A$(1)=\"abc\""},
        {.text = R"(SWAP N%({1}),N%({2}))"},
        {.text = R"(RANDOMIZE {5})"},
        {.text = R"(READ N%({1}))"},
        {.text = R"(READ A,N%({+1}),B)"},
        {.text = R"(READ A,B,N%({+1}),A$({+2}))", .setup = "READ X"},
        {.text = R"(RESTORE {71})"},
        {.text = R"(DIM D({5}))"},
        {.text = R"(DIM D({2},{3}),E(3))"},
        {.text = R"(DIM D(2),E$({+3},{+1}),F(4))"},
        {.text = R"(POKE VARPTR(N%({1})),{5})"},
        {.text = R"(POKE16 VARPTR(N%({1})),{5})"},
        {.text = R"(POKE32 VARPTR(N%({1})),{5})"},
        {.text = R"(POKE64 VARPTR(N%({1})),{5})"},
        {.text = R"(VARINFO 0+{0})"},
        {.text = R"(ARRAYINFO 0+{0})"},
        // text
        {.text = R"(PRINT {"x"})"},
        {.text = R"(PRINT TAB({5});"x")"},
        {.text = R"(PRINT SPC({5});"x")"},
        {.text = R"(PRINT @{1},{"x"})", .setup = "TXTWINDOW @1,1,9,9,12"},
        {.text = R"(PRINT #{1},{"x"})", .setup = "OPEN \"O.TXT\" FOR OUTPUT AS 1"},
        {.text = R"(PRINT USING {"##"};{5})"},
        {.text = R"(PRINT #{1},USING {"##"};{5})", .setup = "OPEN \"O.TXT\" FOR OUTPUT AS 1"},
        {.text = R"(PRINT WRAP {20},{"a b"})"},
        {.text = R"(PRINT JUSTIFY {20},{"a b"})"},
        {.text = R"(? {1}+{2})"},
        {.text = R"(WRITE {"x"})"},
        {.text = R"(WRITE #{1},{5})", .setup = "OPEN \"O.TXT\" FOR OUTPUT AS 1"},
        {.text = R"(INPUT N%({1}))", .reply = "7\r"},
        {.text = R"(INPUT "N",A,N%({1}))", .reply = "7,8\r"},
        {.text = R"(INPUT #{1},N%({2}))", .setup = "OPEN \"T.TXT\" FOR INPUT AS 1"},
        {.text = R"(INPUT #1,A,A$({+1}),B)", .setup = "OPEN \"T.TXT\" FOR INPUT AS 1"},
        {.text = R"(INPUT #1,A,A$({+1}),B)", .setup = "OPEN \"T.TXT\" FOR INPUT AS 1:LINE INPUT #1,F$"},
        {.text = R"(INPUT #1,A,N%({+1}))", .setup = "OPEN \"R.DAT\" AS 1:FIELD 1,20 AS F$:LSET F$=\"5,6,7\""},
        {.text = R"(LINE INPUT A$({1}))", .reply = "text\r"},
        {.text = R"(LINE INPUT #{1},A$({2}))", .setup = "OPEN \"T.TXT\" FOR INPUT AS 1"},
        {.text = R"(CLS @{1})", .setup = "TXTWINDOW @1,1,9,9,12:PRINT @1,\"x\""},
        {.text = R"(COLOR {2},{3})"},
        {.text = R"(COLOR ,{3})"},
        {.text = R"(COLOR {1},{2},{3},{4},{5},{6})"},
        {.text = R"(COLOR @{1},{2},{3})", .setup = "TXTWINDOW @1,1,9,9,12"},
        {.text = R"(LOCATE {5},{10},{1})"},
        {.text = R"(LOCATE ,{10})"},
        {.text = R"(LOCATE @{1},{2},{3})", .setup = "TXTWINDOW @1,1,9,9,12"},
        {.text = R"(SCREEN {640},{480})"},
        {.text = R"(TXTWINDOW {2},{3},{70},{19})"},
        {.text = R"(TXTWINDOW @{2},{1},{9},{9},{12})"},
        {.text = R"(VIEW PRINT {2} TO {19})"},
        // graphics
        {.text = R"(PSET ({20},{30}),{2})"},
        {.text = R"(PSET STEP({2},{3}),{1},{2},{3})"},
        {.text = R"(PRESET STEP({2},{3}),{4})"},
        {.text = R"(LINE ({1},{2})-({30},{40}),{3},BF)"},
        {.text = R"(LINE STEP({1},{2})-STEP({3},{4}))"},
        {.text = R"(LINE -({5},{6}),{1},{2},{3},B)"},
        {.text = R"(CIRCLE STEP({50},{60}),{9},{2},{1},{3})"},
        {.text = R"(PAINT STEP({5},{6}),{2},{3})"},
        {.text = R"(PAINT (9,9),{200},{2},{3},{4})"},
        {.text = R"(PAINT (9,9),,{4})"},
        {.text = R"(WINDOW ({0},{1})-({8},{9}))"},
        {.text = R"(WINDOW SCREEN ({0},{1})-({8},{9}))"},
        {.text = R"(VIEW ({1},{2})-({99},{98}),{3},{4})"},
        {.text = R"(VIEW SCREEN ({1},{2})-({99},{98}))"},
        {.text = R"(DRAW {"U9R9"})"},
        {.text = R"(GET ({1},{2})-STEP({5},{6}),G&)"},
        {.text = R"(PUT ({10},{20}),G&,PSET)", .setup = "GET (0,0)-(5,5),G&"},
        {.text = R"(PUT STEP({10},{20}),G&)", .setup = "GET (295,295)-(305,305),G&"},
        {.text = R"(LOADBMP {3},{"B.BMP"})"},
        {.text = R"(BITBLT {0},{9},{8},{1})", .setup = "LOADBMP 0,\"B.BMP\""},
        // files
        {.text = R"(OPEN {"T.TXT"} FOR OUTPUT AS #{2})"},
        {.text = R"(OPEN {"T.TXT"} FOR APPEND AS #{2})"},
        {.text = R"(OPEN {"N.DAT"} AS {2} LEN={20})"},
        {.text = R"(OPEN {"O"},#{2},{"T.TXT"})"},
        {.text = R"(OPEN "R",{2},{"N.DAT"},{20})"},
        {.text = R"(CLOSE {1})", .setup = "OPEN \"O.TXT\" FOR OUTPUT AS 1:PRINT #1,\"x\""},
        {.text = R"(CLOSE 1,#{+2})",
         .setup = "OPEN \"O.TXT\" FOR OUTPUT AS 1:OPEN \"U.TXT\" FOR OUTPUT AS 2:PRINT #2,\"x\""},
        {.text = R"(FIELD #{1},{8} AS F$,{+4} AS K$)", .setup = "OPEN \"R.DAT\" AS 1:K$=\"\""},
        {.text = R"(LSET A$({1})={"x"})", .setup = "A$(1)=\"abc\""},
        {.text = R"(RSET A$({1})={"x"})", .setup = "A$(1)=\"abc\""},
        {.text = R"(GET #{1},{2})", .setup = "OPEN \"T.TXT\" AS 1 LEN=4"},
        {.text = R"(PUT #{1},{2})", .setup = "OPEN \"R.DAT\" AS 1 LEN=4:FIELD 1,4 AS F$:LSET F$=\"abcd\""},
        {.text = R"(FILES {"*.TXT"})"},
        {.text = R"(DIR {"*.BAS"},W)"},
        {.text = R"(KILL {"T.TXT"})"},
        {.text = R"(NAME {"T.TXT"} AS {"U.TXT"})"},
        {.text = R"(CHDIR {"D"})"},
        {.text = R"(MKDIR {"E"})"},
        {.text = R"(RMDIR {"D"})"},
        {.text = R"(LOAD {"C.BAS"})"},
        {.text = R"(SAVE {"T.TXT"},A)"},
        {.text = R"(CHAIN {"C.BAS"})"},
        {.text = R"(CHAIN {"C.BAS"},{20},ALL)"},
        {.text = R"(CHAIN MERGE {"C.BAS"},{20},ALL,DELETE 60-61)"},
        {.text = R"(BLOAD {"M.BIN"},VARPTR(N%({1})))", .setup = "BSAVE \"M.BIN\",VARPTR(N%(0)),4:N%(1)=9"},
        {.text = R"(BSAVE {"T.TXT"},VARPTR(N%({0})),{8})"},
        // typed only
        {.text = R"(MERGE {"C.BAS"})", .only_typed = true},
        {.text = R"(CREATEEFI {"X.EFI"})", .only_typed = true},
        {.text = R"(AUTO {100},{5})", .only_typed = true},
        {.text = R"(RENUM {100},{10},{5})", .only_typed = true},
        {.text = R"(FIND {"REM"})", .only_typed = true},
        // operators
        {.text = R"(A={2}^{3}^{2})"},
        {.text = R"(A=-{2}+ +{3})"},
        {.text = R"(A={6}*{7}/{2}\{3} MOD {4})"},
        {.text = R"(A={6}+{7}-{2}*({3}-{4}))"},
        {.text = R"(A=({1}<{2})+({1}>{2})+({1}<={2})+({1}>={2})+({1}<>{2})+({1}={2}))"},
        {.text = R"(A=NOT {1} AND {2} OR {3} XOR {4} EQV {5} IMP {6})"},
        {.text = R"(A={"a"}<{"b"})"},
        {.text = R"(A$={"a"}+{"b"}+"c")", .setup = "A$=\"\""},
        {.text = R"(A=N%({1})+N%(N%({2})))"},
        {.text = R"(A=FNA({3},{4}))", .setup = "DEF FNA(X,Y)=X*10+Y"},
        {.text = R"(A=FNB(FNA({3},{4})))", .setup = "DEF FNA(X,Y)=X*10+Y:DEF FNB(Y)=Y+1"},
        // functions
        {.text = R"(A=ABS({5}))"},
        {.text = R"(A=ATN({5}))"},
        {.text = R"(A=CDBL({5}))"},
        {.text = R"(A=CINT({5}))"},
        {.text = R"(A=COS({5}))"},
        {.text = R"(A=CSNG({5}))"},
        {.text = R"(A=EXP({5}))"},
        {.text = R"(A=FIX({5}))"},
        {.text = R"(A=INT({5}))"},
        {.text = R"(A=LOG({5}))"},
        {.text = R"(A=RND({5}))"},
        {.text = R"(A=SGN({5}))"},
        {.text = R"(A=SIN({5}))"},
        {.text = R"(A=SQR({5}))"},
        {.text = R"(A=TAN({5}))"},
        {.text = R"(A=ASC({"x"}))"},
        {.text = R"(A$(1)=CHR$({65}))"},
        {.text = R"(A=CVD({"12345678"}))"},
        {.text = R"(A=CVI({"12"}))"},
        {.text = R"(A=CVS({"1234"}))"},
        {.text = R"(A$(1)=HEX$({65}))"},
        {.text = R"(A=INSTR({2},{"abc"},{"c"}))"},
        {.text = R"(A$(1)=LCASE$({"ABC"}))"},
        {.text = R"(A$(1)=LEFT$({"abc"},{2}))"},
        {.text = R"(A=LEN({"abc"}))"},
        {.text = R"(A$(1)=MID$({"abc"},{2},{1}))"},
        {.text = R"(A$(1)=MKD$({5}))"},
        {.text = R"(A$(1)=MKI$({5}))"},
        {.text = R"(A$(1)=MKS$({5}))"},
        {.text = R"(A$(1)=OCT$({65}))"},
        {.text = R"(A$(1)=RIGHT$({"abc"},{2}))"},
        {.text = R"(A$(1)=SPACE$({5}))"},
        {.text = R"(A$(1)=STR$({5}))"},
        {.text = R"(A$(1)=STRING$({5},{65}))"},
        {.text = R"(A$(1)=STRING$({5},{"x"}))"},
        {.text = R"(A$(1)=UCASE$({"abc"}))"},
        {.text = R"(A=VAL({"12"}))"},
        {.text = R"(A=EOF({1}))", .setup = "OPEN \"T.TXT\" FOR INPUT AS 1"},
        {.text = R"(A$(1)=INPUT$({1}))", .reply = "k"},
        {.text = R"(A$(1)=INPUT$({2},#{1}))", .setup = "OPEN \"T.TXT\" FOR INPUT AS 1"},
        {.text = R"(A=LOC({1}))", .setup = "OPEN \"T.TXT\" FOR INPUT AS 1"},
        {.text = R"(A=LOF({1}))", .setup = "OPEN \"T.TXT\" FOR INPUT AS 1"},
        {.text = R"(A=POINT({1},{2}))"},
        {.text = R"(A=POS({0}))"},
        {.text = R"(A=SCREEN({1},{2},{0}))"},
        {.text = R"(A$(1)=COMMANDLINEARG$({0}))"},
        {.text = R"(A=FRE({0}))"},
        {.text = R"(A=PEEK(VARPTR(N%({1}))))"},
        {.text = R"(A=PEEK16(VARPTR(N%({1}))))"},
        {.text = R"(A=PEEK32(VARPTR(N%({1}))))"},
        {.text = R"(A=PEEK64(VARPTR(N%({1}))))"},
        {.text = R"(A=TIMER({3}))"},
        {.text = R"(A=KORVANEADR({"LOMEM"}))"},
    };
    return statements;
}

}  // namespace korvane::test
