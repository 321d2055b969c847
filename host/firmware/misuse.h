// What the image did that firmware may answer with anything: every report is a bug of the image.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace korvane::host {

struct Misuse {
    std::vector<std::string> reports;

    void report(std::string what) { reports.push_back(std::move(what)); }
};

}  // namespace korvane::host
