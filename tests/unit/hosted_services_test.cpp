#include <cstring>
#include <string>
#include <vector>

#include "hosted_machine.h"

namespace korvane::host {
namespace {

class HostedServicesTest : public HostedFirmwareTest {};

TEST_F(HostedServicesTest, OnlyHandlesHaveProtocols) {
    void* found = nullptr;
    EXPECT_EQ(boot().HandleProtocol(firmware_->image_handle(), &uefi::loaded_image_guid, &found),
              uefi::success);
    EXPECT_NE(found, nullptr);
    EXPECT_EQ(boot().HandleProtocol(firmware_->image_handle(), &uefi::block_io_guid, &found),
              uefi::unsupported);
    EXPECT_EQ(found, nullptr);
    EXPECT_TRUE(firmware_->complaints().empty());
    EXPECT_EQ(boot().HandleProtocol(&found, &uefi::block_io_guid, &found), uefi::invalid_parameter);
    EXPECT_EQ(firmware_->complaints().size(), 1U);
}

TEST_F(HostedServicesTest, HandlesAreFoundInOrder) {
    folder_.write("disk", std::string(1024, 'x'));
    Config config;
    config.block_devices.resize(2);
    config.block_devices[0].image = config.block_devices[1].image = folder_.path() / "disk";
    config.block_devices[1].media_id = 77;
    start(config);
    std::uint64_t count = 0;
    uefi::Handle* handles = nullptr;
    const auto search = uefi::LocateSearchType::ByProtocol;
    ASSERT_EQ(boot().LocateHandleBuffer(search, &uefi::block_io_guid, nullptr, &count, &handles),
              uefi::success);
    ASSERT_EQ(count, 2U);
    void* found = nullptr;
    ASSERT_EQ(boot().HandleProtocol(handles[1], &uefi::block_io_guid, &found), uefi::success);
    EXPECT_EQ(static_cast<uefi::BlockIoProtocol*>(found)->Media->MediaId, 77U);
    EXPECT_EQ(boot().FreePool(handles), uefi::success);
    EXPECT_EQ(boot().LocateHandleBuffer(search, &uefi::device_path_guid, nullptr, &count, &handles),
              uefi::not_found);
    EXPECT_EQ(firmware_->pool().buffers(), 0U);
}

TEST_F(HostedServicesTest, ProtocolsCanBeLeftOut) {
    Config config;
    config.graphics_output = false;
    config.cpu_protocol = false;
    config.acpi_table = false;
    start(config);
    EXPECT_EQ(locate<void>(uefi::graphics_output_guid), nullptr);
    EXPECT_EQ(locate<void>(uefi::cpu_arch_guid), nullptr);
    EXPECT_EQ(firmware_->system_table()->NumberOfTableEntries, 1U);
    EXPECT_EQ(firmware_->system_table()->ConfigurationTable[0].VendorGuid, uefi::smbios3_table_guid);
}

TEST_F(HostedServicesTest, TheLoadedImageKnowsItsOptionsAndItsFile) {
    Config config;
    config.load_options = u"A B";
    config.image_path = u"\\X\\Y.EFI";
    start(config);
    void* found = nullptr;
    ASSERT_EQ(boot().HandleProtocol(firmware_->image_handle(), &uefi::loaded_image_guid, &found),
              uefi::success);
    const auto& image = *static_cast<uefi::LoadedImageProtocol*>(found);
    EXPECT_EQ(image.LoadOptionsSize, 8U);
    EXPECT_EQ(std::memcmp(image.LoadOptions, u"A B", 8), 0);
    std::u16string path;
    const auto* node = reinterpret_cast<const std::uint8_t*>(image.FilePath);
    while (node[0] != uefi::device_path_end) {
        EXPECT_EQ(node[0], uefi::device_path_media);
        EXPECT_EQ(node[1], uefi::device_path_media_file_path);
        const std::size_t length = node[2] + 256U * node[3];
        std::u16string text((length - 4) / 2, u'\0');
        std::memcpy(text.data(), node + 4, length - 4);
        text.pop_back();
        path += text;
        node += length;
    }
    EXPECT_EQ(path, u"\\X\\Y.EFI");
    EXPECT_EQ(node[1], uefi::device_path_end_entire);
}

TEST_F(HostedServicesTest, TablesAddUpToZero) {
    for (std::uint64_t i = 0; i < firmware_->system_table()->NumberOfTableEntries; ++i) {
        const auto& entry = firmware_->system_table()->ConfigurationTable[i];
        const auto* bytes = static_cast<const std::uint8_t*>(entry.VendorTable);
        const std::size_t size = entry.VendorGuid == uefi::acpi_20_table_guid ? 36 : 24;
        std::uint8_t sum = 0;
        for (std::size_t at = 0; at < size; ++at)
            sum = static_cast<std::uint8_t>(sum + bytes[at]);
        EXPECT_EQ(sum, 0);
    }
}

TEST_F(HostedServicesTest, VariablesTellTheirSize) {
    Config config;
    config.variables = {{u"BootOrder", uefi::global_variable_guid, 7, {1, 0, 2, 0}}};
    start(config);
    std::uint8_t data[8] = {};
    std::uint64_t size = 0;
    EXPECT_EQ(runtime().GetVariable(u"BootOrder", &uefi::global_variable_guid, nullptr, &size, nullptr),
              uefi::buffer_too_small);
    EXPECT_EQ(size, 4U);
    std::uint32_t attributes = 0;
    EXPECT_EQ(runtime().GetVariable(u"BootOrder", &uefi::global_variable_guid, &attributes, &size, data),
              uefi::success);
    EXPECT_EQ(attributes, 7U);
    EXPECT_EQ(data[2], 2);
    EXPECT_EQ(runtime().GetVariable(u"bootorder", &uefi::global_variable_guid, nullptr, &size, data),
              uefi::not_found);
    EXPECT_EQ(runtime().GetVariable(u"BootOrder", &uefi::block_io_guid, nullptr, &size, data),
              uefi::not_found);
    char16_t name[16] = {};
    std::uint64_t name_size = 4;
    uefi::Guid vendor{};
    EXPECT_EQ(runtime().GetNextVariableName(&name_size, name, &vendor), uefi::buffer_too_small);
    EXPECT_EQ(name_size, 20U);
    EXPECT_EQ(runtime().GetNextVariableName(&name_size, name, &vendor), uefi::success);
    name_size = sizeof name;
    EXPECT_EQ(runtime().GetNextVariableName(&name_size, name, &vendor), uefi::not_found);
}

TEST_F(HostedServicesTest, TheClockCanStandStill) {
    uefi::Time set{};
    set.Year = 2031;
    set.Second = 59;
    firmware_->set_time(set);
    uefi::Time read{};
    EXPECT_EQ(runtime().GetTime(&read, nullptr), uefi::success);
    EXPECT_EQ(read.Year, 2031);
    EXPECT_EQ(read.Second, 59);
    firmware_->set_time(std::nullopt);
    EXPECT_EQ(runtime().GetTime(&read, nullptr), uefi::success);
    EXPECT_GE(read.Year, 2024);
    EXPECT_EQ(runtime().GetTime(nullptr, nullptr), uefi::invalid_parameter);
}

TEST_F(HostedServicesTest, KeysComeInOrder) {
    auto* input = firmware_->system_table()->ConIn;
    uefi::InputKey key{};
    EXPECT_EQ(input->ReadKeyStroke(input, &key), uefi::not_ready);
    EXPECT_EQ(boot().CheckEvent(input->WaitForKey), uefi::not_ready);
    firmware_->keyboard().press({0, u'a'});
    firmware_->keyboard().press({uefi::scan_up, 0});
    EXPECT_EQ(boot().CheckEvent(input->WaitForKey), uefi::success);
    std::uint64_t index = 9;
    EXPECT_EQ(boot().WaitForEvent(1, &input->WaitForKey, &index), uefi::success);
    EXPECT_EQ(index, 0U);
    EXPECT_EQ(input->ReadKeyStroke(input, &key), uefi::success);
    EXPECT_EQ(key.UnicodeChar, u'a');
    EXPECT_EQ(input->ReadKeyStroke(input, &key), uefi::success);
    EXPECT_EQ(key.ScanCode, uefi::scan_up);
    firmware_->keyboard().press_at_poll(2, {0, u'z'});
    EXPECT_EQ(input->ReadKeyStroke(input, &key), uefi::not_ready);
    EXPECT_EQ(input->ReadKeyStroke(input, &key), uefi::success);
    uefi::Event unknown = &key;
    EXPECT_EQ(boot().WaitForEvent(1, &unknown, &index), uefi::invalid_parameter);
    EXPECT_EQ(boot().WaitForEvent(0, &input->WaitForKey, &index), uefi::invalid_parameter);
}

TEST_F(HostedServicesTest, ModesChangeTheGeometry) {
    auto* output = locate<uefi::GraphicsOutputProtocol>(uefi::graphics_output_guid);
    ASSERT_NE(output, nullptr);
    EXPECT_EQ(output->Mode->Info->HorizontalResolution, 1024U);
    std::uint64_t size = 0;
    uefi::GraphicsOutputModeInformation* information = nullptr;
    ASSERT_EQ(output->QueryMode(output, 1, &size, &information), uefi::success);
    EXPECT_EQ(information->HorizontalResolution, 800U);
    EXPECT_EQ(information->PixelsPerScanLine, 832U);
    EXPECT_EQ(boot().FreePool(information), uefi::success);
    EXPECT_EQ(output->QueryMode(output, output->Mode->MaxMode, &size, &information), uefi::invalid_parameter);
    EXPECT_EQ(output->SetMode(output, output->Mode->MaxMode), uefi::unsupported);
    ASSERT_EQ(output->SetMode(output, 1), uefi::success);
    EXPECT_EQ(output->Mode->Mode, 1U);
    EXPECT_EQ(output->Mode->FrameBufferSize, 832U * 600 * 4);
    EXPECT_EQ(firmware_->display()->pixel(799, 599), 0U);
}

TEST_F(HostedServicesTest, TheConsoleKeepsWhatIsPrinted) {
    auto* console = firmware_->system_table()->ConOut;
    EXPECT_EQ(console->OutputString(console, u"GOP\r\n"), uefi::success);
    EXPECT_EQ(firmware_->text_console().text(), "GOP\r\n");
    EXPECT_EQ(console->ClearScreen(console), uefi::success);
    EXPECT_EQ(firmware_->text_console().text(), "");
    EXPECT_EQ(console->SetCursorPosition(console, 80, 0), uefi::unsupported);
}

class HostedDiskTest : public HostedFirmwareTest {
  protected:
    void SetUp() override {
        std::string content(2048, 'a');
        content.replace(512, 3, "xyz");
        folder_.write("disk", content + "end");
        Config config;
        config.block_devices.resize(1);
        config.block_devices[0].image = folder_.path() / "disk";
        config.block_devices[0].io_align = 4;
        config.block_devices[0].media_id = 9;
        config.block_devices[0].unreadable_blocks = {3};
        start(config);
        disk_ = locate<uefi::BlockIoProtocol>(uefi::block_io_guid);
        ASSERT_NE(disk_, nullptr);
    }

    uefi::BlockIoProtocol* disk_ = nullptr;
    alignas(8) char buffer_[4096] = {};
};

TEST_F(HostedDiskTest, ReadsWholeBlocks) {
    EXPECT_EQ(disk_->Media->LastBlock, 4U);
    EXPECT_EQ(disk_->ReadBlocks(disk_, 9, 1, 1024, buffer_), uefi::success);
    EXPECT_EQ(std::string(buffer_, 4), "xyza");
    EXPECT_EQ(disk_->ReadBlocks(disk_, 9, 4, 512, buffer_), uefi::success);
    EXPECT_EQ(std::string(buffer_, 5), std::string("end\0\0", 5));
    EXPECT_TRUE(firmware_->complaints().empty());
}

TEST_F(HostedDiskTest, RefusesWhatRealDisksRefuse) {
    EXPECT_EQ(disk_->ReadBlocks(disk_, 8, 0, 512, buffer_), uefi::media_changed);
    EXPECT_EQ(disk_->ReadBlocks(disk_, 9, 3, 512, buffer_), uefi::device_error);
    EXPECT_EQ(disk_->ReadBlocks(disk_, 9, 2, 1024, buffer_), uefi::device_error);
    EXPECT_TRUE(firmware_->complaints().empty());
    EXPECT_EQ(disk_->ReadBlocks(disk_, 9, 0, 511, buffer_), uefi::bad_buffer_size);
    EXPECT_EQ(disk_->ReadBlocks(disk_, 9, 5, 512, buffer_), uefi::invalid_parameter);
    EXPECT_EQ(disk_->ReadBlocks(disk_, 9, 4, 1024, buffer_), uefi::invalid_parameter);
    EXPECT_EQ(disk_->ReadBlocks(disk_, 9, 0, 512, buffer_ + 2), uefi::invalid_parameter);
    EXPECT_EQ(firmware_->complaints().size(), 4U);
    EXPECT_EQ(disk_->WriteBlocks(disk_, 9, 0, 512, buffer_), uefi::write_protected);
}

}  // namespace
}  // namespace korvane::host
