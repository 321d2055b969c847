// The copy of a program that is not saved, on a disk that is full and after a power cut.
#include "rescue_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "temporary_folder.h"

namespace korvane::host {
namespace {

using test::TemporaryFolder;

constexpr const char* old_program = "10 PRINT 1\r\n";
constexpr const char* new_program = "10 PRINT 1\r\n20 PRINT \"NEW\"\r\n";

// No file of this process may become longer, as on a full disk.
class FullDisk {
  public:
    explicit FullDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limit = before_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

  private:
    void (*handler_)(int);
    rlimit before_{};
};

std::vector<std::string> files_in(const TemporaryFolder& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        if (entry.is_regular_file()) names.push_back(entry.path().filename().string());
    return names;
}

TEST(RescueFileTest, AFullDiskLeavesTheCopyBefore) {
    const TemporaryFolder folder;
    const TemporaryFolder state;
    setenv("XDG_STATE_HOME", state.path().c_str(), 1);
    RescueFile rescue(folder.path());
    ASSERT_TRUE(rescue.keep(new_program));
    ASSERT_EQ(files_in(folder).size(), 1u);
    const std::string name = files_in(folder).front();
    const std::string whole = folder.read(name);
    ASSERT_TRUE(rescue.keep(old_program));
    const std::string before = folder.read(name);
    ASSERT_LT(before.size(), whole.size());
    for (std::size_t room = 0; room < whole.size(); ++room) {
        {
            const FullDisk full(room);
            EXPECT_FALSE(rescue.keep(new_program)) << room;
        }
        EXPECT_EQ(files_in(folder), std::vector{name}) << room;
        EXPECT_EQ(folder.read(name), before) << room;
    }
    EXPECT_TRUE(rescue.keep(new_program));
    EXPECT_EQ(folder.read(name), whole);
    rescue.drop();
    EXPECT_TRUE(files_in(folder).empty());
    unsetenv("XDG_STATE_HOME");
}

TEST(RescueFileTest, APowerCutWhileItIsWrittenLeavesTheCopyBefore) {
    const TemporaryFolder folder;
    const TemporaryFolder state;
    setenv("XDG_STATE_HOME", state.path().c_str(), 1);
    folder.write(".korvane-unsaved-99999", "10 PRINT 1\n");
    folder.write(".korvane-draft-99999", "10 PRI");
    EXPECT_NE(RescueFile(folder.path()).adopt().find("LOAD \"RESCUE\""), std::string::npos);
    EXPECT_EQ(folder.read("RESCUE.BAS"), "10 PRINT 1\n");
    EXPECT_FALSE(std::filesystem::exists(folder.path() / ".korvane-unsaved-99999"));
    unsetenv("XDG_STATE_HOME");
}

}  // namespace
}  // namespace korvane::host
