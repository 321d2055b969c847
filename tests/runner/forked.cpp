#include "forked.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "folder.h"
#include "piped_program.h"

namespace korvane::transcript {

namespace {

std::string read_all(int descriptor) {
    std::string text;
    char buffer[4096];
    while (true) {
        const ssize_t count = read(descriptor, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return text;
        text.append(buffer, static_cast<std::size_t>(count));
    }
}

std::string contents_of(int descriptor) {
    lseek(descriptor, 0, SEEK_SET);
    return read_all(descriptor);
}

// What the child sends: one byte, the length of the report, the report, the rest.
std::string pack(const ForkedResult& result) {
    const std::uint64_t length = result.report.size();
    std::string packed(1, result.goes_on ? '\1' : '\0');
    packed.append(reinterpret_cast<const char*>(&length), sizeof length);
    return packed + result.report + result.shown;
}

bool unpack(const std::string& packed, ForkedResult& result) {
    std::uint64_t length = 0;
    constexpr std::size_t head = 1 + sizeof length;
    if (packed.size() < head) return false;
    std::memcpy(&length, packed.data() + 1, sizeof length);
    if (length > packed.size() - head) return false;
    result.goes_on = packed[0] != '\0';
    result.report = packed.substr(head, length);
    result.shown = packed.substr(head + length);
    return true;
}

std::string describe_death(int status) {
    if (WIFSIGNALED(status))
        return std::string("the test's process was killed: ") + strsignal(WTERMSIG(status));
    return "the test's process ended with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

ForkedResult run_forked(const std::function<ForkedResult()>& work) {
    int ends[2];
    if (pipe(ends) != 0) return {"no pipe\n", "", false};
    const host::Descriptor errors(memfd_create("errors", 0));
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) return {"no process\n", "", false};
    if (child == 0) {
        close(ends[0]);
        dup2(errors.number(), STDERR_FILENO);
        const std::string packed = pack(work());
        test::write_all(ends[1], packed.data(), packed.size());
        _exit(0);
    }
    close(ends[1]);
    const std::string packed = read_all(ends[0]);
    close(ends[0]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    ForkedResult result;
    const bool complete = unpack(packed, result);
    if (!complete || status != 0)
        result = {describe_death(status) + "\n" + contents_of(errors.number()), "", false};
    return result;
}

}  // namespace korvane::transcript
