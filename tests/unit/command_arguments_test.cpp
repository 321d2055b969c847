#include <gtest/gtest.h>

#include <string>

#include "explorer_session.h"
#include "platform/firmware.h"
#include "program/command_line.h"

namespace korvane {
namespace {

// What the firmware says the load options are, in turn.
struct LoadOptions {
    test::ExplorerSession session;
    uefi::LoadedImageProtocol* image = loaded_image();

    std::uint32_t arguments_of(const char16_t* text, std::uint32_t bytes) {
        image->LoadOptions = const_cast<char16_t*>(text);
        image->LoadOptionsSize = bytes;
        read_command_line();
        return command_arguments.count;
    }
};

TEST(CommandArguments, OptionsThatAreNotThereAreNone) {
    LoadOptions options;
    EXPECT_EQ(options.arguments_of(u"one two", 14), 2U);
    EXPECT_EQ(options.arguments_of(nullptr, 0), 0U);
    EXPECT_EQ(options.arguments_of(nullptr, 14), 0U);
    EXPECT_EQ(options.arguments_of(u"one two", 0), 0U);
    EXPECT_EQ(options.arguments_of(u"one two", 1), 0U);
    EXPECT_EQ(options.arguments_of(u"one two", 2), 1U);
    EXPECT_EQ(std::string(command_arguments.arguments[0]), "o");
    EXPECT_EQ(options.arguments_of(u"one two", 13), 2U);
    EXPECT_EQ(std::string(command_arguments.arguments[1]), "tw");
}

TEST(CommandArguments, ArgumentsAreCutAndCounted) {
    LoadOptions options;
    const auto arguments = [&](const std::u16string& text) {
        return options.arguments_of(text.data(), static_cast<std::uint32_t>(text.size() * 2));
    };
    EXPECT_EQ(arguments(std::u16string(300, u'a') + u" b"), 2U);
    EXPECT_EQ(std::string(command_arguments.arguments[0]), std::string(255, 'a'));
    EXPECT_EQ(std::string(command_arguments.arguments[1]), "b");
    EXPECT_EQ(arguments(std::u16string(255, u'a')), 1U);
    EXPECT_EQ(std::string(command_arguments.arguments[0]), std::string(255, 'a'));
    std::u16string many;
    for (char16_t i = 0; i < 40; ++i)
        many += std::u16string(1, static_cast<char16_t>(u'A' + i % 26)) + u' ';
    EXPECT_EQ(arguments(many), 32U);
    EXPECT_EQ(std::string(command_arguments.arguments[31]), "F");
}

}  // namespace
}  // namespace korvane
