#include "terminal_guard.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korvane::host {
namespace {

constexpr std::array ending_signals = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};

volatile pid_t session_process = 0;
volatile std::sig_atomic_t ended_by = 0;

void end_session(int signal_number) {
    ended_by = signal_number;
    if (session_process > 0) kill(session_process, SIGKILL);
}

void handle_ending_signals(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    for (const int number : ending_signals)
        sigaction(number, &action, nullptr);
}

void show_messages(int messages) {
    lseek(messages, 0, SEEK_SET);
    std::array<char, 4096> buffer;
    ssize_t length;
    while ((length = read(messages, buffer.data(), buffer.size())) > 0)
        std::fwrite(buffer.data(), 1, static_cast<std::size_t>(length), stderr);
}

[[noreturn]] void be_session(int (*session)(void* argument), void* argument, int messages) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    handle_ending_signals(SIG_IGN);  // they are the guard's business
    dup2(messages, STDERR_FILENO);
    std::exit(session(argument));
}

int exit_status(int wait_status) {
    if (ended_by == SIGINT) return EXIT_SUCCESS;
    if (ended_by != 0) return 128 + ended_by;
    return WIFSIGNALED(wait_status) ? 128 + WTERMSIG(wait_status) : WEXITSTATUS(wait_status);
}

}  // namespace

int run_guarded(int (*session)(void* argument), void* argument) {
    const int messages = memfd_create("messages", MFD_CLOEXEC);
    if (messages < 0) {
        std::perror("memfd_create");
        return EXIT_FAILURE;
    }
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

    const TerminalMode mode;
    mode.enter();
    const pid_t child = fork();
    if (child == 0) {
        sigprocmask(SIG_SETMASK, &before, nullptr);
        be_session(session, argument, messages);
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
