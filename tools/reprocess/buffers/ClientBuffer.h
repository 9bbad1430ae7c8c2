#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <aidl/android/hardware/graphics/common/PlaneLayout.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <cutils/native_handle.h>
#include <hidl/HidlSupport.h>
#include <utils/StrongPointer.h>

namespace quen::reprocess {

/**
 * A graphic buffer of the client: allocated, imported for the client's own access, freed with the
 * object. The library gets the allocator's raw handle: it may free the handle it is given, which
 * has no effect on a raw handle but would end an imported one.
 *
 * Not thread-safe.
 */
class ClientBuffer {
  public:
    /** CPU access to the pixels, until the object ends. */
    class Lock {
      public:
        Lock(Lock&& other) noexcept;
        ~Lock();
        Lock& operator=(Lock&&) = delete;

        uint8_t* data() const { return mData; }

      private:
        friend class ClientBuffer;
        Lock(ClientBuffer const& buffer, uint8_t* data) : mBuffer(&buffer), mData(data) {}

        ClientBuffer const* mBuffer;
        uint8_t* mData;
    };

    /** @throws Failure when the buffer cannot be allocated or imported */
    ClientBuffer(uint32_t width, uint32_t height, int32_t format);
    ~ClientBuffer();
    ClientBuffer(ClientBuffer const&) = delete;
    ClientBuffer& operator=(ClientBuffer const&) = delete;

    /** The raw handle; the buffer keeps owning it. */
    native_handle* handle() const;

    /** Whether the buffer was allocated with that size and format. */
    bool isOf(uint32_t width, uint32_t height, int32_t format) const {
        return width == mWidth && height == mHeight && format == mFormat;
    }

    /** Bytes of a mapping of the buffer. */
    size_t size() const { return mSize; }

    /** @throws Failure when the mapper refuses */
    Lock lock() const;

    /** Plane layouts. @throws Failure when the mapper fails */
    std::vector<aidl::android::hardware::graphics::common::PlaneLayout> planes() const;

  private:
    using IMapper = android::hardware::graphics::mapper::V4_0::IMapper;

    uint32_t const mWidth;
    uint32_t const mHeight;
    int32_t const mFormat;
    android::sp<IMapper> mMapper;
    android::hardware::hidl_handle mRaw;
    void* mImported = nullptr;
    size_t mSize = 0;
};

}  // namespace quen::reprocess
