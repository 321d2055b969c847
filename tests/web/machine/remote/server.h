// The process that has machines run in a browser: Node with tests/web/machine/browser_server.mjs.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace korvane::web {

class Server {
  public:
    Server(std::string node, std::string script, std::string module);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // Sends orders and waits for the answer; nothing when none comes in time, or the process has ended. The
    // process is then another one, which knows nothing.
    std::optional<std::string> ask(std::string_view orders, std::chrono::milliseconds patience);

    // Starts the process anew where it has ended: one forked from this one ends it when no answer comes.
    void ensure_running();

  private:
    void start();
    void stop(std::chrono::milliseconds patience);
    bool send(std::string_view bytes);
    bool receive(char* bytes, std::size_t count, std::chrono::steady_clock::time_point end);

    std::string node_;
    std::string script_;
    std::string module_;
    pid_t process_ = -1;
    int to_ = -1;
    int from_ = -1;
};

}  // namespace korvane::web
