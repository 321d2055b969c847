// Programs that run beside this one and talk with it through pipes.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace korvane::test {

struct PipedProgram {
    pid_t process;
    int to;    // its standard input
    int from;  // its standard output
};

// `words` are the program, by its path or looked for where programs are, and its arguments. Without pipes
// there is nothing to run: this program ends.
inline PipedProgram start_piped_program(std::vector<std::string> words) {
    constexpr int no_program = 71;
    int to[2];
    int from[2];
    if (pipe(to) != 0 || pipe(from) != 0) {
        std::perror("pipe");
        std::exit(no_program);
    }
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const pid_t process = fork();
    if (process == 0) {
        dup2(to[0], STDIN_FILENO);
        dup2(from[1], STDOUT_FILENO);
        for (const int end : {to[0], to[1], from[0], from[1]})
            close(end);
        execvp(pointers[0], pointers.data());
        std::perror(pointers[0]);
        _exit(no_program);
    }
    close(to[0]);
    close(from[1]);
    return {process, to[1], from[0]};
}

// Reads or writes until all bytes are through; false when the other end is gone.
template <typename Transfer, typename Byte>
bool transfer_all(Transfer transfer, int descriptor, Byte* at, std::size_t count) {
    while (count != 0) {
        const ssize_t done = transfer(descriptor, at, count);
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) return false;
        at += done;
        count -= static_cast<std::size_t>(done);
    }
    return true;
}

inline bool write_all(int descriptor, const void* bytes, std::size_t count) {
    return transfer_all(write, descriptor, static_cast<const char*>(bytes), count);
}

inline bool read_all(int descriptor, void* bytes, std::size_t count) {
    return transfer_all(read, descriptor, static_cast<char*>(bytes), count);
}

}  // namespace korvane::test
