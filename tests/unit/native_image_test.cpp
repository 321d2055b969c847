// That the image makes machine code, when it does, and when it does not.
#include <gtest/gtest.h>

#include <string_view>

#include "machine.h"
#include "screen_text.h"
#include "temporary_folder.h"

namespace korvane::host {
namespace {

class NativeImageTest : public ::testing::Test {
  protected:
    void start(CodeMemory code_memory = CodeMemory::offered) {
        Config config;
        config.code_memory = code_memory;
        config.volumes.push_back({.folder = folder_.path()});
        machine_ = std::make_unique<Machine>(std::move(config), ImageSource::file("build/korvane.efi"));
        ASSERT_EQ(machine_->run(limit), Stop::waits_for_key);
    }

    // Types lines, each ended by Enter.
    void type(std::string_view lines) {
        for (const char c : lines)
            machine_->firmware().keyboard().press({0, static_cast<char16_t>(c == '\n' ? '\r' : c)});
        ASSERT_EQ(machine_->run(limit), Stop::waits_for_key) << machine_->fault_report();
        EXPECT_TRUE(machine_->firmware().complaints().empty());
    }

    std::uint64_t executable_pages() const { return machine_->firmware().memory().executable_pages(); }
    std::uint64_t uses(Service service) const { return machine_->firmware().faults().uses(service); }

    static constexpr std::chrono::milliseconds limit{20000};
    test::TemporaryFolder folder_;
    std::unique_ptr<Machine> machine_;
};

constexpr std::string_view hot_loop = "10 FOR I=1 TO 100000:S=S+I:NEXT\nRUN\n";

TEST_F(NativeImageTest, AHotLoopBecomesMachineCode) {
    start();
    EXPECT_EQ(executable_pages(), 0U);
    type(hot_loop);
    EXPECT_GE(executable_pages(), 1U);
    EXPECT_LE(executable_pages(), 4U);  // no more than the code needs
}

TEST_F(NativeImageTest, StatementsThatAreExecutedOnceDoNot) {
    start();
    const std::uint64_t pages = machine_->firmware().memory().allocated_pages();
    std::string program;
    for (int line = 10; line <= 200000; line += 10)
        program += std::to_string(line) + " A=A+B*2:IF A>5 THEN B=1\n";
    folder_.write("LONG.BAS", program);
    type("LOAD \"LONG.BAS\"\nRUN\n");
    EXPECT_EQ(machine_->firmware().memory().allocated_pages(), pages);
    EXPECT_EQ(uses(Service::MemoryAttributesGet), 0U);
}

TEST_F(NativeImageTest, RefusalsEndIt) {
    for (const CodeMemory refusal : {CodeMemory::refused, CodeMemory::hidden}) {
        start(refusal);
        const std::uint64_t pages = machine_->firmware().memory().allocated_pages();
        const std::uint64_t asked = uses(Service::AllocatePages);
        type(hot_loop);
        type("RUN\nRUN\n");
        EXPECT_EQ(executable_pages(), 0U);
        EXPECT_EQ(machine_->firmware().memory().allocated_pages(), pages);
        EXPECT_EQ(uses(Service::AllocatePages), asked + 1);
        machine_.reset();
    }
}

// Subscripts that have to be rounded take more bytes than any other statement of this length. If they did not
// fit, their code would be made again and again.
TEST_F(NativeImageTest, TheLongestStatementsBecomeMachineCodeToo) {
    start();
    std::string sum = "N(A,B)";
    for (int i = 1; i < 18; ++i)
        sum += "+N(A,B)";
    type("10 DIM N(9,9):A=1.5:B=2.5:FOR I=1 TO 100000\n20 X=" + sum + "\n30 NEXT\nRUN\n");
    EXPECT_GE(executable_pages(), 1U);
    EXPECT_LT(uses(Service::MemoryAttributesSet), 10U);
}

// A loop that ends its generation with every turn is not made into code again and again.
TEST_F(NativeImageTest, GenerationsThatEndSoonGetNoCode) {
    start();
    type("10 FOR I=1 TO 20000:ERASE A:DIM A(9):A(3)=I:S=S+A(3):NEXT\nDIM A(9)\nGOTO 10\n");
    EXPECT_LT(uses(Service::MemoryAttributesSet), 100U);
}

}  // namespace
}  // namespace korvane::host
