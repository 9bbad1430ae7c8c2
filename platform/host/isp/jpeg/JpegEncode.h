#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/isp/buffers/IspLimits.h"
#include "host/isp/buffers/Picture.h"

namespace quen::host::isp {

/**
 * Encodes a 4:2:0 picture without resampling it. Slices are encoded in parallel and joined at
 * restart markers.
 *
 * @param picture planar, NV12 or NV21, no side above kLargestSide
 * @param quality 1..100
 * @param exif content of the APP1 segment; none when empty
 * @param target receives the file
 * @return its size in bytes; 0 when it does not fit into `capacity`, or cannot be encoded
 */
size_t encodeJpeg(YuvPicture const& picture, int quality, std::vector<uint8_t> const& exif,
                  uint8_t* target, size_t capacity);

}  // namespace quen::host::isp
