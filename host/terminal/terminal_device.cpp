#include "terminal_device.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace korvane::host {
namespace {

// Title saved and set, alternate screen, cursor hidden, bracketed paste on; and each of them back.
constexpr std::string_view enter_sequence =
    "\x1b[22;2t\x1b]2;Korvane BASIC\x1b\\\x1b[?1049h\x1b[?25l\x1b[?2004h";
constexpr std::string_view leave_sequence = "\x1b[?2004l\x1b[0m\x1b[?25h\x1b[?1049l\x1b[23;2t";

constexpr int patience_ms = 500;  // with a terminal that takes nothing

volatile std::sig_atomic_t size_changed = 0;

void note_size_change(int) {
    size_changed = 1;
}

}  // namespace

TerminalMode::TerminalMode() {
    tcgetattr(STDIN_FILENO, &original_);
}

void TerminalMode::enter() const {
    termios raw = original_;
    cfmakeraw(&raw);
    raw.c_lflag |= ISIG;
    raw.c_cc[VSUSP] = _POSIX_VDISABLE;
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &raw);
    write_terminal(enter_sequence);
}

// A terminal that takes nothing any more must not keep the process: what waits for it is thrown away.
void TerminalMode::leave() const {
    pollfd output = {STDOUT_FILENO, POLLOUT, 0};
    if (poll(&output, 1, patience_ms) <= 0) tcflush(STDOUT_FILENO, TCOFLUSH);
    if (poll(&output, 1, patience_ms) > 0) write_terminal(leave_sequence);
    tcflush(STDIN_FILENO, TCIFLUSH);
    tcsetattr(STDIN_FILENO, TCSANOW, &original_);
}

TerminalSize terminal_size() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) return {80, 24};
    return {size.ws_col, size.ws_row};
}

void watch_terminal_size() {
    struct sigaction action {};
    action.sa_handler = note_size_change;
    sigaction(SIGWINCH, &action, nullptr);
}

bool terminal_size_changed() {
    const bool changed = size_changed != 0;
    size_changed = 0;
    return changed;
}

std::string read_terminal(int milliseconds) {
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    if (poll(&input, 1, milliseconds) <= 0) return {};
    std::array<char, 4096> buffer;
    const ssize_t length = read(STDIN_FILENO, buffer.data(), buffer.size());
    if (length == 0 || (length < 0 && errno != EINTR && errno != EAGAIN)) std::exit(EXIT_SUCCESS);
    return {buffer.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
}

void write_terminal(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t length = write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (length < 0 && errno == EINTR) continue;
        if (length < 0 && errno == EAGAIN) {
            pollfd output = {STDOUT_FILENO, POLLOUT, 0};
            poll(&output, 1, -1);
            continue;
        }
        if (length <= 0) return;  // the terminal is gone, and the next read says so
        bytes.remove_prefix(static_cast<std::size_t>(length));
    }
}

}  // namespace korvane::host
