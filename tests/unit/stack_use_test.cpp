// How much of the 128 KiB stack that firmware guarantees is left when programs recurse as deep as they can.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "machine.h"

namespace korvane {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

class StackUseTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (sanitized) GTEST_SKIP() << "the image is measured, not the sanitizers' code";
        if (!std::filesystem::exists(image)) GTEST_SKIP() << image << " has not been built";
        host::Config config;
        config.volumes.resize(1);
        config.volumes[0].folder = std::filesystem::temp_directory_path();
        machine_ = std::make_unique<host::Machine>(std::move(config), host::ImageSource::file(image));
        ASSERT_EQ(machine_->run(std::chrono::seconds(10)), host::Stop::waits_for_key);
    }

    void type(std::string_view line) {
        for (const char c : line)
            machine_->firmware().keyboard().press({0, static_cast<char16_t>(c)});
        machine_->firmware().keyboard().press({0, u'\r'});
        ASSERT_EQ(machine_->run(std::chrono::seconds(10)), host::Stop::waits_for_key)
            << machine_->fault_report() << " at " << line;
    }

    // Bytes that nothing has ever written to, the hosted services' own frames included.
    std::size_t untouched() const {
        const auto bytes = machine_->firmware().stack().bytes();
        return static_cast<std::size_t>(
            std::find_if(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte != 0; }) -
            bytes.begin());
    }

    static constexpr const char* image = "build/korvane.efi";
    // For what the real firmware needs beneath the interpreter.
    static constexpr std::size_t reserve = 16 * 1024;
    std::unique_ptr<host::Machine> machine_;
};

TEST_F(StackUseTest, RunawayRecursionLeavesRoomForTheFirmware) {
    const std::size_t at_first = untouched();
    type("DEF FNA(X)=FNA(X)");
    type("PRINT FNA(1)");
    type("DEF FNB(X)=((((((((((FNB(X)))))))))))");
    type("PRINT FNB(1)");
    type("DEF FNC(X)=2^-FNC(NOT X)+" + std::string(90, '-') + "X");
    type("PRINT FNC(1)");
    // The deepest expression below the deepest call.
    type("DEF FND(X)=" + std::string(100, '-') + "FND(X)");
    type("PRINT FND(1)");
    std::string chain = "DEF FNE(X)=";
    for (int i = 0; i < 50; ++i)
        chain += "1^-";
    type(chain + "FNE(X)");
    type("PRINT FNE(1)");
    std::string nots = "DEF FNF(X)=";
    for (int i = 0; i < 50; ++i)
        nots += "NOT ";
    type(nots + "FNF(X)");
    type("PRINT FNF(1)");
    type("DEF FNG$(A$)=LEFT$(FNG$(A$)+A$,1)");
    type("PRINT FNG$(\"X\")");
    type("DEF FNH(A,B,C,D,E,F,G,H)=ABS(FNH(A,B,C,D,E,F,G,H))");
    type("PRINT FNH(1,2,3,4,5,6,7,8)");
    std::string ifs = "";
    for (int i = 0; i < 40; ++i)
        ifs += "IF 1 ";
    type(ifs + "PRINT FND(1)");
    type("DIM A(3)");
    type("DEF FNI(X)=A(FNI(X))");
    type("PRINT FNI(1)");
    std::printf("stack: %zu bytes untouched at the prompt, %zu after the deepest recursion\n", at_first,
                untouched());
    EXPECT_GE(untouched(), reserve);
}

TEST_F(StackUseTest, LookingAtStatementsLeavesRoomForTheFirmware) {
    // Each function calls the next one, from the end of a long sum or inside brackets, signs or subscripts.
    type("10 DIM A(3):X=1");
    const auto name = [](int i) {
        return std::string{static_cast<char>('A' + i / 8), static_cast<char>('A' + i % 8)};
    };
    for (int i = 0; i < 60; ++i) {
        const std::string next = i == 59 ? "X" : "FN" + name(i + 1) + "(X)";
        std::string body;
        switch (i % 4) {
            case 0:
                for (int k = 0; k < 50; ++k)
                    body += "X+";
                body += next;
                break;
            case 1:
                body = std::string(50, '(') + next + std::string(50, ')');
                break;
            case 2:
                body = std::string(90, '-') + next;
                break;
            default:
                for (int k = 0; k < 20; ++k)
                    body += "A(0*";
                body += next + std::string(20, ')');
                break;
        }
        type(std::to_string(100 + i) + " DEF FN" + name(i) + "(X)=" + body);
    }
    type("900 N=N+1:ON ERROR GOTO 3000");
    for (int i = 0; i < 60; ++i)
        type(std::to_string(1000 + i) + " Y=FN" + name(i) + "(1)");
    type("2000 IF N<3 THEN 900 ELSE END");
    type("3000 RESUME NEXT");
    type("RUN");
    std::printf("stack: %zu bytes untouched after looking at statements\n", untouched());
    EXPECT_GE(untouched(), reserve);
}

TEST_F(StackUseTest, TheDeepestParenthesesOfALine) {
    type("A=" + std::string(62, '(') + "1" + std::string(62, ')'));
    type("PRINT " + std::string(126, '('));
    std::printf("stack: %zu bytes untouched after 126 parentheses\n", untouched());
    EXPECT_GE(untouched(), reserve);
}

}  // namespace
}  // namespace korvane
