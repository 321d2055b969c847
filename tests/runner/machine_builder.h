// Makes the machines of cases: their volumes' folders, their disks' images.
#pragma once

#include <filesystem>
#include <memory>

#include "machine.h"
#include "transcript.h"

namespace korvane::transcript {

// Creates the folders of the case's volumes and the images of its disks below `scratch`, and enters them
// into the configuration. Files are written when `with_files`.
host::Config build_config(const Case& test, const std::filesystem::path& scratch, bool with_files);

// Where the image file lies on the first volume.
std::filesystem::path image_file(const Case& test, const std::filesystem::path& scratch);

// Copies the image file there, for a case that wants it.
void put_image_on_volume(const Case& test, const std::filesystem::path& scratch,
                         const std::filesystem::path& image);

// Writes the case's initial files below `scratch`.
void write_files(const Case& test, const std::filesystem::path& scratch);

// The folder of a volume.
std::filesystem::path volume_folder(const std::filesystem::path& scratch, std::size_t volume);

}  // namespace korvane::transcript
