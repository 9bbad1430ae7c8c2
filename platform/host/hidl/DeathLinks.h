#pragma once

#include <cstdint>
#include <vector>

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <utils/RefBase.h>

namespace quen::host {

/** A recipient to notify of a service's death; held until it is notified or unlinked. */
struct DeathLink {
    android::wp<android::hidl::base::V1_0::IBase> service;
    android::sp<android::hardware::hidl_death_recipient> recipient;
    uint64_t cookie;
};

/** Adds a link, and drops the links of services that were destroyed. Any thread. */
void addDeathLink(DeathLink link);

/** Removes the newest link of a recipient to a service. False when there is none. */
bool removeDeathLink(android::hidl::base::V1_0::IBase& service,
                     android::sp<android::hardware::hidl_death_recipient> const& recipient);

/** Removes and returns every link to a service, oldest first. */
std::vector<DeathLink> takeDeathLinks(android::hidl::base::V1_0::IBase& service);

}  // namespace quen::host
