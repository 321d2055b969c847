// A file system that tells nonsense: directory records and information records of any shape and size.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "explorer_session.h"
#include "files/file_handle.h"
#include "files/named_files.h"
#include "files/volume.h"
#include "program/keywords.h"
#include "statements/files/file_listing.h"

namespace korvane {
namespace {

constexpr std::uint64_t directory = uefi::file_directory;

// A directory entry as its bytes, of any length.
std::string entry(const std::u16string& name, std::uint64_t attributes = 0) {
    std::string bytes(80, '\0');
    std::memcpy(bytes.data() + 72, &attributes, sizeof attributes);
    bytes.append(reinterpret_cast<const char*>(name.data()), name.size() * 2);
    return bytes + std::string(2, '\0');
}

// A directory that holds itself under every name that can be opened.
struct StrangeDirectory {
    uefi::FileProtocol protocol;  // first, so that `self` leads here
    std::vector<std::string> entries;
    std::size_t next = 0;
    std::uint64_t told_size = 0;  // instead of the entry's own size, when not 0
    std::uint64_t info_size = 0;
    std::string info;
    int opened = 0;
    int closed = 0;
    std::u16string opened_name;

    StrangeDirectory() : protocol{} {
        protocol.Open = open;
        protocol.Close = close;
        protocol.Read = read;
        protocol.SetPosition = set_position;
        protocol.GetInfo = get_info;
        info_size = 100;
        info = entry(u"X", directory);
    }

    static StrangeDirectory& of(uefi::FileProtocol* self) {
        return *reinterpret_cast<StrangeDirectory*>(self);
    }

    static uefi::Status EFIAPI open(uefi::FileProtocol* self, uefi::FileProtocol** opened,
                                    const char16_t* name, std::uint64_t, std::uint64_t) {
        ++of(self).opened;
        of(self).opened_name = name;
        *opened = self;
        return uefi::success;
    }
    static uefi::Status EFIAPI close(uefi::FileProtocol* self) {
        ++of(self).closed;
        return uefi::success;
    }
    static uefi::Status EFIAPI read(uefi::FileProtocol* self, std::uint64_t* size, void* buffer) {
        StrangeDirectory& that = of(self);
        if (that.next == that.entries.size()) {
            *size = 0;
            return uefi::success;
        }
        const std::string& bytes = that.entries[that.next++];
        std::memset(buffer, 'x', *size);
        std::memcpy(buffer, bytes.data(), std::min<std::size_t>(bytes.size(), *size));
        *size = that.told_size != 0 ? that.told_size : bytes.size();
        return uefi::success;
    }
    static uefi::Status EFIAPI set_position(uefi::FileProtocol* self, std::uint64_t) {
        of(self).next = 0;
        return uefi::success;
    }
    static uefi::Status EFIAPI get_info(uefi::FileProtocol* self, const uefi::Guid*, std::uint64_t* size,
                                        void* buffer) {
        StrangeDirectory& that = of(self);
        if (*size < that.info_size) {
            *size = that.info_size;
            return uefi::buffer_too_small;
        }
        if (buffer != nullptr)
            std::memcpy(buffer, that.info.data(), std::min<std::size_t>(that.info.size(), *size));
        return uefi::success;
    }
};

class HostileVolumeTest : public testing::Test {
  protected:
    HostileVolumeTest() { volume.root = &root_.protocol; }
    ~HostileVolumeTest() override { initialize_volume(); }

    // The rows that FILES with the given options prints.
    test::Lines list(const std::vector<const char*>& options = {}) {
        std::vector<Token> tokens(1 + 2 * options.size() + 1);
        tokens[0].kind = KW_FILES;
        for (std::size_t i = 0; i < options.size(); ++i) {
            tokens[1 + 2 * i].kind = ',';
            tokens[2 + 2 * i].kind = IDENTIFIER;
            std::strcpy(tokens[2 + 2 * i].name, options[i]);
        }
        con_reset();
        Cursor cursor = tokens.data();
        do_files(cursor);
        return session_.lines();
    }

    test::ExplorerSession session_;
    StrangeDirectory root_;
};

TEST_F(HostileVolumeTest, RecordsTooShortForANameAreSkipped) {
    root_.entries = {"",         std::string(1, 'x'), std::string(79, 'x'), std::string(81, '\0'),
                     entry(u""), entry(u"REAL")};
    root_.entries[0] = std::string(4, 'x');
    EXPECT_EQ(list(), (test::Lines{"REAL"}));
}

TEST_F(HostileVolumeTest, ANameEndsWithItsRecord) {
    const std::string whole = entry(u"ABCDEF");
    root_.entries = {whole.substr(0, whole.size() - 2), whole.substr(0, whole.size() - 5)};
    EXPECT_EQ(list(), (test::Lines{"ABCDEF", "ABCD"}));
}

TEST_F(HostileVolumeTest, ASizeBeyondTheBufferIsNotBelieved) {
    root_.entries = {std::string(512, 'A')};
    root_.told_size = 0xFFFFFFFFFFFFFFFF;
    // (512 - 80) / 2 units, cut by nothing but the buffer.
    const test::Lines lines = list();
    std::string name;
    for (const std::string& line : lines)
        name += line;
    EXPECT_EQ(name, std::string(216, 'A'));
}

TEST_F(HostileVolumeTest, WideCharactersShowTheirLowByte) {
    root_.entries = {entry(u"A\u0142\uFFE9B"), entry(u"\u2E2E")};
    const test::Lines lines = list();
    ASSERT_EQ(lines.size(), 1U);  // 0x2E2E shows as ".", which is skipped
    EXPECT_EQ(lines[0],
              "AB\xE9"
              "B");
}

TEST_F(HostileVolumeTest, ADirectoryInItselfEndsAfter65Levels) {
    root_.entries = {entry(u"D", directory)};
    const test::Lines lines = list({"S"});
    int headings = 0;
    for (const std::string& line : lines)
        headings += line.starts_with("Directory of ") ? 1 : 0;
    EXPECT_GT(headings, 0);
    EXPECT_EQ(root_.opened, 65);
    EXPECT_EQ(root_.closed, 65);
}

TEST_F(HostileVolumeTest, ASubdirectoryIsOpenedByTheFirmwaresOwnName) {
    root_.entries = {entry(u"\u0416", directory)};
    list({"S"});
    EXPECT_EQ(root_.opened_name, u"\u0416");
    // Without a terminator the name ends with the record.
    const std::string whole = entry(u"ABC", directory);
    root_.entries = {whole.substr(0, whole.size() - 2)};
    list({"S"});
    EXPECT_EQ(root_.opened_name, u"ABC");
}

TEST_F(HostileVolumeTest, InformationOfAnAbsurdSizeIsNoInformation) {
    EXPECT_TRUE(IsDirectory(&root_.protocol));
    for (const std::uint64_t size :
         {std::uint64_t{65537}, std::uint64_t{1} << 32, std::uint64_t{1} << 63, ~std::uint64_t{0}}) {
        root_.info_size = size;
        EXPECT_FALSE(IsDirectory(&root_.protocol)) << size;
        EXPECT_FALSE(RenameFileByName("OLD", "NEW")) << size;
    }
    EXPECT_EQ(root_.opened, root_.closed);
}

TEST_F(HostileVolumeTest, InformationOfNoSizeIsReadIntoALargerBuffer) {
    root_.info_size = 0;
    EXPECT_TRUE(IsDirectory(&root_.protocol));
    root_.info_size = 87;
    EXPECT_TRUE(IsDirectory(&root_.protocol));
}

}  // namespace
}  // namespace korvane
