#pragma once

#include <cstddef>
#include <cstdint>

#include <system/graphics.h>

namespace quenbench {

/**
 * Fills a locked buffer from a packed picture one byte at a time, and writes the same bytes as the
 * library: rows up to the luma stride, the padding zeroed; semi-planar chroma from pairs
 * (V, U), planar chroma from a U plane and a V plane.
 */
void copyByteByByte(uint8_t const* source, size_t width, size_t height,
                    android_ycbcr const& target);

}  // namespace quenbench
