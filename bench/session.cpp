#include "session.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>

namespace korvane::bench {

namespace {

constexpr const char* end_mark = "ENDED.TXT";  // the file by which a program tells that it came to its end

host::Config make_config(const std::filesystem::path& folder, std::uint32_t width, std::uint32_t height) {
    host::Config config;
    config.width = width;
    config.height = height;
    config.volumes = {{.folder = folder}};
    return config;
}

}  // namespace

double processor_seconds() {
    std::timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

void give_up(const std::string& reason) {
    std::cerr << reason << '\n';
    std::exit(EXIT_FAILURE);
}

Session::Session(const std::filesystem::path& image, std::uint32_t width, std::uint32_t height)
    : machine_(make_config(folder_.path(), width, height), host::ImageSource::file(image)) {
    run_until_waiting();
    learn_waiting_place();
}

void Session::run_until_waiting() {
    if (machine_.run() != host::Stop::waits_for_key)
        give_up("the image broke down: " + machine_.fault_report());
}

void Session::press(std::string_view keys) {
    for (const char key : keys)
        machine_.firmware().keyboard().press({.ScanCode = 0, .UnicodeChar = static_cast<unsigned char>(key)});
}

void Session::enter(std::string_view line) {
    press(line);
    press("\r");
    run_until_waiting();
}

double Session::seconds_of(std::string_view command) {
    press(command);
    run_until_waiting();
    return seconds_after('\r');
}

double Session::seconds_after(char key) {
    press({&key, 1});
    const double start = processor_seconds();
    run_until_waiting();
    return processor_seconds() - start;
}

WaitingProgram::WaitingProgram(Session& session, const std::string& text) : session_(session) {
    std::ofstream(session_.file("WAITING.BAS"), std::ios::binary)
        << text << "999999 OPEN \"" << end_mark << "\" FOR OUTPUT AS #1: CLOSE\r\n";
    session_.enter("LOAD \"WAITING\"");
    session_.enter("RUN");
    // It waits in INPUT$ from now on.
    session_.learn_waiting_place();
}

WaitingProgram::~WaitingProgram() {
    session_.seconds_after('q');
    session_.learn_waiting_place();
    if (!std::filesystem::remove(session_.file(end_mark))) give_up("a program did not come to its end");
}

std::string repeating_program(const std::vector<std::string>& preparation, const std::string& statement,
                              int count) {
    std::string text;
    int number = 1000;
    for (const std::string& line : preparation)
        text += std::to_string(number++) + ' ' + line + "\r\n";
    return text + "900000 IF INPUT$(1) = \"q\" THEN 999999\r\n" + "900010 FOR K = 1 TO " +
           std::to_string(count) + ": " + statement + ": NEXT K\r\n900020 GOTO 900000\r\n";
}

}  // namespace korvane::bench
