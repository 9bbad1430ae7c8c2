#include "host/hidl/DeathNotice.h"

#include "host/hidl/DeathLinks.h"
#include "host/hidl/ServiceRegistry.h"

namespace quen::host {

void announceDeath(android::sp<android::hidl::base::V1_0::IBase> const& service) {
    if (service == nullptr) {
        return;
    }
    unregisterService(service);
    for (DeathLink const& link : takeDeathLinks(*service)) {
        link.recipient->serviceDied(link.cookie, link.service);
    }
}

}  // namespace quen::host
