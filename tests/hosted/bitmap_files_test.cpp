// BMP files, sound and hostile, loaded through the whole interpreter.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "linked_session.h"
#include "platform/memory.h"
#include "statements/graphics/bitmaps.h"
#include "values/variables.h"

namespace korvane::test {
namespace {

constexpr std::uint32_t width = 13;
constexpr std::uint32_t height = 7;
constexpr std::uint32_t head_size = 54;

// The picture of the files in tests/hosted/bitmaps.
std::uint32_t picture_pixel(std::uint32_t x, std::uint32_t y) {
    return x * 19 << 16 | y * 35 << 8 | ((x * 7 + y * 11) & 255);
}

std::string read_bitmap(const std::string& name) {
    std::ifstream file("tests/hosted/bitmaps/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

constexpr std::int64_t loaded = 0;
constexpr std::int64_t illegal_function_call_code = 5;
constexpr std::int64_t out_of_memory_code = 7;
constexpr std::int64_t bad_file_mode_code = 54;

// Loads each content into slot 0, in one run of a program, and gives the error codes,
// 0 for those that were loaded.
std::vector<std::int64_t> load_all(LinkedSession& session, const std::vector<std::string>& contents) {
    for (std::size_t i = 0; i < contents.size(); ++i)
        session.write_file("T" + std::to_string(i) + ".BMP", contents[i]);
    const std::string last = std::to_string(contents.size() - 1);
    session.write_file("LOADALL.BAS", "10 DIM CODE%(" + last + "): ON ERROR GOTO 90\r\n" +
                                          "20 FOR K = 0 TO " + last +
                                          ": E = 0: LOADBMP 0, \"T\" + MID$(STR$(K), 2) + \".BMP\"\r\n" +
                                          "30 CODE%(K) = E: NEXT K: END\r\n"
                                          "90 E = ERR: RESUME 30\r\n");
    std::vector<std::int64_t> codes;
    if (!session.type("LOAD \"LOADALL\"") || !session.type("RUN")) return codes;
    constexpr char name[name_capacity] = "CODE%";
    const VariableEntry* array = find_variable(name, true);
    for (std::size_t i = 0; i < contents.size(); ++i)
        codes.push_back(read_unaligned<std::int16_t>(array->array->elements() + i * 2));
    return codes;
}

void expect_picture(const BitmapSlot& slot) {
    ASSERT_EQ(slot.width, width);
    ASSERT_EQ(slot.height, height);
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x)
            ASSERT_EQ(slot.pixels[y * width + x], picture_pixel(x, y)) << x << "," << y;
}

class BitmapFiles : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(session_.problem(), ""); }
    void TearDown() override { EXPECT_EQ(session_.problem(), ""); }

    LinkedSession session_{640, 480};
};

// Made by ImageMagick: a 40-byte head of 24 bits, a 124-byte head of 24 bits,
// and one of 32 bits with bit fields.
TEST_F(BitmapFiles, FilesOfACommonToolShowTheirPixels) {
    for (const std::string name : {"version3.bmp", "version4.bmp", "alpha.bmp"}) {
        session_.write_file("PICTURE.BMP", read_bitmap(name));
        ASSERT_TRUE(session_.type("LOADBMP 5, \"PICTURE.BMP\"")) << name;
        ASSERT_NE(find_bitmap(5), nullptr) << name;
        expect_picture(*find_bitmap(5));
        session_.type("CLEAR");
        ASSERT_EQ(find_bitmap(5), nullptr);
    }
}

TEST_F(BitmapFiles, AFileCutAtAnyByteIsBad) {
    for (const std::string name : {"version3.bmp", "version4.bmp", "alpha.bmp"}) {
        const std::string whole = read_bitmap(name);
        // The pixel data ends the file but for what the tool appends to align it.
        const std::size_t offset = static_cast<unsigned char>(whole[10]);
        const std::size_t stride = name == "alpha.bmp" ? width * 4 : (width * 3 + 3) / 4 * 4;
        std::vector<std::string> contents;
        for (std::size_t length = 0; length <= whole.size(); ++length)
            contents.push_back(whole.substr(0, length));
        const std::vector<std::int64_t> codes = load_all(session_, contents);
        ASSERT_EQ(codes.size(), contents.size()) << session_.problem();
        for (std::size_t length = 0; length <= whole.size(); ++length) {
            const bool complete = length >= offset + stride * height;
            ASSERT_EQ(codes[length], complete ? loaded : bad_file_mode_code) << name << " cut to " << length;
        }
    }
}

TEST_F(BitmapFiles, AnyByteOfTheHeadMayBeAnything) {
    const std::string whole = read_bitmap("version3.bmp");
    std::vector<std::string> contents;
    for (std::size_t place = 0; place < head_size; ++place) {
        for (const int byte : {0x00, 0x01, 0x20, 0x7F, 0x80, 0xFE, 0xFF}) {
            contents.push_back(whole);
            contents.back()[place] = static_cast<char>(byte);
        }
    }
    std::mt19937 random(1);
    for (int i = 0; i < 400; ++i) {
        contents.push_back(whole);
        for (std::size_t changes = 1 + random() % 8; changes != 0; --changes) {
            contents.back()[10 + random() % 44] =
                static_cast<char>(random() % 3 == 0 ? random() : random() % 40);
        }
    }
    const std::vector<std::int64_t> codes = load_all(session_, contents);
    ASSERT_EQ(codes.size(), contents.size()) << session_.problem();
    for (std::size_t i = 0; i < codes.size(); ++i) {
        const bool expected = codes[i] == loaded || codes[i] == bad_file_mode_code ||
                              codes[i] == illegal_function_call_code || codes[i] == out_of_memory_code;
        ASSERT_TRUE(expected) << "file " << i << " gave " << codes[i];
    }
    EXPECT_EQ(codes[0], bad_file_mode_code);               // no "B"
    EXPECT_EQ(codes[28 * 7], illegal_function_call_code);  // no bits a pixel
    EXPECT_EQ(codes[6 * 7], loaded);                       // a field that nobody reads
}

}  // namespace
}  // namespace korvane::test
