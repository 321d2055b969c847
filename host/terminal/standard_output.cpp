#include "standard_output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "installation.h"
#include "standard_files.h"

namespace korvane::host {
namespace {

constexpr std::size_t most_gathered = 32768;
constexpr std::chrono::milliseconds longest_wait{20};

[[noreturn]] void give_up(int error) {
    // Whoever closes a pipe has seen enough.
    if (error != EPIPE)
        std::fprintf(stderr, "%s: cannot write the output: %s\n", program_name().data(),
                     std::strerror(error));
    std::_Exit(output_failed_status);
}

}  // namespace

void StandardOutput::put(std::string_view text) {
    if (gathered_.empty()) since_ = std::chrono::steady_clock::now();
    gathered_ += text;
    if (gathered_.size() >= most_gathered) flush();
}

void StandardOutput::flush() {
    std::string_view rest = gathered_;
    while (!rest.empty()) {
        const ssize_t length = write(STDOUT_FILENO, rest.data(), rest.size());
        if (length < 0 && errno == EINTR) continue;
        if (length < 0 && errno == EAGAIN) {
            wait_for_standard_file(STDOUT_FILENO);
            continue;
        }
        if (length < 0) give_up(errno);
        rest.remove_prefix(static_cast<std::size_t>(length));
    }
    gathered_.clear();
}

void StandardOutput::flush_if_due() {
    if (!gathered_.empty() && std::chrono::steady_clock::now() - since_ >= longest_wait) flush();
}

}  // namespace korvane::host
