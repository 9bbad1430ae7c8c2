#pragma once

#include <cstdint>
#include <vector>

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <utils/RefBase.h>

namespace quen::host {

/** Who is to be told of a service's death. The recipient is held until it was told or unlinked. */
struct DeathLink {
    android::wp<android::hidl::base::V1_0::IBase> service;
    android::sp<android::hardware::hidl_death_recipient> recipient;
    uint64_t cookie;
};

/** The process's links; those of services that were destroyed go when links are added. Any thread.
 */
void addDeathLink(DeathLink link);

/** Takes the newest link of a recipient to a service away. False when there is none. */
bool removeDeathLink(android::hidl::base::V1_0::IBase& service,
                     android::sp<android::hardware::hidl_death_recipient> const& recipient);

/** Takes every link to a service, oldest first. */
std::vector<DeathLink> takeDeathLinks(android::hidl::base::V1_0::IBase& service);

}  // namespace quen::host
