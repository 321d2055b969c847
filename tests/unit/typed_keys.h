// A keyboard with prepared key strokes in place of the firmware's.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <string_view>

#include "platform/firmware.h"
#include "platform/uefi.h"
#include "screen/keyboard.h"

namespace korvane::test {

// While it lives, the firmware's text input gives these key strokes. Reading more than were prepared is a
// failure of the test, and gives Escape so that no reader waits for ever.
class TypedKeys {
  public:
    TypedKeys() : saved_(firmware) {
        current = this;
        input_.ReadKeyStroke = read_key_stroke;
        input_.WaitForKey = &input_;
        if (firmware.boot != nullptr) boot_ = *firmware.boot;  // what a test has put there stays
        boot_.WaitForEvent = wait_for_event;
        table_.ConIn = &input_;
        table_.BootServices = &boot_;
        firmware.system_table = &table_;
        firmware.boot = &boot_;
        initialize_keyboard();
    }
    ~TypedKeys() {
        firmware = saved_;
        current = nullptr;
    }
    TypedKeys(const TypedKeys&) = delete;
    TypedKeys& operator=(const TypedKeys&) = delete;

    TypedKeys& text(std::string_view characters) {
        for (const char character : characters)
            character_key(static_cast<std::uint8_t>(character));
        return *this;
    }
    TypedKeys& character_key(char16_t character) {
        strokes_.push_back({uefi::success, {0, character}});
        return *this;
    }
    TypedKeys& scan_key(std::uint16_t code, int times = 1) {
        for (int i = 0; i < times; ++i)
            strokes_.push_back({uefi::success, {code, 0}});
        return *this;
    }
    TypedKeys& enter() { return character_key(13); }
    TypedKeys& backspace(int times = 1) {
        for (int i = 0; i < times; ++i)
            character_key(8);
        return *this;
    }
    TypedKeys& escape() { return scan_key(uefi::scan_escape); }

    // A read that yields no key stroke.
    TypedKeys& failing_read(uefi::Status status) {
        strokes_.push_back({status, {}});
        return *this;
    }

    // When set, an empty queue is an idle keyboard instead of a failure.
    bool may_be_idle = false;
    int waits = 0;  // calls of WaitForEvent
    uefi::Status wait_status = uefi::success;

    std::size_t left() const { return strokes_.size(); }

  private:
    struct Stroke {
        uefi::Status status;
        uefi::InputKey key;
    };

    static EFIAPI uefi::Status read_key_stroke(uefi::SimpleTextInputProtocol*, uefi::InputKey* key) {
        if (current->strokes_.empty()) {
            if (current->may_be_idle) return uefi::not_ready;
            ADD_FAILURE() << "more keys were read than typed";
            *key = {uefi::scan_escape, 0};
            return uefi::success;
        }
        const Stroke stroke = current->strokes_.front();
        current->strokes_.pop_front();
        if (!uefi::is_error(stroke.status)) *key = stroke.key;
        return stroke.status;
    }

    static EFIAPI uefi::Status wait_for_event(std::uint64_t, uefi::Event* event, std::uint64_t* index) {
        EXPECT_EQ(*event, current->input_.WaitForKey);
        ++current->waits;
        *index = 0;
        return current->wait_status;
    }

    static inline TypedKeys* current = nullptr;

    Firmware saved_;
    uefi::SimpleTextInputProtocol input_{};
    uefi::BootServices boot_{};
    uefi::SystemTable table_{};
    std::deque<Stroke> strokes_;
};

}  // namespace korvane::test
