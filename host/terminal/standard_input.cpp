#include "standard_input.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "host_text.h"
#include "standard_files.h"

namespace korvane::host {

std::optional<uefi::InputKey> StandardInput::next() {
    for (;;) {
        if (const auto key = take()) return key;
        if (at_end_) return std::nullopt;
        read_more();
    }
}

std::optional<uefi::InputKey> StandardInput::next_if_there() {
    if (const auto key = take()) return key;
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    if (at_end_ || poll(&input, 1, 0) <= 0) return std::nullopt;
    read_more();
    return take();
}

std::optional<uefi::InputKey> StandardInput::take() {
    while (!pending_.empty()) {
        HostCharacter character = first_character(pending_);
        if (character.bytes == 0 && !at_end_) return std::nullopt;
        if (character.bytes == 0) character.bytes = 1;
        pending_.erase(0, character.bytes);
        unsigned char code = to_code(character);
        const bool belongs_to_return = code == '\n' && after_return_;
        after_return_ = code == '\r';
        if (belongs_to_return || code == 0) continue;
        if (code == '\n') code = '\r';
        if (code == '\t') code = ' ';
        line_begun_ = code != '\r';
        return uefi::InputKey{uefi::scan_none, code};
    }
    if (!at_end_ || !line_begun_) return std::nullopt;
    line_begun_ = false;
    return uefi::InputKey{uefi::scan_none, u'\r'};
}

void StandardInput::read_more() {
    std::array<char, 4096> buffer;
    const ssize_t length = read(STDIN_FILENO, buffer.data(), buffer.size());
    if (length < 0 && errno == EINTR) return;
    if (length < 0 && errno == EAGAIN) {
        wait_for_standard_file(STDIN_FILENO);
        return;
    }
    at_end_ = length <= 0;
    if (length > 0) pending_.append(buffer.data(), static_cast<std::size_t>(length));
}

}  // namespace korvane::host
