#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <android/hardware/graphics/allocator/4.0/IAllocator.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>

#include "host/gralloc/GraphicsServices.h"
#include "support/Section.h"

namespace quenbench {

using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::graphics::allocator::V4_0::IAllocator;
using android::hardware::graphics::mapper::V4_0::IMapper;

/** Gralloc usage of the library's device buffers. */
inline constexpr uint64_t kDeviceUsage = 0x20033;
inline constexpr int kNv21Format = 0x11;

/** A size of a picture, none of whose rows is as long as the allocator's. */
struct PictureSize {
    char const* name;
    int width;
    int height;

    /** Bytes of a packed 4:2:0 picture. */
    size_t bytes() const {
        return static_cast<size_t>(width) * static_cast<size_t>(height) * 3 / 2;
    }
};

/** A chroma layout of device buffers. */
struct ChromaLayout {
    char const* name;
    quen::host::Layout layout;
};

/** A picture as a client hands it over: packed, in shared memory that has been written. */
class ClientPicture {
  public:
    explicit ClientPicture(PictureSize const& size);
    ~ClientPicture();
    ClientPicture(ClientPicture const&) = delete;
    ClientPicture& operator=(ClientPicture const&) = delete;

    uint8_t const* data() const { return mData; }

  private:
    size_t const mBytes;
    uint8_t* mData;
};

/** A device buffer of the host's allocator, imported, locked and touched. */
struct DeviceBuffer {
    hidl_handle raw;
    void* imported = nullptr;
    uint8_t* data = nullptr;
    size_t rowBytes = 0;
};

/**
 * The process's graphics services: the host's own, and in their place, while a buffer is present,
 * ones that answer every call with it at once, so that only what is done with its memory takes
 * time. The library's helpers fetch services once, so there is one pair of them.
 */
class Graphics {
  public:
    static Graphics& get();

    /** Chooses the layout of NV21 buffers that are allocated from now on. */
    void setLayout(quen::host::Layout layout);

    DeviceBuffer touchedBuffer(PictureSize const& size, quen::host::Layout layout);
    void release(DeviceBuffer& buffer);

    /** Answers with a buffer from now on; null: as the host does. */
    void present(DeviceBuffer const* buffer) { mPresent = buffer; }

    /** Seconds from the last lock's answer to the unlock that followed it. */
    double secondsLocked() const { return secondsBetween(mLocked, mUnlocked); }

  private:
    class Mapper;
    class Allocator;

    Graphics();

    quen::host::GraphicsServices mHost;
    DeviceBuffer const* mPresent = nullptr;
    Clock::time_point mLocked;
    Clock::time_point mUnlocked;
};

}  // namespace quenbench
