#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "explorer/storage/volumes.h"
#include "explorer_session.h"
#include "random_bits.h"

namespace korvane {
namespace {

using test::ExplorerSession;
using test::Lines;
using test::TemporaryFolder;

host::Config with_volume(const TemporaryFolder& folder) {
    host::Config config;
    config.volumes.push_back({.folder = folder.path()});
    return config;
}

std::string numbered_lines(int count) {
    std::string text;
    for (int i = 1; i <= count; ++i)
        text += std::to_string(i) + "\n";
    return text;
}

TEST(ExplorerVolumes, SizesLabelAndAccessAreShown) {
    const TemporaryFolder folder;
    host::Config config = with_volume(folder);
    config.volumes[0].read_only = true;
    config.volumes[0].label = u"STICK";
    ExplorerSession session(config);
    const Lines lines = session.run("VOLUMES");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_NE(lines[0].find("MiB free  read-only   \"STICK\""), std::string::npos) << lines[0];
    EXPECT_EQ(lines[0].find("Volume 0  "), 0u);
    for (const std::string& line : lines)
        EXPECT_LT(line.size(), 80u);
}

TEST(ExplorerVolumes, NamesMayHoldBlanksAndQuotes) {
    const TemporaryFolder folder;
    folder.write("MY FOLDER/MY FILE.TXT", "here");
    ExplorerSession session(with_volume(folder));
    EXPECT_EQ(session.run("CAT 0 \\my folder\\my file.txt"), Lines{"here"});
    EXPECT_EQ(session.run("CAT 0 \"/my folder/my file.txt\"  "), Lines{"here"});
    EXPECT_EQ(session.run("DIRFS 0 my folder").at(0), "Directory of volume 0: my folder");
    EXPECT_EQ(session.run("CAT 0 \"\""), Lines{"File path required."});
}

TEST(ExplorerVolumes, LongFilesPauseAndEscapeEndsThem) {
    const TemporaryFolder folder;
    folder.write("L.TXT", numbered_lines(21));
    ExplorerSession session(with_volume(folder), 25);
    const Lines all = session.run("CAT 0 L.TXT");
    EXPECT_EQ(session.waits, 1);
    ASSERT_EQ(all.size(), 22u);
    EXPECT_EQ(all[20], "-- press any key; ESC aborts --");
    EXPECT_EQ(all[21], "21");
    session.press_later({uefi::scan_escape, 0});
    EXPECT_EQ(session.run("CAT 0 L.TXT").back(), "-- press any key; ESC aborts --");
    session.press_later({uefi::scan_escape, 0});
    folder.write("H.BIN", std::string(21 * 16, 'h'));
    EXPECT_EQ(session.run("HEXFILE 0 H.BIN").back(), "-- press any key; ESC aborts --");
}

TEST(ExplorerVolumes, PageThatJustFitsDoesNotPause) {
    const TemporaryFolder folder;
    folder.write("L.TXT", numbered_lines(20));
    ExplorerSession session(with_volume(folder), 25);
    session.run("CAT 0 L.TXT");
    EXPECT_EQ(session.waits, 0);
}

TEST(ExplorerVolumes, RowsOfLongLinesCount) {
    const TemporaryFolder folder;
    folder.write("L.TXT", std::string(128 * 20, 'x') + "y");  // the screen has 128 columns
    ExplorerSession session(with_volume(folder), 25);
    session.run("CAT 0 L.TXT");
    EXPECT_EQ(session.waits, 1);
}

TEST(ExplorerVolumes, LargeFilesAreShownToTheirEnd) {
    const TemporaryFolder folder;
    std::string bytes(3 * 4096 + 5, 'a');
    bytes.back() = 'z';
    folder.write("B.BIN", bytes);
    ExplorerSession session(with_volume(folder), 25);
    EXPECT_EQ(session.run("HEXFILE 0 B.BIN").back().substr(0, 24), "00003000  61 61 61 61 7A");
    folder.write("B.BIN", bytes.substr(0, 4096));
    EXPECT_EQ(session.run("HEXFILE 0 B.BIN").back().substr(0, 12), "00000FF0  61");
}

TEST(ExplorerVolumes, ASingleByteIsShownAtTheBeginningAndBehindAWholePiece) {
    const TemporaryFolder folder;
    folder.write("ONE.TXT", "x");
    folder.write("MORE.TXT", std::string(4095, 'a') + "\nz");
    folder.write("NONE.TXT", "");
    ExplorerSession session(with_volume(folder));
    EXPECT_EQ(session.run("CAT 0 ONE.TXT"), Lines{"x"});
    EXPECT_EQ(session.run("HEXFILE 0 ONE.TXT").at(0).substr(0, 12), "00000000  78");
    EXPECT_EQ(session.run("CAT 0 MORE.TXT").back(), "z");
    EXPECT_EQ(session.run("HEXFILE 0 MORE.TXT").back().substr(0, 12), "00001000  7A");
    EXPECT_EQ(session.run("CAT 0 NONE.TXT"), Lines{});
    EXPECT_EQ(session.run("HEXFILE 0 NONE.TXT"), Lines{});
}

// Makes every file of the machine's first volume give at most seven bytes a call.
class ShortReads {
  public:
    ShortReads() {
        const HandleList handles(uefi::simple_file_system_guid);
        file_system_ = static_cast<uefi::SimpleFileSystemProtocol*>(
            find_interface(*handles.begin(), uefi::simple_file_system_guid));
        open_volume_ = file_system_->OpenVolume;
        file_system_->OpenVolume = open_volume;
    }
    ~ShortReads() { file_system_->OpenVolume = open_volume_; }
    ShortReads(const ShortReads&) = delete;
    ShortReads& operator=(const ShortReads&) = delete;

  private:
    static uefi::Status EFIAPI open_volume(uefi::SimpleFileSystemProtocol* self, uefi::FileProtocol** root) {
        const uefi::Status status = open_volume_(self, root);
        if (!uefi::is_error(status)) {
            open_ = (*root)->Open;
            (*root)->Open = open;
        }
        return status;
    }
    static uefi::Status EFIAPI open(uefi::FileProtocol* self, uefi::FileProtocol** opened,
                                    const char16_t* name, std::uint64_t mode, std::uint64_t attributes) {
        const uefi::Status status = open_(self, opened, name, mode, attributes);
        if (!uefi::is_error(status)) {
            read_ = (*opened)->Read;
            (*opened)->Read = read;
        }
        return status;
    }
    static uefi::Status EFIAPI read(uefi::FileProtocol* self, std::uint64_t* size, void* buffer) {
        *size = std::min<std::uint64_t>(*size, 7);
        return read_(self, size, buffer);
    }

    uefi::SimpleFileSystemProtocol* file_system_;
    static inline decltype(uefi::SimpleFileSystemProtocol::OpenVolume) open_volume_;
    static inline decltype(uefi::FileProtocol::Open) open_;
    static inline decltype(uefi::FileProtocol::Read) read_;
};

TEST(ExplorerVolumes, FilesThatComeInSmallPiecesAreShownWhole) {
    const TemporaryFolder folder;
    std::string bytes(4096 + 21, 'a');
    bytes[4096] = 'b';
    bytes.back() = 'z';
    folder.write("B.BIN", bytes);
    folder.write("L.TXT", numbered_lines(60));
    ExplorerSession session(with_volume(folder));
    const ShortReads short_reads;
    const Lines lines = session.run("CAT 0 L.TXT");
    ASSERT_EQ(lines.size(), 60u);
    for (int i = 0; i < 60; ++i)
        EXPECT_EQ(lines.at(static_cast<std::size_t>(i)), std::to_string(i + 1));
    const Lines dump = session.run("HEXFILE 0 B.BIN");
    EXPECT_EQ(dump.at(dump.size() - 2).substr(0, 16), "00001000  62 61 ");
    EXPECT_EQ(dump.back().substr(0, 24), "00001010  61 61 61 61 7A");
}

TEST(ExplorerVolumes, ProbesWantTheRightKindOfObject) {
    const TemporaryFolder folder;
    folder.write("EFI/debian/x", "");
    ExplorerSession session(with_volume(folder));
    {
        const FileHandle root = open_volume(0);
        EXPECT_TRUE(path_exists(root.get(), "\\EFI\\debian", PathKind::directory));
        EXPECT_FALSE(path_exists(root.get(), "\\EFI\\debian", PathKind::file));
        EXPECT_TRUE(path_exists(root.get(), "/efi/DEBIAN/x", PathKind::file));
        EXPECT_FALSE(path_exists(root.get(), "/efi/DEBIAN/x", PathKind::directory));
        EXPECT_FALSE(path_exists(root.get(), "\\EFI\\none", PathKind::file));
        EXPECT_FALSE(path_exists(root.get(), "", PathKind::directory));
        // What the firmware does not tell is neither.
        session.machine().faults().arm({{host::Service::FileGetInfo, 1, 2}});
        EXPECT_FALSE(path_exists(root.get(), "\\EFI\\debian", PathKind::directory));
        session.machine().faults().arm({{host::Service::FileGetInfo, 1, 2}});
        EXPECT_FALSE(path_exists(root.get(), "\\EFI\\debian\\x", PathKind::file));
    }
    EXPECT_FALSE(open_volume(1));
    EXPECT_FALSE(open_volume(0xFFFFFFFFFFFFFFFF));
}

host::Variable boot_variable(const std::u16string& name, std::vector<std::uint8_t> data) {
    host::Variable variable;
    variable.name = name;
    variable.data = std::move(data);
    return variable;
}

TEST(ExplorerBoot, LongOrdersAndOddSizesAreShownWhole) {
    host::Config config;
    std::vector<std::uint8_t> order(15 * 2 + 1, 0xFF);
    config.variables = {boot_variable(u"BootOrder", order), boot_variable(u"BootNext", {1, 2, 3})};
    ExplorerSession session(config);
    const Lines lines = session.run("BOOT");
    ASSERT_EQ(lines.size(), 2u + 15 + 1) << "the order on two lines, an entry a number, the closing message";
    EXPECT_EQ(lines[0], "BootOrder    FFFF,FFFF,FFFF,FFFF,FFFF,FFFF,FFFF,FFFF,FFFF,FFFF,FFFF,FFFF,FFFF,");
    EXPECT_EQ(lines[1], "             FFFF,FFFF");
    EXPECT_EQ(lines[2], "BootFFFF  (missing)");
}

TEST(ExplorerBoot, VariablesOfAnyBytesDoNoHarm) {
    test::RandomBits random(88675123);
    const auto draw = [&random] { return random.bits() >> 32; };
    for (int round = 0; round < 40; ++round) {
        host::Config config;
        for (const char16_t* name : {u"BootOrder", u"Boot0000", u"Boot0001", u"Boot00FF", u"BootCurrent"}) {
            std::vector<std::uint8_t> data(draw() % 200);
            // Small values give plausible lengths and attributes more often than bytes of all kinds.
            for (std::uint8_t& byte : data)
                byte = static_cast<std::uint8_t>(draw() % (round % 2 ? 256 : 5));
            config.variables.push_back(boot_variable(name, data));
        }
        ExplorerSession session(config, 25);
        session.run("BOOT");
        session.run("OS");
    }
}

}  // namespace
}  // namespace korvane
