#include <android/hardware/graphics/allocator/4.0/IAllocator.h>

#include "host/hidl/ServiceRegistry.h"

namespace android::hardware::graphics::allocator::V4_0 {

const char* IAllocator::descriptor("android.hardware.graphics.allocator@4.0::IAllocator");

sp<IAllocator> IAllocator::getService(std::string const& serviceName, bool /*getStub*/) {
    return quen::host::obtainServiceOf<IAllocator>(serviceName);
}

status_t IAllocator::registerAsService(std::string const& serviceName) {
    return quen::host::registerService(descriptor, serviceName, this);
}

}  // namespace android::hardware::graphics::allocator::V4_0
