#pragma once

#include <stddef.h>
#include <stdint.h>

#include <system/graphics-base.h>

/**
 * Addresses of the samples of a locked YCbCr buffer: luma (x, y) is at y + y * ystride + x, chroma
 * at cb (cr) + (y / 2) * cstride + (x / 2) * chroma_step.
 */
struct android_ycbcr {
    void* y;
    void* cb;
    void* cr;
    size_t ystride;      ///< bytes per luma row
    size_t cstride;      ///< bytes per chroma row
    size_t chroma_step;  ///< bytes from one chroma sample to the next: 1 planar, 2 interleaved
    uint32_t reserved[8];
};
