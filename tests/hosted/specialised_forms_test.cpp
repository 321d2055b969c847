// Which statements have a specialised form once they have been met often enough: nobody sees a missing one
// but by the time that a program takes.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "fast/expression.h"
#include "fast/nodes.h"
#include "fast/statement.h"
#include "linked_session.h"
#include "platform/stack.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/keywords.h"
#include "program/program_store.h"

namespace korvane::test {
namespace {

constexpr std::string_view surroundings[] = {
    "10 DIM N(9),N%(9),N&(9),N&&(9),N!(9),T$(9),M(3,3),T3(2,2,2)",
    "11 A=3:B=2.5:C=-7:D%=4:E&=100000:F!=.5:G$=\"HELLO\":H$=\"LO\":I=2:J=5:K=0:Q&&=6:W=.5",
    "12 X=0:X%=0:X&=0:X!=0:X$=\"\":X&&=0:Y=0:N(2)=1.5",
    "13 DEF FNA(P)=P*2+A:DEF FNB(P,R)=FNA(P)-R:DEF FNC$(P$)=P$+G$:DEF FND=A",
    "20 FOR Z=1 TO 4",
    "40 NEXT Z",
    "50 END",
    "60 RETURN",
    "70 DATA 1,2,3,4,5,6,7,8,9,10,11,12",
};

class SpecialisedForms : public testing::Test {
  protected:
    SpecialisedForms() {
        for (const std::string_view text : surroundings)
            session_.type(text);
    }

    // The line that runs four times, as number 30.
    Token* run_with(std::string_view line) {
        session_.type("30 " + std::string(line));
        EXPECT_TRUE(session_.type("RUN")) << session_.problem();
        EXPECT_EQ(errors.message, nullptr) << line << ": " << errors.message;
        return program.lines[find_line(30)].tokens;
    }

    static bool is_specialised(const Token* at) { return fast::is_current(at) && fast::has_own_form(at); }

    LinkedSession session_{640, 480};
};

TEST_F(SpecialisedForms, StatementsOfEveryKindHaveOne) {
    for (const char* line : {"X=A",
                             "LET X=A",
                             "X%=D%",
                             "X&=E&",
                             "X&&=Q&&",
                             "X!=F!",
                             "X$=G$",
                             "X%=A",
                             "X!=A",
                             "X&=D%",
                             "N(2)=A",
                             "N%(I)=A",
                             "N&(D%)=D%",
                             "N&&(1)=Q&&",
                             "N!(I+1)=F!",
                             "T$(2)=G$",
                             "M(1,I)=A",
                             "T3(1,2,0)=A",
                             "MID$(G$,1)=H$",
                             "SWAP X,Y",
                             "SWAP X,N(2)",
                             "SWAP N(1),N(I)",
                             "SWAP X$,T$(1)",
                             "READ X",
                             "READ N(I)",
                             "READ X,Y,X$",
                             "IF A>B THEN X=1",
                             "IF A>B THEN 40",
                             "IF A<B GOTO 50 ELSE 40",
                             "IF G$=H$ THEN 50",
                             "IF X$=\"\" OR A=3 THEN X=1 ELSE X=2",
                             "GOTO 40",
                             "GOSUB 60",
                             "ON I GOTO 50,40",
                             "ON I GOSUB 50,60",
                             "FOR K=1 TO 2:NEXT",
                             "FOR X%=1 TO 9 STEP 3:NEXT",
                             "FOR K=3 TO 1 STEP -1:NEXT K",
                             "WHILE K>0:K=K-1:WEND"})
        EXPECT_TRUE(is_specialised(run_with(line))) << line;
}

TEST_F(SpecialisedForms, ExpressionsOfEveryKindDo) {
    for (const char* expression : {"-A",
                                   "+A",
                                   "-+A",
                                   "--A",
                                   "(A)",
                                   "A+B",
                                   "A-B",
                                   "A*B",
                                   "A/B",
                                   "A\\I",
                                   "A MOD I",
                                   "A^I",
                                   "A^-I",
                                   "-A^I",
                                   "A=B",
                                   "A<>B",
                                   "A<B",
                                   "A<=B",
                                   "A>B",
                                   "A>=B",
                                   "NOT A",
                                   "A AND B",
                                   "A OR B",
                                   "A XOR B",
                                   "A EQV B",
                                   "A IMP B",
                                   "D%+X%",
                                   "D%*A",
                                   "E&\\D%",
                                   "Q&&+1",
                                   "F!*2",
                                   "F!+A",
                                   "N(I)",
                                   "N%(2)",
                                   "N(N%(2))",
                                   "M(1,1)",
                                   "T3(1,1,1)",
                                   "G$=H$",
                                   "G$<H$",
                                   "G$+H$>H$",
                                   "ABS(A)",
                                   "SGN(A)",
                                   "INT(B)",
                                   "FIX(B)",
                                   "SQR(A)",
                                   "SIN(A)",
                                   "COS(A)",
                                   "TAN(A)",
                                   "ATN(A)",
                                   "EXP(A)",
                                   "LOG(A)",
                                   "RND",
                                   "RND(1)",
                                   "CINT(B)",
                                   "CSNG(B)",
                                   "CDBL(B)",
                                   "LEN(G$)",
                                   "ASC(G$)",
                                   "VAL(G$)",
                                   "INSTR(G$,H$)",
                                   "INSTR(2,G$,H$)",
                                   "PEEK(LOMEM)",
                                   "FNA(A)",
                                   "FNB(A,FNA(1))",
                                   "FND"})
        EXPECT_TRUE(is_specialised(run_with(std::string("X=") + expression))) << expression;
    for (const char* expression : {"G$+H$", "T$(I)", "LEFT$(G$,2)", "RIGHT$(G$,2)", "MID$(G$,2)",
                                   "MID$(G$,2,1)", "CHR$(65)", "STR$(A)", "STRING$(3,65)", "STRING$(3,G$)",
                                   "SPACE$(3)", "HEX$(A)", "OCT$(A)", "FNC$(G$)", "LEFT$(G$+H$,LEN(H$))"})
        EXPECT_TRUE(is_specialised(run_with(std::string("X$=") + expression))) << expression;
}

TEST_F(SpecialisedForms, TheEndOfALoopHasOne) {
    run_with("X=A");
    EXPECT_TRUE(is_specialised(program.lines[find_line(40)].tokens));
    for (const char* line : {"FOR K=1 TO 9:NEXT", "FOR K=1 TO 9:NEXT K", "FOR X%=1 TO 9:NEXT X%",
                             "WHILE K<9:K=K+1:WEND", "FOR K=1 TO 3:FOR Y=1 TO 3:NEXT:NEXT"}) {
        Token* at = run_with(line);
        for (; at->kind != END_OF_LINE; ++at)
            EXPECT_TRUE((at->kind != KW_NEXT && at->kind != KW_WEND) || is_specialised(at)) << line;
    }
    run_with("GOSUB 60");
    EXPECT_TRUE(fast::has_own_form(program.lines[find_line(60)].tokens));
}

// Each statement counts as one, whatever executes it: the keyboard is looked at after so many.
TEST_F(SpecialisedForms, EveryStatementCountsAsOne) {
    struct Counted {
        const char* line;
        double statements;  // of a turn, with its NEXT
    };
    constexpr Counted lines[] = {{"X=A", 2},
                                 {"X=1:Y=2:X$=G$", 4},
                                 {"IF A>B THEN X=1", 3},
                                 {"IF A<B THEN X=1 ELSE X=2", 3},
                                 {"IF A>B THEN X=1 ELSE X=2", 3},
                                 {"IF G$>\"A\" THEN X=1", 3},
                                 {"IF A>B THEN 40", 2},
                                 {"GOTO 40", 2},
                                 {"GOSUB 60", 3},
                                 {"ON I GOTO 50,40", 2},
                                 {"ON I GOSUB 50,60", 3},
                                 {"FOR K=1 TO 2:NEXT", 4},
                                 {"K=2:WHILE K>0:K=K-1:WEND", 9},
                                 {"SWAP X,Y", 2}};
    session_.type("20 FOR Z=1 TO 1000");
    for (const Counted& one : lines) {
        const std::uint64_t before = execution.statement_count;
        run_with(one.line);
        const auto count = static_cast<double>(execution.statement_count - before);
        EXPECT_NEAR(count / 1000, one.statements, 0.05) << one.line;
    }
}

// Where the stack has no more room, nothing is planned: its innermost parts would be used as they are.
TEST_F(SpecialisedForms, NothingIsPlannedWithoutStack) {
    Token* at = run_with("X=A+B*N(I)") + 2;
    const Stack before = stack;
    initialize_stack();
    fast::begin_statement();
    const std::int16_t root = fast::parse_expression(at, 1);
    ASSERT_NE(root, fast::none);
    EXPECT_TRUE(fast::plan(root, fast::Domain::real));
    stack.limit = ~std::uintptr_t{0};
    EXPECT_FALSE(fast::plan(root, fast::Domain::real));
    at = program.lines[find_line(30)].tokens + 2;
    EXPECT_EQ(fast::parse_expression(at, 1), fast::none);
    stack = before;
}

// Definitions are looked at with the calls that lead to them; a chain of long ones has more parts than there
// is room for.
TEST_F(SpecialisedForms, ChainsOfFunctionsWithoutRoomHaveNone) {
    constexpr int ones = 55;
    std::string sum = "P";
    for (int line = 14; line < 20; ++line) {
        const char name[] = {static_cast<char>('E' + line - 14), '\0'};
        std::string text = std::to_string(line) + " DEF FN" + name + "(P)=";
        for (int i = 0; i < ones; ++i)
            text += "1+";
        session_.type(text + sum);
        sum = std::string("FN") + name + "(P)";
    }
    // What they come to is the same.
    EXPECT_TRUE(is_specialised(run_with("X=FNG(2):IF X<>167 THEN ERROR 5")));
    EXPECT_FALSE(is_specialised(run_with("X=FNJ(2):IF X<>332 THEN ERROR 5")));
}

// What prints, draws or waits is executed by its handler; only its arguments are specialised.
TEST_F(SpecialisedForms, OtherStatementsHaveNone) {
    for (const char* line : {"PRINT A", "PSET (1,1)", "CLS", "LOCATE 1,1", "DEF FNX(P)=P", "X$=INKEY$"})
        EXPECT_FALSE(is_specialised(run_with(line))) << line;
}

}  // namespace
}  // namespace korvane::test
