#pragma once

#include <cstdint>
#include <vector>

#include <aidl/android/hardware/graphics/common/PlaneLayout.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <cutils/native_handle.h>
#include <hidl/HidlSupport.h>
#include <system/graphics.h>
#include <utils/StrongPointer.h>

#include "quenCommon/Export.h"

/**
 * The process's access to the graphics mapper service: descriptors, import, CPU locks, layouts.
 *
 * Holds nothing but the service's reference; a copy shares it. Any thread: calls go straight to the
 * service. Few errors are reported: a failure shows as a null handle or address.
 */
class MapperHelper {
  public:
    using IMapper = android::hardware::graphics::mapper::V4_0::IMapper;
    using PlaneLayout = aidl::android::hardware::graphics::common::PlaneLayout;

    /** A copy of the one instance, which is made on first use and fetches the service then. */
    QUEN_EXPORT static MapperHelper getInstance();

    /** Fetches the service. Without a service every later call crashes; it is not fetched again. */
    QUEN_EXPORT void init();

    /**
     * Encodes a buffer description into the bytes that the allocator takes.
     *
     * @param descriptor the mapper's answer, whatever its error; left alone when the mapper could
     *                   not be reached
     */
    QUEN_EXPORT void createDescriptor(IMapper::BufferDescriptorInfo const& info,
                                      android::hardware::hidl_vec<uint8_t>& descriptor);

    /**
     * Imports a raw handle, in up to five attempts 5 ms apart.
     *
     * @param handle replaced by the imported handle, which the caller frees with freeBuffer; null
     *               when every attempt failed
     */
    QUEN_EXPORT void importBuffer(native_handle const*& handle);

    /** Frees an imported handle; null is ignored. */
    QUEN_EXPORT void freeBuffer(native_handle const* handle) const;

    /**
     * Locks an imported buffer for the CPU.
     *
     * @param accessRegion pixels; bytes by one row for a BLOB
     * @param acquireFence waited for by the mapper, closed in every case; -1 for none
     * @param outData the address that the mapper answered, whatever its error; left alone when the
     *                mapper could not be reached
     * @return always 0
     */
    QUEN_EXPORT int lock(native_handle const* handle, uint64_t cpuUsage,
                         IMapper::Rect const& accessRegion, int acquireFence, void*& outData) const;

    /**
     * @return 0, -22 for a null output, the mapper's error code (5 when it was not reached), or the
     *         decoder's
     */
    QUEN_EXPORT int getPlaneLayouts(native_handle const* handle,
                                    std::vector<PlaneLayout>* outPlaneLayouts) const;

    /**
     * Locks an imported YCbCr buffer of 8-bit samples for the CPU.
     *
     * @param ycbcr addresses, strides in bytes and chroma step in bytes
     * @param acquireFence as for lock; left open when the layouts cannot be read
     * @return 0; getPlaneLayouts' error, nothing locked; or -22 for a layout that `android_ycbcr`
     *         cannot express: the buffer is locked then, and the caller unlocks it
     */
    QUEN_EXPORT int lockYCbCr_4_0(native_handle const* handle, uint64_t cpuUsage,
                                  IMapper::Rect const& accessRegion, int acquireFence,
                                  android_ycbcr& ycbcr) const;

    /**
     * Unlocks a buffer.
     *
     * @param releaseFence -1, or a new descriptor that the caller closes
     */
    QUEN_EXPORT void unlock(native_handle const* handle, int& releaseFence) const;

  private:
    android::sp<IMapper> mMapper;
};
