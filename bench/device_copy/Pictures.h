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
/** The CPU's part of it: a lock takes no other bits. */
inline constexpr uint64_t kCpuUsage = 0x33;
inline constexpr int kNv21Format = 0x11;

/** A size of a picture whose rows are shorter than the allocator's stride. */
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

/** A client's picture: packed, in shared memory whose pages are touched. */
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

/** A device buffer from the host's allocator, imported, locked and touched. */
struct DeviceBuffer {
    hidl_handle raw;
    void* imported = nullptr;
    uint8_t* data = nullptr;
    size_t rowBytes = 0;
};

/**
 * The graphics services of the process: the host's or, while a buffer is presented, services that
 * return that buffer at once, so that only the access to its memory takes time. There is one pair
 * for the process, since the library's helpers fetch services once.
 */
class Graphics {
  public:
    static Graphics& get();

    /** Chooses the layout of NV21 buffers that are allocated from now on. */
    void setLayout(quen::host::Layout layout);

    DeviceBuffer touchedBuffer(PictureSize const& size, quen::host::Layout layout);
    void release(DeviceBuffer& buffer);

    /** Returns that buffer from now on; null: the host's services serve. */
    void present(DeviceBuffer const* buffer) { mPresent = buffer; }

    /** Seconds from the return of the last lock to the unlock after it. */
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
