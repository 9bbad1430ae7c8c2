#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

#include "host/gralloc/MemfdAllocator.h"
#include "host/gralloc/MemfdMapper.h"

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
class HookedMapper : public quen::host::MemfdMapper, public MapperHooks {
  public:
    using Real = quen::host::MemfdMapper;

    Return<void> createDescriptor(BufferDescriptorInfo const& info,
                                  createDescriptor_cb cb) override {
        std::lock_guard<std::mutex> const guard(mLock);
        described = info;
        return onCreateDescriptor ? onCreateDescriptor(cb) : Real::createDescriptor(info, cb);
    }
    Return<void> importBuffer(hidl_handle const& handle, importBuffer_cb cb) override {
        std::lock_guard<std::mutex> const guard(mLock);
        calls.push_back("import");
        return onImport ? onImport(handle, cb) : Real::importBuffer(handle, cb);
    }
    Return<Error> freeBuffer(void* buffer) override {
        std::lock_guard<std::mutex> const guard(mLock);
        calls.push_back("free");
        freed.push_back(buffer);
        return onFree ? onFree() : Real::freeBuffer(buffer);
    }
    Return<void> lock(void* buffer, uint64_t usage, Rect const& region, hidl_handle const& fence,
                      lock_cb cb) override {
        std::lock_guard<std::mutex> const guard(mLock);
        calls.push_back("lock");
        lockUsage = usage;
        lockRegion = region;
        return onLock ? onLock(fence, cb) : Real::lock(buffer, usage, region, fence, cb);
    }
    Return<void> unlock(void* buffer, unlock_cb cb) override {
        std::lock_guard<std::mutex> const guard(mLock);
        calls.push_back("unlock");
        return onUnlock ? onUnlock(buffer, cb) : Real::unlock(buffer, cb);
    }
    Return<void> get(void* buffer, MetadataType const& type, get_cb cb) override {
        std::lock_guard<std::mutex> const guard(mLock);
        return onGet ? onGet(cb) : Real::get(buffer, type, cb);
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

  private:
    std::mutex mLock;  // held during every call: a software ISP calls from a thread of its own
};

/** The same for the allocator. */
class HookedAllocator : public quen::host::MemfdAllocator {
  public:
    using Real = quen::host::MemfdAllocator;

    Return<void> allocate(hidl_vec<uint8_t> const& wanted, uint32_t count,
                          allocate_cb cb) override {
        counts.push_back(count);
        return onAllocate ? onAllocate(wanted, cb) : Real::allocate(wanted, count, cb);
    }

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
        auto* const graphics = new Graphics;
        (void)graphics->mapper->registerAsService();
        (void)graphics->allocator->registerAsService();
        return graphics;
    }
};

}  // namespace quentest
