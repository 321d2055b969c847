#include "screen/keyboard.h"

#include <gtest/gtest.h>

#include "typed_keys.h"

namespace korvane {
namespace {

using test::TypedKeys;

TEST(Keyboard, StartsWithAnEmptySlot) {
    TypedKeys keys;
    EXPECT_EQ(keyboard.look_ahead, -1);
}

TEST(KeyBreakCheck, WithoutAKeyNothingHappens) {
    TypedKeys keys;
    keys.may_be_idle = true;
    EXPECT_FALSE(key_break_check());
    EXPECT_EQ(keyboard.look_ahead, -1);
}

TEST(KeyBreakCheck, EscapeBreaksAndLeavesTheSlot) {
    TypedKeys keys;
    keys.text("A").escape();
    EXPECT_FALSE(key_break_check());
    EXPECT_TRUE(key_break_check());
    EXPECT_EQ(keyboard.look_ahead, 'A');
}

TEST(KeyBreakCheck, OneKeyIsKeptAndFurtherOnesAreDropped) {
    TypedKeys keys;
    keys.text("AB");
    EXPECT_FALSE(key_break_check());
    EXPECT_FALSE(key_break_check());
    EXPECT_EQ(keys.left(), 0u);
    keys.may_be_idle = true;
    EXPECT_EQ(key_get_nowait(), 'A');
    EXPECT_EQ(key_get_nowait(), -1);
}

TEST(KeyBreakCheck, APendingBreakIsTakenWithoutReading) {
    TypedKeys keys;
    keys.escape().text("A");
    EXPECT_EQ(key_get_nowait(), -1);
    EXPECT_EQ(keyboard.look_ahead, 256);
    EXPECT_TRUE(key_break_check());
    EXPECT_EQ(keyboard.look_ahead, -1);
    EXPECT_EQ(keys.left(), 1u);
}

TEST(KeyGetNowait, APendingBreakGivesNoKeyUntilItIsSeen) {
    TypedKeys keys;
    keys.escape().text("A");
    EXPECT_EQ(key_get_nowait(), -1);
    EXPECT_EQ(key_get_nowait(), -1);
    EXPECT_EQ(keys.left(), 1u);
}

TEST(KeyGetNowait, GivesBytesInOrder) {
    TypedKeys keys;
    keys.text("A\x01\xFF");
    EXPECT_EQ(key_get_nowait(), 'A');
    EXPECT_EQ(key_get_nowait(), 1);
    EXPECT_EQ(key_get_nowait(), 255);
}

// Deliberate: a key without a character is character 0, and wide characters are cut.
TEST(KeyGetNowait, ScanCodesAreZeroAndWideCharactersTheirLowByte) {
    TypedKeys keys;
    keys.scan_key(uefi::scan_up).scan_key(uefi::scan_f1).character_key(0x2541);
    EXPECT_EQ(key_get_nowait(), 0);
    EXPECT_EQ(key_get_nowait(), 0);
    EXPECT_EQ(key_get_nowait(), 0x41);
}

TEST(KeyGetNowait, AZeroByteInTheSlotIsAKey) {
    TypedKeys keys;
    keys.scan_key(uefi::scan_up);
    EXPECT_FALSE(key_break_check());
    EXPECT_EQ(keyboard.look_ahead, 0);
    EXPECT_EQ(key_get_nowait(), 0);
}

TEST(WaitForKey, AFailedReadWaitsAgain) {
    TypedKeys keys;
    keys.failing_read(uefi::not_ready).failing_read(uefi::device_error).text("A");
    EXPECT_EQ(wait_for_key().UnicodeChar, u'A');
    EXPECT_EQ(keys.waits, 3);
}

TEST(LookForKey, AKeyThatIsThereIsTakenWithoutWaiting) {
    TypedKeys keys;
    keys.failing_read(uefi::not_ready).failing_read(uefi::device_error).text("A");
    EXPECT_EQ(look_for_key().UnicodeChar, u'A');
    EXPECT_EQ(keys.waits, 0);
}

TEST(LookForKey, SleepsWhenThereIsNoKeyForAWhile) {
    TypedKeys keys;
    for (int i = 0; i < 2000; ++i)
        keys.failing_read(uefi::not_ready);
    keys.text("A");
    EXPECT_EQ(look_for_key().UnicodeChar, u'A');
    EXPECT_EQ(keys.waits, 1);
}

// Of firmware that cannot wait, or ends the wait for what is no key, nothing is asked in nearly
// all of the time.
TEST(LookForKey, LooksOnWhereWaitingFailsOrEndsAtOnce) {
    for (const uefi::Status status : {uefi::success, uefi::unsupported}) {
        TypedKeys keys;
        keys.wait_status = status;
        for (int i = 0; i < 9999; ++i)
            keys.failing_read(uefi::not_ready);
        keys.text("A");
        EXPECT_EQ(look_for_key().UnicodeChar, u'A');
        EXPECT_EQ(keys.waits, 4);
    }
}

TEST(WaitForAnyKey, TheWaitingByteCounts) {
    TypedKeys keys;
    keys.text("A");
    EXPECT_FALSE(key_break_check());
    EXPECT_TRUE(wait_for_any_key());
    EXPECT_EQ(keyboard.look_ahead, -1);
    EXPECT_EQ(keys.waits, 0);
}

TEST(WaitForAnyKey, APendingBreakIsAnEscape) {
    TypedKeys keys;
    keys.escape();
    EXPECT_EQ(key_get_nowait(), -1);
    EXPECT_FALSE(wait_for_any_key());
    EXPECT_EQ(keyboard.look_ahead, -1);
}

TEST(WaitForAnyKey, TheKeyIsConsumed) {
    TypedKeys keys;
    keys.scan_key(uefi::scan_down).escape().text("Z");
    EXPECT_TRUE(wait_for_any_key());
    EXPECT_FALSE(wait_for_any_key());
    EXPECT_EQ(keys.left(), 1u);
}

}  // namespace
}  // namespace korvane
