// A hosted firmware for tests, with a volume in a temporary folder.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "firmware.h"
#include "temporary_folder.h"

namespace korvane::host {

using test::TemporaryFolder;

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
