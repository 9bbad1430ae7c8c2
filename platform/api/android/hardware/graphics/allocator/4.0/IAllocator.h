#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <android/hardware/graphics/mapper/4.0/types.h>
#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

namespace android::hardware::graphics::allocator::V4_0 {

/** Allocates graphic buffers. Any thread. */
struct IAllocator : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;

    using allocate_cb = std::function<void(mapper::V4_0::Error error, uint32_t stride,
                                           const hidl_vec<hidl_handle>& buffers)>;

    /**
     * Allocates buffers of one description, all or none.
     *
     * @param bufferDescriptor from IMapper::createDescriptor
     * @param count how many; 0 gives none, with NONE
     * @param cb is called once, before the call returns, with the pixels from one row to the next
     *        and with raw handles, which the allocator owns: copy one to keep it. BAD_DESCRIPTOR,
     *        NO_RESOURCES, UNSUPPORTED
     */
    virtual Return<void> allocate(const hidl_vec<uint8_t>& bufferDescriptor, uint32_t count,
                                  allocate_cb cb) = 0;

    /** Finds the service; null when no such instance is registered. */
    static ::android::sp<IAllocator> getService(const std::string& serviceName = "default",
                                                bool getStub = false);

    /** Registers this object as the instance `serviceName`, in place of any earlier one. */
    ::android::status_t registerAsService(const std::string& serviceName = "default");
};

}  // namespace android::hardware::graphics::allocator::V4_0
