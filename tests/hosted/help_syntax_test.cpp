// Every entry of HELP begins with a syntax. Here each form of each syntax is used once, alternatives and
// optional pieces included, and must be understood: no message about syntax, no missing piece.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "help/help_table.h"
#include "linked_session.h"
#include "program/errors.h"

namespace korvane::test {
namespace {

struct Uses {
    std::string_view name;
    std::vector<std::string_view> lines;  // typed one after the other; "{ESC}" presses Escape
};

// In the order of the table. Before each entry the volume, the program and the variables are as prepare()
// leaves them.
const std::vector<Uses>& all_uses() {
    static const std::vector<Uses> uses = {
        {"AUTO", {"AUTO", "{ESC}", "AUTO 500", "{ESC}", "AUTO 500,5", "{ESC}", "AUTO ,5", "{ESC}"}},
        {"CHAIN",
         {"CHAIN \"P.BAS\"", "CHAIN \"P.BAS\",20", "CHAIN \"P.BAS\",20,ALL", "CHAIN \"P.BAS\",,ALL",
          "CHAIN MERGE \"P.BAS\",20,ALL,DELETE 10-20", "CHAIN MERGE \"P.BAS\",20,,DELETE 10-20"}},
        {"COMMON", {"COMMON A", "COMMON A,B$,C()"}},
        {"CONT", {"5 STOP", "RUN", "CONT"}},
        {"DELETE", {"DELETE 10", "DELETE 20-30", "DELETE -40", "DELETE 50-"}},
        {"EDIT", {"EDIT 10", "", "7 GOTO 9999", "RUN", "EDIT ERL", ""}},
        {"FIND",
         {"FIND \"x\"", "FIND \"x\",20", "FIND \"x\",20-30", "FIND \"x\",-30", "FIND \"x\",20-",
          "FIND A$+\"x\""}},
        {"END", {"END"}},
        {"HELP", {"HELP", "HELP GOTO"}},
        {"LIST",
         {"LIST", "LIST 10", "LIST 10-20", "LIST -20", "LIST 20-", "LIST NOWAIT", "LIST 10-20 NOWAIT",
          "7 GOTO 9999", "RUN", "LIST ERL", "LIST ERL NOWAIT"}},
        {"LOAD", {"LOAD \"P.BAS\"", "LOAD \"P\"", "LOAD \"P"}},
        {"CREATEEFI", {"CREATEEFI \"GAME\"", "CREATEEFI \"GAME.EFI\""}},
        {"MERGE", {"MERGE \"P.BAS\""}},
        {"NEW", {"NEW"}},
        {"RENUM",
         {"RENUM", "RENUM 100", "RENUM 100,100", "RENUM 100,100,5", "RENUM ,,20", "RENUM 1000,,20",
          "RENUM ,1000"}},
        {"RUN", {"RUN"}},
        {"SAVE", {"SAVE \"Q.BAS\"", "SAVE \"Q.BAS\",A"}},
        {"STOP", {"5 STOP", "RUN"}},
        {"REM", {"REM any text (at all", "'any text", "A=1'text", "A=1: REM text"}},
        {"ERROR", {"ERROR 1", "ERROR 255"}},
        {"FOR",
         {"FOR I=1 TO 3: NEXT", "FOR I=1 TO 3 STEP 2: NEXT", "FOR I=3 TO 1 STEP -1: NEXT",
          "FOR I=1 TO 0: NEXT"}},
        {"GOSUB", {"GOSUB 60"}},
        {"GOTO", {"GOTO 50"}},
        {"IF",
         {"IF A THEN B=1", "IF A=0 THEN 50", "IF A THEN B=1 ELSE B=2", "IF A=0 THEN 50 ELSE 10",
          "IF A THEN 10 ELSE 50"}},
        {"NEXT", {"FOR I=1 TO 2: NEXT", "FOR I=1 TO 2: NEXT I"}},
        {"ON",
         {"ON 2 GOTO 10,50", "ON 1 GOSUB 60,60", "ON ERROR GOTO 60", "ON ERROR GOTO 0", "ON BREAK GOTO 60",
          "ON BREAK GOTO 0"}},
        {"RESUME",
         {"5 ON ERROR GOTO 100", "6 ERROR 9", "7 A=0: X=1/A", "8 END", "100 IF ERR=9 THEN RESUME 7",
          "110 IF B=0 THEN B=1: A=1: RESUME 0", "120 RESUME NEXT", "RUN", "110 A=1: RESUME", "RUN",
          "110 RESUME NEXT", "RUN"}},
        {"RETURN", {"GOSUB 60"}},
        {"TROFF", {"TROFF"}},
        {"TRON", {"TRON", "TRON 10", "TRON 10-30"}},
        {"TRACE", {"TRACE A", "TRACE A,B$", "TRACE", "TRACE OFF"}},
        {"WHILE", {"WHILE A<3: A=A+1: WEND"}},
        {"WEND", {"WHILE A: WEND"}},
        {"ERL", {"PRINT ERL"}},
        {"ERR", {"PRINT ERR"}},
        {"VARINFO", {"VARINFO", "VARINFO SIMPLE", "VARINFO FULL"}},
        {"ARRAYINFO", {"ARRAYINFO", "ARRAYINFO SIMPLE", "ARRAYINFO FULL"}},
        {"CLEAR", {"CLEAR"}},
        {"DATA", {"5 DATA 1", "6 DATA 1,two,\"three, four\"", "RUN"}},
        {"DEF", {"DEF FNA=1", "DEF FNB(X)=X", "DEF FNC(X,Y$)=X+LEN(Y$)", "PRINT FNA; FNB(1); FNC(1,\"A\")"}},
        {"DEFDBL", {"DEFDBL A", "DEFDBL A-C", "DEFDBL A,C-D"}},
        {"DEFI64", {"DEFI64 A", "DEFI64 A-C", "DEFI64 A,C-D"}},
        {"DEFINT", {"DEFINT A", "DEFINT A-C", "DEFINT A,C-D"}},
        {"DEFLNG", {"DEFLNG A", "DEFLNG A-C", "DEFLNG A,C-D"}},
        {"DEFSNG", {"DEFSNG A", "DEFSNG A-C", "DEFSNG A,C-D"}},
        {"DEFSTR", {"DEFSTR A", "DEFSTR A-C", "DEFSTR A,C-D"}},
        {"DIM", {"DIM P(1)", "DIM Q(1,2,3,4)", "DIM R(1),S$(2,2)"}},
        {"ERASE", {"ERASE N%", "DIM N%(1),M$(1)", "ERASE N%,M$"}},
        {"OPTION", {"ERASE N%", "OPTION BASE 0", "OPTION BASE 1"}},
        {"READ", {"5 DATA 1,2,3", "6 READ A", "7 READ B,C$", "RUN"}},
        {"RESTORE", {"RESTORE", "5 DATA 1", "RESTORE 5"}},
        {"SWAP", {"SWAP A,B", "SWAP A$,B$", "SWAP N%(0),N%(1)"}},
        {"CDBL", {"PRINT CDBL(1)"}},
        {"CINT", {"PRINT CINT(1.5)"}},
        {"CSNG", {"PRINT CSNG(1)"}},
        {"CVD", {"PRINT CVD(MKD$(1))"}},
        {"CVI", {"PRINT CVI(\"AB\")"}},
        {"CVS", {"PRINT CVS(MKS$(1))"}},
        {"MKD$", {"A$=MKD$(1)"}},
        {"MKI$", {"A$=MKI$(1)"}},
        {"MKS$", {"A$=MKS$(1)"}},
        {"VARPTR", {"PRINT VARPTR(A)", "PRINT VARPTR(N%(1))"}},
        {"ABS", {"PRINT ABS(-1)"}},
        {"ASC", {"PRINT ASC(\"A\")"}},
        {"ATN", {"PRINT ATN(1)"}},
        {"CHR$", {"PRINT CHR$(65)"}},
        {"COS", {"PRINT COS(1)"}},
        {"EXP", {"PRINT EXP(1)"}},
        {"FIX", {"PRINT FIX(1.5)"}},
        {"HEX$", {"PRINT HEX$(255)"}},
        {"INSTR", {"PRINT INSTR(\"AB\",\"B\")", "PRINT INSTR(2,\"AB\",\"B\")"}},
        {"INT", {"PRINT INT(1.5)"}},
        {"LCASE$", {"PRINT LCASE$(\"A\")"}},
        {"UCASE$", {"PRINT UCASE$(\"a\")"}},
        {"LEFT$", {"PRINT LEFT$(\"AB\",1)"}},
        {"LEN", {"PRINT LEN(\"AB\")"}},
        {"LOG", {"PRINT LOG(2)"}},
        {"MID$",
         {"PRINT MID$(\"ABC\",2)", "PRINT MID$(\"ABC\",2,1)", "A$=\"ABC\"", "MID$(A$,2)=\"X\"",
          "MID$(A$,2,1)=\"Y\""}},
        {"OCT$", {"PRINT OCT$(8)"}},
        {"RIGHT$", {"PRINT RIGHT$(\"AB\",1)"}},
        {"RND", {"PRINT RND", "PRINT RND(1)", "PRINT RND(-1)", "PRINT RND(0)"}},
        {"SGN", {"PRINT SGN(-1)"}},
        {"SIN", {"PRINT SIN(1)"}},
        {"SPACE$", {"PRINT SPACE$(2)"}},
        {"SQR", {"PRINT SQR(2)"}},
        {"STR$", {"PRINT STR$(2)"}},
        {"STRING$", {"PRINT STRING$(2,65)", "PRINT STRING$(2,\"A\")"}},
        {"TAN", {"PRINT TAN(1)"}},
        {"VAL", {"PRINT VAL(\"1\")"}},
        {"CLS", {"CLS", "TXTWINDOW @1,1,1,9,9", "CLS @1"}},
        {"COLOR",
         {"COLOR", "COLOR 15", "COLOR 15,0", "COLOR ,1", "COLOR 9,9,9", "COLOR 255,255,255,0,0,0",
          "TXTWINDOW @1,1,1,9,9", "COLOR @1,2", "COLOR @1,2,3", "COLOR @1,9,9,9", "COLOR @1,1,2,3,4,5,6"}},
        {"CSRLIN", {"PRINT CSRLIN"}},
        {"INKEY$", {"PRINT INKEY$"}},
        {"INPUT",
         {"INPUT A", "1", "INPUT A,B$", "1,X", "INPUT \"N\";A", "1", "INPUT \"N\",A,B", "1,2",
          "OPEN \"T.TXT\" FOR INPUT AS #1", "INPUT #1,A,B$", "END"}},
        {"INPUT$",
         {"A$=INPUT$(1)", "k", "OPEN \"T.TXT\" FOR INPUT AS #1", "A$=INPUT$(1,1)", "A$=INPUT$(1,#1)", "END"}},
        {"LOCATE",
         {"CLS: LOCATE 1", "CLS: LOCATE 10,1", "CLS: LOCATE ,1", "CLS: TXTWINDOW @1,1,1,9,9",
          "LOCATE @1,2,3"}},
        {"POS", {"PRINT POS(0)"}},
        {"PRINT",
         {"PRINT",
          "PRINT 1",
          "PRINT 1,A$;2",
          "? 1",
          "PRINT USING \"##\";1",
          "PRINT WRAP \"a b\"",
          "PRINT WRAP 9,\"a b\"",
          "PRINT JUSTIFY \"a b\"",
          "PRINT JUSTIFY 9,\"a b\"",
          "OPEN \"O\",#1,\"O.TXT\"",
          "PRINT #1,1;A$",
          "PRINT #1,USING \"##\";1",
          "PRINT #1,WRAP \"a b\"",
          "PRINT #1,WRAP 9,\"a b\"",
          "PRINT #1,JUSTIFY 9,\"a b\"",
          "END",
          "TXTWINDOW @1,1,1,9,9",
          "PRINT @1,1",
          "PRINT @1,USING \"##\";1",
          "PRINT @1,WRAP \"a b\"",
          "PRINT @1,WRAP 5,\"a b\"",
          "PRINT @1,JUSTIFY 5,\"a b\""}},
        {"SPC", {"PRINT SPC(3);1"}},
        {"TAB", {"PRINT TAB(3);1"}},
        {"TXTWINDOW",
         {"CLS: TXTWINDOW 1,1,80,30", "CLS: TXTWINDOW", "TXTWINDOW @0,1,1,9,9", "TXTWINDOW @7,1,1,9,9"}},
        {"TXTMAXX", {"PRINT TXTMAXX"}},
        {"TXTMAXY", {"PRINT TXTMAXY"}},
        {"WRITE", {"WRITE 1,A$", "OPEN \"O\",#1,\"O.TXT\"", "WRITE #1,1,A$", "END"}},
        {"APPEND", {"OPEN \"A.TXT\" FOR APPEND AS 1", "END", "OPEN \"A.TXT\" FOR APPEND AS #1", "END"}},
        {"AS",
         {"OPEN \"T.TXT\" FOR INPUT AS 1", "END", "OPEN \"R.DAT\" AS #1", "FIELD 1,8 AS A$", "END",
          "NAME \"T.TXT\" AS \"U.TXT\""}},
        {"BLOAD", {"BLOAD \"M.BIN\",VARPTR(A)", "BLOAD \"M.BIN\""}},
        {"BSAVE", {"BSAVE \"N.BIN\",VARPTR(A),8"}},
        {"CHDIR", {"MKDIR \"D\"", "CHDIR \"D\""}},
        {"CLOSE", {"CLOSE", "OPEN \"T.TXT\" FOR INPUT AS 1", "OPEN \"R.DAT\" AS 2", "CLOSE 1,#2"}},
        {"EOF", {"OPEN \"T.TXT\" FOR INPUT AS 1", "PRINT EOF(1)", "END"}},
        {"FIELD", {"OPEN \"R.DAT\" AS 1", "FIELD 1,8 AS A$", "FIELD #1,8 AS A$,4 AS B$", "END"}},
        {"DIR", {"DIR", "DIR \"*.*\"", "DIR \"*\",S", "DIR ,W", "DIR \"*\",S,W,P"}},
        {"FILES", {"FILES", "FILES \"*.*\"", "FILES \"*\",S", "FILES ,W", "FILES \"*\",S,W,P"}},
        {"GET", {"OPEN \"R.DAT\" AS 1", "GET 1", "GET #1,2", "END", "DIM G&(9)", "GET (0,0)-(1,1),G&"}},
        {"KILL", {"KILL \"T.TXT\""}},
        {"LOC", {"OPEN \"T.TXT\" FOR INPUT AS 1", "PRINT LOC(1)", "END"}},
        {"LOF", {"OPEN \"T.TXT\" FOR INPUT AS 1", "PRINT LOF(1)", "END"}},
        {"LSET", {"A$=\"12345\"", "LSET A$=\"x\""}},
        {"MKDIR", {"MKDIR \"E\""}},
        {"NAME", {"NAME \"T.TXT\" AS \"U.TXT\""}},
        {"OPEN",
         {"OPEN \"T.TXT\" FOR INPUT AS 1", "OPEN \"O.TXT\" FOR OUTPUT AS #2",
          "OPEN \"A.TXT\" FOR APPEND AS 3", "OPEN \"R.DAT\" AS 4", "OPEN \"S.DAT\" AS 5 LEN=20",
          "OPEN \"R2.DAT\" FOR RANDOM AS 6 LEN=20", "OPEN \"I\",7,\"P.BAS\"", "OPEN \"R\",#8,\"X.DAT\",20",
          "END"}},
        {"OUTPUT", {"OPEN \"O.TXT\" FOR OUTPUT AS 1", "END", "OPEN \"O.TXT\" FOR OUTPUT AS #1", "END"}},
        {"PUT",
         {"OPEN \"R.DAT\" AS 1", "PUT 1", "PUT #1,2", "END", "DIM G&(9)", "GET (0,0)-(1,1),G&",
          "PUT (2,2),G&", "PUT (2,2),G&,PSET", "PUT (2,2),G&,XOR"}},
        {"RMDIR", {"MKDIR \"F\"", "RMDIR \"F\""}},
        {"RSET", {"A$=\"12345\"", "RSET A$=\"x\""}},
        {"BITBLT", {"LOADBMP 0,\"B.BMP\"", "BITBLT 0,10,10", "BITBLT 0,10,10,0"}},
        {"CIRCLE", {"CIRCLE (50,50),9", "CIRCLE (50,50),9,2", "CIRCLE STEP(5,5),9,2"}},
        {"DRAW", {"DRAW \"BM10,10 NU5 C2 S4 A1 TA30 U5 D5 L5 R5 E5 F5 G5 H5 M20,20 M+1,-1\""}},
        {"GRAMAXX", {"PRINT GRAMAXX"}},
        {"GRAMAXY", {"PRINT GRAMAXY"}},
        {"GRAPITCH", {"PRINT GRAPITCH"}},
        {"LINE",
         {"LINE (1,1)-(9,9)", "LINE -(5,5)", "LINE -STEP(5,5)", "LINE STEP(1,1)-STEP(9,9)",
          "LINE (1,1)-(9,9),2", "LINE (1,1)-(9,9),2,B", "LINE (1,1)-(9,9),,BF", "LINE INPUT A$", "text",
          "LINE INPUT \"?\";A$", "text", "OPEN \"T.TXT\" FOR INPUT AS 1", "LINE INPUT #1,A$", "END"}},
        {"LOADBMP", {"LOADBMP 31,\"B.BMP\""}},
        {"PAINT",
         {"LINE (1,1)-(9,9),15,B", "PAINT (5,5)", "PAINT (5,5),2", "PAINT (5,5),2,15",
          "PAINT STEP(0,0),3,15"}},
        {"POINT", {"PRINT POINT(1,1)"}},
        {"PRESET", {"PRESET (1,1)", "PRESET STEP(1,1)", "PRESET (1,1),2"}},
        {"PSET", {"PSET (1,1)", "PSET STEP(1,1)", "PSET (1,1),2"}},
        {"SCREEN", {"SCREEN 640,480", "PRINT SCREEN(1,1)", "PRINT SCREEN(1,1,0)", "SCREEN 640,2048"}},
        {"SCRNADR", {"PRINT SCRNADR"}},
        {"VIEW",
         {"VIEW (1,1)-(99,99)", "VIEW (1,1)-(99,99),2", "VIEW (1,1)-(99,99),,3", "VIEW (1,1)-(99,99),2,3",
          "VIEW SCREEN (1,1)-(99,99)", "VIEW", "CLS: VIEW PRINT 2 TO 20: CLS", "VIEW PRINT"}},
        {"WINDOW", {"WINDOW (0,0)-(1,1)", "WINDOW SCREEN (0,0)-(1,1)", "WINDOW"}},
        {"KORVANE", {"KORVANE LANDMARKS", "KORVANE MEMMAP", "KORVANE INFO", "KORVANE", "X"}},
        {"KORVANEADR", {"PRINT KORVANEADR(\"LOMEM\")"}},
        {"DATE$", {"PRINT DATE$"}},
        {"FREEBOT", {"PRINT FREEBOT"}},
        {"FREETOP", {"PRINT FREETOP"}},
        {"FRE", {"PRINT FRE(0)"}},
        {"HIMEM", {"PRINT HIMEM"}},
        {"LOMEM", {"PRINT LOMEM"}},
        {"PEEK", {"PRINT PEEK(LOMEM)"}},
        {"POKE", {"POKE VARPTR(A),0"}},
        {"PEEK16", {"PRINT PEEK16(LOMEM)"}},
        {"PEEK32", {"PRINT PEEK32(LOMEM)"}},
        {"PEEK64", {"PRINT PEEK64(LOMEM)"}},
        {"POKE16", {"POKE16 VARPTR(A),0"}},
        {"POKE32", {"POKE32 VARPTR(A),0"}},
        {"POKE64", {"POKE64 VARPTR(A),0"}},
        {"TIME$", {"PRINT TIME$"}},
        {"TIMER", {"PRINT TIMER", "TIMER(0)=1000", "TIMER(0) ON", "TIMER(0) OFF"}},
        {"STARTUP.BAS", {"LOAD \"STARTUP.BAS\"", "RUN"}},
        {"AND", {"PRINT 1 AND 3"}},
        {"BASE", {"ERASE N%", "OPTION BASE 1", "OPTION BASE 0"}},
        {"BREAK",
         {"BREAK", "BREAK LIST", "BREAK 10", "BREAK 10,20", "BREAK DELETE 10", "BREAK DELETE 10,20",
          "BREAK CLEAR"}},
        {"ELSE", {"IF A THEN B=1 ELSE B=2", "IF A THEN B=1 ELSE 50"}},
        {"EQV", {"PRINT 1 EQV 3"}},
        {"IMP", {"PRINT 1 IMP 3"}},
        {"LET", {"LET A=1", "A=1", "LET N%(1)=1", "A$=\"x\""}},
        {"MOD", {"PRINT 7 MOD 3"}},
        {"NOT", {"PRINT NOT 1"}},
        {"OR", {"PRINT 1 OR 2"}},
        {"RANDOMIZE", {"RANDOMIZE", "RANDOMIZE 5"}},
        {"STEP", {"FOR I=1 TO 9 STEP 4: NEXT", "PSET STEP(1,1)"}},
        {"ON", {"ON TIMER(0) GOSUB 60"}},
        {"TIMER", {"TIMER(7)=1000", "ON TIMER(7) GOSUB 60"}},
        {"THEN", {"IF A=0 THEN B=1", "IF A=0 THEN 50"}},
        {"TO", {"FOR I=1 TO 2: NEXT", "CLS: VIEW PRINT 2 TO 20: CLS", "VIEW PRINT"}},
        {"USING",
         {"PRINT USING \"#.# +# #- ##,### $$# **# #.#^^^^\";1,2,3,4,5,6,7",
          "PRINT USING \"! & \\ \\\";A$,A$,A$"}},
        {"XOR", {"PRINT 1 XOR 3"}},
    };
    return uses;
}

// What a typed line says when it is not understood: both spellings of the syntax error and "Expected ...".
bool is_about_syntax(const char* message) {
    const std::string_view text = message == nullptr ? "" : message;
    return text == "Syntax Error" || text == "Syntax error" || text.starts_with("Expected");
}

// A 1x1 bitmap of 24 bits a pixel.
std::string one_pixel_bitmap() {
    std::string file(58, '\0');
    const auto put = [&](std::size_t at, unsigned char value) { file[at] = static_cast<char>(value); };
    file[0] = 'B', file[1] = 'M';
    put(2, 58), put(10, 54), put(14, 40), put(18, 1), put(22, 1), put(26, 1), put(28, 24);
    return file;
}

void prepare(LinkedSession& session) {
    session.write_file("START.BAS", "10 REM x\r\n20 REM x\r\n30 REM\r\n40 REM\r\n50 END\r\n60 RETURN\r\n");
    session.write_file("P.BAS", "10 REM\r\n20 END\r\n");
    session.write_file("STARTUP.BAS", "10 END\r\n");
    session.write_file("T.TXT", "1,two\r\nthree\r\nfour\r\n");
    session.write_file("B.BMP", one_pixel_bitmap());
}

// Typed before each entry. Line 50 of the program ends a run, line 60 is a subroutine.
constexpr std::array<std::string_view, 3> starting_lines = {
    "TXTWINDOW: VIEW: WINDOW: VIEW PRINT: CLS: CHDIR \"\\\"", "LOAD \"START.BAS\"",
    "DIM N%(3): A=0: B=0: A$=\"x\": B$=\"y\": BSAVE \"M.BIN\",VARPTR(A),8"};

TEST(HelpSyntax, UsesFollowTheTable) {
    HelpWalk walk;
    for (const Uses& uses : all_uses()) {
        ASSERT_TRUE(walk.next());
        EXPECT_EQ(uses.name, walk.entry().name);
        EXPECT_FALSE(uses.lines.empty());
    }
    EXPECT_FALSE(walk.next());
}

TEST(HelpSyntax, EveryTextIsASyntaxAndADescription) {
    for (HelpWalk walk; walk.next();) {
        const std::string_view text = walk.entry().text;
        const std::size_t dash = text.find(" - ");
        if (text == "ON expr GOTO/GOSUB ...; ON ERROR/BREAK GOTO line") continue;  // all syntax
        ASSERT_NE(dash, std::string_view::npos) << text;
        EXPECT_NE(text.substr(0, dash).find(walk.entry().name), std::string_view::npos) << text;
    }
}

TEST(HelpSyntax, EveryFormIsUnderstood) {
    LinkedSession session(640, 2048);  // nothing scrolls or pauses
    for (const Uses& uses : all_uses()) {
        prepare(session);
        for (const std::string_view line : starting_lines)
            ASSERT_TRUE(session.type(line)) << session.problem();
        for (const std::string_view line : uses.lines) {
            errors.message = nullptr;
            const bool runs_on = line == "{ESC}" ? session.press_escape() : session.type(line);
            ASSERT_TRUE(runs_on) << uses.name << ": " << line << session.problem();
            EXPECT_FALSE(is_about_syntax(errors.message)) << line << ": " << errors.message;
        }
    }
}

// The test above would notice: these are not understood.
TEST(HelpSyntax, BrokenFormsAreNoticed) {
    LinkedSession session(640, 2048);  // nothing scrolls or pauses
    for (const std::string_view line : {"GOTO", "FOR I=1", "NAME \"A\"", "PRINT ABS(", "ON ERROR 10",
                                        "LIST +", "PSET 1,1", "DIM", "RESTORE )"}) {
        errors.message = nullptr;
        ASSERT_TRUE(session.type(line));
        EXPECT_TRUE(is_about_syntax(errors.message)) << line;
    }
}

}  // namespace
}  // namespace korvane::test
