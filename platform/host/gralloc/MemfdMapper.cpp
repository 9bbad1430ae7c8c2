#include "host/gralloc/MemfdMapper.h"

#include <sync/sync.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <vector>

#include "host/gralloc/BufferDescription.h"
#include "host/gralloc/StandardMetadata.h"

using android::hardware::hidl_vec;
using android::hardware::Void;
using android::hardware::graphics::common::V1_2::BufferUsage;

namespace quen::host {

namespace {

/** Checks for CPU usage bits: at least one, and no other bits. */
bool isCpuUsage(uint64_t usage) {
    constexpr uint64_t kCpuUsages = BufferUsage::CPU_READ_MASK | BufferUsage::CPU_WRITE_MASK;
    return (usage & kCpuUsages) != 0 && (usage & ~kCpuUsages) == 0;
}

/** Checks that [start, start + length) lies within [0, limit); an empty range does. */
bool isWithin(int32_t start, int32_t length, uint32_t limit) {
    return start >= 0 && length >= 0 && int64_t{start} + length <= int64_t{limit};
}

/** Accepts the all-zero area, which means the whole buffer. */
bool isWithin(MemfdMapper::Rect const& area, BufferFacts const& facts) {
    return isWithin(area.left, area.width, facts.width) &&
           isWithin(area.top, area.height, facts.height);
}

/** Waits for a fence; returns false for a handle that is none. */
bool waitFor(native_handle_t const* fence) {
    if (fence == nullptr || fence->numFds == 0) {
        return true;
    }
    return fence->numFds == 1 && sync_wait(fence->data[0], -1) == 0;
}

/** Creates a signalled fence; null, which means the same, on failure. */
android::hardware::hidl_handle signalledFence() {
    android::hardware::hidl_handle result;
    int const event = eventfd(1, EFD_CLOEXEC | EFD_NONBLOCK);
    if (event < 0) {
        return result;
    }
    native_handle_t* const handle = native_handle_create(1, 0);
    if (handle == nullptr) {
        close(event);
        return result;
    }
    handle->data[0] = event;
    result.setTo(handle, true);
    return result;
}

}  // namespace

MemfdMapper::Return<void> MemfdMapper::createDescriptor(BufferDescriptorInfo const& description,
                                                        createDescriptor_cb cb) {
    Error const error = checkDescription(description);
    cb(error, error == Error::NONE ? encodeDescription(description) : hidl_vec<uint8_t>());
    return Void();
}

MemfdMapper::Return<void> MemfdMapper::importBuffer(hidl_handle const& rawHandle,
                                                    importBuffer_cb cb) {
    void* imported = nullptr;
    Error const error = importHandle(rawHandle.getNativeHandle(), imported);
    cb(error, imported);
    return Void();
}

MemfdMapper::Error MemfdMapper::importHandle(native_handle_t const* raw, void*& imported) {
    std::optional<BufferDetails> const details = readBufferHandle(raw);
    if (!details) {
        return Error::BAD_BUFFER;
    }
    native_handle_t* const handle = native_handle_clone(raw);
    if (handle == nullptr) {
        return Error::NO_RESOURCES;
    }
    mTable.add(std::make_shared<ImportedBuffer>(handle, *details));
    imported = handle;
    return Error::NONE;
}

MemfdMapper::Return<MemfdMapper::Error> MemfdMapper::freeBuffer(void* buffer) {
    return mTable.remove(buffer) ? Error::NONE : Error::BAD_BUFFER;
}

MemfdMapper::Return<void> MemfdMapper::lock(void* buffer, uint64_t cpuUsage,
                                            Rect const& accessRegion,
                                            hidl_handle const& acquireFence, lock_cb cb) {
    void* data = nullptr;
    Error const error =
            lockBuffer(buffer, cpuUsage, accessRegion, acquireFence.getNativeHandle(), data);
    cb(error, data);
    return Void();
}

MemfdMapper::Error MemfdMapper::lockBuffer(void const* buffer, uint64_t cpuUsage,
                                           Rect const& accessRegion,
                                           native_handle_t const* acquireFence, void*& data) {
    std::shared_ptr<ImportedBuffer> const imported = mTable.find(buffer);
    if (imported == nullptr) {
        return Error::BAD_BUFFER;
    }
    if (!isCpuUsage(cpuUsage) || !isWithin(accessRegion, imported->facts()) ||
        !waitFor(acquireFence)) {
        return Error::BAD_VALUE;
    }
    void* const address = imported->map();
    if (address == nullptr) {
        return Error::NO_RESOURCES;
    }
    // It may have been freed while this thread waited.
    if (!mTable.addLock(*imported)) {
        return Error::BAD_BUFFER;
    }
    data = address;
    return Error::NONE;
}

MemfdMapper::Return<void> MemfdMapper::unlock(void* buffer, unlock_cb cb) {
    if (!mTable.removeLock(buffer)) {
        cb(Error::BAD_BUFFER, hidl_handle());
        return Void();
    }
    cb(Error::NONE, mReleaseFences ? signalledFence() : hidl_handle());
    return Void();
}

MemfdMapper::Return<void> MemfdMapper::get(void* buffer, MetadataType const& metadataType,
                                           get_cb cb) {
    std::shared_ptr<ImportedBuffer> const imported = mTable.find(buffer);
    hidl_vec<uint8_t> encoded;
    Error const error = imported == nullptr
                                ? Error::BAD_BUFFER
                                : encodeStandardMetadata(*imported, metadataType, encoded);
    cb(error, encoded);
    return Void();
}

MemfdMapper::Return<void> MemfdMapper::flushLockedBuffer(void* buffer, flushLockedBuffer_cb cb) {
    cb(mTable.findLocked(buffer) == nullptr ? Error::BAD_BUFFER : Error::NONE, hidl_handle());
    return Void();
}

MemfdMapper::Return<MemfdMapper::Error> MemfdMapper::rereadLockedBuffer(void* buffer) {
    return mTable.findLocked(buffer) == nullptr ? Error::BAD_BUFFER : Error::NONE;
}

MemfdMapper::Return<MemfdMapper::Error> MemfdMapper::validateBufferSize(
        void* buffer, BufferDescriptorInfo const& description, uint32_t rowPixels) {
    std::shared_ptr<ImportedBuffer> const imported = mTable.find(buffer);
    if (imported == nullptr) {
        return Error::BAD_BUFFER;
    }
    BufferFacts const& facts = imported->facts();
    bool const fits =
            checkDescription(description) == Error::NONE && description.format == facts.format &&
            description.width <= facts.width && description.height <= facts.height &&
            description.reservedSize <= facts.reservedSize && rowPixels <= facts.extent.rowPixels;
    return fits ? Error::NONE : Error::BAD_VALUE;
}

MemfdMapper::Return<void> MemfdMapper::getTransportSize(void* buffer, getTransportSize_cb cb) {
    std::shared_ptr<ImportedBuffer> const imported = mTable.find(buffer);
    if (imported == nullptr) {
        cb(Error::BAD_BUFFER, 0, 0);
        return Void();
    }
    cb(Error::NONE, static_cast<uint32_t>(imported->handle()->numFds),
       static_cast<uint32_t>(imported->handle()->numInts));
    return Void();
}

MemfdMapper::Return<void> MemfdMapper::isSupported(BufferDescriptorInfo const& description,
                                                   isSupported_cb cb) {
    cb(Error::NONE, checkDescription(description) == Error::NONE);
    return Void();
}

MemfdMapper::Return<MemfdMapper::Error> MemfdMapper::set(void* buffer,
                                                         MetadataType const& metadataType,
                                                         hidl_vec<uint8_t> const& metadata) {
    std::shared_ptr<ImportedBuffer> const imported = mTable.find(buffer);
    return imported == nullptr ? Error::BAD_BUFFER
                               : setStandardMetadata(*imported, metadataType, metadata);
}

MemfdMapper::Return<void> MemfdMapper::getFromBufferDescriptorInfo(
        BufferDescriptorInfo const& description, MetadataType const& metadataType,
        getFromBufferDescriptorInfo_cb cb) {
    hidl_vec<uint8_t> encoded;
    Error const error = checkDescription(description) != Error::NONE
                                ? Error::BAD_VALUE
                                : encodeStandardMetadata(description, metadataType, encoded);
    cb(error, encoded);
    return Void();
}

MemfdMapper::Return<void> MemfdMapper::listSupportedMetadataTypes(
        listSupportedMetadataTypes_cb cb) {
    cb(Error::NONE, listStandardMetadata());
    return Void();
}

MemfdMapper::Return<void> MemfdMapper::dumpBuffer(void* buffer, dumpBuffer_cb cb) {
    std::shared_ptr<ImportedBuffer> const imported = mTable.find(buffer);
    if (imported == nullptr) {
        cb(Error::BAD_BUFFER, BufferDump());
        return Void();
    }
    cb(Error::NONE, dumpStandardMetadata(*imported));
    return Void();
}

MemfdMapper::Return<void> MemfdMapper::dumpBuffers(dumpBuffers_cb cb) {
    std::vector<BufferDump> dumps;
    for (std::shared_ptr<ImportedBuffer> const& imported : mTable.all()) {
        dumps.push_back(dumpStandardMetadata(*imported));
    }
    cb(Error::NONE, dumps);
    return Void();
}

MemfdMapper::Return<void> MemfdMapper::getReservedRegion(void* buffer, getReservedRegion_cb cb) {
    std::shared_ptr<ImportedBuffer> const imported = mTable.find(buffer);
    if (imported == nullptr) {
        cb(Error::BAD_BUFFER, nullptr, 0);
        return Void();
    }
    uint64_t const size = imported->facts().reservedSize;
    void* const region = imported->mapReserved();
    bool const isThere = size == 0 || region != nullptr;
    cb(isThere ? Error::NONE : Error::NO_RESOURCES, region, isThere ? size : 0);
    return Void();
}

}  // namespace quen::host
