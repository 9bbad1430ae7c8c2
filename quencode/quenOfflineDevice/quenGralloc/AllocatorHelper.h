#pragma once

#include <cstdint>

#include <android/hardware/graphics/allocator/4.0/IAllocator.h>
#include <android/hardware/graphics/common/1.0/types.h>
#include <hidl/HidlSupport.h>
#include <utils/StrongPointer.h>

#include "quenCommon/Export.h"

/**
 * The process's access to the graphics allocator service.
 *
 * Holds nothing but the service's reference; a copy shares it. Any thread: calls go straight to the
 * service.
 */
class AllocatorHelper {
  public:
    /** A copy of the one instance, which is made on first use and fetches the service then. */
    QUEN_EXPORT static AllocatorHelper getInstance();

    /** Fetches the service; without one the helper cannot be used. */
    QUEN_EXPORT void init();

    /**
     * Allocates one buffer. A failure shows only in the handle.
     *
     * @param width pixels; bytes for a BLOB
     * @param usage gralloc usage bits
     * @param outHandle receives a raw handle that it owns: to be imported before it is locked; left
     *                  alone when the service gives no buffer
     * @param outStride receives the stride in pixels; may be null
     */
    QUEN_EXPORT void allocateGraphicBuffer(
            uint32_t width, uint32_t height, uint64_t usage,
            android::hardware::graphics::common::V1_0::PixelFormat format,
            android::hardware::hidl_handle* outHandle, uint32_t* outStride) const;

  private:
    android::sp<android::hardware::graphics::allocator::V4_0::IAllocator> mAllocator;
};
