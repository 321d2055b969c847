#include "machine_builder.h"

#include <algorithm>
#include <fstream>
#include <string>

#include "unicode.h"

namespace korvane::transcript {

namespace {

void make_disk(const std::filesystem::path& image, std::uint64_t size, const Case& test, std::size_t disk) {
    std::ofstream(image, std::ios::binary);
    std::filesystem::resize_file(image, size);
    std::fstream stream(image, std::ios::binary | std::ios::in | std::ios::out);
    for (const DiskPatch& patch : test.disk_patches) {
        if (patch.disk != disk) continue;
        stream.seekp(static_cast<std::streamoff>(patch.offset));
        stream.write(patch.bytes.data(), static_cast<std::streamsize>(patch.bytes.size()));
    }
}

}  // namespace

std::filesystem::path volume_folder(const std::filesystem::path& scratch, std::size_t volume) {
    return scratch / ("volume" + std::to_string(volume));
}

std::filesystem::path image_file(const Case& test, const std::filesystem::path& scratch) {
    std::string path = host::to_utf8(test.config.image_path);
    std::replace(path.begin(), path.end(), '\\', '/');
    return volume_folder(scratch, 0) / path.substr(1);
}

void put_image_on_volume(const Case& test, const std::filesystem::path& scratch,
                         const std::filesystem::path& image) {
    if (!test.image_on_volume) return;
    const std::filesystem::path copy = image_file(test, scratch);
    std::filesystem::create_directories(copy.parent_path());
    std::filesystem::copy_file(image, copy);
}

void write_files(const Case& test, const std::filesystem::path& scratch) {
    for (std::size_t volume = 0; volume < test.config.volumes.size(); ++volume)
        std::filesystem::create_directories(volume_folder(scratch, volume));
    for (const InitialFile& file : test.files) {
        const std::filesystem::path path = volume_folder(scratch, file.volume) / file.path;
        std::filesystem::create_directories(file.folder ? path : path.parent_path());
        if (!file.folder) std::ofstream(path, std::ios::binary) << file.content;
    }
}

host::Config build_config(const Case& test, const std::filesystem::path& scratch, bool with_files) {
    host::Config config = test.config;
    for (std::size_t volume = 0; volume < config.volumes.size(); ++volume) {
        config.volumes[volume].folder = volume_folder(scratch, volume);
        std::filesystem::create_directories(config.volumes[volume].folder);
    }
    if (with_files) write_files(test, scratch);
    for (std::size_t disk = 0; disk < config.block_devices.size(); ++disk) {
        config.block_devices[disk].image = scratch / ("disk" + std::to_string(disk));
        make_disk(config.block_devices[disk].image, test.disk_sizes[disk], test, disk);
    }
    return config;
}

}  // namespace korvane::transcript
