// The machine explorer on the hosted firmware: command lines in, screen lines out.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "explorer/explorer.h"
#include "files/volume.h"
#include "firmware.h"
#include "platform/firmware.h"
#include "platform/memory_map.h"
#include "program/arenas.h"
#include "screen/console.h"
#include "screen/graphics.h"
#include "screen/keyboard.h"
#include "screen/line_editor.h"
#include "screen/text_windows.h"
#include "screen/video_mode.h"
#include "temporary_folder.h"

namespace korvane::test {

using Lines = std::vector<std::string>;

// A machine with a screen of 128 columns and the given number of rows (at most 128). A key pressed whenever
// the explorer waits for one keeps paged reports going. At its end no pool buffer, file handle or misuse of
// the firmware may be left.
class ExplorerSession {
  public:
    explicit ExplorerSession(host::Config config = {}, std::uint32_t rows = 128)
        : machine_(with_screen(std::move(config), rows)) {
        machine_.keyboard().on_wanted([this](host::KeyWant) { press_next(); });
        firmware_start(machine_.image_handle(), machine_.system_table());
        initialize_volume();
        initialize_keyboard();
        initialize_line_editor();
        gfx_start();
        initialize_text_windows();
        initialize_explorer();
        EXPECT_TRUE(video_start());
        con_reset();
        buffers_ = machine_.pool().buffers();
    }
    ~ExplorerSession() {
        const std::uint64_t kept = memory_map_cache.taken ? 1 : 0;
        EXPECT_EQ(machine_.pool().buffers(), buffers_ + kept) << "pool buffers were not freed";
        for (const auto& volume : machine_.volumes()) {
            for (const auto* file : volume->open_files()) {
                EXPECT_EQ(static_cast<const uefi::FileProtocol*>(file), korvane::volume.root)
                    << "a file handle was not closed";
            }
        }
        for (const std::string& complaint : machine_.complaints())
            ADD_FAILURE() << complaint;
        initialize_explorer();
        initialize_volume();
        screen = Screen{};
        arenas = Arenas{};
        firmware = {};
    }
    ExplorerSession(const ExplorerSession&) = delete;
    ExplorerSession& operator=(const ExplorerSession&) = delete;

    host::Firmware& machine() { return machine_; }

    // The screen lines that a command prints, without trailing blanks, on a screen cleared before it.
    Lines run(std::string_view line) {
        clear_text();
        outcome = execute_explorer_line(line);
        return lines();
    }

    // The rows above the cursor's, and the cursor's own when there is something on it.
    Lines lines() const {
        Lines text;
        for (std::uint32_t row = 0; row <= console.cursor_row; ++row)
            text.push_back(row_text(row));
        if (text.back().empty()) text.pop_back();
        return text;
    }

    std::string row_text(std::uint32_t row) const {
        std::string text(reinterpret_cast<const char*>(console.grid[row]), text_columns());
        text.erase(text.find_last_not_of(' ') + 1);
        return text;
    }

    // A key for the next time one is waited for; without any, the blank key is pressed.
    void press_later(uefi::InputKey key) { keys_.push_back(key); }

    CommandEnd outcome = CommandEnd::done;  // of the last command
    int waits = 0;                          // how often a key was waited for

  private:
    // Clears the text without the pixels, which nobody looks at here.
    static void clear_text() {
        for (auto& row : console.grid)
            std::fill(std::begin(row), std::end(row), std::uint8_t{' '});
        console.cursor_row = 0;
        console.cursor_column = 0;
    }

    static host::Config with_screen(host::Config config, std::uint32_t rows) {
        config.modes = {{1024, rows * 16, 1024}};
        config.width = 1024;
        config.height = rows * 16;
        return config;
    }

    void press_next() {
        ++waits;
        uefi::InputKey key{0, u' '};
        if (!keys_.empty()) {
            key = keys_.front();
            keys_.pop_front();
        }
        machine_.keyboard().press(key);
    }

    host::Firmware machine_;
    std::deque<uefi::InputKey> keys_;
    std::uint64_t buffers_ = 0;
};

}  // namespace korvane::test
