// The firmware's own text console: what is printed on it is kept.
#pragma once

#include <cstdint>
#include <string>

#include "platform/uefi.h"
#include "service_faults.h"

namespace korvane::host {

class TextConsole : public uefi::SimpleTextOutputProtocol {
  public:
    explicit TextConsole(ServiceFaults& faults);

    // Everything printed since the last clearing, as UTF-8.
    const std::string& text() const { return text_; }

    // How often its mode has been set, as is done after graphics to make it usable again.
    int modes_set() const { return modes_set_; }

  private:
    static uefi::Status EFIAPI reset(uefi::SimpleTextOutputProtocol* self,
                                     std::uint8_t extended_verification);
    static uefi::Status EFIAPI output_string(uefi::SimpleTextOutputProtocol* self, const char16_t* text);
    static uefi::Status EFIAPI test_string(uefi::SimpleTextOutputProtocol* self, const char16_t* text);
    static uefi::Status EFIAPI query_mode(uefi::SimpleTextOutputProtocol* self, std::uint64_t mode,
                                          std::uint64_t* columns, std::uint64_t* rows);
    static uefi::Status EFIAPI set_mode(uefi::SimpleTextOutputProtocol* self, std::uint64_t mode);
    static uefi::Status EFIAPI set_attribute(uefi::SimpleTextOutputProtocol* self, std::uint64_t attribute);
    static uefi::Status EFIAPI clear_screen(uefi::SimpleTextOutputProtocol* self);
    static uefi::Status EFIAPI set_cursor_position(uefi::SimpleTextOutputProtocol* self, std::uint64_t column,
                                                   std::uint64_t row);
    static uefi::Status EFIAPI enable_cursor(uefi::SimpleTextOutputProtocol* self, std::uint8_t visible);

    ServiceFaults& faults_;
    uefi::SimpleTextOutputMode mode_{};
    std::string text_;
    int modes_set_ = 0;
};

}  // namespace korvane::host
