#pragma once

#include <cstddef>
#include <cstdint>

#include "buffers/ClientBuffer.h"

namespace quen::reprocess {

/** Where the samples of a locked 4:2:0 buffer lie. */
struct YuvPlanes {
    uint8_t const* y;
    uint8_t const* cb;
    uint8_t const* cr;
    int yStride;
    int chromaStride;
    int chromaStep;  ///< bytes from one chroma sample to the next: 1 planar, 2 interleaved
};

/** Locates the samples of a locked buffer. @throws Failure when the layout is no 4:2:0 of 8 bits */
YuvPlanes yuvPlanes(ClientBuffer const& buffer, uint8_t const* data);

/** Whether a locked picture is packed NV21 as it lies. */
bool isPackedNv21(YuvPlanes const& planes, uint32_t width, uint32_t height, uint8_t const* data);

/**
 * Whether packNv21 may pack a picture in its own buffer: when rows only move towards the front.
 * Saves the page faults of a second buffer.
 */
bool canPackInPlace(YuvPlanes const& planes, uint32_t width, uint32_t height, uint8_t const* data);

/** Writes an even picture as packed NV21. */
void packNv21(YuvPlanes const& planes, uint32_t width, uint32_t height, uint8_t* out);

/** Writes an even picture as packed planar I420. */
void packI420(YuvPlanes const& planes, uint32_t width, uint32_t height, uint8_t* out);

/**
 * Writes an even picture as packed planar I420, turned for viewing: its sides are exchanged by a
 * quarter turn.
 *
 * @param degrees clockwise: 0, 90, 180, 270
 * @param mirrored left to right, after the turn
 */
void packUprightI420(YuvPlanes const& planes, uint32_t width, uint32_t height, int degrees,
                     bool mirrored, uint8_t* out);

}  // namespace quen::reprocess
