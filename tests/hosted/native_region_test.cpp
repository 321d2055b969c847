// What is found out about a region before its code is made: how long control stays in it, and which variables
// get registers.
#include <gtest/gtest.h>

#include <array>
#include <memory>

#include "native/region.h"
#include "native/variable_registers.h"
#include "program/keywords.h"
#include "program/token.h"

namespace korvane::native {
namespace {

using Way = Region::Way;

class NativeRegion : public testing::Test {
  protected:
    NativeRegion() { region_->clear(); }

    // The place of a statement of some kind; those of a program stand in the order in which they are asked
    // for.
    Place& place(std::size_t number, std::uint8_t kind = IDENTIFIER) {
        tokens_[number].kind = kind;
        Place& found = *region_->find_or_add(&tokens_[number]);
        found.is_native = true;
        return found;
    }

    void lead(Place& from, std::initializer_list<Place*> targets) {
        region_->pending.count = 0;
        for (Place* target : targets)
            region_->lead_to(target->at);
        EXPECT_TRUE(region_->note_targets(from, 0));
    }

    std::array<Token, 600> tokens_{};
    std::unique_ptr<Region> region_ = std::make_unique<Region>();
};

TEST_F(NativeRegion, RunsEndWhereControlLeaves) {
    Place& first = place(0);
    Place& second = place(1);
    Place& third = place(2);
    Place& fourth = place(3);
    Place& outside = place(4);
    outside.is_native = false;
    lead(first, {&second});
    lead(second, {&third});
    lead(third, {&fourth});
    lead(fourth, {&outside});
    region_->find_runs();
    EXPECT_EQ(outside.run, 0);
    EXPECT_EQ(fourth.run, 1);
    EXPECT_EQ(third.run, 2);
    EXPECT_EQ(second.run, 3);
    EXPECT_EQ(first.run, longest_run);  // which counts no further
}

TEST_F(NativeRegion, TheLongestWayCounts) {
    Place& choice = place(0, KW_IF);
    Place& brief = place(1);
    Place& loop = place(2);
    Place& outside = place(3);
    outside.is_native = false;
    lead(choice, {&brief, &loop});
    lead(brief, {&outside});
    lead(loop, {&loop});
    region_->find_runs();
    EXPECT_EQ(loop.run, longest_run);
    EXPECT_EQ(choice.run, longest_run);
    EXPECT_EQ(brief.run, 1);
}

// Its loop is what a NEXT leads to first.
TEST_F(NativeRegion, TheFirstWayOfANextCounts) {
    Place& closer = place(0, KW_NEXT);
    Place& outside = place(1);
    outside.is_native = false;
    Place& loop = place(2);
    lead(closer, {&outside, &loop});
    lead(loop, {&loop});
    region_->find_runs();
    EXPECT_EQ(closer.run, 1);
}

TEST_F(NativeRegion, HasRoomFor256Places) {
    for (std::size_t i = 0; i < most_places; ++i)
        ASSERT_NE(region_->find_or_add(&tokens_[i]), nullptr);
    EXPECT_EQ(region_->find_or_add(&tokens_[most_places]), nullptr);
    EXPECT_EQ(region_->find(&tokens_[most_places]), nullptr);
    for (std::size_t i = 0; i < most_places; ++i)
        ASSERT_EQ(region_->find_or_add(&tokens_[i]), &(*region_)[i]);
    region_->lead_to(&tokens_[most_places]);
    EXPECT_FALSE(region_->note_targets((*region_)[0], 0));
}

class NativeRegisters : public NativeRegion {
  protected:
    void use(std::size_t variable, Place& where, int times = 1, Way way = Way::read,
             Type type = Type::DOUBLE) {
        for (int i = 0; i < times; ++i)
            region_->note_use(&storage_[variable], type, way, where);
    }
    const KeptVariable* kept(std::size_t variable) const { return registers_.find(&storage_[variable]); }

    std::array<double, 100> storage_{};
    VariableRegisters registers_;
};

TEST_F(NativeRegisters, SevenVariablesThatAreUsedMostHaveOne) {
    Place& statement = place(0);
    for (std::size_t i = 0; i < 9; ++i)
        use(i, statement, static_cast<int>(i) + 1);
    registers_.choose(*region_);
    ASSERT_EQ(registers_.all().size(), 7u);
    EXPECT_EQ(kept(0), nullptr);
    EXPECT_EQ(kept(1), nullptr);
    for (std::size_t i = 2; i < 9; ++i) {
        ASSERT_NE(kept(i), nullptr) << i;
        EXPECT_EQ(kept(i)->where, static_cast<Vector>(static_cast<std::size_t>(Vector::xmm7) + 8 - i));
        EXPECT_FALSE(kept(i)->is_subscript());
    }
}

TEST_F(NativeRegisters, AVariableHasOneWhereverItIsUsed) {
    Place& first = place(0);
    Place& second = place(1);
    for (int i = 0; i < 3; ++i) {
        use(1, first);
        use(2, second);
        use(1, second);
    }
    registers_.choose(*region_);
    ASSERT_EQ(registers_.all().size(), 2u);
    EXPECT_EQ(kept(1)->where, Vector::xmm7);
    EXPECT_EQ(kept(2)->where, static_cast<Vector>(static_cast<std::size_t>(Vector::xmm7) + 1));
}

// A loop is taken to have eight turns.
TEST_F(NativeRegisters, UsesInLoopsCountMore) {
    Place& outside = place(0);
    Place& inside = place(1);
    inside.depth = 1;
    use(1, outside, 7);
    use(2, inside);
    use(3, outside, 9);
    registers_.choose(*region_);
    EXPECT_EQ(registers_.all()[0].storage, kept(3)->storage);
    EXPECT_EQ(registers_.all()[1].storage, kept(2)->storage);
    EXPECT_EQ(registers_.all()[2].storage, kept(1)->storage);
}

TEST_F(NativeRegisters, WholeNumbersAndStatementsWithoutCodeDoNotCount) {
    Place& statement = place(0);
    Place& outside = place(1);
    outside.is_native = false;
    use(1, statement, 5, Way::read, Type::INTEGER);
    use(2, statement, 1, Way::read, Type::SINGLE);
    use(3, outside, 5);
    registers_.choose(*region_);
    ASSERT_EQ(registers_.all().size(), 1u);
    EXPECT_EQ(kept(2)->type, Type::SINGLE);
}

// The whole number of one that is a subscript is kept too, when it is not written more often.
TEST_F(NativeRegisters, SubscriptsHaveASecondOne) {
    Place& statement = place(0);
    use(1, statement, 1, Way::subscript);
    use(1, statement, 1, Way::written);
    use(2, statement, 1, Way::subscript);
    use(2, statement, 2, Way::written);
    use(3, statement, 3, Way::read);
    registers_.choose(*region_);
    EXPECT_TRUE(kept(1)->is_subscript());
    EXPECT_FALSE(kept(2)->is_subscript());
    EXPECT_FALSE(kept(3)->is_subscript());
}

TEST_F(NativeRegisters, SubscriptsGetWhatExpressionsLeave) {
    Place& statement = place(0);
    for (std::size_t i = 0; i < 6; ++i)
        use(i, statement, static_cast<int>(10 - i), Way::subscript);
    registers_.choose(*region_);
    int whole = 0;
    for (std::size_t i = 0; i < 6; ++i)
        whole += kept(i)->is_subscript();
    EXPECT_EQ(whole, 4);
    EXPECT_EQ(kept(0)->whole, Register::r11);
    EXPECT_EQ(kept(3)->whole, Register::r8);

    region_->note_whole_register(4);  // five of the seven that expressions may use
    registers_.choose(*region_);
    EXPECT_EQ(kept(1)->whole, Register::r10);
    EXPECT_FALSE(kept(2)->is_subscript());
    region_->note_whole_register(6);
    registers_.choose(*region_);
    EXPECT_FALSE(kept(0)->is_subscript());
}

}  // namespace
}  // namespace korvane::native
