// Work done in a child process, so that it cannot disturb what comes after it.
#pragma once

#include <functional>
#include <string>

namespace korvane::transcript {

struct ForkedResult {
    std::string report;    // of a failure, empty when there is none
    std::string shown;     // other text for the user
    bool goes_on = false;  // there is more of the same to do
};

// Runs `work` in a child process and gives its result. A child that dies gives a report of how, with what it
// wrote to standard error.
ForkedResult run_forked(const std::function<ForkedResult()>& work);

}  // namespace korvane::transcript
