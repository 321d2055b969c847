// Finding and loading the program behind a standalone image, whole and damaged.
#include "image/packed_program.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "explorer_session.h"
#include "files/named_files.h"
#include "files/own_image.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/program_store.h"

namespace korvane {
namespace {

std::string u32(std::uint32_t number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

std::string u64(std::uint64_t number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

std::string record(std::uint32_t number, const std::string& text) {
    return u32(number) + u32(static_cast<std::uint32_t>(text.size())) + text;
}

std::string packed(std::uint32_t count, const std::string& records) {
    return "BAS2" + u32(count) + records;
}

std::string trailer(std::uint64_t length) {
    return "KORVANE2-PACKED!" + u64(length);
}

std::string with_trailer(const std::string& program_bytes) {
    return program_bytes + trailer(program_bytes.size());
}

// What stands in front of the packed program; its content is of no interest to the loader.
const std::string image_bytes(1000, 'i');

host::Config config_for(const std::filesystem::path& folder) {
    host::Config config;
    config.volumes.push_back({.folder = folder});
    config.image_path = u"\\APP.EFI";
    return config;
}

class PackedProgramTest : public testing::Test {
  protected:
    PackedProgramTest() : arena_(1 << 20), session_(config_for(folder_.path())) {
        arenas.CODEBASE = arena_.data();
        arenas.CODEEND = arena_.data() + arena_.size();
        clear_program();
        errors = ErrorState{};
    }
    ~PackedProgramTest() override {
        clear_program();
        errors = ErrorState{};
        packed_program = PackedProgram{};
    }

    // Makes `contents` the image file and looks for a program in it.
    bool detect(const std::string& contents) {
        folder_.write("APP.EFI", contents);
        return detect_packed_program();
    }

    // Loads over a program that is there already.
    bool load(const std::string& contents) {
        EXPECT_TRUE(detect(contents));
        errors = ErrorState{};
        clear_program();
        store_line(77, "REM old");
        return load_packed_program();
    }

    std::string program_text() {
        std::string text;
        for (std::uint32_t i = 0; i < program.count; ++i)
            text += std::to_string(program.lines[i].number) + " " + std::string(line_text(i)) + "\n";
        return text;
    }

    test::TemporaryFolder folder_;
    std::vector<std::uint8_t> arena_;
    test::ExplorerSession session_;
};

const std::string two_lines = record(10, "PRINT 1") + record(4294967294, "END");

TEST_F(PackedProgramTest, IsFoundInFrontOfTheTrailer) {
    ASSERT_TRUE(detect(image_bytes + with_trailer(packed(2, two_lines))));
    EXPECT_TRUE(packed_program.present);
    EXPECT_EQ(packed_program.start, image_bytes.size());
    EXPECT_EQ(packed_program.length, 8 + two_lines.size());
}

TEST_F(PackedProgramTest, ReplacesTheProgramInOrder) {
    ASSERT_TRUE(load(image_bytes + with_trailer(packed(2, two_lines))));
    EXPECT_EQ(program_text(), "10 PRINT 1\n4294967294 END\n");
}

TEST_F(PackedProgramTest, TheLastOfTwoCounts) {
    const std::string first = image_bytes + with_trailer(packed(1, record(10, "REM first")));
    ASSERT_TRUE(load(first + with_trailer(packed(1, record(20, "REM second")))));
    EXPECT_EQ(program_text(), "20 REM second\n");
}

TEST_F(PackedProgramTest, MayBeTheWholeFile) {
    ASSERT_TRUE(load(with_trailer(packed(0, ""))));
    EXPECT_EQ(program_text(), "");
}

TEST_F(PackedProgramTest, IsNotFoundWithoutAWholeTrailer) {
    const std::string whole = with_trailer(packed(0, ""));
    EXPECT_FALSE(detect(""));
    EXPECT_FALSE(detect(image_bytes));
    EXPECT_FALSE(detect(trailer(8).substr(1)));
    EXPECT_FALSE(detect(image_bytes + whole + "x"));
    EXPECT_FALSE(detect(image_bytes + whole.substr(0, whole.size() - 1)));
    EXPECT_FALSE(packed_program.present);
}

TEST_F(PackedProgramTest, IsNotFoundWithoutAnImageFile) {
    EXPECT_FALSE(detect_packed_program());
    EXPECT_FALSE(load_packed_program());
}

TEST_F(PackedProgramTest, TheLengthInTheTrailerGoesFrom8ToWhatTheFileHolds) {
    const std::string front(100, 'i');
    EXPECT_FALSE(detect(front + trailer(0)));
    EXPECT_FALSE(detect(front + trailer(7)));
    EXPECT_TRUE(detect(front + trailer(8)));
    EXPECT_TRUE(detect(front + trailer(100)));
    EXPECT_FALSE(detect(front + trailer(101)));
    EXPECT_FALSE(detect(front + trailer(124)));
    EXPECT_FALSE(detect(front + trailer(0xFFFFFFFFFFFFFFFF)));
    EXPECT_FALSE(detect(front + trailer(0x8000000000000008)));
}

TEST_F(PackedProgramTest, EveryByteOfTheTrailerMatters) {
    const std::string good = image_bytes + with_trailer(packed(2, two_lines));
    for (std::size_t i = good.size() - 24; i < good.size(); ++i) {
        for (const char change : {'\x01', '\x80'}) {
            std::string bad = good;
            bad[i] = static_cast<char>(bad[i] ^ change);
            const bool in_magic = i < good.size() - 8;
            // A changed length either does not fit the file or does not lead to a program.
            if (detect(bad)) {
                EXPECT_FALSE(in_magic) << i;
                EXPECT_FALSE(load(bad)) << i;
            }
        }
    }
}

TEST_F(PackedProgramTest, EveryByteOfHeaderAndHeadsChangedIsLoadedOrRefused) {
    const std::string good = with_trailer(packed(2, record(10, "REM 1234") + record(20, "REM")));
    const std::size_t second_head = 8 + 8 + 8;
    for (std::size_t i = 0; i < second_head + 8; ++i) {
        const bool in_text = i >= 16 && i < second_head;
        const bool in_line_number = (i >= 8 && i < 12) || (i >= second_head && i < second_head + 4);
        for (const int change : {0x01, 0x10, 0x80, 0xFF}) {
            std::string other = good;
            other[i] = static_cast<char>(other[i] ^ change);
            // Text and numbers are free; magic, count and lengths are tied to the whole.
            EXPECT_EQ(load(image_bytes + other), in_text || in_line_number)
                << "byte " << i << " changed by " << change;
        }
    }
}

TEST_F(PackedProgramTest, LineNumbersEndAt4294967294) {
    EXPECT_TRUE(load(with_trailer(packed(1, record(4294967294, "REM")))));
    EXPECT_FALSE(load(with_trailer(packed(1, record(4294967295, "REM")))));
}

TEST_F(PackedProgramTest, TextsEndAt244Characters) {
    EXPECT_TRUE(load(with_trailer(packed(1, record(1, std::string(244, 'x'))))));
    EXPECT_EQ(program_text(), "1 " + std::string(244, 'x') + "\n");
    EXPECT_FALSE(load(with_trailer(packed(1, record(1, std::string(245, 'x'))))));
}

TEST_F(PackedProgramTest, RecordsEndExactlyAtTheTrailer) {
    const std::string one = record(1, "REM");
    EXPECT_FALSE(load(with_trailer(packed(1, one + "x"))));
    EXPECT_FALSE(load(with_trailer(packed(1, one).substr(0, packed(1, one).size() - 1))));
    EXPECT_FALSE(load(image_bytes + packed(1, one) + trailer(packed(1, one).size() + 1)));
    EXPECT_FALSE(load(image_bytes + packed(1, one) + trailer(packed(1, one).size() - 1)));
}

TEST_F(PackedProgramTest, CountsAndRecordsMustAgree) {
    EXPECT_FALSE(load(with_trailer(packed(0, "x"))));
    EXPECT_FALSE(load(with_trailer(packed(0, two_lines))));
    EXPECT_FALSE(load(with_trailer(packed(1, two_lines))));
    EXPECT_FALSE(load(with_trailer(packed(3, two_lines))));
    EXPECT_FALSE(load(with_trailer(packed(65537, two_lines))));
    EXPECT_FALSE(load(with_trailer(packed(0xFFFFFFFF, two_lines))));
}

TEST_F(PackedProgramTest, ATextLongerThanWhatRemainsIsRefused) {
    EXPECT_FALSE(load(with_trailer(packed(1, u32(10) + u32(100) + "REM"))));
    EXPECT_FALSE(load(with_trailer(packed(1, u32(10) + u32(0xFFFFFFFF) + "REM"))));
}

TEST_F(PackedProgramTest, AProgramThatDoesNotFitIsRefused) {
    arenas.CODEEND = arenas.CODEBASE + 16;
    EXPECT_FALSE(load(with_trailer(packed(2, record(10, "REM") + record(20, "REM")))));
}

TEST_F(PackedProgramTest, BlocksAndRecordsNeedNotCoincide) {
    std::string records;
    std::string expected;
    for (std::uint32_t i = 0; i < 1000; ++i) {
        const std::string text = "REM " + std::string(i % 200, static_cast<char>('a' + i % 26));
        records += record(i, text);
        expected += std::to_string(i) + " " + text + "\n";
    }
    ASSERT_TRUE(load(image_bytes + with_trailer(packed(1000, records))));
    EXPECT_EQ(program_text(), expected);
}

TEST_F(PackedProgramTest, AFailingFirmwareCallMeansNoProgram) {
    const std::string good = image_bytes + with_trailer(packed(2, two_lines));
    using host::Service;
    for (const Service service :
         {Service::FileOpen, Service::FileRead, Service::FileGetPosition, Service::FileSetPosition}) {
        ASSERT_TRUE(detect(good));
        session_.machine().faults().arm({{service}});
        EXPECT_FALSE(detect_packed_program());
        session_.machine().faults().arm({});
        ASSERT_TRUE(detect(good));
        if (service == Service::FileGetPosition) continue;
        session_.machine().faults().arm({{service}});
        EXPECT_FALSE(load_packed_program());
        session_.machine().faults().arm({});
        EXPECT_TRUE(load_packed_program());
    }
}

// ---- Signed images ------------------------------------------------------------------------------

// The headers of a PE32+ image as far as they tell where its certificate table is.
std::string pe_headers(std::uint32_t table, std::uint32_t table_size) {
    std::string headers(64 + 24 + 240, '\0');
    headers.replace(0, 2, "MZ");
    headers.replace(0x3C, 4, u32(64));
    headers.replace(64, 2, "PE");
    headers[64 + 24] = '\x0B';
    headers[64 + 25] = '\x02';
    headers.replace(64 + 24 + 108, 4, u32(16));
    headers.replace(64 + 24 + 144, 8, u32(table) + u32(table_size));
    return headers;
}

std::string signed_image(const std::string& packed_bytes, std::size_t padding,
                         std::uint32_t certificate_bytes = 96) {
    const std::size_t front = pe_headers(0, 0).size() + packed_bytes.size() + padding;
    return pe_headers(static_cast<std::uint32_t>(front), certificate_bytes) + packed_bytes +
           std::string(padding, '\0') + std::string(certificate_bytes, 'c');
}

TEST_F(PackedProgramTest, IsFoundInFrontOfASignature) {
    const std::string program_bytes = with_trailer(packed(2, two_lines));
    for (std::size_t padding = 0; padding < 8; ++padding) {
        ASSERT_TRUE(load(signed_image(program_bytes, padding))) << padding;
        EXPECT_EQ(program_text(), "10 PRINT 1\n4294967294 END\n");
    }
    for (const std::uint32_t certificate_bytes : {0U, 1U, 2U, 4096U})
        EXPECT_TRUE(load(signed_image(program_bytes, 0, certificate_bytes))) << certificate_bytes;
    EXPECT_FALSE(detect(signed_image(program_bytes, 8)));
    EXPECT_FALSE(detect(signed_image("", 0)));
}

// The headers may stand anywhere, even at the very end, inside the certificate table.
TEST_F(PackedProgramTest, HeadersMayBeTheLastOfTheFile) {
    const std::string program_bytes = with_trailer(packed(2, two_lines));
    const auto table = static_cast<std::uint32_t>(64 + program_bytes.size());
    constexpr std::uint32_t header_bytes = 24 + 152;  // up to the entry of the certificate table
    std::string image = pe_headers(table, header_bytes).substr(0, 64 + header_bytes);
    image.replace(0x3C, 4, u32(table));
    image.insert(64, program_bytes);
    ASSERT_TRUE(load(image));
    EXPECT_EQ(program_text(), "10 PRINT 1\n4294967294 END\n");
    // One byte less, and the entry is not whole.
    EXPECT_FALSE(detect(image.substr(0, image.size() - 1)));
}

TEST_F(PackedProgramTest, HeadersThatMakeNoSensePointToNoSignature) {
    const std::string good = signed_image(with_trailer(packed(2, two_lines)), 0);
    for (std::size_t i = 0; i < pe_headers(0, 0).size(); ++i) {
        std::string bad = good;
        bad[i] = static_cast<char>(bad[i] ^ 0xFF);
        detect(bad);  // must end, whatever it finds
    }
    const std::size_t trailer_end = good.size() - 96;
    for (std::size_t size = 0; size < good.size(); size += 2) {
        // Cut behind the trailer it is an unsigned image; cut elsewhere it is nothing.
        EXPECT_EQ(detect(good.substr(0, size)), size == trailer_end) << size;
    }
}

// ---- The path of the running image --------------------------------------------------------------

std::string node(std::uint8_t type, std::uint8_t subtype, const std::u16string& text, int extra_bytes = 0) {
    const std::size_t length = 4 + text.size() * 2 + static_cast<std::size_t>(extra_bytes);
    std::string bytes = {static_cast<char>(type), static_cast<char>(subtype),
                         static_cast<char>(length & 0xFF), static_cast<char>(length >> 8)};
    bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    return bytes + std::string(static_cast<std::size_t>(extra_bytes), 'x');
}

const std::string end_node = node(0x7F, 0xFF, u"");

class ImagePathTest : public PackedProgramTest {
  protected:
    bool opens_with(std::string path) {
        auto* image = loaded_image();
        uefi::DevicePathNode* const old = image->FilePath;
        image->FilePath = reinterpret_cast<uefi::DevicePathNode*>(path.data());
        const bool opened = static_cast<bool>(open_own_image());
        image->FilePath = old;
        return opened;
    }
};

TEST_F(ImagePathTest, FilePathNodesAreJoined) {
    folder_.write("EFI/APP.EFI", "x");
    EXPECT_TRUE(opens_with(node(4, 4, u"\\EFI\\APP.EFI") + end_node));
    EXPECT_TRUE(opens_with(node(4, 4, std::u16string(u"\\EFI\\APP.EFI\0", 13)) + end_node));
    EXPECT_TRUE(opens_with(node(4, 4, u"\\EFI") + node(4, 4, u"\\APP.EFI") + end_node));
    EXPECT_TRUE(opens_with(node(1, 1, u"zz") + node(4, 4, u"\\EFI\\") + node(4, 3, u"qq") +
                           node(4, 4, u"APP.EFI") + end_node));
    // An odd byte at the end of a node is no character.
    EXPECT_TRUE(opens_with(node(4, 4, u"\\EFI\\APP.EFI", 1) + end_node));
    // Any end node ends the path, and so does a node that is too short.
    EXPECT_TRUE(opens_with(node(4, 4, u"\\EFI\\APP.EFI") + node(0x7F, 1, u"") + node(4, 4, u"X") + end_node));
    EXPECT_TRUE(opens_with(node(4, 4, u"\\EFI\\APP.EFI") + std::string("\x04\x04\x03\x00", 4)));
}

TEST_F(ImagePathTest, OtherPathsNameNoFile) {
    EXPECT_FALSE(opens_with(end_node));
    EXPECT_FALSE(opens_with(std::string(4, '\0')));
    EXPECT_FALSE(opens_with(node(4, 4, u"") + end_node));
    EXPECT_FALSE(opens_with(node(4, 4, u"\\NOSUCH.EFI") + end_node));
    folder_.write("A\xC4\x80.EFI", "x");
    EXPECT_FALSE(opens_with(node(4, 4, u"\\A\u0100.EFI") + end_node));
    folder_.write("A\xC3\xBF.EFI", "x");
    EXPECT_TRUE(opens_with(node(4, 4, u"\\A\u00FF.EFI") + end_node));
    auto* image = loaded_image();
    image->FilePath = nullptr;
    EXPECT_FALSE(open_own_image());
}

TEST_F(ImagePathTest, PathsEndAt511Characters) {
    folder_.write("APP.EFI", "x");
    const std::u16string longest = std::u16string(511 - 8, u'\\') + u"\\APP.EFI";
    EXPECT_TRUE(opens_with(node(4, 4, longest) + end_node));
    EXPECT_FALSE(opens_with(node(4, 4, u"\\" + longest) + end_node));
    EXPECT_FALSE(opens_with(node(4, 4, longest) + node(4, 4, u"X") + end_node));
}

TEST_F(ImagePathTest, TheRunningImageIsKnownByName) {
    const auto is_own = [](std::string_view name) {
        const FileHandle file = OpenFileByName(name, OpenMode::read);
        EXPECT_TRUE(file) << name;
        return is_own_image(file.get(), FirmwareName(name));
    };
    std::filesystem::create_directory(folder_.path() / "SUB");
    folder_.write("APP.EFI", "x");
    folder_.write("SUB/APP.EFI", "x");
    folder_.write("APP.EF", "x");
    folder_.write("APP.EFI2", "x");
    for (const bool image_was_opened : {false, true}) {
        EXPECT_TRUE(!image_was_opened || open_own_image());
        EXPECT_TRUE(is_own("APP.EFI"));
        EXPECT_TRUE(is_own("\\app.efi"));
        EXPECT_TRUE(is_own("//App.efi"));
        EXPECT_TRUE(is_own("APP.EFI."));
        EXPECT_TRUE(is_own("SUB\\..\\ APP.EFI/"));
        EXPECT_FALSE(is_own("APP.EF"));
        EXPECT_FALSE(is_own("APP.EFI2"));
        EXPECT_FALSE(is_own("SUB\\APP.EFI"));
        EXPECT_FALSE(is_own("SUB"));
    }
    const FirmwareName sub("SUB");
    set_current_directory(open_named(sub, uefi::file_mode_read), sub);
    EXPECT_FALSE(is_own("APP.EFI"));
    EXPECT_TRUE(is_own("../APP.EFI"));
    EXPECT_TRUE(is_own("/APP.EFI"));
    set_current_directory(FileHandle(), FirmwareName("\\"));
}

// A file whose record ends with the last letter of its name, without the zero behind it.
uefi::Status EFIAPI tell_name_without_end(uefi::FileProtocol*, const uefi::Guid*, std::uint64_t* size,
                                          void* record) {
    constexpr std::u16string_view name = u"APP.EFI";
    *size = uefi::file_info_name_offset + name.size() * sizeof(char16_t);
    std::memcpy(static_cast<std::uint8_t*>(record) + uefi::file_info_name_offset, name.data(),
                name.size() * sizeof(char16_t));
    return uefi::success;
}

TEST_F(ImagePathTest, ANameMayEndWithItsRecord) {
    folder_.write("APP.EFI", "x");
    uefi::FileProtocol file{};
    file.GetInfo = tell_name_without_end;
    EXPECT_TRUE(is_own_image(&file, FirmwareName("APP.EFI")));
    EXPECT_TRUE(open_own_image());
    EXPECT_TRUE(is_own_image(&file, FirmwareName("APP.EFI")));
}

// The path of the image names 255 folders at most. A file in one folder more, of the same names, is another
// one.
TEST_F(ImagePathTest, DirectoriesAreComparedUpToTheRoot) {
    constexpr int most = 255;
    std::string path;
    std::u16string own_path;
    for (int depth = 0; depth < most; ++depth) {
        path += "A/";
        own_path += u"A\\";
        if (depth >= most - 3) std::filesystem::create_directories(folder_.path() / path);
    }
    own_path += u"B";
    std::filesystem::create_directories(folder_.path() / (path + "A"));
    folder_.write(path + "B", "x");
    folder_.write(path + "A/B", "x");

    std::string device_path = node(4, 4, own_path) + end_node;
    auto* image = loaded_image();
    uefi::DevicePathNode* const old = image->FilePath;
    image->FilePath = reinterpret_cast<uefi::DevicePathNode*>(device_path.data());
    EXPECT_TRUE(open_own_image());
    const auto enter = [](int depth) {
        std::string down = "\\";
        for (int i = 0; i < depth; ++i)
            down += "A\\";
        const FirmwareName name(down);
        set_current_directory(open_named(name, uefi::file_mode_read), name);
    };
    const auto is_own = [](int depth) {
        std::string name;
        for (int i = 0; i < depth; ++i)
            name += "A\\";
        const FirmwareName file_name(name + "B");
        const FileHandle file = open_named(file_name, uefi::file_mode_read);
        EXPECT_TRUE(file) << depth;
        return is_own_image(file.get(), file_name);
    };
    enter(126);
    const FirmwareName two("A\\A");
    set_current_directory(open_named(two, uefi::file_mode_read), two);  // 128 down
    EXPECT_TRUE(is_own(127));
    const FirmwareName one("A");
    set_current_directory(open_named(one, uefi::file_mode_read), one);  // 129 down
    EXPECT_TRUE(is_own(126));
    EXPECT_FALSE(is_own(127));
    set_current_directory(FileHandle(), FirmwareName("\\"));
    image->FilePath = old;
}

}  // namespace
}  // namespace korvane
