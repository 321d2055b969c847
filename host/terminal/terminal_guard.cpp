#include "terminal_guard.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korvane::host {
namespace {

constexpr std::array ending_signals = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};

volatile pid_t session_process = 0;
volatile std::sig_atomic_t ended_by = 0;

// Shared by the two processes.
struct Interrupts {
    std::atomic<std::uint32_t> made{0};
    std::atomic<std::uint32_t> taken{0};
    std::atomic<std::int64_t> oldest_ms{0};  // when the first of those that are not taken was made
};
Interrupts* interrupts = nullptr;

constexpr std::int64_t patience_ms = 1000;

std::int64_t monotonic_ms() {
    std::timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

void end_session(int signal_number) {
    ended_by = signal_number;
    if (session_process > 0) kill(session_process, SIGKILL);
}

void interrupt_session(int signal_number) {
    const std::int64_t now = monotonic_ms();
    if (interrupts->made == interrupts->taken) {
        interrupts->oldest_ms = now;
    } else if (now - interrupts->oldest_ms >= patience_ms) {
        end_session(signal_number);
        return;
    }
    ++interrupts->made;
    if (session_process > 0) kill(session_process, SIGUSR1);
}

// What has to be done is in the shared record; the signal only ends a wait.
void note_interrupt(int) {}

void handle_signal(int number, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(number, &action, nullptr);
}

void handle_ending_signals(void (*handler)(int)) {
    for (const int number : ending_signals)
        handle_signal(number, handler);
}

void show_messages(int messages) {
    lseek(messages, 0, SEEK_SET);
    std::array<char, 4096> buffer;
    ssize_t length;
    while ((length = read(messages, buffer.data(), buffer.size())) > 0)
        std::fwrite(buffer.data(), 1, static_cast<std::size_t>(length), stderr);
}

[[noreturn]] void be_session(int (*session)(void* argument), void* argument, int messages, pid_t guard) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != guard) std::_Exit(EXIT_FAILURE);  // it has ended before that was asked for
    dup2(messages, STDERR_FILENO);
    std::exit(session(argument));
}

int exit_status(int wait_status) {
    if (ended_by == SIGINT) return EXIT_SUCCESS;
    if (ended_by != 0) return 128 + ended_by;
    return WIFSIGNALED(wait_status) ? 128 + WTERMSIG(wait_status) : WEXITSTATUS(wait_status);
}

}  // namespace

bool take_interrupt() {
    if (interrupts == nullptr || interrupts->made == interrupts->taken) return false;
    ++interrupts->taken;
    interrupts->oldest_ms = monotonic_ms();
    return true;
}

int run_guarded(int (*session)(void* argument), void* argument) {
    const int messages = memfd_create("messages", MFD_CLOEXEC);
    if (messages < 0) {
        std::perror("memfd_create");
        return EXIT_FAILURE;
    }
    void* shared =
        mmap(nullptr, sizeof(Interrupts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) {
        std::perror("mmap");
        return EXIT_FAILURE;
    }
    interrupts = new (shared) Interrupts;
    // A stopped session would leave the terminal raw; there is nothing to go back to while it runs.
    std::signal(SIGTSTP, SIG_IGN);
    std::signal(SIGTTOU, SIG_IGN);
    // A signal that comes before the child is known waits until then.
    sigset_t ending;
    sigset_t before;
    sigemptyset(&ending);
    for (const int number : ending_signals)
        sigaddset(&ending, number);
    sigprocmask(SIG_BLOCK, &ending, &before);
    handle_ending_signals(end_session);
    handle_signal(SIGINT, interrupt_session);
    handle_signal(SIGUSR1, note_interrupt);  // the session inherits it: it may come as soon as there is one

    const TerminalMode mode;
    mode.enter();
    const pid_t guard = getpid();
    const pid_t child = fork();
    if (child == 0) {
        handle_ending_signals(SIG_IGN);  // they are the guard's business
        sigprocmask(SIG_SETMASK, &before, nullptr);
        be_session(session, argument, messages, guard);
    }
    session_process = child;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    int status = 0;
    if (child > 0) {
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
    }
    mode.leave();
    if (child < 0) std::perror("fork");
    show_messages(messages);
    close(messages);
    return child < 0 ? EXIT_FAILURE : exit_status(status);
}

}  // namespace korvane::host
