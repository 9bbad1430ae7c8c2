#include "host/isp/buffers/GraphicBuffer.h"

#include <sync/sync.h>

#include <utility>

#include <gralloctypes/Gralloc4.h>

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::graphics::mapper::V4_0::Error;

namespace quen::host::isp {

namespace {

constexpr uint64_t kCpuReadWriteOften = 0x33;
constexpr int kFenceTimeoutMs = 1000;

}  // namespace

GraphicBuffer::GraphicBuffer(GraphicBuffer&& other) noexcept {
    *this = std::move(other);
}

GraphicBuffer& GraphicBuffer::operator=(GraphicBuffer&& other) noexcept {
    if (this != &other) {
        reset();
        mMapper = std::move(other.mMapper);
        mBuffer = std::exchange(other.mBuffer, nullptr);
        mAddress = std::exchange(other.mAddress, nullptr);
        mPlanes = std::move(other.mPlanes);
    }
    return *this;
}

GraphicBuffer::~GraphicBuffer() {
    reset();
}

GraphicBuffer::Status GraphicBuffer::import(sp<IMapper> const& mapper,
                                            native_handle_t const* handle) {
    reset();
    if (handle == nullptr) {
        return Status::ILLEGAL_ARGUMENT;
    }
    if (mapper == nullptr) {
        return Status::RESOURCE_ERROR;
    }
    mMapper = mapper;
    Error error = Error::NO_RESOURCES;
    auto const transport =
            mMapper->importBuffer(hidl_handle(handle), [&](Error result, void* buffer) {
                error = result;
                mBuffer = result == Error::NONE ? buffer : nullptr;
            });
    if (!transport.isOk() || error == Error::NO_RESOURCES) {
        return Status::RESOURCE_ERROR;
    }
    return mBuffer == nullptr ? Status::ILLEGAL_ARGUMENT : readPlanes();
}

GraphicBuffer::Status GraphicBuffer::readPlanes() {
    hidl_vec<uint8_t> encoded;
    Error error = Error::NO_RESOURCES;
    auto const transport = mMapper->get(mBuffer, android::gralloc4::MetadataType_PlaneLayouts,
                                        [&](Error result, hidl_vec<uint8_t> const& bytes) {
                                            error = result;
                                            encoded = bytes;
                                        });
    if (!transport.isOk() || error != Error::NONE ||
        android::gralloc4::decodePlaneLayouts(encoded, &mPlanes) != android::OK) {
        return Status::RESOURCE_ERROR;
    }
    return Status::OK;
}

uint8_t* GraphicBuffer::lock() {
    if (mAddress != nullptr || mBuffer == nullptr) {
        return mAddress;
    }
    auto const transport = mMapper->lock(mBuffer, kCpuReadWriteOften, {0, 0, 0, 0}, hidl_handle(),
                                         [&](Error error, void* address) {
                                             if (error == Error::NONE) {
                                                 mAddress = static_cast<uint8_t*>(address);
                                             }
                                         });
    return transport.isOk() ? mAddress : nullptr;
}

void GraphicBuffer::unlock() {
    if (std::exchange(mAddress, nullptr) == nullptr) {
        return;
    }
    auto const transport = mMapper->unlock(mBuffer, [](Error /*error*/, hidl_handle const& fence) {
        native_handle_t const* const raw = fence.getNativeHandle();
        if (raw != nullptr && raw->numFds == 1) {
            sync_wait(raw->data[0], kFenceTimeoutMs);
        }
    });
    (void)transport.isOk();  // freeing the buffer ends the lock otherwise
}

void GraphicBuffer::reset() {
    if (mBuffer == nullptr) {
        return;
    }
    unlock();
    auto const transport = mMapper->freeBuffer(std::exchange(mBuffer, nullptr));
    (void)transport.isOk();
    mPlanes.clear();
    mMapper.clear();
}

}  // namespace quen::host::isp
