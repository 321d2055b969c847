// A folder of the host that somebody has prepared, or changes while it is used: nothing leads out of it,
// nothing blocks, and what is no file does not exist.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "hosted_machine.h"

namespace korvane::host {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t reading = uefi::file_mode_read;
constexpr std::uint64_t writing = uefi::file_mode_read | uefi::file_mode_write;
constexpr std::uint64_t creating = writing | uefi::file_mode_create;

// What lies in a folder, its subfolders included: contents of files, targets of links.
std::map<std::string, std::string> snapshot(const fs::path& folder) {
    std::map<std::string, std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        std::string& what = found[entry.path().lexically_relative(folder).string()];
        if (entry.is_symlink()) {
            what = "-> " + fs::read_symlink(entry.path()).string();
        } else if (entry.is_regular_file()) {
            std::ifstream file(entry.path(), std::ios::binary);
            what.assign(std::istreambuf_iterator<char>(file), {});
        }
    }
    return found;
}

class HostileFolderTest : public HostedFirmwareTest {
  protected:
    void SetUp() override {
        outside_.write("F.TXT", "outside");
        outside_.write("SUB/F.TXT", "outside");
        before_ = snapshot(outside_.path());
        folder_.write("F.TXT", "inside");
        folder_.write("SUB/F.TXT", "inside");
        start();
        auto* volume = locate<uefi::SimpleFileSystemProtocol>(uefi::simple_file_system_guid);
        ASSERT_NE(volume, nullptr);
        ASSERT_EQ(volume->OpenVolume(volume, &root_), uefi::success);
    }
    void TearDown() override { EXPECT_EQ(snapshot(outside_.path()), before_); }

    fs::path inside(const char* name) const { return folder_.path() / name; }

    // Null when the file cannot be opened.
    static uefi::FileProtocol* open(uefi::FileProtocol* from, const std::u16string& name, std::uint64_t mode,
                                    std::uint64_t attributes = 0) {
        uefi::FileProtocol* file = nullptr;
        return uefi::is_error(from->Open(from, &file, name.c_str(), mode, attributes)) ? nullptr : file;
    }
    // "?" when it cannot be read.
    static std::string read(uefi::FileProtocol* file) {
        std::string text(100, '\0');
        std::uint64_t size = text.size();
        if (uefi::is_error(file->Read(file, &size, text.data()))) return "?";
        text.resize(size);
        return text;
    }
    static uefi::Status write(uefi::FileProtocol* file, const std::string& text) {
        std::uint64_t size = text.size();
        return file->Write(file, &size, text.data());
    }
    static uefi::Status rename(uefi::FileProtocol* file, const std::u16string& name) {
        std::vector<std::uint8_t> record(2000);
        std::uint64_t size = record.size();
        const uefi::Status status = file->GetInfo(file, &uefi::file_info_guid, &size, record.data());
        if (uefi::is_error(status)) return status;
        std::memcpy(record.data() + uefi::file_info_name_offset, name.c_str(), (name.size() + 1) * 2);
        size = uefi::file_info_name_offset + (name.size() + 1) * 2;
        std::memcpy(record.data(), &size, sizeof size);
        return file->SetInfo(file, &uefi::file_info_guid, size, record.data());
    }
    // The names in a directory, their characters cut to bytes; in a subdirectory without "." and "..".
    static std::vector<std::string> list(uefi::FileProtocol* directory) {
        std::vector<std::string> names;
        directory->SetPosition(directory, 0);
        for (;;) {
            std::vector<std::uint8_t> record(1000);
            std::uint64_t size = record.size();
            if (uefi::is_error(directory->Read(directory, &size, record.data())) || size == 0) return names;
            std::string name;
            for (std::uint64_t at = uefi::file_info_name_offset; at + 4 <= size; at += 2)
                name += static_cast<char>(record[at]);
            if (name != "." && name != "..") names.push_back(name);
        }
    }

    TemporaryFolder outside_;
    std::map<std::string, std::string> before_;
    uefi::FileProtocol* root_ = nullptr;
};

// ---- Names and links

TEST_F(HostileFolderTest, NoSpellingLeadsOut) {
    fs::create_symlink(outside_.path(), inside("DIR"));
    fs::create_symlink(outside_.path() / "F.TXT", inside("FILE"));
    fs::create_symlink("..", inside("UP"));
    fs::create_symlink("/", inside("SLASH"));
    fs::create_symlink("SUB/../..", inside("ROUND"));
    const std::string leaf = outside_.path().filename().string();
    const std::u16string other(leaf.begin(), leaf.end());
    const std::string path = outside_.path().string();
    const std::u16string whole(path.begin(), path.end());
    std::u16string backslashes = whole;
    for (char16_t& unit : backslashes)
        if (unit == u'/') unit = u'\\';
    std::vector<std::u16string> folders = {
        u"..\\" + other,
        u"\\..\\" + other,
        u".\\..\\" + other,
        u"SUB\\..\\..\\" + other,
        u"\\SUB\\.\\..\\.\\..\\" + other,
        u"SUB\\SUB\\..\\..\\..\\" + other,
        u".. \\" + other,
        u"... \\" + other,
        u"..\\..\\..\\..\\..\\.." + backslashes,
        whole,
        backslashes,
        u"\\" + whole,
        u"\\\\" + backslashes,
        u"/" + whole,
        u"SUB/../../" + other,
        u"..//" + other,
        u"C:" + backslashes,
        u"DIR",
        u"DIR\\",
        u"DIR\\.",
        u"dir",
        u"DIR.",
        u" DIR",
        u"DIR\\..\\" + other,
        u"UP\\" + other,
        u"SLASH" + backslashes,
        u"ROUND\\" + other,
        u"SUB\\..\\DIR",
        u"\uFF0E\uFF0E\\" + other,
        u"\u2024\u2024\\" + other,
        u"..\uFF3C" + other,
        u"..\u2215" + other,
        u"SUB\\..\uFFFE\\..\\" + other,
    };
    for (const std::u16string& folder : folders) {
        for (const char16_t* file : {u"\\F.TXT", u"\\NEW.TXT", u"\\SUB\\F.TXT", u"\\SUB"}) {
            const std::u16string name = folder + file;
            SCOPED_TRACE(std::string(name.begin(), name.end()));
            for (const std::uint64_t mode : {reading, writing})
                EXPECT_EQ(open(root_, name, mode), nullptr);
            EXPECT_EQ(open(root_, name, creating), nullptr);
            EXPECT_EQ(open(root_, name, creating, uefi::file_directory), nullptr);
            uefi::FileProtocol* moved = open(root_, u"F.TXT", writing);
            ASSERT_NE(moved, nullptr);
            EXPECT_TRUE(uefi::is_error(rename(moved, name)));
            moved->Close(moved);
            uefi::FileProtocol* folder_inside = open(root_, u"SUB", writing);
            ASSERT_NE(folder_inside, nullptr);
            EXPECT_EQ(open(folder_inside, u"..\\" + name, reading), nullptr);
            EXPECT_TRUE(uefi::is_error(rename(folder_inside, name)));
            folder_inside->Close(folder_inside);
        }
    }
    EXPECT_EQ(open(root_, u"FILE", reading), nullptr);
    EXPECT_EQ(list(root_), (std::vector<std::string>{"F.TXT", "SUB"}));
}

TEST_F(HostileFolderTest, WhatIsNoFileIsNotThereAndStays) {
    ASSERT_EQ(mkfifo(inside("PIPE").c_str(), 0666), 0);
    const int server = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, inside("SOCKET").c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    std::vector<std::string> names = {"PIPE", "SOCKET", "TOFILE", "TODIR", "TONONE", "TOSELF", "TOZERO"};
    // A device can be made by the administrator only.
    if (mknod(inside("ZERO").c_str(), S_IFCHR | 0666, makedev(1, 5)) == 0) names.emplace_back("ZERO");
    fs::create_symlink("F.TXT", inside("TOFILE"));
    fs::create_symlink("SUB", inside("TODIR"));
    fs::create_symlink("NONE", inside("TONONE"));
    fs::create_symlink("TOSELF", inside("TOSELF"));
    fs::create_symlink("/dev/zero", inside("TOZERO"));

    EXPECT_EQ(list(root_), (std::vector<std::string>{"F.TXT", "SUB"}));
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        struct stat was {};
        ASSERT_EQ(lstat(inside(name.c_str()).c_str(), &was), 0);
        const std::u16string wide(name.begin(), name.end());
        EXPECT_EQ(open(root_, wide, reading), nullptr);
        EXPECT_EQ(open(root_, wide, writing), nullptr);
        EXPECT_EQ(open(root_, wide, creating), nullptr);
        EXPECT_EQ(open(root_, wide, creating, uefi::file_directory), nullptr);
        EXPECT_EQ(open(root_, wide + u"\\F.TXT", reading), nullptr);
        uefi::FileProtocol* file = open(root_, u"F.TXT", writing);
        ASSERT_NE(file, nullptr);
        EXPECT_TRUE(uefi::is_error(rename(file, wide)));
        file->Close(file);
        struct stat is {};
        ASSERT_EQ(lstat(inside(name.c_str()).c_str(), &is), 0);
        EXPECT_EQ(is.st_ino, was.st_ino);
        EXPECT_EQ(is.st_mode, was.st_mode);
    }
    EXPECT_FALSE(fs::exists(inside("NONE")));
    close(server);
}

TEST_F(HostileFolderTest, NamesThatFatCannotHoldAreNotListed) {
    const std::vector<std::string> names = {
        "TAB\tX",      "LINE\nX",  "ESC\x1b[2J",     "DEL\x7f",  "STAR*",        "BACK\\SLASH",
        "QUOTE\"",     "\xFF\xFE", "CUT\xC3",        "\xC0\xAF", "\xED\xA0\x80", "\xF8\x88\x80\x80\x80",
        "..X\xE2\x82", "C:",       ".korvane-other",
    };
    for (const std::string& name : names)
        folder_.write(name, "strange");
    folder_.write(std::string(255, 'L'), "long");
    folder_.write("LAST", "plain");
    EXPECT_EQ(list(root_), (std::vector<std::string>{"F.TXT", "LAST", std::string(255, 'L'), "SUB"}));
    for (const std::string& name : names) {
        // The hidden name is the host's own, and can be asked for like any other.
        if (name.starts_with(".korvane")) continue;
        EXPECT_EQ(open(root_, std::u16string(name.begin(), name.end()), reading), nullptr) << name;
    }
    uefi::FileProtocol* file = open(root_, std::u16string(255, u'l'), reading);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(read(file), "long");
    EXPECT_EQ(open(root_, std::u16string(256, u'L'), creating), nullptr);
}

TEST_F(HostileFolderTest, ManyFilesAreListedAndFound) {
    const char* const wanted = std::getenv("KORVANE_DIRECTORY_ENTRIES");  // fewer in the plain run
    const int count = wanted != nullptr ? std::atoi(wanted) : 5'000;
    const int directory = ::open(inside("SUB").c_str(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < count; ++i)
        close(openat(directory, ("f" + std::to_string(i)).c_str(), O_WRONLY | O_CREAT, 0666));
    close(directory);
    uefi::FileProtocol* sub = open(root_, u"SUB", reading);
    ASSERT_NE(sub, nullptr);
    EXPECT_EQ(list(sub).size(), static_cast<std::size_t>(count) + 1);
    // In other capitals, so that the directory has to be searched.
    const std::string last = "F" + std::to_string(count - 1);
    for (const std::u16string& name : {std::u16string(u"F0"), std::u16string(last.begin(), last.end())})
        EXPECT_NE(open(sub, name, reading), nullptr);
    EXPECT_EQ(open(sub, u"G0", reading), nullptr);
}

// ---- Changes while files are open

TEST_F(HostileFolderTest, AFileMayShrinkGrowAndGoWhileItIsRead) {
    uefi::FileProtocol* file = open(root_, u"F.TXT", writing);
    ASSERT_NE(file, nullptr);
    file->SetPosition(file, 3);
    fs::resize_file(inside("F.TXT"), 1);
    EXPECT_EQ(read(file), "?");  // behind the end, which is an error of the firmware's file systems too
    file->SetPosition(file, 0);
    EXPECT_EQ(read(file), "i");
    folder_.write("F.TXT", "inside again");
    file->SetPosition(file, 7);
    EXPECT_EQ(read(file), "again");
    fs::remove(inside("F.TXT"));
    file->SetPosition(file, 0);
    EXPECT_EQ(read(file), "inside again");
    EXPECT_EQ(write(file, "!"), uefi::success);
    EXPECT_TRUE(uefi::is_error(rename(file, u"OTHER.TXT")));
    EXPECT_EQ(file->Delete(file), uefi::warn_delete_failure);
    EXPECT_EQ(list(root_), std::vector<std::string>{"SUB"});
}

TEST_F(HostileFolderTest, AFileReplacedByALinkIsLeftAlone) {
    uefi::FileProtocol* first = open(root_, u"F.TXT", writing);
    uefi::FileProtocol* second = open(root_, u"F.TXT", writing);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    fs::remove(inside("F.TXT"));
    fs::create_symlink(outside_.path() / "F.TXT", inside("F.TXT"));
    EXPECT_EQ(write(first, "mine"), uefi::success);  // into the file that is gone
    EXPECT_EQ(open(root_, u"F.TXT", reading), nullptr);
    EXPECT_EQ(first->Delete(first), uefi::warn_delete_failure);
    EXPECT_EQ(second->Close(second), uefi::success);
    EXPECT_TRUE(fs::is_symlink(inside("F.TXT")));
}

TEST_F(HostileFolderTest, ADirectoryReplacedByALinkLeadsNowhere) {
    uefi::FileProtocol* sub = open(root_, u"SUB", writing);
    uefi::FileProtocol* file = open(root_, u"SUB\\F.TXT", writing);
    uefi::FileProtocol* doomed = open(root_, u"SUB\\F.TXT", writing);
    ASSERT_NE(sub, nullptr);
    ASSERT_NE(file, nullptr);
    ASSERT_NE(doomed, nullptr);
    fs::rename(inside("SUB"), inside("OLD"));
    fs::create_directory_symlink(outside_.path(), inside("SUB"));

    EXPECT_TRUE(list(sub).empty());
    EXPECT_EQ(open(sub, u"F.TXT", reading), nullptr);
    EXPECT_EQ(open(sub, u"F.TXT", writing), nullptr);
    EXPECT_EQ(open(sub, u"NEW.TXT", creating), nullptr);
    EXPECT_EQ(open(sub, u"NEW", creating, uefi::file_directory), nullptr);
    EXPECT_EQ(open(root_, u"SUB\\F.TXT", reading), nullptr);
    EXPECT_EQ(write(file, "INSIDE"), uefi::success);  // the file that was opened
    EXPECT_TRUE(uefi::is_error(rename(file, u"G.TXT")));
    EXPECT_TRUE(uefi::is_error(rename(file, u"\\SUB\\G.TXT")));
    EXPECT_EQ(doomed->Delete(doomed), uefi::warn_delete_failure);
    EXPECT_EQ(sub->Delete(sub), uefi::warn_delete_failure);
    EXPECT_EQ(folder_.read("OLD/F.TXT"), "INSIDE");
    EXPECT_TRUE(fs::is_symlink(inside("SUB")));
}

// Somebody exchanges the directory and a link that leads out all the time, also inside of a call.
TEST_F(HostileFolderTest, NoMomentLeadsOut) {
    fs::create_directory_symlink(outside_.path() / "SUB", inside("LINK"));
    std::atomic<bool> ends{false};
    std::thread exchange([&] {
        while (!ends)
            renameat2(AT_FDCWD, inside("SUB").c_str(), AT_FDCWD, inside("LINK").c_str(), RENAME_EXCHANGE);
    });
    int opened = 0;
    for (int turn = 0; turn < 3000; ++turn) {
        if (uefi::FileProtocol* file = open(root_, u"SUB\\F.TXT", reading)) {
            EXPECT_EQ(read(file), "inside");
            file->Close(file);
            ++opened;
        }
        if (uefi::FileProtocol* file = open(root_, u"SUB\\NEW.TXT", creating)) {
            write(file, "new");
            if (turn % 2 == 0) rename(file, u"SUB\\NEXT.TXT");
            file->Delete(file);
        }
        if (uefi::FileProtocol* directory = open(root_, u"SUB\\DIR", creating, uefi::file_directory))
            directory->Delete(directory);
        if (uefi::FileProtocol* sub = open(root_, u"SUB", reading)) {
            for (const std::string& name : list(sub))
                EXPECT_TRUE(name == "F.TXT" || name == "NEW.TXT" || name == "NEXT.TXT" || name == "DIR")
                    << name;
            sub->Close(sub);
        }
    }
    ends = true;
    exchange.join();
    EXPECT_GT(opened, 0);
}

// ---- Programs

TEST_F(HostileFolderTest, AProgramTooLargeForAnyMemoryIsTakenAsItIs) {
    Config config;
    config.volumes.push_back({.folder = folder_.path(), .host_programs = true});
    folder_.write("HUGE.BAS", "10 PRINT \"\xC3\xA9\"\n");
    fs::resize_file(inside("HUGE.BAS"), std::uintmax_t{1} << 40);
    start(std::move(config));
    auto* volume = locate<uefi::SimpleFileSystemProtocol>(uefi::simple_file_system_guid);
    ASSERT_EQ(volume->OpenVolume(volume, &root_), uefi::success);
    uefi::FileProtocol* file = open(root_, u"HUGE.BAS", reading);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(read(file).substr(0, 12), "10 PRINT \"\xC3\xA9");
}

}  // namespace
}  // namespace korvane::host
