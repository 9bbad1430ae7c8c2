#include "buffers/ClientBuffer.h"

#include <sys/stat.h>

#include <string>
#include <utility>

#include <android/hardware/graphics/allocator/4.0/IAllocator.h>
#include <gralloctypes/Gralloc4.h>

#include "support/Failure.h"

namespace quen::reprocess {
namespace {

using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::graphics::allocator::V4_0::IAllocator;
using android::hardware::graphics::common::V1_2::PixelFormat;
using android::hardware::graphics::mapper::V4_0::Error;
using android::hardware::graphics::mapper::V4_0::IMapper;

// CPU reads and writes often; the camera reads and writes.
constexpr uint64_t kUsage = 0x60033;
constexpr uint64_t kCpuUsage = 0x33;

/** Throws when the transport of a call failed, or the call itself. */
template <typename R>
void check(R const& call, Error error, char const* problem) {
    if (!call.isOk()) {
        throw Failure(std::string(problem) + ": " + call.description());
    }
    if (error != Error::NONE) {
        throw Failure(std::string(problem) + ": gralloc error " +
                      std::to_string(static_cast<int>(error)));
    }
}

/** Creates the descriptor of a buffer. */
hidl_vec<uint8_t> describe(IMapper& mapper, uint32_t width, uint32_t height, int32_t format) {
    IMapper::BufferDescriptorInfo info{};
    info.name = "quen-reprocess";
    info.width = width;
    info.height = height;
    info.layerCount = 1;
    info.format = static_cast<PixelFormat>(format);
    info.usage = kUsage;
    Error error = Error::NO_RESOURCES;
    hidl_vec<uint8_t> descriptor;
    auto const call =
            mapper.createDescriptor(info, [&](Error result, hidl_vec<uint8_t> const& bytes) {
                error = result;
                descriptor = bytes;
            });
    check(call, error, "cannot describe a buffer of its size");
    return descriptor;
}

/** Allocates a buffer; returns its raw handle. */
hidl_handle allocate(IMapper& mapper, uint32_t width, uint32_t height, int32_t format) {
    android::sp<IAllocator> const allocator = IAllocator::getService();
    if (allocator == nullptr) {
        throw Failure("there is no graphics allocator");
    }
    Error error = Error::NO_RESOURCES;
    hidl_handle handle;
    auto const call =
            allocator->allocate(describe(mapper, width, height, format), 1,
                                [&](Error result, uint32_t, hidl_vec<hidl_handle> const& buffers) {
                                    error = result;
                                    if (result == Error::NONE && buffers.size() == 1) {
                                        handle = buffers[0];
                                    }
                                });
    check(call, error, "cannot get a buffer of its size");
    return handle;
}

}  // namespace

ClientBuffer::Lock::Lock(Lock&& other) noexcept
    : mBuffer(std::exchange(other.mBuffer, nullptr)), mData(other.mData) {}

ClientBuffer::Lock::~Lock() {
    if (!mBuffer) {
        return;
    }
    auto const call =
            mBuffer->mMapper->unlock(mBuffer->mImported, [](Error, hidl_handle const&) {});
    static_cast<void>(call.isOk());
}

ClientBuffer::ClientBuffer(uint32_t width, uint32_t height, int32_t format)
    : mWidth(width), mHeight(height), mFormat(format), mMapper(IMapper::getService()) {
    if (mMapper == nullptr) {
        throw Failure("there is no graphics mapper");
    }
    mRaw = allocate(*mMapper, width, height, format);
    Error error = Error::NO_RESOURCES;
    auto const call = mMapper->importBuffer(mRaw, [&](Error result, void* buffer) {
        error = result;
        mImported = buffer;
    });
    check(call, error, "cannot import a buffer");
    struct stat status;
    if (::fstat(mRaw->data[0], &status) == 0) {
        mSize = static_cast<size_t>(status.st_size);
    }
}

ClientBuffer::~ClientBuffer() {
    if (mImported) {
        static_cast<void>(mMapper->freeBuffer(mImported).isOk());
    }
}

native_handle* ClientBuffer::handle() const {
    return const_cast<native_handle*>(mRaw.getNativeHandle());
}

ClientBuffer::Lock ClientBuffer::lock() const {
    Error error = Error::NO_RESOURCES;
    void* address = nullptr;
    IMapper::Rect const everything{};
    auto const call = mMapper->lock(mImported, kCpuUsage, everything, hidl_handle(),
                                    [&](Error result, void* data) {
                                        error = result;
                                        address = data;
                                    });
    check(call, error, "cannot lock a buffer");
    return Lock(*this, static_cast<uint8_t*>(address));
}

std::vector<aidl::android::hardware::graphics::common::PlaneLayout> ClientBuffer::planes() const {
    Error error = Error::NO_RESOURCES;
    std::vector<aidl::android::hardware::graphics::common::PlaneLayout> layouts;
    auto const call =
            mMapper->get(mImported, android::gralloc4::MetadataType_PlaneLayouts,
                         [&](Error result, hidl_vec<uint8_t> const& bytes) {
                             error = result;
                             if (result == Error::NONE && android::gralloc4::decodePlaneLayouts(
                                                                  bytes, &layouts) != android::OK) {
                                 error = Error::BAD_VALUE;
                             }
                         });
    check(call, error, "cannot learn a buffer's layout");
    return layouts;
}

}  // namespace quen::reprocess
