// The two buffers that the image draws into, filled and moved by the C library: the yardstick for what the
// image's statements do with them.
#pragma once

#include <cstdint>
#include <vector>

#include "session.h"

namespace korvane::bench {

// A rectangle of pixels.
struct Area {
    std::uint32_t x;
    std::uint32_t y;
    std::uint32_t columns;
    std::uint32_t rows;
};

class PlainBuffers {
  public:
    // Finds the image's own buffers. The session must be at its prompt.
    explicit PlainBuffers(Session& session);

    void fill(const Area& area);
    // From memory elsewhere to both buffers, or to the framebuffer only.
    void copy_in(const Area& area);
    void copy_to_front(const Area& area);
    // From the back buffer to memory elsewhere.
    void copy_out(const Area& area);
    // Moves the area up by one row of text and fills the gap.
    void scroll(const Area& area);
    // Stores single pixels, given by their places in the buffers.
    void store(const std::vector<std::uint64_t>& places);

    std::uint32_t pitch() const { return pitch_; }

  private:
    std::uint32_t* back_;
    std::uint32_t* front_;
    std::uint32_t pitch_;
    std::vector<std::uint32_t> elsewhere_;
    std::uint32_t colour_ = 0x123456;
};

}  // namespace korvane::bench
