#pragma once

#include <cstdint>

#include <hidl/HidlSupport.h>

namespace quen {

/**
 * Allocates a buffer for the ISP device and, for NV21, fills it from a packed picture.
 *
 * A source of any other format is not copied: the buffer is imported and freed again, and stays as
 * the allocator gave it. No outcome is checked; what cannot be accessed is skipped.
 *
 * @param handle receives the new, raw buffer; it stays alive for the caller
 * @param source null: allocate only; MAP_FAILED: all steps but the copy
 * @param width pixels; of a BLOB bytes
 * @param height pixels
 * @param format Android HAL pixel format
 * @param usage gralloc usage
 * @param stride receives the allocator's stride, in pixels
 */
void allocGraphicBuffer(android::hardware::hidl_handle& handle, void const* source, int width,
                        int height, int format, uint64_t usage, uint32_t& stride);

}  // namespace quen
