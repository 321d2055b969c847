#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "explorer/line_text.h"
#include "explorer_session.h"
#include "program/landmarks.h"

namespace korvane {
namespace {

using test::ExplorerSession;
using test::Lines;

std::uint8_t* pointer(std::uint64_t address) {
    return reinterpret_cast<std::uint8_t*>(address);
}

std::uint64_t address_of(std::string_view landmark) {
    std::uint64_t address = 0x5A5A;
    EXPECT_TRUE(find_landmark(landmark, address)) << landmark;
    return address;
}

void lay_out_arenas() {
    arenas.CODEBASE = pointer(0x18000000);
    arenas.CODEEND = pointer(0x19000000);
    arenas.LOMEM = arenas.VARTABLE = pointer(0x10000000);
    arenas.FREEBOT = pointer(0x10040000);
    arenas.FREETOP = arenas.HIMEM = pointer(0x14000000);
}

// ---- Landmarks ----------------------------------------------------------------------------------

TEST(ExplorerLandmarks, AddressesAreThoseOfTheMachine) {
    ExplorerSession session;
    lay_out_arenas();
    const uefi::SystemTable* system = session.machine().system_table();
    EXPECT_EQ(address_of("SYSTEMTABLE"), reinterpret_cast<std::uint64_t>(system));
    EXPECT_EQ(address_of("BOOTSERVICES"), reinterpret_cast<std::uint64_t>(system->BootServices));
    EXPECT_EQ(address_of("RUNTIMESERVICES"), reinterpret_cast<std::uint64_t>(system->RuntimeServices));
    EXPECT_EQ(address_of("ACPI"), reinterpret_cast<std::uint64_t>(system->ConfigurationTable[0].VendorTable));
    EXPECT_EQ(address_of("SMBIOS"),
              reinterpret_cast<std::uint64_t>(system->ConfigurationTable[1].VendorTable));
    EXPECT_EQ(address_of("FRAMEBUFFER"), host::framebuffer_base);
    EXPECT_EQ(address_of("BACKBUFFER"), reinterpret_cast<std::uint64_t>(screen.back_buffer));
    EXPECT_EQ(address_of("CODEBASE"), 0x18000000u);
    EXPECT_EQ(address_of("CODEEND"), 0x19000000u);
    EXPECT_EQ(address_of("VARTABLE"), 0x10000000u);
    EXPECT_EQ(address_of("LOMEM"), 0x10000000u);
    EXPECT_EQ(address_of("HIMEM"), 0x14000000u);
}

TEST(ExplorerLandmarks, MovingBoundariesAreReadAtTheLookup) {
    ExplorerSession session;
    lay_out_arenas();
    EXPECT_EQ(address_of("FREEBOT"), 0x10040000u);
    EXPECT_EQ(address_of("FREETOP"), 0x14000000u);
    arenas.FREEBOT += 8;
    arenas.FREETOP -= 3;
    EXPECT_EQ(address_of("FREEBOT"), 0x10040008u);
    EXPECT_EQ(address_of("FREETOP"), 0x13FFFFFDu);
    EXPECT_EQ(address_of("STRINGTOP"), 0x13FFFFFDu);
}

TEST(ExplorerLandmarks, ImageIsWhereTheLoadedImageProtocolSays) {
    ExplorerSession session;
    session.machine().place_image(host::image_base, 0x2345, {});
    EXPECT_EQ(address_of("IMAGEBASE"), host::image_base);
    EXPECT_EQ(address_of("IMAGEEND"), host::image_base + 0x2345);
}

TEST(ExplorerLandmarks, NamesAreComparedExactly) {
    ExplorerSession session;
    std::uint64_t address = 77;
    for (const char* name : {"", "lomem", "LOME", "LOMEMX", "STRING"})
        EXPECT_FALSE(find_landmark(name, address));
    EXPECT_EQ(address, 77u);
}

TEST(ExplorerLandmarks, MissingTablesAreNotFound) {
    host::Config config;
    config.acpi_table = false;
    config.smbios_table = false;
    ExplorerSession session(config);
    EXPECT_EQ(session.run("M SMBIOS"), Lines{"Bad address or landmark."});
    EXPECT_EQ(session.run("M ACPI"), Lines{"Bad address or landmark."});
    const Lines lines = session.run("L");
    EXPECT_EQ(lines.at(6), "ACPI             not present       ACPI RSDP configuration table");
    EXPECT_EQ(lines.at(7), "SMBIOS           not present       SMBIOS entry point");
}

TEST(ExplorerLandmarks, OlderTablesServeWhenTheNewerAreMissing) {
    ExplorerSession session;
    uefi::ConfigurationTable* tables = session.machine().system_table()->ConfigurationTable;
    tables[0] = {uefi::acpi_10_table_guid, pointer(0x1111)};
    tables[1] = {uefi::smbios_table_guid, pointer(0x2222)};
    EXPECT_EQ(address_of("ACPI"), 0x1111u);
    EXPECT_EQ(address_of("SMBIOS"), 0x2222u);
    tables[1] = {uefi::acpi_20_table_guid, pointer(0x3333)};
    EXPECT_EQ(address_of("ACPI"), 0x3333u) << "ACPI 2.0 comes first wherever it stands";
    tables[0] = {uefi::smbios_table_guid, pointer(0x4444)};
    tables[1] = {uefi::smbios3_table_guid, pointer(0x5555)};
    EXPECT_EQ(address_of("SMBIOS"), 0x5555u);
}

TEST(ExplorerLandmarks, NamesServeAsAddressesInEitherCase) {
    ExplorerSession session;
    lay_out_arenas();
    EXPECT_EQ(session.run("m lomem 10").at(0).substr(0, 16), "0000000010000000");
    EXPECT_EQ(session.run("M STRINGTOP 10"), session.run("M FREETOP 10"));
    EXPECT_EQ(session.run("m acpi 10").at(0).substr(68), "RSD PTR .KORVAN.");
}

TEST(ExplorerLandmarks, ListShowsThemInOrder) {
    ExplorerSession session;
    lay_out_arenas();
    session.machine().place_image(host::image_base, 0x1000, {});
    const Lines lines = session.run("L");
    const std::pair<const char*, const char*> expected[] = {
        {"IMAGEBASE", "Korvane EFI image"},
        {"IMAGEEND", "end of Korvane EFI image"},
        {"SYSTEMTABLE", "UEFI system table"},
        {"BOOTSERVICES", "UEFI boot-services table"},
        {"RUNTIMESERVICES", "UEFI runtime-services table"},
        {"ACPI", "ACPI RSDP configuration table"},
        {"SMBIOS", "SMBIOS entry point"},
        {"CODEBASE", "BASIC program arena"},
        {"CODEEND", "end of BASIC program arena"},
        {"VARTABLE", "scalar/array descriptor table"},
        {"LOMEM", "start of BASIC data arena"},
        {"FREEBOT", "first free low-memory byte"},
        {"FREETOP", "top of free area / string heap"},
        {"HIMEM", "end of BASIC data arena"},
        {"FRAMEBUFFER", "GOP framebuffer"},
        {"BACKBUFFER", "graphics back buffer"}};
    ASSERT_EQ(lines.size(), std::size(expected) + 1);
    EXPECT_EQ(lines[0], "[KORVANE LANDMARKS - UEFI]");
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        LineText line;
        line.put(expected[i].first).tab_to(17).put_address(address_of(expected[i].first));
        EXPECT_EQ(lines[i + 1], std::string(line.put("  ").put(expected[i].second).view()));
    }
    EXPECT_EQ(session.run("landmarks"), lines);
}

// ---- MAP and R ----------------------------------------------------------------------------------

TEST(ExplorerMap, ListsEveryRegion) {
    host::Config config;
    ExplorerSession session(config);
    const Lines lines = session.run("MAP");
    EXPECT_EQ(lines.at(0), "[UEFI MEMORY MAP]");
    EXPECT_EQ(lines.at(1), "0000000000020000-000000000009EFFF  Conventional       127 pages       0 MiB");
    EXPECT_EQ(lines.at(2), "000000000009F000-000000000009FFFF  Reserved             1 pages       0 MiB");
    EXPECT_EQ(lines.size(), session.machine().memory().regions().size() + 1);
    for (const std::string& line : lines)
        EXPECT_LT(line.size(), 80u) << line;
    EXPECT_NE(std::find(lines.begin(), lines.end(),
                        "0000000010000000-0000000013FFFFFF  Conventional     16384 pages      64 MiB"),
              lines.end());
    EXPECT_EQ(session.run("memmap"), lines);
}

TEST(ExplorerMap, FailuresOfTheFirmwareAreReported) {
    ExplorerSession session;
    const Lines refused{"Unable to obtain UEFI memory map."};
    session.machine().faults().arm({{host::Service::GetMemoryMap, 1, 1}});
    EXPECT_EQ(session.run("MAP"), refused);
    session.machine().faults().arm({{host::Service::GetMemoryMap, 2, 1}});
    EXPECT_EQ(session.run("R 10000000"), refused);
    session.machine().faults().arm({{host::Service::AllocatePool, 1, 1, uefi::out_of_resources}});
    EXPECT_EQ(session.run("R 10000000"), refused);
    // Success for a buffer of no bytes at all is no answer either.
    session.machine().faults().arm({{host::Service::GetMemoryMap, 1, 1, uefi::success}});
    EXPECT_EQ(session.run("MAP"), refused);
}

TEST(ExplorerRegion, DescribesTheRegionInFourLines) {
    ExplorerSession session;
    const Lines lines = session.run("R 1234ABC5");
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], "Region     0000000010000000-0000000013FFFFFF");
    EXPECT_EQ(lines[1], "Type       Conventional");
    EXPECT_EQ(lines[2], "Pages      16384");
    EXPECT_EQ(lines[3].substr(0, 11), "Attributes ");
    EXPECT_EQ(lines[3].size(), 11u + 16);
}

TEST(ExplorerRegion, EndsWithItsLastByte) {
    ExplorerSession session;
    EXPECT_EQ(session.run("R 13FFFFFF").at(1), "Type       Conventional");
    EXPECT_EQ(session.run("R 14000000").at(1), "Type       ACPINVS");
    EXPECT_EQ(session.run("R A0000"), Lines{"Address is not present in the UEFI memory map."});
    EXPECT_EQ(session.run("R"), Lines{"Usage: R address"});
    EXPECT_EQ(session.run("R X"), Lines{"Bad address or landmark."});
}

TEST(ExplorerRegion, TakesAFreshMapEachTime) {
    ExplorerSession session;
    session.run("M 10000000 1");
    const auto taken = session.machine().faults().uses(host::Service::GetMemoryMap);
    session.run("R 10000000");
    session.run("R 10000000");
    EXPECT_EQ(session.machine().faults().uses(host::Service::GetMemoryMap), taken + 4);
    session.run("M 10000000 1");
    EXPECT_EQ(session.machine().faults().uses(host::Service::GetMemoryMap), taken + 4);
}

// ---- W ------------------------------------------------------------------------------------------

TEST(ExplorerWhere, NamesTheNearestLandmarkAtOrBelow) {
    ExplorerSession session;
    lay_out_arenas();
    EXPECT_EQ(session.run("W 10040010"),
              (Lines{"Nearest landmark: FREEBOT + 16  (0000000010040000)",
                     "Region     0000000010000000-0000000013FFFFFF  Conventional"}));
    EXPECT_EQ(session.run("W CODEBASE").at(0), "Nearest landmark: CODEBASE + 0  (0000000018000000)");
}

TEST(ExplorerWhere, OfLandmarksAtOneAddressTheFirstListedCounts) {
    ExplorerSession session;
    lay_out_arenas();
    EXPECT_EQ(session.run("W 10000000").at(0), "Nearest landmark: VARTABLE + 0  (0000000010000000)");
}

TEST(ExplorerWhere, AddressesOutsideTheMapHaveNoRegion) {
    ExplorerSession session;
    lay_out_arenas();
    EXPECT_EQ(session.run("W FFFFFFFFFFFFFFFF").at(1), "Address is not present in the UEFI memory map.");
    EXPECT_EQ(session.run("W").at(0), "Usage: W address");
}

TEST(ExplorerWhere, BelowAllLandmarksThereIsNone) {
    ExplorerSession session;
    lay_out_arenas();
    // The image has not been placed, so that its landmark is at 0: give it a place.
    session.machine().place_image(host::image_base, 0x1000, {});
    EXPECT_EQ(session.run("W 20000"), Lines{"No lower known landmark."});
}

// ---- I, ? and the rest --------------------------------------------------------------------------

TEST(ExplorerInformation, ShowsPlatformAndSizes) {
    ExplorerSession session;
    lay_out_arenas();
    EXPECT_EQ(session.run("I"), (Lines{"[KORVANE MACHINE INFO]", "Platform         x64 UEFI",
                                       "Address model    flat 64-bit pre-ExitBootServices",
                                       "Firmware rev     00010000  UEFI 2.8  Korvane hosted firmware",
                                       "Graphics         1024x2048, 1024 pixels per scan line",
                                       "BASIC free       66846720 bytes (63 MiB)"}));
    EXPECT_EQ(session.run("info"), session.run("I"));
}

TEST(ExplorerHelp, ListsEveryCommandToTheLetter) {
    ExplorerSession session;
    EXPECT_EQ(session.run("?"),
              (Lines{"Korvane Machine Explorer commands:",
                     "L                         landmarks",
                     "M [address [length]]      hex/ASCII dump; M alone continues",
                     "M! address [length]       force UEFI read of protected region",
                     "F start end byte          fill memory",
                     "C start1 end1 start2      compare memory blocks",
                     "> address hex...          enter hexadecimal bytes",
                     "A address text...         enter ASCII bytes",
                     "H start end hex...        hunt byte sequence",
                     "HA start end text...      hunt ASCII text",
                     "T start end dest          transfer/copy memory",
                     "SAVE file start end       save raw memory to file",
                     "LOAD file address         load raw file into memory",
                     "R address                 describe containing memory region",
                     "W address                 nearest landmark + region",
                     "V address                 view BYTE/WORD/DWORD/QWORD and typed values",
                     "MAP                       platform memory map",
                     "I                         machine information",
                     "Storage / boot inspection (read-only):",
                     "DISKS                     enumerate whole-media Block I/O devices",
                     "DISK n                    disk/media details",
                     "SECTOR n lba [count]       raw sector hex/ASCII dump",
                     "PARTITIONS n              GPT/MBR partition table",
                     "PARTITION n p             details for partition p",
                     "VOLUMES                   EFI Simple File System volumes",
                     "DIRFS v [path]            directory on volume v",
                     "CAT v file                display file as text",
                     "HEXFILE v file            display file as hex/ASCII",
                     "BOOT                      UEFI BootOrder / Boot#### entries",
                     "OS                        best-effort installed OS detection",
                     "? / HELP                  this help",
                     "X                         return to BASIC",
                     "Monitor numbers are hex by default; use D:number for decimal."}));
    EXPECT_EQ(session.run("help"), session.run("?"));
}

TEST(ExplorerHelp, LongReportsPauseAndEscapeEndsThem) {
    ExplorerSession session({}, 25);
    Lines lines = session.run("?");
    EXPECT_EQ(session.waits, 1);
    session.press_later({uefi::scan_escape, 0});
    lines = session.run("?");
    ASSERT_EQ(lines.size(), 21u);
    EXPECT_EQ(lines.back(), "-- press any key; ESC aborts --");
}

TEST(ExplorerLoop, UnknownWordsAndEmptyLines) {
    ExplorerSession session;
    EXPECT_EQ(session.run("FROB 1"), Lines{"Unknown monitor command. Type ?"});
    EXPECT_EQ(session.run(std::string(60, 'X')), Lines{"Unknown monitor command. Type ?"});
    EXPECT_EQ(session.run(""), Lines{});
    EXPECT_EQ(session.run(" \t"), Lines{});
    EXPECT_EQ(session.outcome, CommandEnd::done);
}

TEST(ExplorerLoop, TwoWordsLeave) {
    ExplorerSession session;
    session.run("x");
    EXPECT_EQ(session.outcome, CommandEnd::leave);
    session.run("EXIT");
    EXPECT_EQ(session.outcome, CommandEnd::leave);
}

}  // namespace
}  // namespace korvane
