// A folder for what a test or a measurement writes.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace korvane::test {

// An empty folder that goes with its owner. Without one there is nothing to run: the program ends.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "korvane-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            std::perror("temporary folder");
            std::exit(2);
        }
        path_ = name;
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    // Writes a file, in a new folder if its name has one, and gives its path.
    std::filesystem::path write(const std::filesystem::path& name, std::string_view content) const {
        std::filesystem::create_directories((path_ / name).parent_path());
        std::ofstream(path_ / name, std::ios::binary) << content;
        return path_ / name;
    }

    std::string read(const std::filesystem::path& name) const {
        std::ifstream file(path_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::filesystem::path path_;
};

}  // namespace korvane::test
