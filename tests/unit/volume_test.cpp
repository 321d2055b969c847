
#include <gtest/gtest.h>

#include <string>

#include "explorer_session.h"
#include "files/boot_volume.h"
#include "files/file_handle.h"
#include "files/firmware_name.h"
#include "program/errors.h"
#include "program/messages.h"
#include "statements/files/file_name.h"

namespace korvane {
namespace {

std::u16string converted(std::string_view name) {
    const FirmwareName firmware_name(name);
    EXPECT_EQ(firmware_name.text[firmware_name.length], u'\0');
    return {firmware_name.text, firmware_name.length};
}

TEST(FirmwareName, WidensBytesWithTheirSign) {
    EXPECT_EQ(converted("Game.bas"), u"Game.bas");
    EXPECT_EQ(converted("\x7F\x80\xFF"), u"\x007F\xFF80\xFFFF");
}

TEST(FirmwareName, TurnsSlashesRound) {
    EXPECT_EQ(converted("/A/B\\C"), u"\\A\\B\\C");
}

TEST(FirmwareName, KeepsAtMost255Characters) {
    EXPECT_EQ(converted(std::string(255, 'n')), std::u16string(255, u'n'));
    EXPECT_EQ(converted(std::string(256, 'n')), std::u16string(255, u'n'));
    EXPECT_EQ(converted(std::string(511, 'n')), std::u16string(255, u'n'));
}

TEST(FirmwareName, EndsAtAZeroByte) {
    EXPECT_TRUE(FirmwareName("").empty());
    EXPECT_TRUE(FirmwareName(std::string_view("\0A", 2)).empty());
    EXPECT_EQ(converted(std::string_view("A\0B", 3)), u"A");
}

std::string with_extension(std::string_view text) {
    FileName name{};
    text.copy(name.text, text.size());
    name.length = static_cast<std::uint32_t>(text.size());
    EXPECT_TRUE(name.add_default_extension(".bas"));
    EXPECT_EQ(name.text[name.length], '\0');
    return std::string(name.view());
}

TEST(FileName, GetsAnExtensionWhenTheLastPartHasNoDot) {
    EXPECT_EQ(with_extension("GAME"), "GAME.bas");
    EXPECT_EQ(with_extension("GAME.X"), "GAME.X");
    EXPECT_EQ(with_extension("GAME."), "GAME.");
    EXPECT_EQ(with_extension(".GAME"), ".GAME");
    EXPECT_EQ(with_extension("DIR.X\\GAME"), "DIR.X\\GAME.bas");
    EXPECT_EQ(with_extension("DIR.X/GAME"), "DIR.X/GAME.bas");
    EXPECT_EQ(with_extension("DIR.X:GAME"), "DIR.X:GAME.bas");
    EXPECT_EQ(with_extension("DIR.X/"), "DIR.X/.bas");
    EXPECT_EQ(with_extension(std::string(123, 'n')), std::string(123, 'n') + ".bas");
}

TEST(FileHandle, AnEmptyHandleFailsInEverything) {
    FileHandle none;
    std::uint64_t size = 5;
    char buffer[5];
    EXPECT_FALSE(none);
    EXPECT_FALSE(none.read(buffer, size));
    EXPECT_EQ(size, 0U);
    EXPECT_FALSE(none.write(buffer, size));
    EXPECT_FALSE(none.set_position(0));
    EXPECT_FALSE(none.find_size(size));
    EXPECT_FALSE(none.remove());
    none.close();
}

// A machine that starts anew knows nothing of the volume that another one was started from.
TEST(BootVolume, IsTheImagesOwnUntilItHasBeenOpened) {
    using DevicePath = host::VolumeConfig::DevicePath;
    const test::TemporaryFolder folder;
    for (const DevicePath path : {DevicePath::partition, DevicePath::stick, DevicePath::none}) {
        host::Config config;
        config.volumes.push_back({.folder = folder.path()});
        config.volumes.back().device_path = path;
        const test::ExplorerSession session(config);
        EXPECT_TRUE(find_boot_volume());
        EXPECT_TRUE(open_boot_volume());
        EXPECT_TRUE(find_boot_volume());
    }
}

}  // namespace
}  // namespace korvane
