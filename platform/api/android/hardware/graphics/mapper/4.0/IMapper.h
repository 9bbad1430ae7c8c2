#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <android/hardware/graphics/common/1.2/types.h>
#include <android/hardware/graphics/mapper/4.0/types.h>
#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

namespace android::hardware::graphics::mapper::V4_0 {

/**
 * Gives this process access to graphic buffers. Any thread.
 *
 * Import a raw handle first: an imported buffer is a native handle's address, valid for the other
 * operations until it is freed. A callback is called once, before its operation returns, also on
 * failure; its arguments are valid during the call only.
 */
struct IMapper : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;

    /** Description of a buffer to allocate. */
    struct BufferDescriptorInfo final {
        hidl_string name __attribute__((aligned(8)));  ///< for debugging
        uint32_t width __attribute__((aligned(4)));    ///< pixels
        uint32_t height __attribute__((aligned(4)));   ///< pixels
        uint32_t layerCount __attribute__((aligned(4)));
        common::V1_2::PixelFormat format __attribute__((aligned(4)));
        hidl_bitfield<common::V1_2::BufferUsage> usage __attribute__((aligned(8)));
        uint64_t reservedSize __attribute__((aligned(8)));  ///< bytes to reserve beside the picture
    };

    /** An area of a buffer, in pixels. */
    struct Rect final {
        int32_t left __attribute__((aligned(4)));
        int32_t top __attribute__((aligned(4)));
        int32_t width __attribute__((aligned(4)));
        int32_t height __attribute__((aligned(4)));
    };

    /** Names a property of a buffer: the enumeration's name, and the value in it. */
    struct MetadataType final {
        hidl_string name __attribute__((aligned(8)));
        int64_t value __attribute__((aligned(8)));
    };

    struct MetadataTypeDescription final {
        MetadataType metadataType __attribute__((aligned(8)));
        hidl_string description __attribute__((aligned(8)));
        bool isGettable __attribute__((aligned(1)));
        bool isSettable __attribute__((aligned(1)));
    };

    struct MetadataDump final {
        MetadataType metadataType __attribute__((aligned(8)));
        hidl_vec<uint8_t> metadata __attribute__((aligned(8)));
    };

    struct BufferDump final {
        hidl_vec<MetadataDump> metadataDump __attribute__((aligned(8)));
    };

    using createDescriptor_cb =
            std::function<void(Error error, const hidl_vec<uint8_t>& descriptor)>;
    using importBuffer_cb = std::function<void(Error error, void* buffer)>;
    using getTransportSize_cb = std::function<void(Error error, uint32_t numFds, uint32_t numInts)>;
    using lock_cb = std::function<void(Error error, void* data)>;
    using unlock_cb = std::function<void(Error error, const hidl_handle& releaseFence)>;
    using flushLockedBuffer_cb = std::function<void(Error error, const hidl_handle& releaseFence)>;
    using isSupported_cb = std::function<void(Error error, bool supported)>;
    using get_cb = std::function<void(Error error, const hidl_vec<uint8_t>& metadata)>;
    using getFromBufferDescriptorInfo_cb =
            std::function<void(Error error, const hidl_vec<uint8_t>& metadata)>;
    using listSupportedMetadataTypes_cb =
            std::function<void(Error error, const hidl_vec<MetadataTypeDescription>& descriptions)>;
    using dumpBuffer_cb = std::function<void(Error error, const BufferDump& bufferDump)>;
    using dumpBuffers_cb =
            std::function<void(Error error, const hidl_vec<BufferDump>& bufferDumps)>;
    using getReservedRegion_cb =
            std::function<void(Error error, void* reservedRegion, uint64_t reservedSize)>;

    /** Encodes the descriptor that an allocator takes. BAD_VALUE, NO_RESOURCES, UNSUPPORTED. */
    virtual Return<void> createDescriptor(const BufferDescriptorInfo& description,
                                          createDescriptor_cb cb) = 0;

    /**
     * Imports a raw handle into this process.
     *
     * @param rawHandle an allocator's, or a copy of one; owned by the caller. BAD_BUFFER,
     *        NO_RESOURCES
     */
    virtual Return<void> importBuffer(const hidl_handle& rawHandle, importBuffer_cb cb) = 0;

    /** Frees an imported buffer. BAD_BUFFER for anything else. */
    virtual Return<Error> freeBuffer(void* buffer) = 0;

    /** Checks that a buffer is as large as `description` and `stride` ask. BAD_VALUE otherwise. */
    virtual Return<Error> validateBufferSize(void* buffer, const BufferDescriptorInfo& description,
                                             uint32_t stride) = 0;

    /**
     * Returns how many descriptors and integers of the handle another process needs. BAD_BUFFER.
     */
    virtual Return<void> getTransportSize(void* buffer, getTransportSize_cb cb) = 0;

    /**
     * Gives the CPU access to an area until `unlock`. Locks of one buffer nest.
     *
     * @param cpuUsage at least one CPU bit of BufferUsage, and no other bits
     * @param accessRegion all zero for the whole buffer
     * @param acquireFence to wait for first, or null; owned by the caller
     * @param cb is given the address of the buffer, not of the area. BAD_BUFFER, BAD_VALUE,
     *        NO_RESOURCES
     */
    virtual Return<void> lock(void* buffer, uint64_t cpuUsage, const Rect& accessRegion,
                              const hidl_handle& acquireFence, lock_cb cb) = 0;

    /**
     * Ends one lock.
     *
     * @param cb is given a fence that signals when the CPU's work is done, or a null handle when it
     *        is done already; the mapper owns it: duplicate it to keep it. BAD_BUFFER
     */
    virtual Return<void> unlock(void* buffer, unlock_cb cb) = 0;

    /** Makes the CPU's writes visible to others; keeps the lock. Otherwise as `unlock`. */
    virtual Return<void> flushLockedBuffer(void* buffer, flushLockedBuffer_cb cb) = 0;

    /** Makes the writes of others visible to the CPU; keeps the lock. BAD_BUFFER. */
    virtual Return<Error> rereadLockedBuffer(void* buffer) = 0;

    /** Returns whether a buffer can be allocated. */
    virtual Return<void> isSupported(const BufferDescriptorInfo& description,
                                     isSupported_cb cb) = 0;

    /** Reads a property, encoded as `gralloctypes/Gralloc4.h` does. BAD_BUFFER, UNSUPPORTED. */
    virtual Return<void> get(void* buffer, const MetadataType& metadataType, get_cb cb) = 0;

    /**
     * Changes a property, for every process that has the buffer. BAD_BUFFER; BAD_VALUE for a
     * property that the allocation fixed; UNSUPPORTED for one that cannot be set, and for malformed
     * bytes.
     */
    virtual Return<Error> set(void* buffer, const MetadataType& metadataType,
                              const hidl_vec<uint8_t>& metadata) = 0;

    /** Reads the initial value of a property of such buffers. BAD_VALUE, UNSUPPORTED. */
    virtual Return<void> getFromBufferDescriptorInfo(const BufferDescriptorInfo& description,
                                                     const MetadataType& metadataType,
                                                     getFromBufferDescriptorInfo_cb cb) = 0;

    virtual Return<void> listSupportedMetadataTypes(listSupportedMetadataTypes_cb cb) = 0;

    /** Dump every property of a buffer, or of all imported buffers of this process. BAD_BUFFER. */
    virtual Return<void> dumpBuffer(void* buffer, dumpBuffer_cb cb) = 0;
    virtual Return<void> dumpBuffers(dumpBuffers_cb cb) = 0;

    /**
     * Returns the bytes reserved beside the picture, which all processes that have the buffer
     * share; valid until the buffer is freed. Null and 0 when none were reserved. BAD_BUFFER
     */
    virtual Return<void> getReservedRegion(void* buffer, getReservedRegion_cb cb) = 0;

    /** Finds the service; null when no such instance is registered. */
    static ::android::sp<IMapper> getService(const std::string& serviceName = "default",
                                             bool getStub = false);

    /** Registers this object as the instance `serviceName`, in place of any earlier one. */
    ::android::status_t registerAsService(const std::string& serviceName = "default");
};

static_assert(sizeof(IMapper::BufferDescriptorInfo) == 48, "wrong size");
static_assert(sizeof(IMapper::Rect) == 16, "wrong size");
static_assert(sizeof(IMapper::MetadataType) == 24, "wrong size");

}  // namespace android::hardware::graphics::mapper::V4_0
