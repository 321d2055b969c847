#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "hosted_machine.h"

namespace korvane::host {
namespace {

constexpr std::uint64_t reading = uefi::file_mode_read;
constexpr std::uint64_t writing = uefi::file_mode_read | uefi::file_mode_write;
constexpr std::uint64_t creating = writing | uefi::file_mode_create;

class HostedVolumeTest : public HostedFirmwareTest {
  protected:
    void SetUp() override {
        start();
        open_root();
    }
    void open_root() {
        auto* volume = locate<uefi::SimpleFileSystemProtocol>(uefi::simple_file_system_guid);
        ASSERT_NE(volume, nullptr);
        ASSERT_EQ(volume->OpenVolume(volume, &root_), uefi::success);
    }

    uefi::Status open(const char16_t* name, std::uint64_t mode, std::uint64_t attributes = 0) {
        return root_->Open(root_, &file_, name, mode, attributes);
    }
    uefi::Status write(const std::string& text) {
        std::uint64_t size = text.size();
        const uefi::Status status = file_->Write(file_, &size, text.data());
        written_ = size;
        return status;
    }
    std::string read(std::uint64_t most = 1000) {
        std::string text(most, '?');
        status_ = file_->Read(file_, &most, text.data());
        text.resize(uefi::is_error(status_) ? 0 : most);
        return text;
    }
    // The names in a directory, read with the given buffer size.
    std::vector<std::string> list(uefi::FileProtocol* directory, std::uint64_t room = 512) {
        std::vector<std::string> names;
        while (true) {
            std::vector<std::uint8_t> buffer(room);
            std::uint64_t size = room;
            status_ = directory->Read(directory, &size, buffer.data());
            if (uefi::is_error(status_) || size == 0) return names;
            std::string name;
            for (std::uint64_t at = uefi::file_info_name_offset; at + 4 <= size; at += 2)
                name += static_cast<char>(buffer[at]);
            names.push_back(name);
        }
    }
    uefi::Status rename(const std::u16string& name) {
        std::vector<std::uint8_t> record(1000);
        std::uint64_t size = record.size();
        EXPECT_EQ(file_->GetInfo(file_, &uefi::file_info_guid, &size, record.data()), uefi::success);
        std::memcpy(record.data() + uefi::file_info_name_offset, name.c_str(), (name.size() + 1) * 2);
        const std::uint64_t new_size = uefi::file_info_name_offset + (name.size() + 1) * 2;
        std::memcpy(record.data(), &new_size, sizeof new_size);
        return file_->SetInfo(file_, &uefi::file_info_guid, new_size, record.data());
    }

    uefi::FileProtocol* root_ = nullptr;
    uefi::FileProtocol* file_ = nullptr;
    uefi::Status status_ = uefi::success;
    std::uint64_t written_ = 0;
};

TEST_F(HostedVolumeTest, NoNameLeadsOutOfTheFolder) {
    const TemporaryFolder outside;
    outside.write("SECRET.TXT", "secret");
    std::filesystem::create_symlink(outside.path() / "SECRET.TXT", folder_.path() / "LINK.TXT");
    std::filesystem::create_symlink(outside.path(), folder_.path() / "DIR");
    std::filesystem::create_directory(folder_.path() / "SUB");
    const std::string name = outside.path().filename().string();
    const std::u16string leaf(name.begin(), name.end());
    EXPECT_TRUE(uefi::is_error(open(u"..", reading)));
    EXPECT_TRUE(uefi::is_error(open((u"..\\" + leaf + u"\\SECRET.TXT").c_str(), reading)));
    EXPECT_TRUE(uefi::is_error(open((u"SUB\\..\\..\\" + leaf).c_str(), reading)));
    EXPECT_TRUE(uefi::is_error(open(u"LINK.TXT", reading)));
    EXPECT_TRUE(uefi::is_error(open(u"DIR", reading)));
    EXPECT_TRUE(uefi::is_error(open(u"DIR\\SECRET.TXT", reading)));
    EXPECT_TRUE(uefi::is_error(open(u"DIR\\NEW.TXT", creating)));
    EXPECT_TRUE(uefi::is_error(open(u"../x", reading)));
    EXPECT_FALSE(std::filesystem::exists(outside.path() / "NEW.TXT"));
    EXPECT_EQ(list(root_), std::vector<std::string>{"SUB"});
}

TEST_F(HostedVolumeTest, SpecialFilesDoNotExist) {
    ASSERT_EQ(mkfifo((folder_.path() / "PIPE").c_str(), 0666), 0);
    EXPECT_EQ(open(u"PIPE", reading), uefi::not_found);
    EXPECT_TRUE(list(root_).empty());
}

TEST_F(HostedVolumeTest, NamesMatchWithoutRegardToCase) {
    folder_.write("Hello.Bas", "x");
    EXPECT_EQ(open(u"HELLO.BAS", reading), uefi::success);
    EXPECT_EQ(read(), "x");
    EXPECT_EQ(open(u"\\hello.bas", reading), uefi::success);
    EXPECT_EQ(open(u".\\hello.bas", reading), uefi::success);
    EXPECT_EQ(open(u"hello.bas. .", reading), uefi::success);
    EXPECT_EQ(open(u"hello.ba", reading), uefi::not_found);
}

TEST_F(HostedVolumeTest, IllegalNamesAreRefused) {
    for (const char16_t* name : {u"A*B", u"A?B", u"A:B", u"A|B", u"A<B", u"A>B", u"A\"B", u"A/B", u"A\tB",
                                 u"A\x7F", u"A\xFF80", u"A\xFFFF", u"A\xD800"})
        EXPECT_EQ(open(name, creating), uefi::invalid_parameter) << static_cast<int>(name[1]);
    EXPECT_EQ(open(std::u16string(255, u'A').c_str(), creating), uefi::success);
    EXPECT_EQ(open(std::u16string(256, u'A').c_str(), creating), uefi::invalid_parameter);
    EXPECT_EQ(open(u"", reading), uefi::invalid_parameter);
}

TEST_F(HostedVolumeTest, OpenModesAreChecked) {
    EXPECT_EQ(open(u"A", uefi::file_mode_write), uefi::invalid_parameter);
    EXPECT_EQ(open(u"A", uefi::file_mode_create), uefi::invalid_parameter);
    EXPECT_EQ(open(u"A", uefi::file_mode_create | reading), uefi::invalid_parameter);
    EXPECT_EQ(open(u"A", creating, 0x40), uefi::invalid_parameter);
    EXPECT_EQ(open(u"A", writing), uefi::not_found);
    EXPECT_EQ(open(u"NONE\\A", creating), uefi::not_found);
    EXPECT_EQ(open(u"A", creating), uefi::success);
    EXPECT_EQ(open(u"A\\B", creating), uefi::not_found);
    EXPECT_EQ(open(u"A", creating, uefi::file_directory), uefi::access_denied);
}

TEST_F(HostedVolumeTest, AFileOpenForReadingCannotBeWritten) {
    folder_.write("A", "text");
    ASSERT_EQ(open(u"A", reading), uefi::success);
    EXPECT_EQ(write("x"), uefi::access_denied);
    EXPECT_EQ(file_->Flush(file_), uefi::access_denied);
    EXPECT_EQ(rename(u"B"), uefi::access_denied);
    EXPECT_EQ(file_->Delete(file_), uefi::warn_delete_failure);
    EXPECT_EQ(folder_.read("A"), "text");
}

TEST_F(HostedVolumeTest, PositionsAndTheEndOfTheFile) {
    ASSERT_EQ(open(u"A", creating), uefi::success);
    ASSERT_EQ(write("hello"), uefi::success);
    EXPECT_EQ(file_->SetPosition(file_, 1), uefi::success);
    EXPECT_EQ(read(3), "ell");
    EXPECT_EQ(read(), "o");
    EXPECT_EQ(read(), "");
    EXPECT_EQ(status_, uefi::success);
    EXPECT_EQ(file_->SetPosition(file_, uefi::end_of_file_position), uefi::success);
    std::uint64_t position = 0;
    EXPECT_EQ(file_->GetPosition(file_, &position), uefi::success);
    EXPECT_EQ(position, 5U);
    EXPECT_EQ(file_->SetPosition(file_, 6), uefi::success);
    read();
    EXPECT_EQ(status_, uefi::device_error);
    EXPECT_EQ(write("!"), uefi::success);
    EXPECT_EQ(folder_.read("A"), std::string("hello\0!", 7));
}

TEST_F(HostedVolumeTest, AFullVolumeTakesWhatFits) {
    Config config;
    config.volumes.resize(1);
    config.volumes[0].capacity = 7;
    start(config);
    open_root();
    ASSERT_EQ(open(u"A", creating), uefi::success);
    EXPECT_EQ(write("12345"), uefi::success);
    EXPECT_EQ(write("6789"), uefi::volume_full);
    EXPECT_EQ(written_, 2U);
    EXPECT_EQ(file_->SetPosition(file_, 0), uefi::success);
    EXPECT_EQ(write("abcdefg"), uefi::success);
    EXPECT_EQ(file_->Delete(file_), uefi::success);
    ASSERT_EQ(open(u"B", creating), uefi::success);
    EXPECT_EQ(write("1234567"), uefi::success);
}

TEST_F(HostedVolumeTest, DirectoriesAreReadEntryByEntry) {
    folder_.write("B.TXT", "");
    folder_.write("A.TXT", "");
    ASSERT_EQ(open(u"0NEW", creating, uefi::file_directory), uefi::success);
    uefi::FileProtocol* directory = file_;
    // What is created comes after what was there.
    EXPECT_EQ(list(root_), (std::vector<std::string>{"A.TXT", "B.TXT", "0NEW"}));
    EXPECT_EQ(list(directory), (std::vector<std::string>{".", ".."}));
    EXPECT_EQ(root_->SetPosition(root_, 1), uefi::unsupported);
    EXPECT_EQ(root_->SetPosition(root_, 0), uefi::success);
    std::uint8_t buffer[200];
    std::uint64_t size = 91;
    EXPECT_EQ(root_->Read(root_, &size, buffer), uefi::buffer_too_small);
    EXPECT_EQ(size, 92U);  // 80 bytes, five letters and the terminator
    EXPECT_EQ(root_->Read(root_, &size, buffer), uefi::success);
    EXPECT_EQ(size, 92U);
    std::uint64_t position = 0;
    EXPECT_EQ(root_->GetPosition(root_, &position), uefi::unsupported);
    EXPECT_EQ(directory->Write(directory, &size, buffer), uefi::unsupported);
}

TEST_F(HostedVolumeTest, OnlyEmptyDirectoriesAreDeleted) {
    ASSERT_EQ(open(u"D", creating, uefi::file_directory), uefi::success);
    uefi::FileProtocol* directory = file_;
    ASSERT_EQ(open(u"D\\F", creating), uefi::success);
    uefi::FileProtocol* file = file_;
    EXPECT_EQ(directory->Delete(directory), uefi::warn_delete_failure);
    EXPECT_EQ(file->Delete(file), uefi::success);
    ASSERT_EQ(open(u"D", writing), uefi::success);
    EXPECT_EQ(file_->Delete(file_), uefi::success);
    EXPECT_EQ(root_->Delete(root_), uefi::warn_delete_failure);
    EXPECT_EQ(firmware_->volumes().front()->open_files().size(), 0U);
}

TEST_F(HostedVolumeTest, UseAfterClosingIsNoticed) {
    folder_.write("A", "");
    ASSERT_EQ(open(u"A", reading), uefi::success);
    EXPECT_EQ(firmware_->volumes().front()->open_files().size(), 2U);
    EXPECT_EQ(file_->Close(file_), uefi::success);
    EXPECT_EQ(firmware_->volumes().front()->open_files().size(), 1U);
    EXPECT_EQ(file_->Close(file_), uefi::invalid_parameter);
    EXPECT_EQ(firmware_->complaints().size(), 1U);
}

TEST_F(HostedVolumeTest, RenamingKeepsTheRules) {
    folder_.write("A", "a");
    folder_.write("B", "b");
    std::filesystem::create_directory(folder_.path() / "D");
    ASSERT_EQ(open(u"A", writing), uefi::success);
    EXPECT_EQ(rename(u"B"), uefi::access_denied);
    EXPECT_EQ(rename(u"X*"), uefi::invalid_parameter);
    EXPECT_EQ(rename(u"C"), uefi::success);
    EXPECT_EQ(rename(u"c"), uefi::success);
    EXPECT_EQ(folder_.read("c"), "a");
    EXPECT_EQ(rename(u"\\D\\E"), uefi::success);
    EXPECT_EQ(folder_.read("D/E"), "a");
    EXPECT_EQ(rename(u"NONE\\E"), uefi::not_found);
    EXPECT_EQ(folder_.read("B"), "b");
}

TEST_F(HostedVolumeTest, InformationRecordsAreChecked) {
    folder_.write("A", "12345");
    ASSERT_EQ(open(u"A", writing), uefi::success);
    std::vector<std::uint8_t> record(84);
    std::uint64_t size = 0;
    EXPECT_EQ(file_->GetInfo(file_, &uefi::file_info_guid, &size, nullptr), uefi::buffer_too_small);
    EXPECT_EQ(size, 84U);
    EXPECT_EQ(file_->GetInfo(file_, &uefi::file_info_guid, &size, record.data()), uefi::success);
    EXPECT_EQ(file_->GetInfo(file_, &uefi::block_io_guid, &size, record.data()), uefi::unsupported);
    uefi::FileInfo information;
    std::memcpy(&information, record.data(), uefi::file_info_name_offset);
    EXPECT_EQ(information.FileSize, 5U);
    EXPECT_EQ(information.Attribute, uefi::file_archive);
    record[uefi::file_info_name_offset + 2] = 'x';  // no end of the name
    EXPECT_EQ(file_->SetInfo(file_, &uefi::file_info_guid, 84, record.data()), uefi::bad_buffer_size);
    EXPECT_EQ(file_->SetInfo(file_, &uefi::file_info_guid, 80, record.data()), uefi::bad_buffer_size);
}

TEST_F(HostedVolumeTest, AReadOnlyVolumeStaysAsItIs) {
    folder_.write("A", "a");
    Config config;
    config.volumes.resize(1);
    config.volumes[0].read_only = true;
    start(config);
    open_root();
    EXPECT_EQ(open(u"A", writing), uefi::write_protected);
    EXPECT_EQ(open(u"B", creating), uefi::write_protected);
    EXPECT_EQ(open(u"A", reading), uefi::success);
}

TEST_F(HostedVolumeTest, TheImageIsLentToTheVolume) {
    const TemporaryFolder elsewhere;
    elsewhere.write("image", "bytes");
    firmware_->place_image(image_base, 4096, elsewhere.path() / "image");
    EXPECT_EQ(open(u"\\efi\\boot\\BOOTX64.EFI", reading), uefi::success);
    EXPECT_EQ(read(), "bytes");
    EXPECT_EQ(open(u"\\EFI\\BOOT\\BOOTX64.EFI", writing), uefi::write_protected);
    EXPECT_TRUE(list(root_).empty());
}

}  // namespace
}  // namespace korvane::host
