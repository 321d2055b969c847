// What native/assembler.h encodes, beside what the assembler of binutils makes of the same instructions.
#include "native/assembler.h"

#include <sys/mman.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <set>

#include <gtest/gtest.h>

#include "assembler_forms.h"
#include "temporary_folder.h"

namespace korvane::native {
namespace {

using test::Instruction;
using test::make_instruction;
using test::RandomBits;
using test::Size;

constexpr std::int32_t distances[] = {0, 1, -1, 127, -128, 128, -129, 0x12345678, -0x7FFFFFFF - 1};
// Longer than any instruction.
constexpr std::size_t slot = 16;

class AssemblerTest : public ::testing::Test {
  protected:
    // The bytes that the assembler of binutils makes of a text.
    std::string assemble(const std::string& text) const {
        folder_.write("text.s", ".intel_syntax noprefix\n" + text);
        return run("as -o text.o text.s && objcopy -O binary -j .text text.o out");
    }
    // What bytes say, as its opposite tells.
    std::string read(const std::string& bytes) const {
        folder_.write("bytes", bytes);
        return run(
            "objdump -D -b binary -m i386:x86-64 -M intel --no-show-raw-insn bytes | tail -n +8 > out");
    }
    std::string run(const std::string& command) const {
        const std::string line = "cd " + folder_.path().string() + " && " + command;
        if (std::system(line.c_str()) != 0) ADD_FAILURE() << command;
        return folder_.read("out");
    }

    void add(Instruction instruction) { instructions_.push_back(std::move(instruction)); }
    void add_all_places(const std::function<Instruction(const Operand&)>& make);

    // Compares all that were added, each in bytes of its own.
    void compare();
    static std::string encode(const Instruction& instruction) {
        std::array<std::byte, 64> room{};
        Assembler assembler(room);
        instruction.encode(assembler);
        return {reinterpret_cast<const char*>(room.data()), assembler.position()};
    }

    test::TemporaryFolder folder_;
    std::vector<Instruction> instructions_;
};

void AssemblerTest::add_all_places(const std::function<Instruction(const Operand&)>& make) {
    std::size_t next = 0;
    const auto next_distance = [&] { return distances[next++ % std::size(distances)]; };
    for (unsigned base = 0; base < 16; ++base) {
        for (const std::int32_t distance : distances)
            add(make(at(static_cast<Register>(base), distance)));
        for (unsigned index = 0; index < 16; ++index)
            for (int shift = 0; shift < 4; ++shift)
                if (index != static_cast<unsigned>(Register::rsp))
                    add(make(at(static_cast<Register>(base), static_cast<Register>(index), shift,
                                next_distance())));
    }
}

void AssemblerTest::compare() {
    std::string text;
    for (const Instruction& instruction : instructions_)
        text += instruction.text + "\n.balign 16, 0xCC\n";
    const std::string expected = assemble(text);
    ASSERT_EQ(expected.size(), instructions_.size() * slot);
    int different = 0;
    for (std::size_t i = 0; i < instructions_.size(); ++i) {
        const std::string ours = encode(instructions_[i]);
        std::string theirs = expected.substr(i * slot, slot);
        ASSERT_LE(ours.size(), slot) << instructions_[i].text;
        if (theirs == ours + std::string(slot - ours.size(), '\xCC')) continue;
        theirs.resize(theirs.find_last_not_of('\xCC') + 1);
        const bool same_meaning = instructions_[i].has_shorter_form && read(ours) == read(theirs);
        EXPECT_TRUE(same_meaning) << instructions_[i].text << '\n' << read(ours) << read(theirs);
        if (!same_meaning && ++different == 20) FAIL() << "and so on";
    }
}

TEST_F(AssemblerTest, OperationsInRegisters) {
    for (const test::OperationForm& form : test::operation_forms)
        for (unsigned first = 0; form.in_registers && first < 16; ++first)
            for (unsigned second = 0; second < 16; ++second)
                add(make_instruction(form, first, static_cast<Register>(second)));
    compare();
}

TEST_F(AssemblerTest, OperationsOnMemory) {
    for (const test::OperationForm& form : test::operation_forms) {
        unsigned first = 0;
        if (form.in_memory)
            add_all_places([&](const Operand& place) { return make_instruction(form, first++ % 16, place); });
    }
    compare();
}

TEST_F(AssemblerTest, OperationsOnOneOperand) {
    for (const test::UnaryForm& form : test::unary_forms) {
        for (unsigned number = 0; number < 16; ++number)
            add(make_instruction(form, static_cast<Register>(number)));
        add_all_places([&](const Operand& place) { return make_instruction(form, place); });
    }
    compare();
}

TEST_F(AssemblerTest, OperationsWithNumbers) {
    std::size_t next = 0;
    for (const test::NumberForm& form : test::number_forms) {
        for (unsigned number = 0; number < 16; ++number)
            for (const std::int32_t value : distances)
                add(make_instruction(form, static_cast<Register>(number), value));
        add_all_places([&](const Operand& place) {
            return make_instruction(form, place, distances[next++ / 7 % std::size(distances)]);
        });
    }
    compare();
}

TEST_F(AssemblerTest, Multiplications) {
    std::size_t next = 0;
    const auto make = [&](const Operand& operand) {
        const auto target = static_cast<unsigned>(next % 16);
        const std::int32_t number = distances[next++ / 7 % std::size(distances)];
        return Instruction{
            [=](Assembler& assembler) { assembler.multiply(static_cast<Register>(target), operand, number); },
            "imul " + register_name(Size::qword, target) + ", " +
                operand_text(operand, Size::qword, Size::qword) + ", " + std::to_string(number)};
    };
    for (unsigned target = 0; target < 16; ++target)
        for (unsigned number = 0; number < 16; ++number)
            add(make(static_cast<Register>(number)));
    add_all_places(make);
    compare();
}

TEST_F(AssemblerTest, StoredNumbers) {
    std::size_t next = 0;
    add_all_places([&](const Operand& place) {
        const auto number = static_cast<std::uint8_t>(next++ * 37);
        return Instruction{
            [=](Assembler& assembler) { assembler.store_number_8(place, number); },
            "mov " + operand_text(place, Size::byte, Size::byte) + ", " + std::to_string(number)};
    });
    add_all_places([&](const Operand& place) {
        const auto number = static_cast<std::uint32_t>(distances[next++ / 7 % std::size(distances)]);
        return Instruction{
            [=](Assembler& assembler) { assembler.store_number_32(place, number); },
            "mov " + operand_text(place, Size::dword, Size::dword) + ", " + std::to_string(number)};
    });
    add_all_places([&](const Operand& place) {
        const std::int32_t number = distances[next++ / 7 % std::size(distances)];
        return Instruction{
            [=](Assembler& assembler) { assembler.store_number_64(place, number); },
            "mov " + operand_text(place, Size::qword, Size::qword) + ", " + std::to_string(number)};
    });
    compare();
}

TEST_F(AssemblerTest, WhatTakesRegistersAlone) {
    for (unsigned number = 0; number < 16; ++number) {
        const auto target = static_cast<Register>(number);
        for (int bits = 2; bits < 64; ++bits)
            for (const Shift direction : {Shift::left, Shift::right})
                add({[=](Assembler& assembler) { assembler.shift(direction, target, bits); },
                     std::string(direction == Shift::left ? "shl " : "shr ") +
                         test::register_name(Size::qword, number) + ", " + std::to_string(bits)});
        for (const test::ConditionForm& form : test::condition_forms)
            add({[=](Assembler& assembler) { assembler.set_byte(form.condition, target); },
                 "set" + std::string(form.suffix) + ' ' + test::register_name(Size::byte, number)});
        add({[=](Assembler& assembler) { assembler.test_byte(target); },
             "test " + test::register_name(Size::byte, number) + ", " +
                 test::register_name(Size::byte, number)});
        for (const std::uint64_t value : {0UL, 1UL, 0x7FFFFFFFUL, 0xFFFFFFFFUL})
            add({[=](Assembler& assembler) { assembler.load_number(target, value); },
                 "mov " + test::register_name(Size::dword, number) + ", " + std::to_string(value)});
        for (const std::uint64_t value : {0x100000000UL, 0x7FF0000000000000UL, 0x123456789ABCDEF0UL, ~0UL})
            add({[=](Assembler& assembler) { assembler.load_number(target, value); },
                 "movabs " + test::register_name(Size::qword, number) + ", " + std::to_string(value)});
    }
    add({[](Assembler& assembler) { assembler.sign_extend_rax(); }, "cqo"});
    add({[](Assembler& assembler) { assembler.return_(); }, "ret"});
    compare();
}

// The other assembler has an instruction of its own for this.
TEST_F(AssemblerTest, AShiftByOneIsReadAsOne) {
    const auto first_word = [](const std::string& text) {
        return std::regex_replace(text, std::regex("0x"), "");
    };
    const auto make = [](Shift direction) {
        return Instruction{[=](Assembler& assembler) { assembler.shift(direction, Register::r9, 1); }, ""};
    };
    EXPECT_NE(first_word(read(encode(make(Shift::left)))).find("shl    r9,1\n"), std::string::npos);
    EXPECT_NE(first_word(read(encode(make(Shift::right)))).find("shr    r9,1\n"), std::string::npos);
}

// Code that is run: its arguments are in rdi and rsi or in xmm0 and xmm1, its result in rax or xmm0.
class MadeCode {
  public:
    explicit MadeCode(const std::function<void(Assembler&)>& emit)
        : memory_(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
        const std::span<std::byte> room(static_cast<std::byte*>(memory_), size);
        Assembler assembler(room);
        emit(assembler);
        constexpr std::byte ret{0xC3};
        room[assembler.position()] = ret;
        mprotect(memory_, size, PROT_READ | PROT_EXEC);
    }
    ~MadeCode() { munmap(memory_, size); }
    MadeCode(const MadeCode&) = delete;
    MadeCode& operator=(const MadeCode&) = delete;

    std::int64_t operator()(std::int64_t a, std::int64_t b) const {
        return reinterpret_cast<std::int64_t (*)(std::int64_t, std::int64_t)>(memory_)(a, b);
    }
    double operator()(double a, double b) const {
        return reinterpret_cast<double (*)(double, double)>(memory_)(a, b);
    }

  private:
    static constexpr std::size_t size = 4096;
    void* memory_;
};

struct RealOperation {
    Operation operation;
    double (*model)(double, double);
};
struct WholeOperation {
    Operation operation;
    std::uint64_t (*model)(std::uint64_t, std::uint64_t);
};

TEST_F(AssemblerTest, OperationsCompute) {
    constexpr RealOperation reals[] = {
        {Operation::addsd, [](double a, double b) { return a + b; }},
        {Operation::subsd, [](double a, double b) { return a - b; }},
        {Operation::mulsd, [](double a, double b) { return a * b; }},
        {Operation::divsd, [](double a, double b) { return a / b; }},
        {Operation::sqrtsd, [](double, double b) { return std::sqrt(b); }},
        {Operation::movaps, [](double, double b) { return b; }},
    };
    constexpr WholeOperation wholes[] = {
        {Operation::add, [](std::uint64_t a, std::uint64_t b) { return a + b; }},
        {Operation::sub, [](std::uint64_t a, std::uint64_t b) { return a - b; }},
        {Operation::imul, [](std::uint64_t a, std::uint64_t b) { return a * b; }},
        {Operation::and_, [](std::uint64_t a, std::uint64_t b) { return a & b; }},
        {Operation::or_, [](std::uint64_t a, std::uint64_t b) { return a | b; }},
        {Operation::xor_, [](std::uint64_t a, std::uint64_t b) { return a ^ b; }},
        {Operation::mov, [](std::uint64_t, std::uint64_t b) { return b; }},
    };
    RandomBits random(21);
    for (const RealOperation& one : reals) {
        const MadeCode code(
            [&](Assembler& assembler) { assembler.emit(one.operation, Vector::xmm0, Vector::xmm1); });
        for (int i = 0; i < 100; ++i) {
            const double a = random.any();
            const double b = random.any();
            EXPECT_EQ(std::bit_cast<std::uint64_t>(code(a, std::fabs(b))),
                      std::bit_cast<std::uint64_t>(one.model(a, std::fabs(b))));
        }
    }
    for (const WholeOperation& one : wholes) {
        const MadeCode code([&](Assembler& assembler) {
            assembler.emit(Operation::mov, Register::rax, Register::rdi);
            assembler.emit(one.operation, Register::rax, Register::rsi);
        });
        for (int i = 0; i < 100; ++i) {
            const std::uint64_t a = random.bits();
            const std::uint64_t b = random.bits();
            EXPECT_EQ(
                static_cast<std::uint64_t>(code(static_cast<std::int64_t>(a), static_cast<std::int64_t>(b))),
                one.model(a, b));
        }
    }
}

// What a loop is made of: an index into memory, a sum, a jump back, a way out.
TEST_F(AssemblerTest, ALoopAddsUpAnArray) {
    const MadeCode code([](Assembler& assembler) {
        Label loop;
        Label end;
        assembler.load_number(Register::rax, 0);
        assembler.load_number(Register::rcx, 0);
        assembler.bind(loop);
        assembler.emit(Operation::cmp, Register::rcx, Register::rsi);
        assembler.jump_if(Condition::not_less, end);
        assembler.emit(Operation::add, Register::rax, at(Register::rdi, Register::rcx, 3, 8));
        assembler.emit(WithNumber::add, Register::rcx, 1);
        assembler.jump(loop);
        assembler.bind(end);
    });
    const std::int64_t numbers[] = {1000, 1, 20, 300, -5000};
    EXPECT_EQ(code(reinterpret_cast<std::int64_t>(numbers), 4), 1 + 20 + 300 - 5000);
    EXPECT_EQ(code(reinterpret_cast<std::int64_t>(numbers), 0), 0);
}

// The ends of what a distance of 32 bits reaches from behind the call, and one byte past each.
TEST_F(AssemblerTest, AFunctionIsCalledDirectlyWhereItIsNear) {
    std::array<std::byte, 20> room{};
    const auto behind = reinterpret_cast<std::intptr_t>(room.data()) + 5;
    for (const std::int64_t distance :
         {std::int64_t{INT32_MIN} - 1, std::int64_t{INT32_MIN}, std::int64_t{-5}, std::int64_t{INT32_MAX},
          std::int64_t{INT32_MAX} + 1}) {
        Assembler assembler(room);
        assembler.call(reinterpret_cast<const void*>(behind + distance));
        const bool is_near = distance == static_cast<std::int32_t>(distance);
        EXPECT_EQ(room[0] == std::byte{0xE8}, is_near) << distance;
        if (!is_near) continue;
        std::int32_t written;
        std::memcpy(&written, room.data() + 1, sizeof written);
        EXPECT_EQ(written, distance);
        EXPECT_EQ(assembler.position(), 5u);
    }
}

std::int64_t difference(std::int64_t a, std::int64_t b) {
    return a - b;
}

// Calls of a function and of a place in the code, which returns; the stack is as a function finds it.
TEST_F(AssemblerTest, CallsComeBack) {
    const MadeCode code([](Assembler& assembler) {
        Label twice;
        Label end;
        assembler.emit(WithNumber::sub, Register::rsp, 8);
        assembler.call(reinterpret_cast<const void*>(difference));
        assembler.emit(WithNumber::add, Register::rsp, 8);
        assembler.call(twice);
        assembler.jump(end);
        assembler.bind(twice);
        assembler.emit(Operation::add, Register::rax, Register::rax);
        assembler.return_();
        assembler.bind(end);
    });
    EXPECT_EQ(code(std::int64_t{50}, std::int64_t{8}), 84);
}

// Every jump, forwards and backwards, near and far.
TEST_F(AssemblerTest, JumpsAndAddressesOfLabels) {
    for (const int far : {0, 1}) {
        std::vector<std::byte> room(100000);
        Assembler assembler(room);
        std::string text;
        Label before;
        Label behind;
        Label end;
        assembler.jump(before);
        assembler.bind(before);
        text += "{disp32} jmp before\nbefore:\n";
        const auto add_jumps = [&] {
            for (const test::ConditionForm& form : test::condition_forms) {
                assembler.jump_if(form.condition, before);
                assembler.jump_if(form.condition, behind);
                text += 'j' + std::string(form.suffix) + " before\n{disp32} j" + std::string(form.suffix) +
                        " behind\n";
            }
            assembler.jump(before);
            assembler.jump(behind);
            text += "jmp before\n{disp32} jmp behind\n";
            assembler.call(before);
            assembler.call(behind);
            text += "call before\ncall behind\n";
            for (unsigned number = 0; number < 16; ++number) {
                assembler.load_address(static_cast<Register>(number), before);
                assembler.load_address(static_cast<Register>(number), behind);
                const std::string target = "lea " + test::register_name(Size::qword, number);
                text += target + ", [rip + before]\n" + target + ", [rip + behind]\n";
            }
        };
        add_jumps();
        const std::size_t filled = assembler.position() + (far != 0 ? 40000 : 30);
        while (assembler.position() < filled)
            assembler.sign_extend_rax(), text += "cqo\n";
        assembler.bind(behind);
        text += "behind:\n";
        add_jumps();
        assembler.jump_if(Condition::equal, end);
        assembler.bind(end);
        text += "{disp32} je end\nend:\n";
        ASSERT_FALSE(assembler.full());
        // Behind its label a jump is no forward one any more: the shortest form will do.
        std::string near = text;
        const std::size_t middle = near.find("behind:\n");
        near = near.substr(0, middle) +
               std::regex_replace(near.substr(middle), std::regex("\\{disp32\\} (j\\w+ behind)"), "$1");
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(room.data()), assembler.position()),
                  assemble(near));
    }
}

TEST_F(AssemblerTest, RandomInstructions) {
    RandomBits random(20);
    for (long i = 0; i < test::numeric_arguments() / 4; ++i)
        add(test::random_instruction(random));
    compare();
}

TEST_F(AssemblerTest, DataAndPadding) {
    std::array<std::byte, 32> room{};
    Assembler assembler(room);
    assembler.sign_extend_rax();
    assembler.align(8);
    assembler.put_64(0x0123456789ABCDEF);
    assembler.align(8);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(room.data()), assembler.position()),
              "\x48\x99\xCC\xCC\xCC\xCC\xCC\xCC\xEF\xCD\xAB\x89\x67\x45\x23\x01");
}

// Whatever the room, nothing is written behind it, and who ran out of it says so.
TEST_F(AssemblerTest, TheRoomIsNeverExceeded) {
    const auto program = [](Assembler& assembler) {
        Label loop;
        Label end;
        assembler.bind(loop);
        assembler.load_number(Register::r8, 0x123456789ABCDEF0);
        assembler.jump_if(Condition::equal, end);
        assembler.emit(Operation::addsd, Vector::xmm9, at(Register::r12, Register::r13, 3, 0x12345678));
        assembler.jump_if(Condition::below, end);
        assembler.load_address(Register::r9, end);
        assembler.emit(WithNumber::cmp, at(Register::rsp, 8), 1000);
        assembler.jump(loop);
        assembler.bind(end);
        assembler.align(16);
        assembler.put_64(~0UL);
    };
    std::array<std::byte, 128> whole{};
    Assembler unlimited(whole);
    program(unlimited);
    ASSERT_FALSE(unlimited.full());
    for (std::size_t size = 0; size <= unlimited.position(); ++size) {
        std::array<std::byte, 128> room;
        room.fill(std::byte{0x77});
        Assembler assembler(std::span<std::byte>(room.data(), size));
        program(assembler);
        EXPECT_EQ(assembler.full(), size < unlimited.position()) << size;
        for (std::size_t i = size; i < room.size(); ++i)
            ASSERT_EQ(room[i], std::byte{0x77}) << size << ' ' << i;
        EXPECT_TRUE(assembler.full() || std::memcmp(room.data(), whole.data(), size) == 0);
    }
}

// A form that is added to the header must be added to the tables too.
TEST_F(AssemblerTest, TheTablesHaveEveryEnumerator) {
    std::ifstream file("src/native/assembler.h");
    const std::string header{std::istreambuf_iterator<char>(file), {}};
    ASSERT_NE(header, "");
    const auto enumerators = [&](const std::string& name) {
        const std::size_t begin = header.find("enum class " + name + " ");
        const std::string body = header.substr(begin, header.find("};", begin) - begin);
        std::set<std::string> names;
        const std::regex row("\n    (\\w+) = ");
        for (std::sregex_iterator i(body.begin(), body.end(), row), end; i != end; ++i)
            names.insert((*i)[1]);
        return names;
    };
    const auto named = [](const auto& forms) {
        std::set<std::string> names;
        for (const auto& form : forms)
            names.emplace(form.name);
        return names;
    };
    EXPECT_EQ(named(test::operation_forms), enumerators("Operation"));
    EXPECT_EQ(named(test::unary_forms), enumerators("Unary"));
    EXPECT_EQ(named(test::number_forms), enumerators("WithNumber"));
    EXPECT_EQ(named(test::condition_forms), enumerators("Condition"));
}

}  // namespace
}  // namespace korvane::native
