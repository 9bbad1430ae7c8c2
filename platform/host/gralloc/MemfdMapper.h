#pragma once

#include <atomic>

#include <android/hardware/graphics/mapper/4.0/IMapper.h>

#include "host/gralloc/BufferTable.h"

namespace quen::host {

/**
 * Imports and maps the buffers of MemfdAllocator, from any copy of their handles, of any process.
 *
 * Refuses with BAD_BUFFER every address that is not an imported buffer, whatever it points at, and
 * the freeing of a locked buffer and the unlocking of one that is not. A locked buffer keeps its
 * address until it is freed. The destructor frees what is still imported. Any thread.
 */
class MemfdMapper : public android::hardware::graphics::mapper::V4_0::IMapper {
  public:
    template <typename T>
    using Return = android::hardware::Return<T>;
    using Error = android::hardware::graphics::mapper::V4_0::Error;
    using hidl_handle = android::hardware::hidl_handle;

    /** Sets whether `unlock` returns a fence, already signalled. Off by default. */
    void setReleaseFences(bool enabled) { mReleaseFences = enabled; }

    BufferCounts counts() const { return mTable.counts(); }

    Return<void> createDescriptor(BufferDescriptorInfo const& description,
                                  createDescriptor_cb cb) override;
    Return<void> importBuffer(hidl_handle const& rawHandle, importBuffer_cb cb) override;
    Return<Error> freeBuffer(void* buffer) override;
    Return<void> lock(void* buffer, uint64_t cpuUsage, Rect const& accessRegion,
                      hidl_handle const& acquireFence, lock_cb cb) override;
    Return<void> unlock(void* buffer, unlock_cb cb) override;

    /** Only check that the buffer is locked: there are no caches between the CPU and the memory. */
    Return<void> flushLockedBuffer(void* buffer, flushLockedBuffer_cb cb) override;
    Return<Error> rereadLockedBuffer(void* buffer) override;

    Return<Error> validateBufferSize(void* buffer, BufferDescriptorInfo const& description,
                                     uint32_t rowPixels) override;
    Return<void> getTransportSize(void* buffer, getTransportSize_cb cb) override;
    Return<void> isSupported(BufferDescriptorInfo const& description, isSupported_cb cb) override;

    /** The properties are those of StandardMetadata.h. */
    Return<void> get(void* buffer, MetadataType const& metadataType, get_cb cb) override;
    Return<Error> set(void* buffer, MetadataType const& metadataType,
                      android::hardware::hidl_vec<uint8_t> const& metadata) override;
    Return<void> getFromBufferDescriptorInfo(BufferDescriptorInfo const& description,
                                             MetadataType const& metadataType,
                                             getFromBufferDescriptorInfo_cb cb) override;
    Return<void> listSupportedMetadataTypes(listSupportedMetadataTypes_cb cb) override;
    Return<void> dumpBuffer(void* buffer, dumpBuffer_cb cb) override;
    Return<void> dumpBuffers(dumpBuffers_cb cb) override;
    Return<void> getReservedRegion(void* buffer, getReservedRegion_cb cb) override;

  private:
    Error importHandle(native_handle_t const* raw, void*& imported);
    Error lockBuffer(void const* buffer, uint64_t cpuUsage, Rect const& accessRegion,
                     native_handle_t const* acquireFence, void*& data);

    BufferTable mTable;
    std::atomic<bool> mReleaseFences{false};
};

}  // namespace quen::host
