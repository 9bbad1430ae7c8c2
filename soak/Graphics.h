#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include <android/hardware/graphics/allocator/4.0/IAllocator.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>

#include "Plan.h"
#include "host/gralloc/GraphicsServices.h"

namespace quensoak {

using android::hardware::graphics::allocator::V4_0::IAllocator;
using android::hardware::graphics::mapper::V4_0::IMapper;

/**
 * The memory of the stand-in's buffers: a ring of equal slots in one shared memory. A buffer is a
 * slot for as long as its request lives, which is long over when the ring comes round to it again.
 */
class BufferRing {
  public:
    static constexpr size_t kSlots = 4096;
    static constexpr size_t kSlotBytes = 16384;

    /** One buffer: what it is for, what goes wrong with it, and how far that has come. */
    struct Slot {
        enum class Purpose : uint8_t { Input, Jpeg, Tuning };
        Purpose purpose = Purpose::Jpeg;
        std::atomic<BufferFault> fault{BufferFault::None};
        uint32_t width = 0;
        uint32_t height = 0;
        std::atomic<int> imports{0};
        std::atomic<int> locks{0};
    };

    BufferRing();
    ~BufferRing();
    BufferRing(BufferRing const&) = delete;
    BufferRing& operator=(BufferRing const&) = delete;

    /** Takes the next slot. The client's thread. */
    size_t take() { return mNext++ % kSlots; }
    Slot& slot(size_t index) { return mSlots[index]; }
    uint8_t* address(size_t index) const { return mBase + index * kSlotBytes; }
    int descriptor() const { return mDescriptor; }

  private:
    int const mDescriptor;
    uint8_t* const mBase;
    size_t mNext = 0;
    std::array<Slot, kSlots> mSlots;
};

/**
 * The process's mapper and allocator: fast ones, whose buffers are slots of a ring, with a way
 * through to the host's real ones for the requests whose plan wants that. What goes wrong with a
 * buffer is decided when it is allocated, and stays with its slot.
 *
 * Descriptors are made and buffers allocated on the client's thread; the rest is called on any.
 */
class Graphics final : public IMapper, public IAllocator {
  public:
    using MapperError = android::hardware::graphics::mapper::V4_0::Error;

    Graphics();

    /** Makes this object the process's mapper and allocator. */
    void install();

    /** What the next allocations are for. The client's thread. */
    void setPlan(Plan const& plan) { mPlan = plan; }

    /** Writes into the memory of a raw buffer, as an ISP does. */
    static void write(native_handle const* handle, size_t offset, void const* bytes, size_t count);

    /** Buffers that were imported and not freed, the real ones included. */
    size_t imported() const;

    android::hardware::Return<void> createDescriptor(BufferDescriptorInfo const& info,
                                                     createDescriptor_cb cb) override;
    android::hardware::Return<void> allocate(
            android::hardware::hidl_vec<uint8_t> const& bufferDescriptor, uint32_t count,
            allocate_cb cb) override;
    android::hardware::Return<void> importBuffer(android::hardware::hidl_handle const& rawHandle,
                                                 importBuffer_cb cb) override;
    android::hardware::Return<android::hardware::graphics::mapper::V4_0::Error> freeBuffer(
            void* buffer) override;
    android::hardware::Return<void> lock(void* buffer, uint64_t cpuUsage, Rect const& accessRegion,
                                         android::hardware::hidl_handle const& acquireFence,
                                         lock_cb cb) override;
    android::hardware::Return<void> unlock(void* buffer, unlock_cb cb) override;
    android::hardware::Return<void> get(void* buffer, MetadataType const& metadataType,
                                        get_cb cb) override;

    // The library asks for none of these.
    android::hardware::Return<MapperError> validateBufferSize(void*, BufferDescriptorInfo const&,
                                                              uint32_t) override {
        return MapperError::UNSUPPORTED;
    }
    android::hardware::Return<void> getTransportSize(void*, getTransportSize_cb cb) override {
        cb(MapperError::UNSUPPORTED, 0, 0);
        return android::hardware::Void();
    }
    android::hardware::Return<void> flushLockedBuffer(void*, flushLockedBuffer_cb cb) override {
        cb(MapperError::UNSUPPORTED, {});
        return android::hardware::Void();
    }
    android::hardware::Return<MapperError> rereadLockedBuffer(void*) override {
        return MapperError::UNSUPPORTED;
    }
    android::hardware::Return<void> isSupported(BufferDescriptorInfo const&,
                                                isSupported_cb cb) override {
        cb(MapperError::UNSUPPORTED, false);
        return android::hardware::Void();
    }
    android::hardware::Return<MapperError> set(
            void*, MetadataType const&, android::hardware::hidl_vec<uint8_t> const&) override {
        return MapperError::UNSUPPORTED;
    }
    android::hardware::Return<void> getFromBufferDescriptorInfo(
            BufferDescriptorInfo const&, MetadataType const&,
            getFromBufferDescriptorInfo_cb cb) override {
        cb(MapperError::UNSUPPORTED, {});
        return android::hardware::Void();
    }
    android::hardware::Return<void> listSupportedMetadataTypes(
            listSupportedMetadataTypes_cb cb) override {
        cb(MapperError::UNSUPPORTED, {});
        return android::hardware::Void();
    }
    android::hardware::Return<void> dumpBuffer(void*, dumpBuffer_cb cb) override {
        cb(MapperError::UNSUPPORTED, {});
        return android::hardware::Void();
    }
    android::hardware::Return<void> dumpBuffers(dumpBuffers_cb cb) override {
        cb(MapperError::UNSUPPORTED, {});
        return android::hardware::Void();
    }
    android::hardware::Return<void> getReservedRegion(void*, getReservedRegion_cb cb) override {
        cb(MapperError::UNSUPPORTED, nullptr, 0);
        return android::hardware::Void();
    }

  private:
    static constexpr size_t kImports = 4096;

    /** An import of a slot; its address is what the library is given. */
    struct Import {
        std::atomic<bool> used{false};
        size_t slot = 0;
    };

    Import* find(void const* buffer);
    void* import(android::hardware::hidl_handle const& rawHandle);
    android::hardware::hidl_vec<uint8_t> const& layoutsOf(uint32_t width, uint32_t height) const;
    android::hardware::hidl_vec<uint8_t> askForLayouts(uint32_t width, uint32_t height) const;

    quen::host::GraphicsServices const mReal;
    BufferRing mRing;
    Plan mPlan = {};

    mutable std::mutex mLock;
    std::array<Import, kImports> mImports;
    std::vector<Import*> mFreeImports;  // guarded by mLock

    // The planes of NV21 buffers by their sizes, as the host's services have them.
    std::map<std::pair<uint32_t, uint32_t>, android::hardware::hidl_vec<uint8_t>> mLayouts;
};

}  // namespace quensoak
