#include "text_console.h"

#include "unicode.h"

namespace korvane::host {

namespace {

constexpr std::uint64_t console_columns = 80;
constexpr std::uint64_t console_rows = 25;

}  // namespace

TextConsole::TextConsole(ServiceFaults& faults)
    : uefi::SimpleTextOutputProtocol{reset,         output_string, test_string,  query_mode,
                                     set_mode,      set_attribute, clear_screen, set_cursor_position,
                                     enable_cursor, nullptr},
      faults_(faults) {
    Mode = &mode_;
    mode_.MaxMode = 1;
    mode_.Attribute = 0x07;
    mode_.CursorVisible = 1;
}

uefi::Status EFIAPI TextConsole::reset(uefi::SimpleTextOutputProtocol* self, std::uint8_t) {
    auto& console = *static_cast<TextConsole*>(self);
    console.text_.clear();
    console.mode_.CursorColumn = 0;
    console.mode_.CursorRow = 0;
    return uefi::success;
}

uefi::Status EFIAPI TextConsole::output_string(uefi::SimpleTextOutputProtocol* self, const char16_t* text) {
    auto& console = *static_cast<TextConsole*>(self);
    if (auto failure = console.faults_.strike(Service::OutputString)) return *failure;
    if (text == nullptr) return uefi::invalid_parameter;
    console.text_ += to_utf8(text);
    return uefi::success;
}

uefi::Status EFIAPI TextConsole::test_string(uefi::SimpleTextOutputProtocol*, const char16_t*) {
    return uefi::success;
}

uefi::Status EFIAPI TextConsole::query_mode(uefi::SimpleTextOutputProtocol*, std::uint64_t mode,
                                            std::uint64_t* columns, std::uint64_t* rows) {
    if (mode != 0) return uefi::unsupported;
    *columns = console_columns;
    *rows = console_rows;
    return uefi::success;
}

uefi::Status EFIAPI TextConsole::set_mode(uefi::SimpleTextOutputProtocol* self, std::uint64_t mode) {
    if (mode != 0) return uefi::unsupported;
    ++static_cast<TextConsole*>(self)->modes_set_;
    return reset(self, 0);
}

uefi::Status EFIAPI TextConsole::set_attribute(uefi::SimpleTextOutputProtocol* self,
                                               std::uint64_t attribute) {
    static_cast<TextConsole*>(self)->mode_.Attribute = static_cast<std::int32_t>(attribute & 0x7F);
    return uefi::success;
}

uefi::Status EFIAPI TextConsole::clear_screen(uefi::SimpleTextOutputProtocol* self) {
    auto& console = *static_cast<TextConsole*>(self);
    if (auto failure = console.faults_.strike(Service::ClearScreen)) return *failure;
    return reset(self, 0);
}

uefi::Status EFIAPI TextConsole::set_cursor_position(uefi::SimpleTextOutputProtocol* self,
                                                     std::uint64_t column, std::uint64_t row) {
    auto& console = *static_cast<TextConsole*>(self);
    if (auto failure = console.faults_.strike(Service::SetCursorPosition)) return *failure;
    if (column >= console_columns || row >= console_rows) return uefi::unsupported;
    console.mode_.CursorColumn = static_cast<std::int32_t>(column);
    console.mode_.CursorRow = static_cast<std::int32_t>(row);
    return uefi::success;
}

uefi::Status EFIAPI TextConsole::enable_cursor(uefi::SimpleTextOutputProtocol* self, std::uint8_t visible) {
    static_cast<TextConsole*>(self)->mode_.CursorVisible = visible;
    return uefi::success;
}

}  // namespace korvane::host
