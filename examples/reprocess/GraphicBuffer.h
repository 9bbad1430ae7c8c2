#pragma once

#include <unistd.h>

#include <cutils/native_handle.h>
#include <hidl/HidlSupport.h>
#include <quenGralloc/AllocatorHelper.h>
#include <quenGralloc/MapperHelper.h>
#include <system/graphics.h>

/**
 * A graphic buffer of the client. Requests get its raw handle: `process` frees what a request
 * holds, which has no effect on a raw handle and would end an imported one. Not thread-safe.
 */
class GraphicBuffer {
  public:
    /** @param width pixels; bytes for a BLOB, whose height is 1 */
    GraphicBuffer(uint32_t width, uint32_t height, int32_t format)
        : mWidth(static_cast<int32_t>(width)), mHeight(static_cast<int32_t>(height)) {
        constexpr uint64_t kCameraAndCpu = 0x60033;  // both read and write
        AllocatorHelper::getInstance().allocateGraphicBuffer(
                width, height, kCameraAndCpu,
                static_cast<android::hardware::graphics::common::V1_0::PixelFormat>(format), &mRaw,
                nullptr);
    }

    native_handle* handle() const { return const_cast<native_handle*>(mRaw.getNativeHandle()); }

    /** Calls `use` with the buffer's address, null without a buffer; it is mapped meanwhile. */
    template <typename Use>
    void access(Use const& use) const {
        constexpr uint64_t kCpu = 0x33;
        MapperHelper mapper = MapperHelper::getInstance();
        native_handle const* imported = mRaw.getNativeHandle();
        void* address = nullptr;
        mapper.importBuffer(imported);
        mapper.lock(imported, kCpu, {0, 0, mWidth, mHeight}, -1, address);
        use(address);
        int fence = -1;
        mapper.unlock(imported, fence);
        if (fence >= 0) {
            close(fence);
        }
        mapper.freeBuffer(imported);
    }

  private:
    int32_t const mWidth;
    int32_t const mHeight;
    android::hardware::hidl_handle mRaw;
};
