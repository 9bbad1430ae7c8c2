#include "Graphics.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include <gralloctypes/Gralloc4.h>
#include <hidl/Status.h>

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;
using android::hardware::graphics::common::V1_2::PixelFormat;
using android::hardware::graphics::mapper::V4_0::Error;

namespace quensoak {

namespace {

constexpr size_t kTuningBytes = 0x1fa400;
constexpr uint64_t kCpuUsage = 0x33;
constexpr uint32_t kMagic = 0x4b414f53;  // "SOAK"
constexpr int kFds = 1;
constexpr int kInts = 2;      // the magic number and the slot
constexpr int kAttempts = 5;  // of one import, as the library makes them

/** A descriptor of a fast buffer; the real allocator's have another size. */
struct FastDescriptor {
    uint32_t magic;
    uint32_t width;
    uint32_t height;
    PixelFormat format;
};

android::hardware::Status lost() {
    return android::hardware::Status::fromExceptionCode(
            android::hardware::Status::EX_TRANSACTION_FAILED, "the reply is lost");
}

/** The slot of a raw handle; false for handles of others. */
bool slotOf(native_handle const* handle, size_t& slot) {
    if (handle == nullptr || handle->numFds != kFds || handle->numInts != kInts ||
        static_cast<uint32_t>(handle->data[1]) != kMagic) {
        return false;
    }
    slot = static_cast<size_t>(handle->data[2]);
    return slot < BufferRing::kSlots;
}

int memoryOf(size_t bytes) {
    int const memory = memfd_create("soak ring", MFD_CLOEXEC);
    if (memory < 0 || ftruncate(memory, static_cast<off_t>(bytes)) != 0) {
        abort();
    }
    return memory;
}

// An ISP's answer may tell of more tuning data than a slot has: what follows the last one is read.
constexpr size_t kRingBytes = BufferRing::kSlots * BufferRing::kSlotBytes + kTuningBytes;

BufferRing::Slot::Purpose purposeOf(FastDescriptor const& wanted) {
    if (wanted.format != PixelFormat::BLOB) {
        return BufferRing::Slot::Purpose::Input;
    }
    return wanted.width == kTuningBytes ? BufferRing::Slot::Purpose::Tuning
                                        : BufferRing::Slot::Purpose::Jpeg;
}

/** Whether the allocation itself is what fails. */
bool failsToAllocate(BufferFault fault, BufferRing::Slot::Purpose purpose) {
    switch (purpose) {
        case BufferRing::Slot::Purpose::Input:
            return fault == BufferFault::AllocateInput;
        case BufferRing::Slot::Purpose::Jpeg:
            return fault == BufferFault::AllocateJpeg;
        case BufferRing::Slot::Purpose::Tuning:
            return fault == BufferFault::AllocateTuning;
    }
    return false;
}

/** A run of calls that fail, counted from 1. */
struct Range {
    int first = 0;
    int count = 0;
    bool has(int call) const { return call >= first && call < first + count; }
};

struct FaultRule {
    BufferFault fault;
    BufferRing::Slot::Purpose purpose;
    Range imports;
    Range locks;
};

using Purpose = BufferRing::Slot::Purpose;
constexpr FaultRule kRules[] = {
        {BufferFault::ImportInput, Purpose::Input, {1, kAttempts}, {}},
        {BufferFault::ImportInputOnce, Purpose::Input, {1, 1}, {}},
        {BufferFault::ImportJpegFirst, Purpose::Jpeg, {1, kAttempts}, {}},
        {BufferFault::ImportJpegSecond, Purpose::Jpeg, {2, kAttempts}, {}},
        {BufferFault::ImportTuning, Purpose::Tuning, {1, kAttempts}, {}},
        {BufferFault::LockInput, Purpose::Input, {}, {1, 1}},
        {BufferFault::LockJpegFirst, Purpose::Jpeg, {}, {1, 1}},
        {BufferFault::LockJpegSecond, Purpose::Jpeg, {}, {2, 1}},
        {BufferFault::LockTuning, Purpose::Tuning, {}, {1, 1}},
};

FaultRule ruleOf(BufferRing::Slot const& slot) {
    for (FaultRule const& rule : kRules) {
        if (rule.fault == slot.fault && rule.purpose == slot.purpose) {
            return rule;
        }
    }
    return {};
}

}  // namespace

BufferRing::BufferRing()
    : mDescriptor(memoryOf(kRingBytes)),
      mBase(static_cast<uint8_t*>(
              mmap(nullptr, kRingBytes, PROT_READ | PROT_WRITE, MAP_SHARED, mDescriptor, 0))) {
    if (mBase == MAP_FAILED) {
        abort();
    }
}

BufferRing::~BufferRing() {
    munmap(mBase, kRingBytes);
    close(mDescriptor);
}

Graphics::Graphics() : mReal(quen::host::registerGraphicsServices()) {
    mFreeImports.reserve(kImports);
    for (Import& import : mImports) {
        mFreeImports.push_back(&import);
    }
    for (Size const& size : kSizes) {
        auto const width = static_cast<uint32_t>(size.width);
        auto const height = static_cast<uint32_t>(size.height);
        mLayouts[{width, height}] = askForLayouts(width, height);
    }
}

void Graphics::install() {
    if (IMapper::registerAsService() != android::OK ||
        IAllocator::registerAsService() != android::OK) {
        abort();
    }
}

void Graphics::write(native_handle const* handle, size_t offset, void const* bytes, size_t count) {
    size_t slot = 0;
    bool const isFast = slotOf(handle, slot);
    // The handle of a 3A buffer has no descriptor of the buffer's: one memory serves them all.
    bool const is3A = handle != nullptr && !isFast && handle->numInts == kInts;
    if (handle == nullptr || is3A) {
        return;
    }
    size_t const base = isFast ? slot * BufferRing::kSlotBytes : 0;
    (void)!pwrite(handle->data[0], bytes, count, static_cast<off_t>(base + offset));
}

size_t Graphics::imported() const {
    std::lock_guard<std::mutex> const guard(mLock);
    return kImports - mFreeImports.size() + mReal.mapper->counts().imports;
}

Return<void> Graphics::createDescriptor(BufferDescriptorInfo const& info, createDescriptor_cb cb) {
    if (mPlan.realBuffers) {
        return mReal.mapper->createDescriptor(info, cb);
    }
    FastDescriptor const wanted = {kMagic, info.width, info.height, info.format};
    auto const* const bytes = reinterpret_cast<uint8_t const*>(&wanted);
    cb(Error::NONE, hidl_vec<uint8_t>(bytes, bytes + sizeof(wanted)));
    if (mPlan.buffers == BufferFault::LostDescriptor) {
        return lost();
    }
    return Void();
}

Return<void> Graphics::allocate(hidl_vec<uint8_t> const& bufferDescriptor, uint32_t count,
                                allocate_cb cb) {
    FastDescriptor wanted;
    if (mPlan.realBuffers || bufferDescriptor.size() != sizeof(wanted)) {
        return mReal.allocator->allocate(bufferDescriptor, count, cb);
    }
    memcpy(&wanted, bufferDescriptor.data(), sizeof(wanted));
    Purpose const purpose = purposeOf(wanted);
    if (failsToAllocate(mPlan.buffers, purpose)) {
        cb(Error::NO_RESOURCES, 0, {});
        return Void();
    }
    size_t const index = mRing.take();
    BufferRing::Slot& slot = mRing.slot(index);
    slot.purpose = purpose;
    slot.fault = mPlan.buffers;
    slot.width = wanted.width;
    slot.height = wanted.height;
    slot.imports = 0;
    slot.locks = 0;
    // The library copies the handle: this one is not owned.
    NATIVE_HANDLE_DECLARE_STORAGE(storage, kFds, kInts);
    native_handle_t* const raw = native_handle_init(storage, kFds, kInts);
    raw->data[0] = mRing.descriptor();
    raw->data[1] = static_cast<int>(kMagic);
    raw->data[2] = static_cast<int>(index);
    hidl_handle handle(raw);
    hidl_vec<hidl_handle> buffers;
    buffers.setToExternal(&handle, 1);
    cb(Error::NONE, wanted.width, buffers);
    return Void();
}

void* Graphics::import(hidl_handle const& rawHandle) {
    size_t index = 0;
    if (!slotOf(rawHandle.getNativeHandle(), index)) {
        return nullptr;
    }
    BufferRing::Slot& slot = mRing.slot(index);
    int const attempt = ++slot.imports;
    if (ruleOf(slot).imports.has(attempt)) {
        return nullptr;
    }
    std::lock_guard<std::mutex> const guard(mLock);
    if (mFreeImports.empty()) {
        abort();  // a leak of thousands
    }
    Import* const import = mFreeImports.back();
    mFreeImports.pop_back();
    import->slot = index;
    import->used = true;
    return import;
}

Return<void> Graphics::importBuffer(hidl_handle const& rawHandle, importBuffer_cb cb) {
    size_t index = 0;
    native_handle const* const raw = rawHandle.getNativeHandle();
    if (raw != nullptr && !slotOf(raw, index)) {
        return mReal.mapper->importBuffer(rawHandle, cb);
    }
    void* const imported = import(rawHandle);
    cb(imported == nullptr ? Error::NO_RESOURCES : Error::NONE, imported);
    return Void();
}

Graphics::Import* Graphics::find(void const* buffer) {
    auto const address = reinterpret_cast<uintptr_t>(buffer);
    auto const first = reinterpret_cast<uintptr_t>(mImports.data());
    if (address < first || address >= first + sizeof(mImports)) {
        return nullptr;
    }
    Import* const import = &mImports[(address - first) / sizeof(Import)];
    return import->used ? import : nullptr;
}

Return<Error> Graphics::freeBuffer(void* buffer) {
    Import* const import = find(buffer);
    if (import == nullptr) {
        return mReal.mapper->freeBuffer(buffer);
    }
    bool const loses = mRing.slot(import->slot).fault == BufferFault::LostFree;
    {
        std::lock_guard<std::mutex> const guard(mLock);
        import->used = false;
        mFreeImports.push_back(import);
    }
    if (loses) {
        return lost();
    }
    return Error::NONE;
}

Return<void> Graphics::lock(void* buffer, uint64_t cpuUsage, Rect const& accessRegion,
                            hidl_handle const& acquireFence, lock_cb cb) {
    Import* const import = find(buffer);
    if (import == nullptr) {
        return mReal.mapper->lock(buffer, cpuUsage, accessRegion, acquireFence, cb);
    }
    BufferRing::Slot& slot = mRing.slot(import->slot);
    int const attempt = ++slot.locks;
    if (ruleOf(slot).locks.has(attempt)) {
        cb(Error::NO_RESOURCES, nullptr);
        return Void();
    }
    cb(Error::NONE, mRing.address(import->slot));
    return Void();
}

Return<void> Graphics::unlock(void* buffer, unlock_cb cb) {
    if (find(buffer) == nullptr) {
        return mReal.mapper->unlock(buffer, cb);
    }
    cb(Error::NONE, hidl_handle());
    return Void();
}

Return<void> Graphics::get(void* buffer, MetadataType const& metadataType, get_cb cb) {
    Import* const import = find(buffer);
    if (import == nullptr ||
        metadataType.name != android::gralloc4::MetadataType_PlaneLayouts.name ||
        metadataType.value != android::gralloc4::MetadataType_PlaneLayouts.value) {
        return mReal.mapper->get(buffer, metadataType, cb);
    }
    BufferRing::Slot const& slot = mRing.slot(import->slot);
    cb(Error::NONE, layoutsOf(slot.width, slot.height));
    return Void();
}

hidl_vec<uint8_t> const& Graphics::layoutsOf(uint32_t width, uint32_t height) const {
    return mLayouts.at({width, height});
}

/** Asks the host's services for the planes of an NV21 buffer. */
hidl_vec<uint8_t> Graphics::askForLayouts(uint32_t width, uint32_t height) const {
    BufferDescriptorInfo info = {};
    info.width = width;
    info.height = height;
    info.layerCount = 1;
    info.format = PixelFormat::YCRCB_420_SP;
    info.usage = kCpuUsage;
    hidl_vec<uint8_t> descriptor;
    (void)mReal.mapper->createDescriptor(
            info, [&](Error, hidl_vec<uint8_t> const& made) { descriptor = made; });
    hidl_handle raw;
    (void)mReal.allocator->allocate(
            descriptor, 1,
            [&](Error, uint32_t, hidl_vec<hidl_handle> const& made) { raw = made[0]; });
    void* imported = nullptr;
    (void)mReal.mapper->importBuffer(raw, [&](Error, void* buffer) { imported = buffer; });
    hidl_vec<uint8_t> layouts;
    (void)mReal.mapper->get(imported, android::gralloc4::MetadataType_PlaneLayouts,
                            [&](Error, hidl_vec<uint8_t> const& told) { layouts = told; });
    (void)mReal.mapper->freeBuffer(imported).isOk();
    return layouts;
}

}  // namespace quensoak
