#define LOG_TAG "quenGralloc"

#include "quenGralloc/MapperHelper.h"

#include <sync/sync.h>
#include <unistd.h>

#include <android/log.h>
#include <gralloctypes/Gralloc4.h>

#include "quenCommon/Log.h"
#include "quenGralloc/YCbCrLayout.h"

using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::graphics::mapper::V4_0::Error;

namespace {

constexpr int kInvalidArgument = -22;

constexpr int kImportRetries = 4;
constexpr useconds_t kImportRetryDelayUs = 5000;

// The mapper's operations take handles without const.
void* asBuffer(native_handle const* handle) {
    return const_cast<native_handle*>(handle);
}

}  // namespace

MapperHelper MapperHelper::getInstance() {
    static MapperHelper const instance = [] {
        MapperHelper helper;
        helper.init();
        return helper;
    }();
    return instance;
}

void MapperHelper::init() {
    mMapper = IMapper::getService("default", false);
}

void MapperHelper::createDescriptor(IMapper::BufferDescriptorInfo const& info,
                                    hidl_vec<uint8_t>& descriptor) {
    auto const transport = mMapper->createDescriptor(
            info, [&](Error /*error*/, hidl_vec<uint8_t> const& bytes) { descriptor = bytes; });
    bool const isOk = transport.isOk();
    QLOGI("MapperHelper createDescriptor is succeeded %d", isOk);
}

void MapperHelper::importBuffer(native_handle const*& handle) {
    native_handle const* imported = nullptr;
    for (int retriesLeft = kImportRetries;; --retriesLeft) {
        auto const transport =
                mMapper->importBuffer(hidl_handle(handle), [&](Error /*error*/, void* buffer) {
                    imported = static_cast<native_handle const*>(buffer);
                });
        bool const isOk = transport.isOk();
        QLOGI("debug MapperHelper import is succeeded %d, outBufferHandle %p, importedHandle %p",
              isOk, handle, imported);
        QLOGI("debug current improtBufferTimes %d, importedBuffer is nullptr %d", retriesLeft,
              imported == nullptr);
        if (imported == nullptr) {
            usleep(kImportRetryDelayUs);
            QLOGI("debug wait 5ms and import buffer again");
        }
        if (retriesLeft == 0 || imported != nullptr) {
            break;
        }
    }
    handle = imported;
}

void MapperHelper::freeBuffer(native_handle const* handle) const {
    if (handle == nullptr) {
        return;
    }
    auto const transport = mMapper->freeBuffer(asBuffer(handle));
    bool const isOk = transport.isOk();
    QLOGI("MapperHlper freeBuffer is OK %d", isOk);
}

int MapperHelper::lock(native_handle const* handle, uint64_t cpuUsage,
                       IMapper::Rect const& accessRegion, int acquireFence, void*& outData) const {
    hidl_handle fence;
    NATIVE_HANDLE_DECLARE_STORAGE(fenceStorage, 1, 0);
    if (acquireFence >= 0) {
        native_handle_t* const wrapped = native_handle_init(fenceStorage, 1, 0);
        wrapped->data[0] = acquireFence;
        fence = wrapped;
    }
    auto const transport = mMapper->lock(
            asBuffer(handle), cpuUsage, accessRegion, fence, [&](Error /*error*/, void* data) {
                outData = data;
                QLOGD("lock addr(0x%X)",
                      static_cast<unsigned int>(reinterpret_cast<uintptr_t>(data)));
            });
    if (acquireFence >= 0) {
        close(acquireFence);
    }
    if (!transport.isOk()) {
        QLOGE("lock fail!");
    }
    return 0;
}

int MapperHelper::getPlaneLayouts(native_handle const* handle,
                                  std::vector<PlaneLayout>* outPlaneLayouts) const {
    if (outPlaneLayouts == nullptr) {
        return kInvalidArgument;
    }
    auto const& type = android::gralloc4::MetadataType_PlaneLayouts;
    hidl_vec<uint8_t> encoded;
    Error error = Error::NO_RESOURCES;
    auto const transport =
            mMapper->get(asBuffer(handle), type, [&](Error result, hidl_vec<uint8_t> const& bytes) {
                error = result;
                encoded = bytes;
            });
    if (!transport.isOk()) {
        error = Error::NO_RESOURCES;
    }
    if (error != Error::NONE) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "get(%s, %lu, ...) failed with %d",
                            type.name.c_str(), static_cast<unsigned long>(type.value),
                            static_cast<int>(error));
        return static_cast<int>(error);
    }
    return android::gralloc4::decodePlaneLayouts(encoded, outPlaneLayouts);
}

int MapperHelper::lockYCbCr_4_0(native_handle const* handle, uint64_t cpuUsage,
                                IMapper::Rect const& accessRegion, int acquireFence,
                                android_ycbcr& ycbcr) const {
    std::vector<PlaneLayout> layouts;
    int const error = getPlaneLayouts(handle, &layouts);
    if (error != 0) {
        return error;
    }
    void* base = nullptr;
    lock(handle, cpuUsage, accessRegion, acquireFence, base);
    return quen::describeYCbCr(layouts, base, ycbcr) ? 0 : kInvalidArgument;
}

void MapperHelper::unlock(native_handle const* handle, int& releaseFence) const {
    releaseFence = -1;
    auto const transport =
            mMapper->unlock(asBuffer(handle), [&](Error /*error*/, hidl_handle const& fence) {
                native_handle_t const* const raw = fence.getNativeHandle();
                if (raw == nullptr || raw->numFds != 1) {
                    return;
                }
                int const duplicate = dup(raw->data[0]);
                if (duplicate >= 0) {
                    releaseFence = duplicate;
                    return;
                }
                QLOGD("failed to dup unlock release fence");
                sync_wait(raw->data[0], -1);
            });
    // The error is not reported, but a Return that is never checked can abort the process.
    (void)transport.isOk();
}
