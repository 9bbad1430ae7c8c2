#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "host/isp/buffers/GraphicBuffer.h"
#include "host/isp/buffers/Picture.h"

namespace quen::host::isp {

/** Where the samples of a picture lie in a buffer, by offsets from its start. */
struct YuvLayout {
    size_t y = 0;
    size_t cb = 0;
    size_t cr = 0;
    size_t lumaStride = 0;
    size_t chromaStride = 0;
    size_t chromaStep = 0;
};

/** Where the rows of a raw image lie in a buffer. */
struct RawRows {
    size_t offset = 0;
    size_t stride = 0;
};

/**
 * Locates an 8-bit 4:2:0 picture in a buffer by its plane layouts.
 *
 * @return none when the buffer holds no picture of that size
 */
std::optional<YuvLayout> findYuv(GraphicBuffer const& buffer, int width, int height);

/**
 * Locates the rows of a raw image in a buffer by its first plane: at the stride of the plane, or at
 * `blockStride` in a plain block of bytes.
 *
 * @param rowBytes bytes of a row, without padding
 * @return none when the buffer is too small
 */
std::optional<RawRows> findRaw(GraphicBuffer const& buffer, size_t rowBytes, int height,
                               size_t blockStride);

/** Size of a buffer that is a plain block of bytes (BLOB); none when it is not one. */
std::optional<size_t> findBlock(GraphicBuffer const& buffer);

/** The picture of a layout in memory at `address`. */
YuvPicture pictureAt(YuvLayout const& layout, uint8_t* address, int width, int height);

}  // namespace quen::host::isp
