// Firmware that does less than it is asked for: reads and writes of a few bytes at a time, or none.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "files/file_table.h"
#include "files/program_text.h"
#include "image/image_blocks.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/program_store.h"
#include "statements/files/sequential_input.h"

namespace korvane {
namespace {

// A file that moves at most `step` bytes a call.
struct SlowFile {
    uefi::FileProtocol protocol;  // first, so that `self` leads here
    std::string content;
    std::size_t position = 0;
    std::size_t step = 1;
    std::uint64_t largest_call = 0;

    SlowFile() : protocol{} {
        protocol.Close = [](uefi::FileProtocol*) EFIAPI -> uefi::Status { return uefi::success; };
        protocol.Read = read;
        protocol.Write = write;
    }

    static SlowFile& of(uefi::FileProtocol* self) { return *reinterpret_cast<SlowFile*>(self); }

    static uefi::Status EFIAPI read(uefi::FileProtocol* self, std::uint64_t* size, void* buffer) {
        SlowFile& that = of(self);
        that.largest_call = std::max(that.largest_call, *size);
        *size = std::min<std::uint64_t>({*size, that.step, that.content.size() - that.position});
        std::memcpy(buffer, that.content.data() + that.position, *size);
        that.position += *size;
        return uefi::success;
    }
    static uefi::Status EFIAPI write(uefi::FileProtocol* self, std::uint64_t* size, const void* buffer) {
        SlowFile& that = of(self);
        that.largest_call = std::max(that.largest_call, *size);
        *size = std::min<std::uint64_t>(*size, that.step);
        that.content.append(static_cast<const char*>(buffer), *size);
        return uefi::success;
    }
};

TEST(ShortTransfers, AProgramIsReadWhole) {
    std::vector<std::uint8_t> arena(4096);
    arenas.CODEBASE = arena.data();
    arenas.CODEEND = arena.data() + arena.size();
    clear_program();
    errors = ErrorState{};
    SlowFile file;
    file.content = "10 PRINT 1\r\n20 PRINT 2\r30 PRINT 3";
    read_program_text(FileHandle(&file.protocol));
    EXPECT_FALSE(error_pending());
    ASSERT_EQ(program.count, 3U);
    EXPECT_EQ(line_text(0), "PRINT 1");
    EXPECT_EQ(line_text(2), "PRINT 3");
    clear_program();
    arenas = Arenas{};
}

TEST(ShortTransfers, AnInputFileIsReadWhole) {
    SlowFile file;
    file.content = "hello";
    OpenFile& entry = file_table.entries[0];
    attach_file(entry, FileHandle(&file.protocol), FileMode::input, 0);
    std::string text;
    for (auto bytes = unread_bytes(entry); !bytes.empty(); bytes = unread_bytes(entry)) {
        text.append(bytes.begin(), bytes.end());
        take_bytes(entry, bytes.size());
    }
    EXPECT_EQ(text, "hello");
    close_file(entry);
}

TEST(ShortTransfers, BufferedOutputThatIsCutIsAnError) {
    SlowFile file;
    file.step = 100;
    OpenFile& entry = file_table.entries[0];
    attach_file(entry, FileHandle(&file.protocol), FileMode::output, 0);
    for (int i = 0; i < 512; ++i)
        file_put_byte(entry, 'x');
    EXPECT_EQ(file.content.size(), 0U);
    EXPECT_FALSE(flush_output(entry));
    EXPECT_EQ(file.content.size(), 100U);
    // The bytes are given up, not written twice.
    EXPECT_TRUE(flush_output(entry));
    close_file(entry);
    EXPECT_EQ(file.content.size(), 100U);
}

TEST(ShortTransfers, ImagesAreMovedInAsManyCallsAsItTakes) {
    std::string content(40000, 'x');
    for (std::size_t i = 0; i < content.size(); ++i)
        content[i] = static_cast<char>(i * 7);
    SlowFile file;
    file.step = 999;
    FileHandle handle(&file.protocol);
    ImageWriter writer(handle);
    EXPECT_TRUE(writer.write(content.data(), 10));
    EXPECT_TRUE(writer.write(content.data() + 10, content.size() - 10));
    EXPECT_TRUE(writer.finish());
    EXPECT_EQ(file.content, content);
    EXPECT_EQ(file.largest_call, image_block_size);

    ImageReader reader(handle);
    std::string back(content.size(), '\0');
    EXPECT_TRUE(reader.read(back.data(), 5));
    EXPECT_TRUE(reader.read(back.data() + 5, back.size() - 5));
    EXPECT_EQ(back, content);
    EXPECT_EQ(file.largest_call, image_block_size);
    char one_more = 0;
    EXPECT_FALSE(reader.read(&one_more, 1));

    file.step = 0;
    EXPECT_FALSE(write_all(handle, reinterpret_cast<const std::uint8_t*>("x"), 1));
}

}  // namespace
}  // namespace korvane
