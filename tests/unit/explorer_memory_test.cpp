#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "explorer_session.h"

namespace korvane {
namespace {

using test::ExplorerSession;
using test::Lines;

// Conventional memory of the hosted firmware that nothing else uses: 64 MiB from 0x10000000, followed by ACPI
// NVS memory (readable, not writable), conventional memory and a gap; reserved memory at 0x9F000.
constexpr std::uint64_t playground = 0x10100000;
constexpr std::uint64_t end_of_conventional = 0x14000000;

std::uint8_t* memory(std::uint64_t address) {
    return reinterpret_cast<std::uint8_t*>(address);
}

void put(std::uint64_t address, std::string_view bytes) {
    std::memcpy(memory(address), bytes.data(), bytes.size());
}

std::string get(std::uint64_t address, std::size_t count) {
    return {reinterpret_cast<const char*>(address), count};
}

// ---- M and M! -----------------------------------------------------------------------------------

TEST(ExplorerDump, ShowsSixteenBytesALine) {
    ExplorerSession session;
    put(playground, "0123456789ABCDEFxyz");
    EXPECT_EQ(session.run("M 10100000 13"),
              (Lines{"0000000010100000  30 31 32 33 34 35 36 37  38 39 41 42 43 44 45 46  0123456789ABCDEF",
                     "0000000010100010  78 79 7A ?? ?? ?? ?? ??  ?? ?? ?? ?? ?? ?? ?? ??  xyz"}));
}

TEST(ExplorerDump, LengthIs256UnlessGiven) {
    ExplorerSession session;
    EXPECT_EQ(session.run("m 10100000").size(), 16u);
    EXPECT_EQ(session.run("M 10100000 0").size(), 16u);
    EXPECT_EQ(session.run("M 10100000 D:32").size(), 2u);
}

TEST(ExplorerDump, EveryNumberSyntaxNamesTheSameAddress) {
    ExplorerSession session;
    const Lines expected = session.run("M 10100000 10");
    for (const char* line : {"M D:269484032 10", "M &H10100000 10", "M 0x10100000 10", "m 0X10100000 &h10"})
        EXPECT_EQ(session.run(line), expected) << line;
}

TEST(ExplorerDump, ContinuesBehindTheLastDumpWithItsLength) {
    ExplorerSession session;
    EXPECT_EQ(session.run("M"), Lines{"No previous dump address."});
    EXPECT_EQ(session.run("M!"), Lines{"No previous dump address."});
    session.run("M 10100000");
    EXPECT_EQ(session.run("M").at(0).substr(0, 16), "0000000010100100");
    session.run("M 10100000 20");
    EXPECT_EQ(session.run("M").at(0).substr(0, 16), "0000000010100020");
    EXPECT_EQ(session.run("M!").size(), 2u);
    EXPECT_EQ(session.run("M").at(0).substr(0, 16), "0000000010100060");
}

TEST(ExplorerDump, RefusedDumpLeavesTheContinuationAlone) {
    ExplorerSession session;
    session.run("M 10100000 10");
    session.run("M ZZ");
    session.run("M 10200000 ZZ");
    session.run("M FFFFFFFFFFFFFFF0 11");
    EXPECT_EQ(session.run("M").at(0).substr(0, 16), "0000000010100010");
}

TEST(ExplorerDump, BadArgumentsAreNamed) {
    ExplorerSession session;
    EXPECT_EQ(session.run("M 12G4"), Lines{"Bad address or landmark."});
    EXPECT_EQ(session.run("M &H"), Lines{"Bad address or landmark."});
    EXPECT_EQ(session.run("M 1FFFFFFFFFFFFFFFF"), Lines{"Bad address or landmark."});
    EXPECT_EQ(session.run("M 1000 ZZ"), Lines{"Bad length."});
    EXPECT_EQ(session.run("M 1000 LOMEM"), Lines{"Bad length."});
    EXPECT_EQ(session.run("M! 1000 ZZ"), Lines{"Bad length."});
}

TEST(ExplorerDump, MemoryOutsideTheMapIsShownAsUnknown) {
    ExplorerSession session;
    EXPECT_EQ(session.run("M 0 10"),
              (Lines{"0000000000000000  ?? ?? ?? ?? ?? ?? ?? ??  ?? ?? ?? ?? ?? ?? ?? ??  ????????????????",
                     "Region is unreadable or protected. On UEFI, M! may force the read."}));
}

TEST(ExplorerDump, StopsAfterTheFirstLineWithAnUnreadableByte) {
    ExplorerSession session;
    // The conventional memory below 0x9F000 is followed by a reserved page.
    std::memset(memory(0x9EFF8), 0x41, 8);
    const Lines lines = session.run("M 9EFF8 100");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0],
              "000000000009EFF8  41 41 41 41 41 41 41 41  ?? ?? ?? ?? ?? ?? ?? ??  AAAAAAAA????????");
}

TEST(ExplorerDump, ForcedDumpReadsProtectedMemory) {
    ExplorerSession session;
    std::memset(memory(0x9F000), 0x42, 16);
    EXPECT_EQ(session.run("M! 9F000 10"),
              Lines{"000000000009F000  42 42 42 42 42 42 42 42  42 42 42 42 42 42 42 42  BBBBBBBBBBBBBBBB"});
}

TEST(ExplorerDump, RangeMayEndAtTheTopOfTheAddressSpaceButNotPassIt) {
    ExplorerSession session;
    EXPECT_EQ(session.run("M FFFFFFFFFFFFFFF0 10").at(0).substr(0, 20), "FFFFFFFFFFFFFFF0  ??");
    EXPECT_EQ(session.run("M FFFFFFFFFFFFFFF0 11"), Lines{"Address range wraps past FFFFFFFFFFFFFFFF."});
    EXPECT_EQ(session.run("M! FFFFFFFFFFFFFFF0 11"), Lines{"Address range wraps past FFFFFFFFFFFFFFFF."});
}

TEST(ExplorerDump, LengthIsLimitedTo64KiB) {
    ExplorerSession session({}, 25);
    session.run("M 10100000 20000");
    EXPECT_EQ(session.waits, 204) << "4096 lines have a pause after every 20 but the last";
    EXPECT_EQ(session.row_text(23).substr(0, 16), "000000001010FFF0");
    session.run("M");
    EXPECT_EQ(session.row_text(23).substr(0, 16), "000000001011FFF0");
    EXPECT_EQ(session.run("M 0 10001").at(0), "Dump limited to 65536 bytes.");
    EXPECT_EQ(session.run("M 0 10000").size(), 2u);
}

int pauses(const Lines& lines) {
    int count = 0;
    for (const std::string& line : lines)
        count += line == "-- press any key --";
    return count;
}

TEST(ExplorerDump, PausesAfterEveryRowsLessFiveLines) {
    ExplorerSession session({}, 30);
    EXPECT_EQ(pauses(session.run("M 10100000 190")), 0);  // 25 lines
    EXPECT_EQ(session.waits, 0);
    const Lines lines = session.run("M 10100000 1A0");  // 26 lines
    EXPECT_EQ(pauses(lines), 1);
    EXPECT_EQ(lines.at(25), "-- press any key --");
    EXPECT_EQ(session.waits, 1);
    session.run("M 10100000 320");  // 50 lines: no pause after the last
    EXPECT_EQ(session.waits, 2);
    session.press_later({uefi::scan_escape, 0});
    EXPECT_EQ(session.run("M 10100000 1A0").size(), 27u) << "Escape must not end a dump";
}

TEST(ExplorerDump, SmallTextAreasPauseAfterSixteenLines) {
    ExplorerSession session({}, 8);
    session.run("M 10100000 100");
    EXPECT_EQ(session.waits, 0);
    session.run("M 10100000 110");
    EXPECT_EQ(session.waits, 1);
}

TEST(ExplorerDump, NineRowsPauseAfterFourLines) {
    ExplorerSession session({}, 9);
    session.run("M 10100000 40");
    EXPECT_EQ(session.waits, 0);
    session.run("M 10100000 50");
    EXPECT_EQ(session.waits, 1);
}

// ---- F ------------------------------------------------------------------------------------------

TEST(ExplorerFill, FillsBothEndsAndNothingElse) {
    ExplorerSession session;
    std::memset(memory(playground), 0, 64);
    EXPECT_EQ(session.run("F 10100001 10100020 D:170"), Lines{"Filled 0000000010100001-0000000010100020"});
    EXPECT_EQ(get(playground, 34), std::string(1, 0) + std::string(32, '\xAA') + std::string(1, 0));
    EXPECT_EQ(session.run("F 10100000 10100000 1"), Lines{"Filled 0000000010100000-0000000010100000"});
}

TEST(ExplorerFill, BadArgumentsPrintTheUsage) {
    ExplorerSession session;
    const Lines usage{"Usage: F start end byte"};
    for (const char* line : {"F", "F 10100000", "F 10100000 10100010", "F 10100000 10100010 100",
                             "F 10100000 10100010 ZZ", "F 10100000 10100010 D:256"})
        EXPECT_EQ(session.run(line), usage) << line;
    EXPECT_EQ(session.run("F ZZ 10100010 0"), Lines{"Bad address or landmark."});
    EXPECT_EQ(session.run("F 10100000 ZZ 0"), Lines{"Bad address or landmark."});
}

TEST(ExplorerFill, ReversedAndWholeRangesAreRefused) {
    ExplorerSession session;
    EXPECT_EQ(session.run("F 10100001 10100000 0"), Lines{"End address is below start address."});
    EXPECT_EQ(session.run("F 0 FFFFFFFFFFFFFFFF 0"), Lines{"Range is too large."});
}

TEST(ExplorerFill, StopsAtTheFirstByteThatIsNotWritable) {
    ExplorerSession session;
    std::memset(memory(end_of_conventional - 4), 0, 8);
    EXPECT_EQ(session.run("F 13FFFFFC 14000003 55"), Lines{"Write refused/unavailable at 0000000014000000"});
    EXPECT_EQ(get(end_of_conventional - 4, 8), std::string(4, 'U') + std::string(4, 0));
    EXPECT_EQ(session.run("F 0 FFFFFFFFFFFFFFFE 0"), Lines{"Write refused/unavailable at 0000000000000000"});
}

// ---- C ------------------------------------------------------------------------------------------

TEST(ExplorerCompare, ListsEveryDifferenceAndCounts) {
    ExplorerSession session;
    put(playground, "the same text");
    put(playground + 0x1000, "the some taxt");
    EXPECT_EQ(session.run("C 10100000 1010000C 10101000"),
              (Lines{"0000000010100005 61  !=  0000000010101005 6F",
                     "000000001010000A 65  !=  000000001010100A 61", "Compared 13 bytes, 2 differences."}));
    EXPECT_EQ(session.run("C 10100000 10100003 10101000"), Lines{"Compared 4 bytes, 0 differences."});
}

TEST(ExplorerCompare, StopsAtTheFirstUnreadableByteOfEitherBlock) {
    ExplorerSession session;
    put(0x9EFFE, "ab");
    put(playground, "xbcd");
    EXPECT_EQ(session.run("C 9EFFE 9F001 10100000"), (Lines{"000000000009EFFE 61  !=  0000000010100000 78",
                                                            "Read refused/unavailable at offset 2"}));
    EXPECT_EQ(session.run("C 10100000 1010000A 9EFFE").back(), "Read refused/unavailable at offset 2");
    EXPECT_EQ(session.run("C 0 F 10100000"), Lines{"Read refused/unavailable at offset 0"});
}

TEST(ExplorerCompare, RangesAreChecked) {
    ExplorerSession session;
    EXPECT_EQ(session.run("C 2 1 0"), Lines{"End address is below start address."});
    EXPECT_EQ(session.run("C 0 FFFFFFFFFFFFFFFF 0"), Lines{"Range is too large."});
    EXPECT_EQ(session.run("C 10100000 10100010 FFFFFFFFFFFFFFF0"),
              Lines{"Address range wraps past FFFFFFFFFFFFFFFF."});
    EXPECT_EQ(session.run("C 10100000 1010000F FFFFFFFFFFFFFFF0"),
              Lines{"Read refused/unavailable at offset 0"});
    EXPECT_EQ(session.run("C 1 2"), Lines{"Usage: C start1 end1 start2"});
    EXPECT_EQ(session.run("C 1 2 ZZ"), Lines{"Bad address or landmark."});
}

TEST(ExplorerCompare, PausesAfterEveryRowsLessFiveDifferences) {
    ExplorerSession session({}, 30);
    std::memset(memory(playground), 0, 64);
    std::memset(memory(playground + 0x1000), 1, 64);
    session.run("C 10100000 10100017 10101000");  // 24 differences
    EXPECT_EQ(session.waits, 0);
    const Lines lines = session.run("C 10100000 10100018 10101000");  // the 25th
    EXPECT_EQ(session.waits, 1);
    EXPECT_EQ(lines.at(25), "-- press any key --");
    EXPECT_EQ(lines.back(), "Compared 25 bytes, 25 differences.");
}

TEST(ExplorerCompare, EightRowsNeverPause) {
    ExplorerSession session({}, 8);
    std::memset(memory(playground), 0, 64);
    std::memset(memory(playground + 0x1000), 1, 64);
    session.run("C 10100000 1010003F 10101000");
    EXPECT_EQ(session.waits, 0);
}

// ---- > and A ------------------------------------------------------------------------------------

TEST(ExplorerEnter, WritesBytesInAnyNumberSyntax) {
    ExplorerSession session;
    EXPECT_EQ(session.run(">10100000 41 &h42 D:67 0x44"), Lines{"Wrote 4 bytes."});
    EXPECT_EQ(get(playground, 4), "ABCD");
    EXPECT_EQ(session.run("> 10100000 1"), Lines{"Wrote 1 bytes."});
}

TEST(ExplorerEnter, StopsAtABadByteAndKeepsTheOnesBefore) {
    ExplorerSession session;
    put(playground, "....");
    EXPECT_EQ(session.run("> 10100000 41 xyz 43"), Lines{"Bad hex byte: XYZ"});
    EXPECT_EQ(get(playground, 4), "A...");
    EXPECT_EQ(session.run("> 10100000 100"), Lines{"Bad hex byte: 100"});
    EXPECT_EQ(get(playground, 4), "A...");
}

TEST(ExplorerEnter, WithoutBytesNothingIsWritten) {
    ExplorerSession session;
    EXPECT_EQ(session.run("> 10100000"), Lines{"No bytes supplied."});
    EXPECT_EQ(session.run(">"), Lines{"Usage: > address hex..."});
    EXPECT_EQ(session.run("> ZZ 41"), Lines{"Bad address or landmark."});
}

TEST(ExplorerEnter, StopsAtMemoryThatIsNotWritable) {
    ExplorerSession session;
    EXPECT_EQ(session.run("> 13FFFFFF 5A 5A"), Lines{"Write refused/unavailable at 0000000014000000"});
    EXPECT_EQ(get(end_of_conventional - 1, 1), "Z");
    EXPECT_EQ(session.run("> 0 1"), Lines{"Write refused/unavailable at 0000000000000000"});
}

TEST(ExplorerEnter, WritesTheRestOfTheLineAsText) {
    ExplorerSession session;
    EXPECT_EQ(session.run("a 10100000 Hello,  World"), Lines{"Wrote 13 ASCII bytes."});
    EXPECT_EQ(get(playground, 13), "Hello,  World");
    EXPECT_EQ(session.run("A 10100000"), Lines{"Usage: A address text..."});
    EXPECT_EQ(session.run("A"), Lines{"Usage: A address text..."});
    EXPECT_EQ(session.run("A 13FFFFFE abc"), Lines{"Write refused/unavailable at 0000000014000000"});
    EXPECT_EQ(get(end_of_conventional - 2, 2), "ab");
}

// ---- H and HA -----------------------------------------------------------------------------------

TEST(ExplorerHunt, FindsOverlappingMatches) {
    ExplorerSession session;
    std::memset(memory(playground), 0xAA, 4);
    EXPECT_EQ(session.run("H 10100000 10100003 AA AA"),
              (Lines{"0000000010100000", "0000000010100001", "0000000010100002", "Found 3 match(es)."}));
}

TEST(ExplorerHunt, LastStartStillHoldsThePattern) {
    ExplorerSession session;
    std::memset(memory(playground), 0, 0x1000);
    put(playground + 0xFFC, "find");
    EXPECT_EQ(session.run("HA 10100000 10100FFF find"), (Lines{"0000000010100FFC", "Found 1 match(es)."}));
    EXPECT_EQ(session.run("HA 10100000 10100FFE find"), Lines{"Found 0 match(es)."});
    EXPECT_EQ(session.run("H 10100FFC 10100FFF 66 69 6E 64"),
              (Lines{"0000000010100FFC", "Found 1 match(es)."}));
}

TEST(ExplorerHunt, TextKeepsItsCaseAndBlanks) {
    ExplorerSession session;
    put(playground, "two  Words");
    EXPECT_EQ(session.run("ha 10100000 1010000F o  W"), (Lines{"0000000010100002", "Found 1 match(es)."}));
    EXPECT_EQ(session.run("HA 10100000 1010000F o w"), Lines{"Found 0 match(es)."});
}

TEST(ExplorerHunt, PatternsAreChecked) {
    ExplorerSession session;
    EXPECT_EQ(session.run("H 10100000 1010000F"), Lines{"Empty pattern."});
    EXPECT_EQ(session.run("HA 10100000 1010000F"), Lines{"Empty pattern."});
    EXPECT_EQ(session.run("H 10100000 1010000F 12 345"), Lines{"Bad hex byte: 345"});
    EXPECT_EQ(session.run("H 10100000 10100001 1 2 3"), Lines{"Pattern is longer than range."});
    EXPECT_EQ(session.run("HA 10100001 10100000 x"), Lines{"End address is below start address."});
    EXPECT_EQ(session.run("H 0 FFFFFFFFFFFFFFFF 1"), Lines{"Range is too large."});
    EXPECT_EQ(session.run("H 1"), Lines{"Usage: H start end hex..."});
    EXPECT_EQ(session.run("HA"), Lines{"Usage: HA start end text..."});
}

TEST(ExplorerHunt, PatternsEndAt256Bytes) {
    ExplorerSession session;
    std::memset(memory(playground), 'a', 256);
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += " 61";
    EXPECT_EQ(session.run("H 10100000 101000FF" + bytes), (Lines{"0000000010100000", "Found 1 match(es)."}));
    EXPECT_EQ(session.run("H 10100000 101000FF 61" + bytes), Lines{"Pattern limited to 256 bytes."});
    EXPECT_EQ(session.run("HA 10100000 101000FF " + std::string(256, 'a')),
              (Lines{"0000000010100000", "Found 1 match(es)."}));
    EXPECT_EQ(session.run("HA 10100000 101000FF " + std::string(257, 'a')),
              Lines{"ASCII pattern limited to 256 bytes."});
}

TEST(ExplorerHunt, EndsWithoutATotalAtTheFirstUnreadableByte) {
    ExplorerSession session;
    std::memset(memory(0x9E000), 0, 0x1000);
    put(0x9E010, "Q");
    EXPECT_EQ(session.run("HA 9E000 A0000 Q"), (Lines{"000000000009E010", "Read refused/unavailable."}));
    EXPECT_EQ(session.run("H 0 FFFFFFFFFFFFFFFE 1"), Lines{"Read refused/unavailable."});
}

TEST(ExplorerHunt, PausesLikeComparing) {
    ExplorerSession session({}, 30);
    std::memset(memory(playground), 7, 25);
    std::memset(memory(playground + 25), 8, 25);
    session.run("H 10100000 1010001F 8");
    EXPECT_EQ(session.waits, 0);
    const Lines lines = session.run("H 10100000 1010001F 7");
    EXPECT_EQ(session.waits, 1);
    EXPECT_EQ(lines.at(25), "-- press any key --");
}

// ---- T ------------------------------------------------------------------------------------------

TEST(ExplorerTransfer, CopiesWithinOverlappingBlocksBothWays) {
    ExplorerSession session;
    put(playground, "0123456789ABCDEF");
    EXPECT_EQ(session.run("T 10100000 1010000F 10100008"), Lines{"Transferred 16 bytes."});
    EXPECT_EQ(get(playground, 24), "012345670123456789ABCDEF");
    EXPECT_EQ(session.run("T 10100008 10100017 10100000"), Lines{"Transferred 16 bytes."});
    EXPECT_EQ(get(playground, 16), "0123456789ABCDEF");
    EXPECT_EQ(session.run("T 10100000 1010000F 10100000"), Lines{"Transferred 16 bytes."});
    EXPECT_EQ(get(playground, 16), "0123456789ABCDEF");
}

TEST(ExplorerTransfer, StopsUpwardAtTheFirstByteThatCannotBeCopied) {
    ExplorerSession session;
    put(playground, "abcd");
    EXPECT_EQ(session.run("T 10100000 10100003 13FFFFFE"), Lines{"Transfer stopped at offset 2"});
    EXPECT_EQ(get(end_of_conventional - 2, 2), "ab");
    put(0x9EFFF, "z");
    EXPECT_EQ(session.run("T 9EFFF 9F002 10100000"), Lines{"Transfer stopped at offset 1"});
    EXPECT_EQ(get(playground, 4), "zbcd");
}

TEST(ExplorerTransfer, StopsDownwardAtTheFirstByteThatCannotBeCopied) {
    ExplorerSession session;
    // The last two bytes would go to memory that is not writable.
    put(end_of_conventional - 12, "01234567");
    EXPECT_EQ(session.run("T 13FFFFF4 13FFFFFB 13FFFFFA"), Lines{"Transfer stopped at offset 7"});
    EXPECT_EQ(get(end_of_conventional - 12, 8), "01234567");
    // Here the first bytes do: the copy begins at the end, in writable memory, and stops on its way down.
    put(0x14003FFA, std::string(6, 'n'));
    put(0x14004000, "hijk");
    EXPECT_EQ(session.run("T 14003FFA 14004003 14003FFC"), Lines{"Transfer stopped at offset 3"});
    EXPECT_EQ(get(0x14004000, 6), "nnhijk");
}

TEST(ExplorerTransfer, RangesAreChecked) {
    ExplorerSession session;
    EXPECT_EQ(session.run("T 2 1 0"), Lines{"End address is below start address."});
    EXPECT_EQ(session.run("T 0 FFFFFFFFFFFFFFFF 0"), Lines{"Range is too large."});
    EXPECT_EQ(session.run("T 10100000 10100010 FFFFFFFFFFFFFFF0"),
              Lines{"Address range wraps past FFFFFFFFFFFFFFFF."});
    EXPECT_EQ(session.run("T 1 2"), Lines{"Usage: T start end dest"});
}

// ---- V ------------------------------------------------------------------------------------------

TEST(ExplorerView, ShowsTheBytesAsEveryType) {
    ExplorerSession session;
    put(playground, std::string_view("\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 8));
    EXPECT_EQ(
        session.run("V 10100000"),
        (Lines{"Address  0000000010100000", "BYTE     FE                unsigned=254",
               "WORD     FFFE              unsigned=65534", "DWORD    FFFFFFFE          unsigned=4294967294",
               "QWORD    FFFFFFFFFFFFFFFE  unsigned=18446744073709551614", "INT16    -2", "INT32    -2",
               "INT64    -2", "FLOAT    NAN", "DOUBLE   NAN", "ASCII    ........"}));
}

TEST(ExplorerView, ReadsLittleEndian) {
    ExplorerSession session;
    put(playground, std::string_view("\x00\x00\xC0\x3F\x00\x00\x04\x40", 8));
    const Lines lines = session.run("V 10100000");
    ASSERT_EQ(lines.size(), 11u);
    EXPECT_EQ(lines[3], "DWORD    3FC00000          unsigned=1069547520");
    EXPECT_EQ(lines[5], "INT16    0");
    EXPECT_EQ(lines[8], "FLOAT    1.5");
    // 0x400400003FC00000 is 2.5 + 0x3FC00000 * 2^-51.
    EXPECT_EQ(lines[9], "DOUBLE   2.50000047497451");
    EXPECT_EQ(lines[10], "ASCII    ...?...@");
}

TEST(ExplorerView, RefusesUnreadableAndWrappingAddresses) {
    ExplorerSession session;
    EXPECT_EQ(session.run("V 0"), Lines{"Read refused/unavailable."});
    EXPECT_EQ(session.run("V 9EFF9"), Lines{"Read refused/unavailable."});
    EXPECT_EQ(session.run("V 9EFF8").size(), 11u);
    EXPECT_EQ(session.run("V FFFFFFFFFFFFFFF8"), Lines{"Read refused/unavailable."});
    EXPECT_EQ(session.run("V FFFFFFFFFFFFFFF9"), Lines{"Address range wraps past FFFFFFFFFFFFFFFF."});
    EXPECT_EQ(session.run("V"), Lines{"Usage: V address"});
    EXPECT_EQ(session.run("V Q"), Lines{"Bad address or landmark."});
}

// ---- SAVE and LOAD ------------------------------------------------------------------------------

TEST(ExplorerFiles, MemoryGoesToAFileAndBack) {
    const test::TemporaryFolder folder;
    host::Config config;
    config.volumes = {{folder.path()}};
    ExplorerSession session(config);
    std::string bytes(3 * 1024 * 1024 + 17, 0);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * 7 + (i >> 12));
    put(playground, bytes);
    EXPECT_EQ(session.run("save dump.bin 10100000 10400010"), Lines{"Saved 3145745 bytes to DUMP.BIN"});
    EXPECT_TRUE(folder.read("DUMP.BIN") == bytes);
    EXPECT_EQ(session.run("LOAD dump.bin 10800000"), Lines{"Loaded 3145745 bytes at 0000000010800000"});
    EXPECT_TRUE(get(0x10800000, bytes.size()) == bytes);
    EXPECT_EQ(session.run("SAVE DUMP.BIN 10100000 10100000"), Lines{"Saved 1 bytes to DUMP.BIN"});
    EXPECT_EQ(folder.read("DUMP.BIN"), bytes.substr(0, 1));
}

TEST(ExplorerFiles, SavingReportsWhatWentWrong) {
    const test::TemporaryFolder folder;
    host::Config config;
    config.volumes = {{folder.path()}};
    ExplorerSession session(config);
    EXPECT_EQ(session.run("SAVE"), Lines{"Usage: SAVE filename start end"});
    EXPECT_EQ(session.run("SAVE F 1"), Lines{"Usage: SAVE filename start end"});
    EXPECT_EQ(session.run("SAVE F ZZ 1"), Lines{"Bad address or landmark."});
    EXPECT_EQ(session.run("SAVE F 2 1"), Lines{"End address is below start address."});
    EXPECT_EQ(session.run("SAVE F 0 FFFFFFFFFFFFFFFF"), Lines{"Range is too large."});
    EXPECT_EQ(session.run("SAVE NO\\SUCH\\F 10100000 10100001"), Lines{"Cannot create file."});
    EXPECT_EQ(session.run("SAVE F 9EFFF 9F001"), Lines{"Read refused/unavailable at 000000000009F000"});
    session.machine().faults().arm({{host::Service::FileWrite, 1, 1}});
    EXPECT_EQ(session.run("SAVE F 10100000 10100001"), Lines{"File write error."});
}

TEST(ExplorerFiles, LoadingReportsWhatWentWrong) {
    const test::TemporaryFolder folder;
    folder.write("FOUR", "1234");
    folder.write("EMPTY", "");
    folder.write("SUB/X", "");
    host::Config config;
    config.volumes = {{folder.path()}};
    ExplorerSession session(config);
    EXPECT_EQ(session.run("LOAD"), Lines{"Usage: LOAD filename address"});
    EXPECT_EQ(session.run("LOAD FOUR"), Lines{"Usage: LOAD filename address"});
    EXPECT_EQ(session.run("LOAD FOUR ZZ"), Lines{"Bad address or landmark."});
    EXPECT_EQ(session.run("LOAD NONE 10100000"), Lines{"File not found."});
    EXPECT_EQ(session.run("LOAD SUB 10100000"), Lines{"File not found."});
    EXPECT_EQ(session.run("LOAD FOUR FFFFFFFFFFFFFFFD"), Lines{"Address range wraps past FFFFFFFFFFFFFFFF."});
    EXPECT_EQ(session.run("LOAD FOUR FFFFFFFFFFFFFFFC"),
              Lines{"Write refused/unavailable at FFFFFFFFFFFFFFFC"});
    EXPECT_EQ(session.run("LOAD EMPTY 0"), Lines{"Loaded 0 bytes at 0000000000000000"});
    EXPECT_EQ(session.run("LOAD FOUR 13FFFFFE"), Lines{"Write refused/unavailable at 0000000014000000"});
    EXPECT_EQ(get(end_of_conventional - 2, 2), "12");
    session.machine().faults().arm({{host::Service::FileRead, 1, 1}});
    EXPECT_EQ(session.run("LOAD FOUR 10100000"), Lines{"File read error."});
}

TEST(ExplorerFiles, WithoutAVolumeNothingIsFound) {
    ExplorerSession session;
    EXPECT_EQ(session.run("LOAD FOUR 10100000"), Lines{"File not found."});
    EXPECT_EQ(session.run("SAVE FOUR 10100000 10100001"), Lines{"Cannot create file."});
}

// ---- The cached memory map ----------------------------------------------------------------------

TEST(ExplorerMemoryMap, WithoutAMapNothingIsReadableAndTheMapIsTriedAgain) {
    ExplorerSession session;
    session.machine().faults().arm({{host::Service::GetMemoryMap, 1, 16}});
    EXPECT_EQ(session.run("M 10100000 10").at(0).substr(18, 5), "?? ??");
    session.machine().faults().arm({{host::Service::AllocatePool, 1, 16, uefi::out_of_resources}});
    EXPECT_EQ(session.run("F 10100000 10100001 0"), Lines{"Write refused/unavailable at 0000000010100000"});
    session.machine().faults().arm({});
    const auto before = session.machine().faults().uses(host::Service::GetMemoryMap);
    EXPECT_EQ(session.run("F 10100000 10100001 0"), Lines{"Filled 0000000010100000-0000000010100001"});
    EXPECT_EQ(session.run("M 10100000 1").at(0).substr(18, 2), "00");
    EXPECT_EQ(session.machine().faults().uses(host::Service::GetMemoryMap), before + 2)
        << "the map is kept once taken";
}

}  // namespace
}  // namespace korvane
