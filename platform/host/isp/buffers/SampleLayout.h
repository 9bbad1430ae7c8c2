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

/** Where the rows of an unprocessed image lie in a buffer. */
struct RawRows {
    size_t offset = 0;
    size_t stride = 0;
};

/**
 * Finds an 8-bit 4:2:0 picture of that size by a buffer's planes.
 *
 * @return nothing when the buffer holds no such picture, or a smaller one
 */
std::optional<YuvLayout> findYuv(GraphicBuffer const& buffer, int width, int height);

/**
 * Finds the rows of an unprocessed image by a buffer's first plane. A plane of rows says itself how
 * far they are apart; a plain block of bytes is taken to have them `blockStride` apart.
 *
 * @param rowBytes bytes of a row that are used
 * @return nothing when the buffer is too small
 */
std::optional<RawRows> findRaw(GraphicBuffer const& buffer, size_t rowBytes, int height,
                               size_t blockStride);

/** Bytes of a buffer that is a plain block (BLOB); nothing when it is not one. */
std::optional<size_t> findBlock(GraphicBuffer const& buffer);

YuvPicture pictureAt(YuvLayout const& layout, uint8_t* address, int width, int height);

}  // namespace quen::host::isp
