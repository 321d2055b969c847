#include "standard_files.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace korvane::host {

void hold_closed_standard_files() {
    // The lowest number that is free is the next to be given.
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number)
        if (fcntl(number, F_GETFD) < 0) open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

void wait_for_standard_file(int number) {
    pollfd file = {number, static_cast<short>(number == STDIN_FILENO ? POLLIN : POLLOUT), 0};
    poll(&file, 1, -1);
}

}  // namespace korvane::host
