// What machine code computes by itself: the code of a line is made, wherever it is made in this program's
// memory, and entered with all registers spoilt. It must come to what the line means, take one of the
// statements that are left for each statement, and leave nothing to the general handlers.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "fast/links.h"
#include "fast/records.h"
#include "fast/statement.h"
#include "linked_session.h"
#include "native/emitter.h"
#include "native/state.h"
#include "platform/stack.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/keywords.h"
#include "program/program_store.h"
#include "run/control_stacks.h"
#include "screen/console.h"

namespace korvane::test {
namespace {

// The line that is tried is number 30; it has run four times when its code is made.
constexpr std::string_view surroundings[] = {
    "10 DIM N(9),N%(9),T$(9),M(3,3)",
    "11 A=3:B=2.5:C=-7:D%=4:E&=100000:F!=.5:G$=\"HELLO\":H$=\"LO\":I=2:J=5:K=0:L#=1D307:Q&&=6:W=A/30",
    "12 X=0:X%=0:X&=0:X!=0:X$=\"\":X&&=0:Y=0:N(2)=1.5:N(5)=9:N%(2)=7:M(1,2)=8:T$(2)=\"TWO\"",
    "13 DEF FNA(P)=P*2+A:DEF FNB(P,R)=FNA(P)-R:DEF FNC(P&&)=P&&*2:DEF FND%(P%)=P%+1:DEF FNE!(P!)=P!/3:DEF "
    "FNS(P!)=P!+K",
    "20 FOR Z=1 TO 4",
    "50 END",
    "60 X=X+1:RETURN",
    "70 DATA 1,2,3,4,43,one",
};
constexpr std::string_view spoiling = "X=-1:X%=-1:X&=-1:X!=-1:X$=\"?\":X&&=-1:Y=4";

struct Case {
    std::string_view line;
    std::uint32_t statements;  // that it executes
    std::string_view shown;    // what PRINT is asked for afterwards, and what it prints
    std::string_view wanted;
    std::string_view spoiling = test::spoiling;  // executed between the line and its code
};

constexpr Case cases[] = {
    {"X=A", 1, "X", " 3"},
    {"X=-A", 1, "X", "-3"},
    {"X=X*(X+A)", 1, "X", "-2"},
    {"X=X-X*A-X", 1, "X", " 3"},
    {"X=X^2-X", 1, "X", " 2"},
    {"J=J XOR B*J", 1, "J", " 8", "J=5"},
    {"J=J\\2+B*J", 1, "J", " 14.5", "J=5"},
    {"X=X/SIN(X+1+A/2)*SIN(A/2)", 1, "X", "-1"},
    {"X!=X!/A", 1, "X!;X!=-1/A", "-.3333333  0"},
    {"X=+A-B", 1, "X", " .5"},
    {"LET X=A*B+C", 1, "X", " .5"},
    {"X=(A+B)*(A-C)", 1, "X", " 55"},
    {"X=A/4", 1, "X", " .75"},
    {"X=A\\2", 1, "X", " 1"},
    {"X=C MOD 4", 1, "X", "-3"},
    {"X=I^J", 1, "X", " 32"},
    {"X=N(I)+N(J)", 1, "X", " 10.5"},
    {"X=M(1,I)", 1, "X", " 8"},
    {"X=N(B)", 1, "X", " 0"},  // 2.5 is rounded to 3
    {"X=N(I-.5)", 1, "X", " 1.5"},
    {"X=N(0)+N(9)", 1, "X", " 9.5", "N(0)=9.25:N(9)=.25"},
    {"N(3)=N(2)+A", 1, "N(3);N(2)", " 2 -1", "N(3)=0:N(2)=-1"},
    {"X=A*.5+B*.5-.5", 1, "X", " 2.25"},
    {"X=A*0-0", 1, "X", " 0"},
    {"N%(4)=N%(4)+1", 1, "N%(4)", " 7", "N%(4)=6"},
    {"N(I+1)=A*2", 1, "N(3)", " 6", "N(3)=0"},
    {"N%(D%)=A", 1, "N%(4)", " 3", "N%(4)=0"},
    {"X%=D%*3+1", 1, "X%", " 13"},
    {"X%=B", 1, "X%", " 3"},
    {"X&=E&+1", 1, "X&", " 100001"},
    {"X&&=Q&&*Q&&", 1, "X&&", " 36"},
    {"X!=A/10", 1, "X!;X!=A/10", " .3  0"},
    {"X!=F!*3", 1, "X!", " 1.5"},
    {"X=D%+B", 1, "X", " 6.5"},
    {"X=A>B", 1, "X", "-1"},
    {"X=D%<E&", 1, "X", "-1"},
    {"X=D%>=E&", 1, "X", " 0"},
    {"X=D%<>Q&&-2", 1, "X", " 0"},
    {"X=D%=A+1", 1, "X", "-1"},
    {"X=D%>-D%", 1, "X", "-1"},
    {"X=A=B OR I=2", 1, "X", "-1"},
    {"X=NOT D%", 1, "X", "-5"},
    {"X=D% AND 6", 1, "X", " 4"},
    {"X=INT(B)+ABS(C)", 1, "X", " 9"},
    {"X=FIX(-B)", 1, "X", "-2"},
    {"X=SQR(J+11)", 1, "X", " 4"},
    {"X=SGN(C)", 1, "X", "-1"},
    {"X=COS(K)+EXP(K)", 1, "X", " 2"},
    {"X=LEN(G$)+ASC(H$)", 1, "X", " 81"},
    {"X=INSTR(G$,H$)", 1, "X", " 4"},
    {"X=I+RND*0", 1, "X", " 2"},
    {"X=FNA(I)", 1, "X", " 7"},
    {"X=FNA(FNA(1))", 1, "X", " 13"},
    {"X=FNB(I,J)", 1, "X", " 2"},
    {"X=FNC(I)+1", 1, "X", " 5"},
    {"X=FND%(B)", 1, "X", " 4"},
    {"X=FNE!(I)=I/3", 1, "X", " 0"},
    {"X=FNS(W)", 1, "X=W;ABS(X-W)<1D-8", " 0 -1"},
    {"X$=G$+H$", 1, "X$", "HELLOLO"},
    {"X$=LEFT$(G$,2)", 1, "X$", "HE"},
    {"X$=T$(I)", 1, "X$", "TWO"},
    {"X$=T$(2)+G$", 1, "X$", "TWOHELLO"},
    {"T$(5)=T$(2)", 1, "T$(5)", "TWO", "T$(5)=\"\""},
    {"T$(J)=H$", 1, "T$(5)", "LO", "T$(5)=\"\""},
    {"SWAP X,Y", 1, "X;Y", " 4 -1"},
    {"SWAP N(2),N(5)", 1, "N(2);N(5)", " 9 -1", "N(2)=-1:N(5)=9"},
    {"READ X", 1, "X", " 43"},
    {"IF Z>2 THEN X=5 ELSE X=6", 2, "X", " 5"},
    {"IF Z>2 THEN X=5 ELSE X=6", 2, "X", " 6", "Z=1"},
    {"IF Z>2 THEN X=5", 1, "X", "-1", "X=-1:Z=1"},
    {"IF G$>H$ THEN 50", 1, "X", "-1"},
    {"IF A>B THEN IF I=2 THEN X=8:Y=9", 4, "X;Y", " 8  9"},
    {"X=0:FOR K=1 TO 10:X=X+K:NEXT", 22, "X;K", " 55  11"},
    {"X=0:FOR K=9 TO 1 STEP -2:X=X+K:NEXT K", 12, "X;K", " 25 -1"},
    {"X=0:FOR X%=1 TO 3:X=X+X%:NEXT", 8, "X;X%", " 6  4"},
    {"X=0:FOR K=1 TO 3:FOR Y=1 TO 2:X=X+K*Y:NEXT:NEXT", 20, "X;K;Y", " 18  4  3"},
    {"X=0:FOR K=1 TO 3:X=X+K:NEXT:FOR Y=1 TO 2:X=X+Y:NEXT", 13, "X;K;Y", " 9  4  3"},
    {"X=0:Y=3:WHILE Y>0:Y=Y-1:X=X+2:WEND", 15, "X;Y", " 6  0"},
    {"GOSUB 60:Y=X*2", 4, "X;Y", " 0  0"},
    {"ON I GOSUB 50,60,50", 3, "X", " 0"},
    {"X=1:GOTO 40", 2, "X", " 1"},
    {"ON I GOTO 50,40", 1, "X", "-1"},
};

// Room of this process for code, which is writable too, as nobody but the test writes to it.
class CodeRoom {
  public:
    CodeRoom()
        : start_(static_cast<std::byte*>(mmap(nullptr, bytes, PROT_READ | PROT_WRITE | PROT_EXEC,
                                              MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {}
    ~CodeRoom() { munmap(start_, bytes); }
    CodeRoom(const CodeRoom&) = delete;
    CodeRoom& operator=(const CodeRoom&) = delete;

    std::span<std::byte> all() const { return {start_, bytes}; }

  private:
    static constexpr std::size_t bytes = 1 << 16;
    std::byte* start_;
};

// The interpreter's own stack is another one than the test's.
class OnThisStack {
  public:
    OnThisStack() : before_(stack) { initialize_stack(); }
    ~OnThisStack() { stack = before_; }
    OnThisStack(const OnThisStack&) = delete;
    OnThisStack& operator=(const OnThisStack&) = delete;

  private:
    Stack before_;
};

// Enters code for the statement at `at`, with `budget` statements left. No register holds what code needs:
// that the program has many statements left, that infinities are small numbers, that variables are no
// numbers.
[[gnu::naked, gnu::noinline]] std::uint64_t enter_spoilt(const void*, Token*, std::uint64_t) {
    asm("push %rbx\n"
        "push %r12\n"
        "push %r13\n"
        "push %r14\n"
        "push %rbp\n"
        "mov %rdi, %rax\n"
        "mov %rsi, %rdi\n"
        "mov %rdx, %rsi\n"
        "mov $0x7FFFFFFF, %ebx\n"
        "mov $-1, %r12\n"
        "mov %r12, %r13\n"
        "mov %r12, %r14\n"
        "mov %r12, %rbp\n"
        "mov %r12, %rcx\n"
        "mov %r12, %rdx\n"
        "mov %r12, %r8\n"
        "mov %r12, %r9\n"
        "mov %r12, %r10\n"
        "mov %r12, %r11\n"
        "pcmpeqd %xmm0, %xmm0\n"
        "pcmpeqd %xmm1, %xmm1\n"
        "pcmpeqd %xmm2, %xmm2\n"
        "pcmpeqd %xmm3, %xmm3\n"
        "pcmpeqd %xmm4, %xmm4\n"
        "pcmpeqd %xmm5, %xmm5\n"
        "pcmpeqd %xmm6, %xmm6\n"
        "pcmpeqd %xmm7, %xmm7\n"
        "pcmpeqd %xmm8, %xmm8\n"
        "pcmpeqd %xmm9, %xmm9\n"
        "pcmpeqd %xmm10, %xmm10\n"
        "pcmpeqd %xmm11, %xmm11\n"
        "pcmpeqd %xmm12, %xmm12\n"
        "pcmpeqd %xmm13, %xmm13\n"
        "pcmpeqd %xmm14, %xmm14\n"
        "pcmpeqd %xmm15, %xmm15\n"
        "call *%rax\n"
        "pop %rbp\n"
        "pop %r14\n"
        "pop %r13\n"
        "pop %r12\n"
        "pop %rbx\n"
        "ret");
}

class MachineCode : public testing::Test {
  protected:
    MachineCode() : region_(std::make_unique<native::Region>()), emitter_(*region_) {}

    // Records of steps lie among the code as they come, which is no matter for this processor.
    void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "the sanitizers want records aligned";
#endif
    }

    void expect_meaning(const Case& one);

    // Types the program with the line in it and runs it, up to what spoils the line's results.
    void run_with(std::string_view line, std::string_view spoilt, std::string_view next = "NEXT Z") {
        for (const std::string_view text : surroundings)
            ASSERT_TRUE(session_.type(text)) << session_.problem();
        ASSERT_TRUE(session_.type("30 " + std::string(line)));
        ASSERT_TRUE(session_.type("40 " + std::string(next)));
        ASSERT_TRUE(session_.type("45 " + std::string(spoilt)));
        ASSERT_TRUE(session_.type("RUN")) << session_.problem();
        ASSERT_EQ(errors.message, nullptr) << errors.message;
    }

    static Token* tokens_of(std::uint32_t number) {
        return program.lines[find_line(number)].tokens;
    }

    static bool may_have_code(const Token* at) {
        const Token* end = fast::end_of_line(at);
        const std::uint32_t line = fast::as<fast::EndRecord>(end).line;
        if (line != find_line(30) && line != find_line(60)) return false;
        if (at->kind == ':' || at->kind == KW_REM || at->kind == KW_ELSE) return true;
        return at->kind != END_OF_LINE && fast::has_own_form(at) && fast::is_current(at);
    }

    // Whether all statements of line 30 and of what it calls have code, which is then made.
    testing::AssertionResult make_code() {
        const OnThisStack here;
        // The code of a NEXT is made while its loop is open: those of the line were the last ones.
        control_stacks.for_count = 1 + count_of(KW_FOR);
        region_->clear();
        region_->lead_to(tokens_of(30));
        while (region_->pending.count != 0) {
            Token* at = region_->pending.tokens[--region_->pending.count];
            native::Place* place = region_->find_or_add(at);
            if (place->is_seen) continue;
            place->is_seen = true;
            if (!may_have_code(at)) {
                if (at->kind != END_OF_LINE && native::has_entry(at) && at != tokens_of(40))
                    return testing::AssertionFailure() << "not specialised: " << record_of(at);
                continue;
            }
            place->is_native = emitter_.rehearse(*place);
            if (!place->is_native) return testing::AssertionFailure() << "no code: " << record_of(at);
            region_->append(*place);
        }
        region_->find_loops();
        region_->find_runs();
        // What has not had enough room is emitted anew.
        if (emitter_.emit_region(room_.all().first(40)) || !emitter_.is_full())
            return testing::AssertionFailure() << "40 bytes are enough";
        if (!emitter_.emit_region(room_.all())) return testing::AssertionFailure() << "no room";
        return testing::AssertionSuccess();
    }

    static std::uint32_t count_of(std::uint8_t kind) {
        std::uint32_t count = 0;
        for (const Token* at = tokens_of(30); at->kind != END_OF_LINE; ++at)
            count += at->kind == kind;
        return count;
    }

    static std::uint32_t record_of(const Token* at) {
        const Token* end = fast::end_of_line(at);
        return fast::as<fast::EndRecord>(end).record - static_cast<std::uint32_t>(end - at);
    }

    void enter(std::uint64_t budget) {
        const OnThisStack here;
        execution.statement_start = untouched;
        execution.kept_token = nullptr;
        execution.then_part = false;
        control_stacks.for_count = 1;  // that of line 20
        control_stacks.gosub_count = 0;
        control_stacks.while_count = 0;
        fast::state.look_at = nullptr;
        errors.pending = false;
        const std::size_t entry = region_->find(tokens_of(30))->entry.position();
        left_ = enter_spoilt(room_.all().data() + entry, tokens_of(30), budget);
    }

    std::string printed(std::string_view expressions) {
        EXPECT_TRUE(session_.type("CLS:PRINT " + std::string(expressions)));
        const std::string text(reinterpret_cast<const char*>(console.grid[0]), text_columns());
        return text.substr(0, text.find_last_not_of(' ') + 1);
    }

    static constexpr std::uint32_t untouched = 12345;

    LinkedSession session_{640, 480};
    CodeRoom room_;
    std::unique_ptr<native::Region> region_;
    native::Emitter emitter_;
    std::uint64_t left_ = 0;
};

// Where control arrives behind the line.
std::uint64_t arrive(Token* at, std::uint64_t budget) {
    fast::state.look_at = at;
    return budget;
}

void MachineCode::expect_meaning(const Case& one) {
    ASSERT_NO_FATAL_FAILURE(run_with(one.line, one.spoiling));
    ASSERT_TRUE(make_code());
    constexpr std::uint64_t more = 20;
    Token* behind[] = {fast::end_of_line(tokens_of(30)), tokens_of(40)};
    const Execute before[] = {behind[0]->execute, behind[1]->execute};
    for (Token* at : behind)
        at->execute = arrive;
    enter(one.statements + more);
    for (std::size_t i = 0; i < 2; ++i)
        behind[i]->execute = before[i];
    EXPECT_EQ(left_, more);
    EXPECT_FALSE(errors.pending);
    EXPECT_EQ(execution.statement_start, untouched) << "a general handler has executed a statement";
    EXPECT_TRUE(fast::state.look_at == behind[0] || fast::state.look_at == behind[1]);
    EXPECT_EQ(printed(one.shown), one.wanted);
}

TEST_F(MachineCode, DoesWhatTheLineMeans) {
    for (const Case& one : cases) {
        SCOPED_TRACE(one.line);
        expect_meaning(one);
    }
}

// A loop that a general handler has opened is taken over.
TEST_F(MachineCode, GoesOnWithTheLoopThatIsOpen) {
    ASSERT_NO_FATAL_FAILURE(run_with("X=X+1:NEXT Z", "X=-1:Z=2", "REM"));
    ASSERT_TRUE(make_code());
    enter(2);
    EXPECT_NE(control_stacks.fors[0].turn_key, 0u);  // so that it is looked at once
    EXPECT_EQ(printed("X;Z"), " 0  3");
    enter(6);
    EXPECT_EQ(execution.statement_start, untouched);
    EXPECT_EQ(printed("X;Z"), " 2  5");
}

// Each statement takes one of those that are left: the code pauses in front of the one that has none.
TEST_F(MachineCode, PausesInFrontOfTheStatementThatHasNoneLeft) {
    ASSERT_NO_FATAL_FAILURE(run_with("X=0:FOR K=1 TO 10:X=X+1:NEXT", spoiling));
    ASSERT_TRUE(make_code());
    for (std::uint64_t budget = 1; budget <= 22; ++budget) {
        enter(budget);
        EXPECT_EQ(left_, 0u);
        const std::uint64_t turns = std::min<std::uint64_t>((budget - 1) / 2, 10);
        EXPECT_EQ(printed("X"), " " + std::to_string(turns)) << budget;
    }
}

// A statement of a long program takes the time in which its bytes come from the next cache: with its ways in
// and out, and a variable that is not one of the first, these take little more than a line of it.
TEST_F(MachineCode, IsShort) {
    const auto size_of = [&](std::string_view statement, int times) {
        std::string line(statement);
        for (int i = 1; i < times; ++i)
            line.append(":").append(statement);
        run_with(line, spoiling);
        EXPECT_TRUE(make_code()) << statement;
        return emitter_.size();
    };
    for (const std::string_view statement : {"X=X+1", "N(3)=N(2)+X"})
        EXPECT_LE(size_of(statement, 7), size_of(statement, 2) + 5 * std::size_t{66}) << statement;
}

// What is no finite number, out of bounds, or does not fit is for the general handlers, which tell why.
TEST_F(MachineCode, LeavesWhatGoesWrongToTheGeneralHandlers) {
    struct Failing {
        std::string_view line;
        std::string_view spoiling;
        std::string_view message;
    };
    constexpr Failing lines[] = {
        {"X=L#*A", "A=100", "Overflow"},
        {"X=SGN(L#*A)", "A=100", "Overflow"},
        {"X=ABS(L#*A)", "A=100", "Overflow"},
        {"X=INT(L#*A)", "A=100", "Overflow"},
        {"X=SQR(L#*A)", "A=100", "Overflow"},
        {"X=SIN(L#*A)", "A=100", "Overflow"},
        {"X=FNA(L#*A)", "A=100", "Overflow"},
        {"X=L#*A>1", "A=100", "Overflow"},
        {"N(2)=L#*A", "A=100", "Overflow"},
        {"X=FNS(A)", "A=1D39", "Overflow"},
        {"X=SQR(A)", "A=-1", "Illegal function call"},
        {"X=LOG(A)", "A=0", "Illegal function call"},
        {"X=A/B", "B=0", "Division by zero"},
        {"X%=A", "A=32768", "Overflow"},
        {"X=N(I)", "I=10", "Subscript out of range"},
        {"N(I)=A", "I=-1", "Subscript out of range"},
        {"X=ASC(G$)", "G$=\"\"", "Illegal function call"},
        {"READ X", "RESTORE 70:READ Y,Y,Y,Y,Y", "Type mismatch"},
    };
    for (const Failing& one : lines) {
        ASSERT_NO_FATAL_FAILURE(run_with(one.line, "X=-1:" + std::string(one.spoiling)));
        ASSERT_TRUE(make_code()) << one.line;
        enter(1);
        EXPECT_TRUE(errors.pending) << one.line;
        EXPECT_NE(execution.statement_start, untouched) << one.line;
        EXPECT_STREQ(errors.message, std::string(one.message).c_str()) << one.line;
        EXPECT_EQ(printed("X"), "-1") << one.line;
    }
}

}  // namespace
}  // namespace korvane::test
