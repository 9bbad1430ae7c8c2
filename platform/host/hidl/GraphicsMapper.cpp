#include <android/hardware/graphics/mapper/4.0/IMapper.h>

#include "host/hidl/ServiceRegistry.h"

namespace android::hardware::graphics::mapper::V4_0 {

const char* IMapper::descriptor("android.hardware.graphics.mapper@4.0::IMapper");

sp<IMapper> IMapper::getService(std::string const& serviceName, bool /*getStub*/) {
    return quen::host::obtainServiceOf<IMapper>(serviceName);
}

status_t IMapper::registerAsService(std::string const& serviceName) {
    return quen::host::registerService(descriptor, serviceName, this);
}

}  // namespace android::hardware::graphics::mapper::V4_0
