#include "linked_session.h"

// The interpreter's entry point.
extern "C" korvane::uefi::Status EFIAPI _ModuleEntryPoint(korvane::uefi::Handle image_handle,
                                                          korvane::uefi::SystemTable* system_table);

namespace korvane::test {

host::Config LinkedSession::make_config(std::uint32_t width, std::uint32_t height,
                                        const std::filesystem::path& folder) {
    host::Config config;
    config.width = width;
    config.height = height;
    config.volumes = {{.folder = folder}};
    return config;
}

LinkedSession::LinkedSession(std::uint32_t width, std::uint32_t height)
    : machine_(make_config(width, height, folder()), {.path = {}, .linked_code = _ModuleEntryPoint}) {
    broke_down_ = machine_.run() != host::Stop::waits_for_key;
    machine_.learn_waiting_place();
}

void LinkedSession::queue_keys(std::string_view keys) {
    constexpr std::uint16_t escape_scan_code = 23;
    host::Keyboard& keyboard = machine_.firmware().keyboard();
    for (const char key : keys)
        if (key == escape_key)
            keyboard.press({.ScanCode = escape_scan_code, .UnicodeChar = 0});
        else
            keyboard.press({.ScanCode = 0, .UnicodeChar = static_cast<unsigned char>(key)});
}

bool LinkedSession::run() {
    if (broke_down_) return false;
    broke_down_ = machine_.run() != host::Stop::waits_for_key;
    return !broke_down_;
}

bool LinkedSession::type(std::string_view line) {
    queue_keys(line);
    queue_keys("\r");
    return run();
}

bool LinkedSession::press_escape() {
    queue_keys({&escape_key, 1});
    return run();
}

void LinkedSession::write_file(const std::string& name, std::string_view content) const {
    folder_.write(name, content);
}

std::string LinkedSession::problem() const {
    std::string text = broke_down_ ? "broke down: " + machine_.fault_report() : "";
    for (const std::string& complaint : const_cast<host::Machine&>(machine_).firmware().complaints())
        text += complaint + '\n';
    return text;
}

}  // namespace korvane::test
