// The counts of a run, kept in a file that is up to date however the run ends.
#pragma once

#include <filesystem>
#include <string_view>

namespace korvane::fuzz {

// Once a second at most, unless `at_once`.
void write_counts(const std::filesystem::path& file, std::string_view target, bool at_once);

}  // namespace korvane::fuzz
