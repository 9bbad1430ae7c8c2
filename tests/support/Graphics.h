#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

#include <android/hardware/graphics/allocator/4.0/IAllocator.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>

#include "host/gralloc/GraphicsServices.h"

namespace quentest {

namespace mapper4 = android::hardware::graphics::mapper::V4_0;
using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::graphics::allocator::V4_0::IAllocator;
using mapper4::Error;
using mapper4::IMapper;

/** What a call that never reached its service returns. */
inline android::hardware::Status lostTransport() {
    return android::hardware::Status::fromExceptionCode(
            android::hardware::Status::EX_TRANSACTION_FAILED, "stand-in lost");
}

/** Hooks: a call whose service is out of reach, and one that hands values to its callback. */
inline auto losing() {
    return [](auto const&...) { return lostTransport(); };
}
template <typename... Values>
auto giving(Values... values) {
    return [=](auto const&... arguments) {
        std::get<sizeof...(arguments) - 1>(std::tie(arguments...))(values...);
        return android::hardware::Void();
    };
}

/** What a test puts in the place of the platform's answers. */
struct MapperHooks {
    std::function<Return<void>(IMapper::createDescriptor_cb)> onCreateDescriptor;
    std::function<Return<void>(hidl_handle const&, IMapper::importBuffer_cb)> onImport;
    std::function<Return<Error>()> onFree;
    std::function<Return<void>(hidl_handle const&, IMapper::lock_cb)> onLock;
    std::function<Return<void>(void*, IMapper::unlock_cb)> onUnlock;
    std::function<Return<void>(IMapper::get_cb)> onGet;

    std::vector<std::string> calls;  // that came, without descriptions and queries
    std::vector<void*> freed;
    IMapper::BufferDescriptorInfo described{};
    uint64_t lockUsage = 0;
    IMapper::Rect lockRegion{};
};

/** A mapper that passes on to the platform's what no hook answers. */
class HookedMapper : public IMapper, public MapperHooks {
  public:
    Return<void> createDescriptor(BufferDescriptorInfo const& info,
                                  createDescriptor_cb cb) override {
        std::lock_guard<std::mutex> const guard(mLock);
        described = info;
        return onCreateDescriptor ? onCreateDescriptor(cb) : real->createDescriptor(info, cb);
    }
    Return<void> importBuffer(hidl_handle const& handle, importBuffer_cb cb) override {
        std::lock_guard<std::mutex> const guard(mLock);
        calls.push_back("import");
        return onImport ? onImport(handle, cb) : real->importBuffer(handle, cb);
    }
    Return<Error> freeBuffer(void* buffer) override {
        std::lock_guard<std::mutex> const guard(mLock);
        calls.push_back("free");
        freed.push_back(buffer);
        return onFree ? onFree() : real->freeBuffer(buffer);
    }
    Return<void> lock(void* buffer, uint64_t usage, Rect const& region, hidl_handle const& fence,
                      lock_cb cb) override {
        std::lock_guard<std::mutex> const guard(mLock);
        calls.push_back("lock");
        lockUsage = usage;
        lockRegion = region;
        return onLock ? onLock(fence, cb) : real->lock(buffer, usage, region, fence, cb);
    }
    Return<void> unlock(void* buffer, unlock_cb cb) override {
        std::lock_guard<std::mutex> const guard(mLock);
        calls.push_back("unlock");
        return onUnlock ? onUnlock(buffer, cb) : real->unlock(buffer, cb);
    }
    Return<void> get(void* buffer, MetadataType const& type, get_cb cb) override {
        std::lock_guard<std::mutex> const guard(mLock);
        return onGet ? onGet(cb) : real->get(buffer, type, cb);
    }

    // No test stands in for these.
    Return<Error> validateBufferSize(void* buffer, BufferDescriptorInfo const& info,
                                     uint32_t stride) override {
        return real->validateBufferSize(buffer, info, stride);
    }
    Return<void> getTransportSize(void* buffer, getTransportSize_cb cb) override {
        return real->getTransportSize(buffer, cb);
    }
    Return<void> flushLockedBuffer(void* buffer, flushLockedBuffer_cb cb) override {
        return real->flushLockedBuffer(buffer, cb);
    }
    Return<Error> rereadLockedBuffer(void* buffer) override {
        return real->rereadLockedBuffer(buffer);
    }
    Return<void> isSupported(BufferDescriptorInfo const& info, isSupported_cb cb) override {
        return real->isSupported(info, cb);
    }
    Return<Error> set(void* buffer, MetadataType const& type,
                      hidl_vec<uint8_t> const& value) override {
        return real->set(buffer, type, value);
    }
    Return<void> getFromBufferDescriptorInfo(BufferDescriptorInfo const& info,
                                             MetadataType const& type,
                                             getFromBufferDescriptorInfo_cb cb) override {
        return real->getFromBufferDescriptorInfo(info, type, cb);
    }
    Return<void> listSupportedMetadataTypes(listSupportedMetadataTypes_cb cb) override {
        return real->listSupportedMetadataTypes(cb);
    }
    Return<void> dumpBuffer(void* buffer, dumpBuffer_cb cb) override {
        return real->dumpBuffer(buffer, cb);
    }
    Return<void> dumpBuffers(dumpBuffers_cb cb) override { return real->dumpBuffers(cb); }
    Return<void> getReservedRegion(void* buffer, getReservedRegion_cb cb) override {
        return real->getReservedRegion(buffer, cb);
    }

    /** The region of the latest lock: left, top, width, height. */
    std::vector<int> lockedRegion() const {
        return {lockRegion.left, lockRegion.top, lockRegion.width, lockRegion.height};
    }

    /** Takes the hooks away and forgets what came. */
    void reset() {
        std::lock_guard<std::mutex> const guard(mLock);
        static_cast<MapperHooks&>(*this) = {};
    }

    android::sp<IMapper> real;

  private:
    std::mutex mLock;  // held during every call: a software ISP calls from a thread of its own
};

/** The same for the allocator. */
class HookedAllocator : public IAllocator {
  public:
    Return<void> allocate(hidl_vec<uint8_t> const& wanted, uint32_t count,
                          allocate_cb cb) override {
        counts.push_back(count);
        return onAllocate ? onAllocate(wanted, cb) : real->allocate(wanted, count, cb);
    }

    android::sp<IAllocator> real;
    std::function<Return<void>(hidl_vec<uint8_t> const&, allocate_cb)> onAllocate;
    std::vector<uint32_t> counts;  // buffers asked for, call by call
};

/**
 * The process's graphics services. The library's helpers fetch them once, so there is one pair of
 * them; each test starts with fresh() and sets hooks in it.
 */
struct Graphics {
    android::sp<HookedMapper> mapper = new HookedMapper;
    android::sp<HookedAllocator> allocator = new HookedAllocator;

    static Graphics& fresh() {
        static Graphics* const graphics = install();
        graphics->mapper->reset();
        graphics->allocator->onAllocate = nullptr;
        graphics->allocator->counts.clear();
        return *graphics;
    }

  private:
    static Graphics* install() {
        auto const services = quen::host::registerGraphicsServices();
        auto* const graphics = new Graphics;
        graphics->mapper->real = services.mapper;
        graphics->allocator->real = services.allocator;
        (void)graphics->mapper->registerAsService();
        (void)graphics->allocator->registerAsService();
        return graphics;
    }
};

}  // namespace quentest
