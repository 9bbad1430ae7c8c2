#define LOG_TAG "quenHost"

#include "host/gralloc/GraphicsServices.h"

#include <log/log.h>

namespace quen::host {

GraphicsServices registerGraphicsServices() {
    GraphicsServices services = {new MemfdAllocator, new MemfdMapper};
    if (services.allocator->registerAsService() != android::OK ||
        services.mapper->registerAsService() != android::OK) {
        ALOGE("the graphics services cannot be registered");
    }
    return services;
}

}  // namespace quen::host
