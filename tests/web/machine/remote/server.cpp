#include "server.h"

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <thread>
#include <utility>

#include "piped_program.h"

namespace korvane::web {

Server::Server(std::string node, std::string script, std::string module)
    : node_(std::move(node)), script_(std::move(script)), module_(std::move(module)) {
    signal(SIGPIPE, SIG_IGN);
    start();
}

Server::~Server() {
    constexpr std::chrono::seconds of_a_browser{10};
    stop(of_a_browser);
}

void Server::start() {
    const test::PipedProgram program = test::start_piped_program({node_, script_, module_});
    process_ = program.process;
    to_ = program.to;
    from_ = program.from;
}

void Server::ensure_running() {
    if (waitpid(process_, nullptr, WNOHANG) != process_) return;
    close(to_);
    close(from_);
    start();
}

// It ends by itself when nothing more can come, if it can do anything at all.
void Server::stop(std::chrono::milliseconds patience) {
    close(to_);
    constexpr std::chrono::milliseconds step{20};
    for (auto waited = step; waited <= patience; waited += step) {
        if (waitpid(process_, nullptr, WNOHANG) == process_) {
            close(from_);
            return;
        }
        std::this_thread::sleep_for(step);
    }
    close(from_);
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

bool Server::send(std::string_view bytes) {
    return test::write_all(to_, bytes.data(), bytes.size());
}

bool Server::receive(char* bytes, std::size_t count, std::chrono::steady_clock::time_point end) {
    while (count != 0) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd ready{from_, POLLIN, 0};
        if (left.count() <= 0 || poll(&ready, 1, static_cast<int>(left.count())) <= 0) return false;
        const ssize_t taken = read(from_, bytes, count);
        if (taken <= 0) return false;
        bytes += taken;
        count -= static_cast<std::size_t>(taken);
    }
    return true;
}

std::optional<std::string> Server::ask(std::string_view orders, std::chrono::milliseconds patience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    const auto size = static_cast<std::uint64_t>(orders.size());
    char digits[sizeof size];
    std::memcpy(digits, &size, sizeof size);
    std::uint64_t answer_size = 0;
    std::string answer;
    bool answered = send({digits, sizeof digits}) && send(orders) && receive(digits, sizeof digits, end);
    if (answered) {
        std::memcpy(&answer_size, digits, sizeof answer_size);
        answer.resize(answer_size);
        answered = receive(answer.data(), answer.size(), end);
    }
    if (answered) return answer;
    stop({});
    start();
    return std::nullopt;
}

}  // namespace korvane::web
