// A hosted firmware for tests, with a volume in a temporary folder.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "firmware.h"

namespace korvane::host {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "korvane-unit-XXXXXX").string();
        path_ = mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path_ / name, std::ios::binary) << content;
    }
    std::string read(const std::string& name) const {
        std::ifstream stream(path_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

  private:
    std::filesystem::path path_;
};

class HostedFirmwareTest : public ::testing::Test {
  protected:
    void start(Config config = {}) {
        firmware_.reset();
        config.volumes.resize(config.volumes.empty() ? 1 : config.volumes.size());
        for (VolumeConfig& volume : config.volumes)
            if (volume.folder.empty()) volume.folder = folder_.path();
        firmware_ = std::make_unique<Firmware>(std::move(config));
    }
    void SetUp() override { start(); }

    uefi::BootServices& boot() { return *firmware_->system_table()->BootServices; }
    uefi::RuntimeServices& runtime() { return *firmware_->system_table()->RuntimeServices; }

    template <typename Interface>
    Interface* locate(const uefi::Guid& protocol) {
        void* found = nullptr;
        return uefi::is_error(boot().LocateProtocol(&protocol, nullptr, &found))
                   ? nullptr
                   : static_cast<Interface*>(found);
    }

    TemporaryFolder folder_;
    std::unique_ptr<Firmware> firmware_;
};

}  // namespace korvane::host
