#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quen::reprocess {

/** A picture of 8-bit sRGB: rows without padding, channels in the order red, green, blue. */
struct RgbPicture {
    RgbPicture(int pictureWidth, int pictureHeight)
        : width(pictureWidth),
          height(pictureHeight),
          samples(size_t{3} * static_cast<size_t>(pictureWidth) *
                  static_cast<size_t>(pictureHeight)) {}

    uint8_t* row(int y) { return samples.data() + size_t(y) * 3 * size_t(width); }
    uint8_t const* row(int y) const { return samples.data() + size_t(y) * 3 * size_t(width); }

    int width;
    int height;
    std::vector<uint8_t> samples;
};

}  // namespace quen::reprocess
