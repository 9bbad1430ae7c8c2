#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include <quenGralloc/AllocatorHelper.h>

#include "quenOfflineDevice/ClientRecords.h"
#include "support/Graphics.h"

namespace quentest {

/** A native handle around descriptors that stay their owner's. */
class BorrowedHandle {
  public:
    explicit BorrowedHandle(std::vector<int> const& fds, std::vector<int> const& ints = {})
        : mHandle(native_handle_create(static_cast<int>(fds.size()),
                                       static_cast<int>(ints.size()))) {
        std::copy(ints.begin(), ints.end(), std::copy(fds.begin(), fds.end(), mHandle->data));
    }
    ~BorrowedHandle() { native_handle_delete(mHandle); }
    BorrowedHandle(BorrowedHandle const&) = delete;
    BorrowedHandle& operator=(BorrowedHandle const&) = delete;

    native_handle_t* get() const { return mHandle; }

  private:
    native_handle_t* const mHandle;
};

/** A descriptor that stands for a fence, closed unless somebody else has done so. */
struct Fence {
    explicit Fence(bool signalled = true) : fd(eventfd(signalled ? 1 : 0, EFD_CLOEXEC)) {}
    ~Fence() { close(isOpen() ? fd : -1); }
    Fence(Fence const&) = delete;
    Fence& operator=(Fence const&) = delete;

    bool isOpen() const { return fcntl(fd, F_GETFD) >= 0; }

    int const fd;
};

/** All the memory behind a descriptor, which stays the caller's, mapped while the object lives. */
class Mapping {
  public:
    explicit Mapping(int fd) {
        struct stat status = {};
        EXPECT_EQ(fstat(fd, &status), 0);
        mSize = static_cast<size_t>(status.st_size);
        void* const address = mmap(nullptr, mSize, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        EXPECT_NE(address, MAP_FAILED);
        mData = static_cast<uint8_t*>(address);
    }
    ~Mapping() { munmap(mData, mSize); }
    Mapping(Mapping const&) = delete;
    Mapping& operator=(Mapping const&) = delete;

    uint8_t* data() const { return mData; }
    size_t size() const { return mSize; }
    std::vector<uint8_t> bytes(size_t count) const { return {mData, mData + count}; }

  private:
    uint8_t* mData;
    size_t mSize;
};

/** A buffer of a client's: memory behind the first descriptor of a handle. */
class MemoryBuffer : public Mapping {
  public:
    explicit MemoryBuffer(size_t size) : MemoryBuffer(memoryOf(size), true) {}
    ~MemoryBuffer() { close(fd()); }

    int fd() const { return mHandle.get()->data[0]; }
    native_handle_t* handle() const { return mHandle.get(); }

    /** The record of a request's buffer. */
    ImageBuffer image(int32_t streamId, int32_t format, int32_t width, int32_t height) const {
        return {streamId, format, static_cast<int32_t>(size()), width, height, handle()};
    }

  private:
    MemoryBuffer(int fd, bool) : Mapping(fd), mHandle({fd}) {}
    static int memoryOf(size_t size) {
        int const fd = memfd_create("client", MFD_CLOEXEC);
        EXPECT_EQ(ftruncate(fd, static_cast<off_t>(size)), 0);
        return fd;
    }

    BorrowedHandle const mHandle;
};

/** A graphic buffer of the platform's allocator, raw. Takes every hook away. */
inline hidl_handle allocateGraphic(int width, int height, int32_t format) {
    Graphics::fresh();
    hidl_handle handle;
    AllocatorHelper::getInstance().allocateGraphicBuffer(
            static_cast<uint32_t>(width), static_cast<uint32_t>(height), 0x20033,
            static_cast<android::hardware::graphics::common::V1_0::PixelFormat>(format), &handle,
            nullptr);
    EXPECT_NE(handle.getNativeHandle(), nullptr);
    Graphics::fresh();
    return handle;
}

/** The record of a request's buffer that is given to the ISP as it is. */
inline ImageBuffer imageOf(int32_t streamId, int32_t format, int32_t width, int32_t height,
                           hidl_handle const& handle) {
    struct stat memory = {};
    fstat(handle->data[0], &memory);
    return {streamId, format, static_cast<int32_t>(memory.st_size),
            width,    height, const_cast<native_handle_t*>(handle.getNativeHandle())};
}

inline int openDescriptors() {
    int count = 0;
    for (int fd = 0; fd < 1024; ++fd) {
        count += fcntl(fd, F_GETFD) >= 0;
    }
    return count;
}

}  // namespace quentest
