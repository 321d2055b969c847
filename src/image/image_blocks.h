// Buffered transfers of standalone images: at most 16384 bytes per firmware call, repeated until all is done.
#pragma once

#include <cstdint>

#include "files/file_handle.h"

namespace korvane {

inline constexpr std::uint32_t image_block_size = 16384;

// One block buffer serves whichever of the two is in use; only one image is read or written at a time. It is
// not on the stack because the firmware's may be small.
struct ImageBlock {
    std::uint8_t bytes[image_block_size];
};
extern ImageBlock image_block;

// Reads a file forward from its position through the block buffer.
class ImageReader {
  public:
    explicit ImageReader(const FileHandle& file) : file_(file) {}

    // Exactly `count` bytes, or false when the file ends before or the firmware fails.
    bool read(void* to, std::uint64_t count);

  private:
    const FileHandle& file_;
    std::uint32_t next_ = 0;
    std::uint32_t count_ = 0;
};

// Writes a file forward through the block buffer.
class ImageWriter {
  public:
    explicit ImageWriter(const FileHandle& file) : file_(file) {}

    bool write(const void* from, std::uint64_t count);

    // Sends what waits in the buffer; until then nothing is certain to have been written.
    bool finish();

  private:
    const FileHandle& file_;
    std::uint32_t count_ = 0;
};

// Sends `count` bytes in as many firmware writes as it takes; a write of 0 bytes is a failure.
bool write_all(const FileHandle& file, const std::uint8_t* bytes, std::uint64_t count);

}  // namespace korvane
