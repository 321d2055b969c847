#include "image/image_blocks.h"

#include <algorithm>

#include "files/file_handle.h"
#include "platform/memory.h"

namespace korvane {

ImageBlock image_block;

bool write_all(const FileHandle& file, const std::uint8_t* bytes, std::uint64_t count) {
    while (count != 0) {
        std::uint64_t done = std::min<std::uint64_t>(count, image_block_size);
        if (!file.write(bytes, done) || done == 0) return false;
        bytes += done;
        count -= done;
    }
    return true;
}

bool ImageReader::read(void* to, std::uint64_t count) {
    auto* bytes = static_cast<std::uint8_t*>(to);
    while (count != 0) {
        if (next_ == count_) {
            std::uint64_t size = image_block_size;
            if (!file_.read(image_block.bytes, size) || size == 0) return false;
            next_ = 0;
            count_ = static_cast<std::uint32_t>(size);
        }
        const auto size = static_cast<std::uint32_t>(std::min<std::uint64_t>(count, count_ - next_));
        copy_bytes(bytes, image_block.bytes + next_, size);
        next_ += size;
        bytes += size;
        count -= size;
    }
    return true;
}

bool ImageWriter::write(const void* from, std::uint64_t count) {
    const auto* bytes = static_cast<const std::uint8_t*>(from);
    while (count != 0) {
        if (count_ == image_block_size && !finish()) return false;
        const auto size =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(count, image_block_size - count_));
        copy_bytes(image_block.bytes + count_, bytes, size);
        count_ += size;
        bytes += size;
        count -= size;
    }
    return true;
}

bool ImageWriter::finish() {
    const std::uint32_t waiting = count_;
    count_ = 0;
    return write_all(file_, image_block.bytes, waiting);
}

}  // namespace korvane
