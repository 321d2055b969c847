#include "program_search.h"

#include <string>
#include <system_error>

#include "fat_names.h"

namespace korvane::host {

std::optional<std::filesystem::path> find_program(const std::filesystem::path& name) {
    std::error_code error;
    if (std::filesystem::is_regular_file(name, error)) return name;
    const std::string wanted = name.filename().string();
    const bool has_extension = wanted.find('.') != wanted.npos;
    const std::filesystem::path folder = name.has_parent_path() ? name.parent_path() : ".";
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string found = entry.path().filename().string();
        const bool fits = same_name(found, wanted) || (!has_extension && same_name(found, wanted + ".bas"));
        if (fits && entry.is_regular_file(error)) return entry.path();
    }
    return std::nullopt;
}

}  // namespace korvane::host
